#pragma once

#include <cstdint>
#include <functional>
#include <optional>

namespace VirtualTime {

/// The clock of a process that owns its time. Linked into an executable, this library answers
/// `time()` (so `BaseSDK::ADateTime::Now` too), `select()` without descriptors and every wait on a
/// `BaseSDK::AEvent`, of the executable and of the shared objects that it loads. Nothing sleeps: a
/// wait moves the clock to the earliest deadline as soon as every thread that takes part is parked.
///
/// Taking part are every BaseSDK::AThread, from Start until its Run has returned, and any other
/// thread while it is inside Sleep or AEvent::Wait. Parked is a thread in such a wait; one that
/// blocks on a mutex, a file or a join is not parked, and keeps the clock from moving.
///
/// The controller is the thread that called Start, RunUntil or RunFor last. The clock moves only
/// while the controller is inside RunUntil, RunFor, Sleep (or `select`) or AEvent::Wait, and stands
/// still whenever it is not. At one instant the order is fixed: calls given to At first, then the
/// waits that end in the order in which they began, each woken when the one before it has parked
/// again, and at last the controller's RunUntil or RunFor.
///
///     auto& clock = VirtualTime::VirtualClock::Instance();
///     clock.Start(1109664000);
///     plugin.Start();                  // parks in AEvent::Wait
///     clock.RunUntil(1109664000 + 3600);
///
/// Before Start all of this goes by real time. `localtime_r`, `mktime` and the fine clocks of the
/// system are untouched; see Zone for the zone. All operations may be called from any thread unless
/// they say otherwise.
class VirtualClock {
 public:
  /// The one clock of the process.
  static VirtualClock& Instance();

  VirtualClock(const VirtualClock&) = delete;
  VirtualClock& operator=(const VirtualClock&) = delete;

  /// Takes time over, with the wall clock at `now` (seconds since the epoch); the calling thread
  /// becomes the controller. What At still held is dropped. A wait under way on the wall clock ends
  /// by the new reading, any other keeps what was left of it.
  void Start(long now);

  /// What `time()` answers: whole seconds, kept inside the signed 32-bit range.
  long Now() const;
  /// The same clock, finer and without that bound.
  std::int64_t NowMilliseconds() const;

  /// Lets the clock move until the wall clock shows `wallSeconds` and everything due by then has
  /// happened, all threads that take part being parked again. With a time that has passed this only
  /// lets happen what is due now.
  void RunUntil(long wallSeconds);
  /// The same for a span on the machine's steady clock, whatever the wall clock does meanwhile.
  void RunFor(std::int64_t milliseconds);
  /// Waits until all threads that take part are parked; the clock stands still. Not to be called by
  /// a thread that takes part.
  void Settle();

  /// Sets the wall clock forward, or back when negative. Waits that asked for the end of either
  /// kind (ClockSkewEndOnSet, ClockSkewEndOnResume: the system does not tell them apart) end with
  /// AEvent::ClockChanged. Other waits with a skew behaviour keep their deadline on the wall clock,
  /// so a step past it ends them. Plain waits, Sleep and RunFor do not notice.
  void StepWallClock(long seconds);
  /// As if the machine had slept for that long: the wall clock is later by it, the steady clock is
  /// not. Waits end or go on as with StepWallClock.
  void Suspend(long seconds);

  /// Has `call` made on the controller's thread when the wall clock gets to `wallSeconds`, or at
  /// once when the controller next lets time move and that has passed. Time stands still during the
  /// call; it may use this clock in every way, but must not throw.
  void At(long wallSeconds, std::function<void()> call);

  /// Parks the calling thread for that long on the steady clock.
  void Sleep(std::int64_t milliseconds);

  /// When the first of the parked threads will wake by itself, as the wall clock will show it;
  /// nothing when none has a deadline. RunUntil, RunFor and At do not count.
  std::optional<long> NextDeadline() const;
  /// How many threads are parked now; the controller inside RunUntil or RunFor does not count.
  unsigned ParkedThreads() const;

 private:
  VirtualClock() = default;
};

}  // namespace VirtualTime
