#include "scheduler/TSThread.h"

#include "Common/Log.h"

#include <sys/select.h>

using BaseSDK::AString;

namespace {

/// The host's reset mode in which one wait consumes the set event.
constexpr int ResetByOneWait = 0;

constexpr int MaxWakeUps = 30;
constexpr long WakeUpPauseMicroseconds = 100000;

void Pause() {
  timeval timeout = {0, WakeUpPauseMicroseconds};
  // A pause cut short by a signal only brings the next wake-up earlier.
  (void)select(0, nullptr, nullptr, nullptr, &timeout);
}

}  // namespace

CTSThread::CTSThread(TaskSchedulerObject_i* scheduler, const AString& param)
    : m_Stop(false),
      m_Refresh(false),
      m_WakeEvent(ResetByOneWait),
      m_pScheduler(scheduler),
      m_Param(param) {}

CTSThread::~CTSThread() {
  (void)Shutdown();
}

bool CTSThread::Shutdown() {
  m_Stop.store(true, std::memory_order_relaxed);
  for (int wakeUpsLeft = MaxWakeUps; IsRunning(); --wakeUpsLeft) {
    if (wakeUpsLeft == 0) {
      PLUGIN_LOG(Scheduler, Information,
                 AString(L"Failed to stop the thread with Param = \"%1\"").Arg(m_Param));
      return false;
    }
    // Set before every pause: the thread may have used up the last wake-up between its look at the
    // stop flag and its wait.
    (void)Wake();
    Pause();
  }
  return true;
}

void CTSThread::Rouse() {
  m_Refresh.store(true, std::memory_order_relaxed);
  (void)Wake();
}

int CTSThread::Wake() {
  return m_WakeEvent.Set();
}
