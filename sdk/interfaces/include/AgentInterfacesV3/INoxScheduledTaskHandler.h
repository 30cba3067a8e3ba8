#pragma once

#include <AgentInterfacesV3/INoxObject.h>

namespace Corvane::AgentInterfacesV3 {

/// A handler answers this to a batch when the scheduler is not to record "Ok": it will not run the
/// tasks, or it reports each task's state itself, by SetRunState, when the run has ended.
constexpr long TASK_HANDLER_DECLINED = -10000;

/// An object that runs tasks, as the scheduler sees it. A batch holds one entry per due task, in
/// the order of their IDs: the URL-encoded task ID and the flags late, never run and kill at end
/// ("0" or "1"), joined by ":" and each entry ended by ";", such as "backup:0:1:0;report:1:0:0;".
///
/// Calls come one at a time, on the scheduler's monitor thread and with none of its locks held.
/// They hold up every other task, so a handler starts its work and returns.
class INoxScheduledTaskHandler : public virtual INoxObject {
 public:
  /// Runs the tasks of `batch`. TASK_HANDLER_DECLINED when declined; any other result, negative
  /// ones included, means accepted, and the scheduler records "Ok" for every task of the batch.
  virtual long RunTasks(const BaseSDK::AString& batch) = 0;
  /// The scheduler asks this before RunTasks. Above 0 when accepted, TASK_HANDLER_DECLINED when
  /// declined; with any other result the scheduler hands the batch to RunTasks.
  virtual long RunTasksEx(const BaseSDK::AString& batch) = 0;

  /// The identifier of this interface, as CIGetObjectInterface takes it.
  static const BaseSDK::AGuid& GetIID();

 protected:
  ~INoxScheduledTaskHandler() = default;
};

}  // namespace Corvane::AgentInterfacesV3
