#pragma once

#include <AgentInterfacesV3/AInterfaceTable.h>
#include <AgentInterfacesV3/AMsgIn.h>

#include <cstddef>
#include <type_traits>
#include <utility>

namespace Corvane::AgentInterfacesV3 {

/// The type of message argument that the C++ type `Value` stands for: its place among the
/// alternatives of AMsgValue. One that is none of them gives a number past the last, which no table
/// row has.
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

/// Fits for the parameters of a member function.
template <class Class, class Result, class... Parameters>
constexpr bool MethodFits(Result (Class::*)(Parameters...),
                          const AInterfaceTable::AOperation& row) {
  return Fits<Parameters...>(row);
}

/// A text as a template's argument, such as the name of an operation.
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
