#pragma once

#include <AgentInterfacesV3/INoxObject_impl.h>

namespace Corvane::AgentInterfacesV3 {

/// The skeleton of INoxCommandHandler, for plug-ins that run jobs. INoxCommandHandler.h says what
/// the operations and their results mean.
class INoxCommandHandler_impl : public virtual INoxObject_impl {
 public:
  INoxCommandHandler_impl();
  ~INoxCommandHandler_impl() override;

  /// Answers requests for this interface, and hands those for the interfaces it derives from on to
  /// their skeletons.
  long CallMethod(const AMsgIn* request) override;

  virtual long GetRun(const BaseSDK::AString& taskId, AStringMap& run) = 0;
  virtual long CheckJob(const BaseSDK::AString& taskId, BaseSDK::AString& problem) = 0;
  virtual long PutJob(const BaseSDK::AString& taskId, const BaseSDK::AString& text,
                      BaseSDK::AString& problem) = 0;
  virtual long GetJob(const BaseSDK::AString& taskId, BaseSDK::AString& text,
                      BaseSDK::AString& problem) = 0;
  virtual long DeleteJob(const BaseSDK::AString& taskId, BaseSDK::AString& problem) = 0;
  virtual long GetOutput(const BaseSDK::AString& taskId, const BaseSDK::AString& position,
                         BaseSDK::AString& text, BaseSDK::AString& next) = 0;
  virtual long StopRun(const BaseSDK::AString& taskId) = 0;
};

}  // namespace Corvane::AgentInterfacesV3
