#pragma once

#include <AgentInterfacesV3/AMsgIn.h>
#include <AgentInterfacesV3/AMsgQueueServer.h>
#include <BaseSDK/AString.h>

namespace Corvane::AgentInterfacesV3 {

/// The skeleton of INoxObject, the interface of every object. An object derives from the skeletons
/// of the interfaces it serves and overrides their operations; the skeletons decode requests.
///
/// Skeletons have no data and derive virtually from one another, so that an object has one table of
/// virtual functions: the destructor's two slots, ProcessRequest, CallMethod, then the operations
/// of INoxObject, then those of each derived interface.
///
/// Operations run on the host's request threads, several at once.
class INoxObject_impl : public virtual AMsgQueueServer {
 public:
  INoxObject_impl();
  ~INoxObject_impl() override;

  /// Answers `request` exactly once, through CallMethod. An exception of the operation becomes the
  /// error OperationFailed. 1 when answered with a result, -1 with an error (also for null).
  long ProcessRequest(const AMsgIn* request) override;

  /// Decodes the request and calls the operation it names, or answers with the error: an unknown
  /// interface or operation, a missing, mistyped or unexpected argument. The operation is then not
  /// called. `request` is not null. Results as for ProcessRequest.
  ///
  /// An object with two skeletons that do not derive from one another overrides this and goes to
  /// the one that the request's interface belongs to.
  virtual long CallMethod(const AMsgIn* request);

  /// Overwrites `report` with a short report of the object's state; 1.
  virtual int ObjectDebugInfo(BaseSDK::AString& report) = 0;

  /// Hears of an event in the agent's life. INoxObject.h lists the kinds, and what `code` and
  /// `text` mean with each. 0.
  virtual int NotifyObject(long kind, long code, const BaseSDK::AString& text) = 0;
};

}  // namespace Corvane::AgentInterfacesV3
