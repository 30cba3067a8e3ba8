#pragma once

namespace BaseSDK {

/// Tells threads at work from threads at rest, so that a host can take a plug-in down while none of
/// its threads is in the middle of anything. An AThread is at work from its Start to the end of its
/// Run, and at rest whenever it waits in AEvent::Wait. Threads of another kind do not count.
///
/// An object of this class makes the thread that holds it one at rest while it lives: for an
/// AThread that waits in a way of its own, such as a poll.
class AThreadRest {
 public:
  AThreadRest();
  AThreadRest(const AThreadRest&) = delete;
  AThreadRest& operator=(const AThreadRest&) = delete;
  ~AThreadRest();

  /// Waits until every AThread of the process is at rest or has ended, `milliseconds` at most;
  /// false when one is still at work then. What a thread did before it came to rest is visible to
  /// the caller, and what the caller did before is to the thread when it goes on. That may be at
  /// once: first see to it that it finds nothing more to do. [any thread; an AThread itself never]
  static bool WaitForAll(unsigned long milliseconds);

 private:
  friend class AThread;
  /// In the order of a thread's life: before it is created, on itself, after its end or when it
  /// could not be created.
  static void OnStart();
  static void OnEnter();
  static void OnEnd();

  const bool m_WasAtWork;
};

}  // namespace BaseSDK
