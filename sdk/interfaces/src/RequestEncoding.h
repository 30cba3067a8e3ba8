#pragma once

#include "AMsgChannel.h"
#include "ArgumentBinding.h"

#include <AgentInterfacesV3/INoxObject.h>
#include <BaseSDK/ALong32.h>

#include <memory>
#include <tuple>

namespace Corvane::AgentInterfacesV3 {

/// Logs why the call that `request` stands for did not reach its operation.
void WarnNotDelivered(const AMsgIn& request);

/// Adds an in argument to the request. Does nothing for an out argument or a null pointer.
template <class Parameter>
void SetIn(AMsgIn& request, const AInterfaceTable::AArgument& row,
           std::add_lvalue_reference_t<const std::remove_reference_t<Parameter>> value) {
  if constexpr (AParameter<Parameter>::IsNullable) {
    if (value != nullptr) {
      request.Set(row.m_Name, *value);
    }
  } else {
    if (row.IsIn()) {
      request.Set(row.m_Name, value);
    }
  }
}

/// Takes an out argument from the answer. An argument that is not there or has another type leaves
/// `value` alone.
template <class Parameter>
void GetOut(const AMsgReply& reply, const AInterfaceTable::AArgument& row,
            std::add_lvalue_reference_t<Parameter> value) {
  if constexpr (AParameter<Parameter>::IsOut) {
    const auto found = reply.Out().find(row.m_Name);
    using AValue = typename AParameter<Parameter>::AValue;
    if (found == reply.Out().end()) {
      return;
    }
    if (const AValue* const given = std::get_if<AValue>(&found->second)) {
      value = *given;
    }
  }
}

/// Sends the call of a client interface's operation as a request. `Method` is that operation; that
/// its parameters agree with the table's row is checked when this is compiled.
template <const AInterfaceTable& Table, AName Operation, auto Method>
class ARemoteCall;

template <const AInterfaceTable& Table, AName Operation, class Interface, class Result,
          class... Parameters, Result (Interface::*Method)(Parameters...)>
class ARemoteCall<Table, Operation, Method> {
 public:
  static Result On(AMsgChannel& channel, Parameters... arguments) {
    static constexpr const AInterfaceTable::AOperation* Row = Table.FindOperation(Operation.View());
    static_assert(Row != nullptr, "the table has no such operation");
    static_assert(Fits<Parameters...>(*Row), "the parameters differ from the table's row");

    AMsgReply reply;
    AMsgIn request(Table.m_Name, Operation.View(), reply);
    [[maybe_unused]] const std::span<const AInterfaceTable::AArgument> rows = Row->Arguments();
    [[maybe_unused]] std::size_t index = 0;
    (SetIn<Parameters>(request, rows[index++], arguments), ...);
    if (channel.Send(request) < 0) {
      WarnNotDelivered(request);
      return CALL_NOT_DELIVERED;
    }
    index = 0;
    (GetOut<Parameters>(reply, rows[index++], arguments), ...);
    return static_cast<Result>(BaseSDK::Clamp32(reply.Result()));
  }
};

}  // namespace Corvane::AgentInterfacesV3
