#include "Timeline.h"

#include <VirtualTime/VirtualClock.h>

#include <utility>

namespace VirtualTime {

VirtualClock& VirtualClock::Instance() {
  static VirtualClock clock;
  return clock;
}

void VirtualClock::Start(long now) {
  Timeline::Instance().Start(now);
}

long VirtualClock::Now() const {
  return Timeline::Instance().WallSeconds();
}

std::int64_t VirtualClock::NowMilliseconds() const {
  return Timeline::Instance().WallMilliseconds();
}

void VirtualClock::RunUntil(long wallSeconds) {
  Timeline::Instance().RunUntil(std::int64_t{wallSeconds} * 1000);
}

void VirtualClock::RunFor(std::int64_t milliseconds) {
  Timeline::Instance().RunFor(milliseconds);
}

void VirtualClock::Settle() {
  Timeline::Instance().Settle();
}

void VirtualClock::StepWallClock(long seconds) {
  Timeline::Instance().MoveWall(std::int64_t{seconds} * 1000);
}

void VirtualClock::Suspend(long seconds) {
  Timeline::Instance().MoveWall(std::int64_t{seconds} * 1000);
}

void VirtualClock::At(long wallSeconds, std::function<void()> call) {
  Timeline::Instance().At(std::int64_t{wallSeconds} * 1000, std::move(call));
}

void VirtualClock::Sleep(std::int64_t milliseconds) {
  Timeline::Instance().Sleep(milliseconds);
}

std::optional<long> VirtualClock::NextDeadline() const {
  return Timeline::Instance().NextDeadline();
}

unsigned VirtualClock::ParkedThreads() const {
  return Timeline::Instance().ParkedThreads();
}

}  // namespace VirtualTime
