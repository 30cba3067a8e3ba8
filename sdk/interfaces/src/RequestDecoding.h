#pragma once

#include "ArgumentBinding.h"
#include "RequestCheck.h"

#include <array>
#include <tuple>

namespace Corvane::AgentInterfacesV3 {

/// Holds one argument while the operation is called: the value from the request, or 0, false or
/// empty when the request has none.
template <class Parameter>
class AHeldArgument {
 public:
  AHeldArgument(const AMsgIn& request, const AInterfaceTable::AArgument& row) {
    if (const AMsgValue* const given = request.Find(row.m_Name)) {
      m_Value = std::get<AValue>(*given);
      m_IsGiven = true;
    }
  }

  /// The argument as the operation takes it; null when it is a pointer and the request has none.
  Parameter Get() {
    if constexpr (AParameter<Parameter>::IsNullable) {
      return m_IsGiven ? &m_Value : nullptr;
    } else {
      return m_Value;
    }
  }

  /// Moves an out argument into the answer; does nothing for an in argument.
  void StoreOut(const AInterfaceTable::AArgument& row, AMsgArguments& out) {
    if constexpr (AParameter<Parameter>::IsOut) {
      out.emplace(row.m_Name, std::move(m_Value));
    }
  }

 private:
  using AValue = typename AParameter<Parameter>::AValue;

  AValue m_Value{};
  bool m_IsGiven = false;
};

/// Takes the arguments from the request, calls the operation and answers with its result. What the
/// operation throws comes out of it. REQUIRES: CheckRequest has passed the request.
template <class Skeleton, class Result, class... Parameters, std::size_t... Index>
void CallWith(Skeleton& object, Result (Skeleton::*method)(Parameters...), const AMsgIn& request,
              [[maybe_unused]] std::span<const AInterfaceTable::AArgument> rows,
              std::index_sequence<Index...>) {
  [[maybe_unused]] std::tuple<AHeldArgument<Parameters>...> held{
      AHeldArgument<Parameters>(request, rows[Index])...};
  const long result = (object.*method)(std::get<Index>(held).Get()...);
  AMsgArguments out;
  (std::get<Index>(held).StoreOut(rows[Index], out), ...);
  request.Reply().SetResult(result, std::move(out));
}

/// CallWith for one operation, as a plain function: CallOperation has one for each row of the
/// table.
template <auto Method, class Skeleton, class Result, class... Parameters>
constexpr auto CallerOf(Result (Skeleton::*)(Parameters...)) {
  return +[](Skeleton& object, const AMsgIn& request,
             std::span<const AInterfaceTable::AArgument> rows) {
    CallWith(object, Method, request, rows, std::index_sequence_for<Parameters...>());
  };
}

/// Answers a request for an interface by its table and the skeleton's operations, which stand in
/// the order of the table's rows. That their parameters agree with the rows is checked when this is
/// compiled, that the request agrees when it runs.
template <const AInterfaceTable& Table, auto... Methods, class Skeleton>
long CallOperation(Skeleton& object, const AMsgIn& request) {
  static_assert(Table.m_Operations.size() == sizeof...(Methods));
  static_assert(
      [] {
        std::size_t row = 0;
        return (MethodFits(Methods, Table.m_Operations[row++]) && ...);
      }(),
      "an operation's parameters differ from its row in the table");
  static constexpr std::array Callers{CallerOf<Methods>(Methods)...};

  const AInterfaceTable::AOperation* const row = CheckRequest(Table, request);
  if (row == nullptr) {
    return -1;
  }
  Callers[static_cast<std::size_t>(row - Table.m_Operations.data())](object, request,
                                                                     row->Arguments());
  return 1;
}

}  // namespace Corvane::AgentInterfacesV3
