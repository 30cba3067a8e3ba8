#pragma once

#include <AgentInterfacesV3/INoxObject_impl.h>

namespace Corvane::AgentInterfacesV3 {

/// The skeleton of INoxScheduledTaskHandler, for plug-ins that run tasks.
/// INoxScheduledTaskHandler.h says what the operations and their results mean.
class INoxScheduledTaskHandler_impl : public virtual INoxObject_impl {
 public:
  INoxScheduledTaskHandler_impl();
  ~INoxScheduledTaskHandler_impl() override;

  /// Answers requests for this interface, and hands those for the interfaces it derives from on to
  /// their skeletons.
  long CallMethod(const AMsgIn* request) override;

  virtual long RunTasks(const BaseSDK::AString& batch) = 0;
  virtual long RunTasksEx(const BaseSDK::AString& batch) = 0;
};

}  // namespace Corvane::AgentInterfacesV3
