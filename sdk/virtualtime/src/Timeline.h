#pragma once

#include <atomic>
#include <compare>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <thread>

namespace VirtualTime {

/// A thread's wait. It lives on that thread's stack; the timeline's lock guards all of it.
struct ParkedWait {
  /// Ending: a change of the clock has ended it, and its thread has yet to be woken. Released: its
  /// thread goes on.
  enum State { Parked, Ending, Released };

  bool m_EndsOnClockChange = false;
  State m_State = Parked;
  bool m_IsAside = false;  ///< its thread, the controller, is busy with a call meanwhile
  int m_Result = 0;
  std::uint64_t m_Number = 0;  ///< the earlier began first
  std::condition_variable m_Wake;
};

/// The one time of the process: what VirtualClock offers, what waits park on.
///
/// There are two clocks, in milliseconds: the steady one, which only runs, and the wall clock,
/// which is the steady one plus an offset that steps change. Each keeps its own deadlines, so that
/// a step moves none of them. The thread that parks last moves the clock; when the next to wake is
/// itself, no other thread runs at all, which is what makes a year of hourly wake-ups cheap.
class Timeline {
 public:
  enum Clock { Steady, Wall };
  /// What comes first of several things that are due at the same moment.
  enum Rank { CallRank, ThreadRank, ControllerRank };
  using Lock = std::unique_lock<std::mutex>;

  static Timeline& Instance();

  // VirtualClock describes these; times are in milliseconds unless they say otherwise.
  void Start(long wallSeconds);
  bool IsStarted() const { return m_Shown.load(std::memory_order_acquire) != RealTime; }
  /// Before Start, what the real wall clock shows.
  long WallSeconds() const;
  std::int64_t WallMilliseconds() const;

  void RunUntil(std::int64_t wallMilliseconds);
  void RunFor(std::int64_t milliseconds);
  void Settle();
  void MoveWall(std::int64_t milliseconds);
  void At(std::int64_t wallMilliseconds, std::function<void()> call);
  void Sleep(std::int64_t milliseconds);
  std::optional<long> NextDeadline() const;
  unsigned ParkedThreads() const;

  /// A thread takes part from now on. The starting thread calls this, before the new one exists.
  void AddThread();
  /// A thread takes part no longer. It calls this at its end; the starting thread calls it instead
  /// when the new one could not be created.
  void RemoveThread();
  /// The calling thread says that it is one of those that AddThread counted.
  static void NoteOwnThread();
  static bool IsOwnThread();

  // For AEvent, which keeps its state under this lock as well. --------------------------------

  Lock Acquire() const { return Lock(m_Mutex); }
  std::int64_t Read(Clock clock) const { return clock == Wall ? m_Steady + m_Offset : m_Steady; }
  /// Parks the calling thread in `wait` until Release or the deadline, which is a reading of
  /// `clock`, and returns the result of the wait. Gives `lock` back meanwhile.
  int Park(Lock& lock, ParkedWait& wait, Clock clock, std::int64_t deadline,
           Rank rank = ThreadRank);
  /// Ends a wait: from here on its thread counts as awake, whenever the system lets it run.
  void Release(ParkedWait& wait, int result);

 private:
  struct Key {
    std::int64_t m_Due;
    Rank m_Rank;
    std::uint64_t m_Number;  ///< the earlier first
    auto operator<=>(const Key&) const = default;
  };
  struct Alarm {
    ParkedWait* m_Wait;  ///< or, when null,
    std::function<void()> m_Call;
  };
  using Alarms = std::map<Key, Alarm>;

  static constexpr std::int64_t RealTime = INT64_MIN;

  Timeline() = default;

  bool IsQuiet() const { return m_Awake == 0 && m_Ending.empty(); }
  void Advance();
  bool FireNext();
  void Fire(Clock clock);
  std::optional<Clock> NextClock() const;
  std::int64_t DueOnSteady(Clock clock, const Key& key) const;
  void Remove(const ParkedWait& wait);
  void SetSteady(std::int64_t steady);
  void WaitForRelease(Lock& lock, ParkedWait& wait);
  void WaitInRealTime(Lock& lock, ParkedWait& wait, std::int64_t milliseconds);
  void MakeCall(Lock& lock, ParkedWait& wait);

  mutable std::mutex m_Mutex;  ///< guards everything below but m_Shown, which only it may write
  std::atomic<std::int64_t> m_Shown{RealTime};  ///< wall clock; read without the lock by time()

  std::int64_t m_Steady = 0;
  std::int64_t m_Offset = 0;
  Alarms m_Alarms[2];  ///< by Clock
  std::uint64_t m_LastNumber = 0;
  std::deque<ParkedWait*> m_Ending;  ///< ended by a change of the clock, woken one after the other
  std::function<void()> m_Call;      ///< due, and not yet made by the controller
  int m_Awake = 0;                   ///< threads that take part and are not parked
  unsigned m_ParkedThreads = 0;
  std::thread::id m_Controller;
  ParkedWait* m_Drive = nullptr;  ///< the controller's wait while it lets the clock move
  std::condition_variable m_Quiet;
};

}  // namespace VirtualTime
