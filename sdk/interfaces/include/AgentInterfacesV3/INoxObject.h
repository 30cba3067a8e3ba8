#pragma once

#include <BaseSDK/AGuid.h>
#include <BaseSDK/AString.h>

namespace Corvane::AgentInterfacesV3 {

/// What a call on an interface of another object results in when the request did not reach the
/// operation (the object is gone, its queue closed, its interfaces are others). Logged as a warning
/// by the proxy; out arguments are left as they were.
constexpr long CALL_NOT_DELIVERED = -10001;

/// An object as its clients see it; every client interface derives from it virtually. A client gets
/// one through CIGetObjectInterface, holds it in a CIClient, and may call it from any thread.
class INoxObject {
 public:
  INoxObject() = default;
  INoxObject(const INoxObject&) = delete;
  INoxObject& operator=(const INoxObject&) = delete;

  /// Ends the client's use; the pointer is dangling afterwards. Once per opened interface, while no
  /// other call is under way on it. The object itself lives on. 0.
  virtual long Release() = 0;

  virtual int ObjectDebugInfo(BaseSDK::AString& report) = 0;
  virtual int NotifyObject(long kind, long code, const BaseSDK::AString& text) = 0;

  static const BaseSDK::AGuid& GetIID();

 protected:
  ~INoxObject() = default;
};

}  // namespace Corvane::AgentInterfacesV3
