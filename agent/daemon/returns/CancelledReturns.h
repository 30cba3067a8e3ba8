#pragma once

#include "agent/daemon/control/OperationCall.h"
#include "agent/daemon/returns/TaskReturns.h"

#include <BaseSDK/AString.h>

namespace NoxAgent {

/// The tasks that a request of a client enables, disables for good, replaces or deletes, and that
/// would have come back by themselves: they do not any more, once the request has done its work.
/// An edit that leaves a task disabled leaves its return as well.
/// One thread at a time.
class CancelledReturns {
 public:
  /// `call` and `returns` are borrowed. `scheduler` is the name of the plug-in whose tasks come
  /// back; a request to any other one cancels nothing.
  CancelledReturns(OperationCall& call, TaskReturns& returns, const BaseSDK::AString& scheduler);

  bool IsEmpty() const { return m_Ids.empty(); }
  /// Cancels them as far as the request was answered with success. REQUIRES: the request was
  /// answered; the change lock is held since before.
  void Cancel();

 private:
  bool IsDone(const std::string& taskId);

  OperationCall& m_Call;
  TaskReturns& m_Returns;
  TaskReturns::Ids m_Ids;
};

}  // namespace NoxAgent
