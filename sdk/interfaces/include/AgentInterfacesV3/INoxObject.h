#pragma once

#include <BaseSDK/AGuid.h>
#include <BaseSDK/AString.h>

namespace Corvane::AgentInterfacesV3 {

/// The result of a call on an interface of another object when no result came back: the object is
/// gone, its queue is closed, it does not serve the interface, or the operation ended in an
/// exception. The proxy logs a warning. Out arguments are left as they were.
constexpr long CALL_NOT_DELIVERED = -10001;

/// An object as its clients see it; every client interface derives from it virtually. A client gets
/// one through CIGetObjectInterface, holds it in a CIClient, and may call it from any thread.
class INoxObject {
 public:
  INoxObject() = default;
  INoxObject(const INoxObject&) = delete;
  INoxObject& operator=(const INoxObject&) = delete;

  /// Ends the client's use: the pointer must not be used any more. Call it once for each opened
  /// interface, while no other call is under way on it. The object itself lives on. 0.
  virtual long Release() = 0;

  /// Overwrites `report` with a short report of the object's state, for people. 1.
  virtual int ObjectDebugInfo(BaseSDK::AString& report) = 0;
  /// Tells the object of an event in the agent's life: 0 the start-up has finished; 1 and 2 a
  /// policy refresh begins and has finished; 4 and 5 a plug-in is being loaded and is loaded; 6 and
  /// 7 one is being unloaded and is unloaded; 10 a notification that the object subscribed to was
  /// posted. `code` is that of the notification, for kind 10 alone; `text` is its data, or for
  /// kinds 4 to 7 the name of the plug-in. 0.
  virtual int NotifyObject(long kind, long code, const BaseSDK::AString& text) = 0;

  /// The identifier of this interface, as CIGetObjectInterface takes it.
  static const BaseSDK::AGuid& GetIID();

 protected:
  ~INoxObject() = default;
};

}  // namespace Corvane::AgentInterfacesV3
