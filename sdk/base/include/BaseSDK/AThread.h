#pragma once

#include <memory>

namespace BaseSDK {

/// A thread whose body is the virtual Run. Derive, override Run, call Start.
///
/// The derived class must make sure that Run has returned before its members go: this destructor
/// comes too late for that. The thread itself is never killed.
class AThread {
 public:
  AThread();
  AThread(const AThread&) = delete;
  AThread& operator=(const AThread&) = delete;
  /// Waits for a thread whose Run has returned to be gone altogether, so that the code of a library
  /// may be unloaded afterwards. One that still runs is left running.
  virtual ~AThread();

  /// The body, on the new thread. An exception that leaves it ends the process.
  virtual void Run() = 0;

  /// False when the thread still runs or the system has none to give. May be called again after Run
  /// has returned. One thread at a time calls Start and the destructor.
  bool Start();
  /// From a successful Start until Run has returned; any thread may ask.
  bool IsRunning() const;

 private:
  struct State;
  /// Shared with the thread, which may outlive this object.
  std::shared_ptr<State> m_State;
};

}  // namespace BaseSDK
