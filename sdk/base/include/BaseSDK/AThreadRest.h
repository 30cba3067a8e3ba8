#pragma once

namespace BaseSDK {

/// Tells threads at work from threads at rest, so that a host can take a plug-in down while none of
/// its threads is in the middle of anything. An AThread is at work from its Start to the end of its
/// Run, and at rest whenever it waits in AEvent::Wait. Threads of another kind do not count.
///
/// While an object of this class lives, the thread that made it counts as at rest. An AThread that
/// waits in another way than by AEvent, such as by a poll, makes one around that wait; the same
/// thread destroys it.
class AThreadRest {
 public:
  AThreadRest();
  AThreadRest(const AThreadRest&) = delete;
  AThreadRest& operator=(const AThreadRest&) = delete;
  ~AThreadRest();

  /// Waits until every AThread of the process is at rest or has ended, `milliseconds` at most;
  /// false when one is still at work then. Afterwards the caller sees all that those threads did
  /// before, and they will see all that the caller did. A thread may go back to work at any moment,
  /// so first make sure that there is nothing left for it to do. Not to be called by an AThread.
  static bool WaitForAll(unsigned long milliseconds);

 private:
  friend class AThread;
  // An AThread calls these in turn: OnStart before the new thread is created, OnEnter on the new
  // thread, OnEnd after its Run, or when the thread could not be created.
  static void OnStart();
  static void OnEnter();
  static void OnEnd();

  const bool m_WasAtWork;
};

}  // namespace BaseSDK
