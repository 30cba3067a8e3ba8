#pragma once

#include <AgentInterfacesV3/INoxVeskClientAgent_impl.h>

namespace Corvane::AgentInterfacesV3 {

/// The skeleton of INoxTaskScheduler. INoxTaskScheduler.h says what the operations do.
class INoxTaskScheduler_impl : public virtual INoxVeskClientAgent_impl {
 public:
  INoxTaskScheduler_impl();
  ~INoxTaskScheduler_impl() override;

  /// Answers requests for this interface, and hands those for the interfaces it derives from on to
  /// their skeletons.
  long CallMethod(const AMsgIn* request) override;

  virtual long AddTask(const BaseSDK::AString& taskId, const BaseSDK::AString& taskXml,
                       BaseSDK::AString& newTaskId) = 0;
  virtual long DeleteTask(const BaseSDK::AString& taskId) = 0;
  virtual long GetTaskXML(const BaseSDK::AString& taskId, BaseSDK::AString& taskXml) = 0;
  virtual long FindFirstTask(unsigned long& handle, BaseSDK::AString& taskId) = 0;
  virtual long FindNextTask(unsigned long handle, BaseSDK::AString& taskId) = 0;
  virtual long FindClose(unsigned long handle) = 0;
  virtual long RefreshTaskList() = 0;
  virtual long SetRunState(const BaseSDK::AString& taskId, const BaseSDK::AString& runState) = 0;
  /// `attributes` holds what the caller passed on entry; `inputAttributes` may be null.
  virtual long GetTaskAttributes(const BaseSDK::AString& taskId, AStringMap& attributes,
                                 const AStringMap* inputAttributes) = 0;
  virtual long EnableTask(const BaseSDK::AString& taskIds, bool enable) = 0;
};

}  // namespace Corvane::AgentInterfacesV3
