#pragma once

#include <memory>

namespace BaseSDK {

/// A thread whose body is the virtual Run. Derive, override Run, call Start.
///
/// The derived class must wait for the end of Run before its own members are destroyed: the
/// destructor of this class comes too late for that. No thread is ever killed.
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

  /// Starts the thread. False when it still runs, or when the system has no thread to give. May be
  /// called again after Run has returned. Only one thread at a time may call Start or the
  /// destructor.
  bool Start();
  /// From a successful Start until Run has returned; any thread may ask.
  bool IsRunning() const;

 private:
  struct State;
  /// Shared with the thread, which may outlive this object.
  std::shared_ptr<State> m_State;
};

}  // namespace BaseSDK
