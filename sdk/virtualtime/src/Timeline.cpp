#include "Timeline.h"

#include <BaseSDK/AEvent.h>
#include <BaseSDK/ALong32.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <utility>

namespace VirtualTime {

namespace {

constexpr std::int64_t MillisecondsPerSecond = 1000;

thread_local bool isOwnThread = false;

std::int64_t RealMilliseconds() {
  timespec now{};
  // The coarse clock is the one that the system's time() reads.
  (void)clock_gettime(CLOCK_REALTIME_COARSE, &now);
  return std::int64_t{now.tv_sec} * MillisecondsPerSecond + now.tv_nsec / 1000000;
}

long SecondsOf(std::int64_t milliseconds) {
  const std::int64_t cut = milliseconds / MillisecondsPerSecond;
  return BaseSDK::Clamp32(milliseconds % MillisecondsPerSecond < 0 ? cut - 1 : cut);
}

}  // namespace

Timeline& Timeline::Instance() {
  // Never destroyed: threads may still end, and ask for the time, while the process exits.
  static Timeline& timeline = *new Timeline;
  return timeline;
}

// The clock ---------------------------------------------------------------------------------------

void Timeline::Start(long wallSeconds) {
  const Lock lock = Acquire();
  m_Controller = std::this_thread::get_id();
  m_Offset = std::int64_t{wallSeconds} * MillisecondsPerSecond - m_Steady;
  for (Alarms& alarms : m_Alarms) {
    std::erase_if(alarms, [](const auto& entry) { return entry.second.m_Wait == nullptr; });
  }
  SetSteady(m_Steady);
}

void Timeline::SetSteady(std::int64_t steady) {
  m_Steady = steady;
  m_Shown.store(m_Steady + m_Offset, std::memory_order_release);
}

std::int64_t Timeline::WallMilliseconds() const {
  const std::int64_t shown = m_Shown.load(std::memory_order_acquire);
  return shown == RealTime ? RealMilliseconds() : shown;
}

long Timeline::WallSeconds() const {
  return SecondsOf(WallMilliseconds());
}

void Timeline::MoveWall(std::int64_t milliseconds) {
  const Lock lock = Acquire();
  m_Offset += milliseconds;
  SetSteady(m_Steady);
  for (Alarms& alarms : m_Alarms) {
    std::erase_if(alarms, [this](const auto& entry) {
      ParkedWait* const wait = entry.second.m_Wait;
      const bool ends = wait != nullptr && wait->m_EndsOnClockChange;
      if (ends) {
        wait->m_State = ParkedWait::Ending;
        m_Ending.push_back(wait);
      }
      return ends;
    });
  }
  std::sort(m_Ending.begin(), m_Ending.end(), [](const ParkedWait* left, const ParkedWait* right) {
    return left->m_Number < right->m_Number;
  });
  Advance();
}

// The controller ----------------------------------------------------------------------------------

void Timeline::RunUntil(std::int64_t wallMilliseconds) {
  Lock lock = Acquire();
  m_Controller = std::this_thread::get_id();
  ParkedWait wait;
  // Never in the past, where it would come before other things that are overdue.
  (void)Park(lock, wait, Wall, std::max(wallMilliseconds, Read(Wall)), ControllerRank);
}

void Timeline::RunFor(std::int64_t milliseconds) {
  Lock lock = Acquire();
  m_Controller = std::this_thread::get_id();
  ParkedWait wait;
  (void)Park(lock, wait, Steady, Read(Steady) + milliseconds, ControllerRank);
}

void Timeline::Settle() {
  Lock lock = Acquire();
  m_Quiet.wait(lock, [this] { return IsQuiet(); });
}

void Timeline::At(std::int64_t wallMilliseconds, std::function<void()> call) {
  const Lock lock = Acquire();
  m_Alarms[Wall].emplace(Key{wallMilliseconds, CallRank, ++m_LastNumber},
                         Alarm{nullptr, std::move(call)});
}

void Timeline::Sleep(std::int64_t milliseconds) {
  Lock lock = Acquire();
  ParkedWait wait;
  (void)Park(lock, wait, Steady, Read(Steady) + std::max<std::int64_t>(milliseconds, 0));
}

std::optional<long> Timeline::NextDeadline() const {
  const Lock lock = Acquire();
  std::optional<std::int64_t> next;
  for (const Clock clock : {Steady, Wall}) {
    for (const auto& [key, alarm] : m_Alarms[clock]) {
      if (key.m_Rank == ThreadRank) {
        const std::int64_t due = DueOnSteady(clock, key);
        next = std::min(next.value_or(due), due);
        break;
      }
    }
  }
  return next ? std::optional(SecondsOf(*next + m_Offset)) : std::nullopt;
}

unsigned Timeline::ParkedThreads() const {
  const Lock lock = Acquire();
  return m_ParkedThreads;
}

// The threads -------------------------------------------------------------------------------------

void Timeline::AddThread() {
  const Lock lock = Acquire();
  ++m_Awake;
}

void Timeline::RemoveThread() {
  const Lock lock = Acquire();
  --m_Awake;
  Advance();
}

void Timeline::NoteOwnThread() {
  isOwnThread = true;
}

bool Timeline::IsOwnThread() {
  return isOwnThread;
}

int Timeline::Park(Lock& lock, ParkedWait& wait, Clock clock, std::int64_t deadline, Rank rank) {
  if (!IsStarted()) {
    WaitInRealTime(lock, wait, deadline - Read(clock));
    return wait.m_Result;
  }
  wait.m_Number = ++m_LastNumber;
  m_Alarms[clock].emplace(Key{deadline, rank, wait.m_Number}, Alarm{&wait, nullptr});
  const bool isThread = rank == ThreadRank;
  m_ParkedThreads += isThread ? 1 : 0;
  m_Awake -= isOwnThread ? 1 : 0;
  WaitForRelease(lock, wait);
  m_ParkedThreads -= isThread ? 1 : 0;
  if (!isOwnThread) {
    --m_Awake;  // takes part inside its wait only
    Advance();
  }
  return wait.m_Result;
}

void Timeline::WaitForRelease(Lock& lock, ParkedWait& wait) {
  const bool isController = std::this_thread::get_id() == m_Controller;
  if (isController) {
    m_Drive = &wait;
  }
  Advance();
  while (wait.m_State != ParkedWait::Released) {
    if (isController && m_Call) {
      MakeCall(lock, wait);
    } else {
      wait.m_Wake.wait(lock);
    }
  }
  if (isController) {
    m_Drive = nullptr;
  }
}

void Timeline::MakeCall(Lock& lock, ParkedWait& wait) {
  const std::function<void()> call = std::exchange(m_Call, nullptr);
  m_Drive = nullptr;  // the controller is out: the clock stands, and the call may let it move again
  wait.m_IsAside = true;
  lock.unlock();
  call();
  lock.lock();
  wait.m_IsAside = false;
  m_Awake += wait.m_State == ParkedWait::Released ? 1 : 0;
  m_Drive = &wait;
  Advance();
}

void Timeline::WaitInRealTime(Lock& lock, ParkedWait& wait, std::int64_t milliseconds) {
  m_ParkedThreads += 1;
  const bool released = wait.m_Wake.wait_for(lock, std::chrono::milliseconds(milliseconds),
                                             [&] { return wait.m_State == ParkedWait::Released; });
  m_ParkedThreads -= 1;
  // Release counted a thread awake that had not been counted as parked.
  m_Awake -= released ? 1 : 0;
}

void Timeline::Release(ParkedWait& wait, int result) {
  if (wait.m_State == ParkedWait::Parked) {
    Remove(wait);
  }
  wait.m_State = ParkedWait::Released;
  wait.m_Result = result;
  m_Awake += wait.m_IsAside ? 0 : 1;
  wait.m_Wake.notify_one();
}

void Timeline::Remove(const ParkedWait& wait) {
  for (Alarms& alarms : m_Alarms) {
    std::erase_if(alarms, [&](const auto& entry) { return entry.second.m_Wait == &wait; });
  }
}

// The move ----------------------------------------------------------------------------------------

void Timeline::Advance() {
  while (m_Awake == 0 && FireNext()) {
  }
  if (IsQuiet()) {
    m_Quiet.notify_all();
  }
}

bool Timeline::FireNext() {
  if (!m_Ending.empty()) {
    ParkedWait& ending = *m_Ending.front();
    m_Ending.pop_front();
    Release(ending, BaseSDK::AEvent::ClockChanged);
    return true;
  }
  const std::optional<Clock> clock = NextClock();
  if (m_Drive == nullptr || m_Call || !clock) {
    return false;
  }
  Fire(*clock);
  return true;
}

void Timeline::Fire(Clock clock) {
  const auto next = m_Alarms[clock].begin();
  SetSteady(std::max(m_Steady, DueOnSteady(clock, next->first)));
  Alarm alarm = std::move(next->second);
  m_Alarms[clock].erase(next);
  if (alarm.m_Wait != nullptr) {
    Release(*alarm.m_Wait, BaseSDK::AEvent::TimedOut);
  } else {
    m_Call = std::move(alarm.m_Call);
    m_Drive->m_Wake.notify_one();
  }
}

std::optional<Timeline::Clock> Timeline::NextClock() const {
  const Alarms& steady = m_Alarms[Steady];
  const Alarms& wall = m_Alarms[Wall];
  if (steady.empty() || wall.empty()) {
    return !steady.empty() ? std::optional(Steady)
           : !wall.empty() ? std::optional(Wall)
                           : std::nullopt;
  }
  Key first = wall.begin()->first;
  first.m_Due = DueOnSteady(Wall, first);
  return first < steady.begin()->first ? Wall : Steady;
}

std::int64_t Timeline::DueOnSteady(Clock clock, const Key& key) const {
  return clock == Wall ? key.m_Due - m_Offset : key.m_Due;
}

}  // namespace VirtualTime
