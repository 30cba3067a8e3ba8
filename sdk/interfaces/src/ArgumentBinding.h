#pragma once

#include <AgentInterfacesV3/AInterfaceTable.h>
#include <AgentInterfacesV3/AMsgIn.h>

#include <cstddef>
#include <type_traits>
#include <utility>

namespace Corvane::AgentInterfacesV3 {

/// Where in AMsgValue, and so in AMsgType, the C++ type `Value` stands.
template <class Value, class... Alternatives>
constexpr AMsgType TypeIn(const std::variant<Alternatives...>*) {
  std::size_t index = 0;
  (void)((std::is_same_v<Value, Alternatives> || (++index, false)) || ...);
  return static_cast<AMsgType>(index);
}

/// A parameter of a C++ operation: values and const references go in, references come out too, and
/// a pointer to const goes in and may be null.
template <class Parameter>
struct AParameter {
  static constexpr bool IsNullable = std::is_pointer_v<Parameter>;
  using AValue = std::remove_cv_t<std::remove_pointer_t<std::remove_cvref_t<Parameter>>>;
  static constexpr AMsgType Type = TypeIn<AValue>(static_cast<const AMsgValue*>(nullptr));
  static constexpr bool IsOut =
      std::is_lvalue_reference_v<Parameter> && !std::is_const_v<std::remove_reference_t<Parameter>>;

  static constexpr bool Fits(const AInterfaceTable::AArgument& row) {
    return row.m_Type == Type && row.IsOut() == IsOut && (!IsNullable || row.m_Optional);
  }
};

/// Whether an operation of these parameters is the one that the table's row describes.
template <class... Parameters>
constexpr bool Fits(const AInterfaceTable::AOperation& row) {
  if (row.Arguments().size() != sizeof...(Parameters)) {
    return false;
  }
  std::size_t index = 0;
  return (AParameter<Parameters>::Fits(row.Arguments()[index++]) && ...);
}

template <class Class, class Result, class... Parameters>
constexpr bool MethodFits(Result (Class::*)(Parameters...),
                          const AInterfaceTable::AOperation& row) {
  return Fits<Parameters...>(row);
}

/// A name that is a template's argument.
template <std::size_t Size>
struct AName {
  consteval AName(const char (&text)[Size]) {
    for (std::size_t index = 0; index < Size; ++index) {
      m_Text[index] = text[index];
    }
  }
  constexpr std::string_view View() const { return {m_Text, Size - 1}; }

  char m_Text[Size]{};
};

}  // namespace Corvane::AgentInterfacesV3
