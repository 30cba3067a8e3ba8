#pragma once

#include <BaseSDK/AEvent.h>
#include <BaseSDK/AString.h>
#include <BaseSDK/AThread.h>

#include <atomic>

class TaskSchedulerObject_i;

/// A thread of the scheduler: it sleeps on an event that others set to rouse it, and it can be
/// asked to stop. It is never killed. Derive, implement Run so that it returns soon after m_Stop
/// was set and m_WakeEvent signalled, and call Start.
class CTSThread : public BaseSDK::AThread {
 public:
  /// `scheduler` is borrowed and outlives the thread; `param` names the thread in the message about
  /// a failed stop. Starts nothing.
  CTSThread(TaskSchedulerObject_i* scheduler, const BaseSDK::AString& param);
  /// Calls Shutdown and goes on whatever its result.
  ~CTSThread() override;

  /// Asks the thread to stop and wakes it every 100 ms, 30 times at most. True when it no longer
  /// runs, at once for one that never started; false when it was left running. The request stands
  /// for good: the thread is not started again. [any thread but this one]
  bool Shutdown();

  /// Has the thread look at its work again: the refresh flag first, then the event. [any thread]
  void Rouse();
  /// Sets the wake event only; its result. [any thread]
  int Wake();

 protected:
  // The two flags are written and read without a lock. Relaxed is enough: the event that follows a
  // write orders it for the thread that it wakes, and a reading that is one round late does no
  // harm.
  std::atomic<bool> m_Stop;
  std::atomic<bool> m_Refresh;  // raised with every change of the task map; nobody reads it
  BaseSDK::AEvent m_WakeEvent;
  TaskSchedulerObject_i* m_pScheduler;
  BaseSDK::AString m_Param;
};
