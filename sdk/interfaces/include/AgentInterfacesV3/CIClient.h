#pragma once

#include <AgentInterfacesV3/INoxObject.h>

namespace Corvane::AgentInterfacesV3 {

/// Holds an opened interface and releases it once, at the end of the scope:
///
///   CIClient<INoxScheduledTaskHandler> handler;
///   if (CIGetObjectInterface(classId, INoxScheduledTaskHandler::GetIID(), 0, handler.Slot()) >= 0)
///     handler->RunTasksEx(batch);
///
/// `Interface` derives virtually from INoxObject. One thread at a time.
template <class Interface>
class CIClient {
 public:
  explicit CIClient(Interface* object = nullptr) : m_Object(object) {}
  CIClient(const CIClient&) = delete;
  CIClient& operator=(const CIClient&) = delete;
  virtual ~CIClient() {
    if (m_Object != nullptr) {
      INoxObject* const object = Get();  // to the virtual base, which has the Release
      (void)object->Release();
      m_Object = nullptr;
    }
  }

  /// Where an opening call puts the interface. REQUIRES: nothing is held yet.
  void*& Slot() { return m_Object; }
  /// The interface, still owned by this object; null when nothing is held.
  Interface* Get() const { return static_cast<Interface*>(m_Object); }
  Interface* operator->() const { return Get(); }
  explicit operator bool() const { return m_Object != nullptr; }

 private:
  void* m_Object;  // an Interface*, owned; untyped so that Slot can hand it out
};

}  // namespace Corvane::AgentInterfacesV3
