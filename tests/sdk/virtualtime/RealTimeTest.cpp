// What the library does before Start. Another test of this program may have called Start already,
// so each of these runs in a process of its own.
#include "tests/support/BodyThread.h"

#include <BaseSDK/AEvent.h>
#include <VirtualTime/VirtualClock.h>

#include <gtest/gtest.h>

#include <sys/select.h>

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <functional>

namespace {

using BaseSDK::AEvent;
using TestSupport::BodyThread;

long RealSeconds() {
  return static_cast<long>(std::chrono::system_clock::to_time_t(std::chrono::system_clock::now()));
}

[[noreturn]] void ExitWith(bool good) {
  std::exit(good ? 0 : 1);
}

class BeforeStart : public testing::Test {
 protected:
  BeforeStart() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(BeforeStart, TimeIsTheSystems) {
  EXPECT_EXIT(
      {
        const long before = RealSeconds();
        const long now = std::time(nullptr);
        ExitWith(now >= before - 1 && now <= RealSeconds());
      },
      testing::ExitedWithCode(0), "");
}

TEST_F(BeforeStart, SelectSleepsForReal) {
  EXPECT_EXIT(
      {
        const auto before = std::chrono::steady_clock::now();
        timeval timeout{};
        timeout.tv_usec = 2000;
        const int result = select(0, nullptr, nullptr, nullptr, &timeout);
        ExitWith(result == 0 &&
                 std::chrono::steady_clock::now() - before >= std::chrono::milliseconds(2));
      },
      testing::ExitedWithCode(0), "");
}

TEST_F(BeforeStart, WaitTimesOutForReal) {
  EXPECT_EXIT(
      {
        AEvent event(AEvent::AutoReset);
        const auto before = std::chrono::steady_clock::now();
        const int result = event.Wait(2, BaseSDK::ClockSkewIgnore);
        ExitWith(result == AEvent::TimedOut &&
                 std::chrono::steady_clock::now() - before >= std::chrono::milliseconds(2));
      },
      testing::ExitedWithCode(0), "");
}

TEST_F(BeforeStart, WaitIsEndedBySetAndVirtualTimeCanFollow) {
  EXPECT_EXIT(
      {
        AEvent event(AEvent::AutoReset);
        int result = -1;
        {
          BodyThread thread([&] { result = event.Wait(3600000, BaseSDK::ClockSkewIgnore); });
          (void)event.Set();
        }
        auto& clock = VirtualTime::VirtualClock::Instance();
        clock.Start(1000);
        clock.RunFor(5000);  // comes back only if no thread is still counted
        ExitWith(result == AEvent::WasSet && std::time(nullptr) == 1005);
      },
      testing::ExitedWithCode(0), "");
}

}  // namespace
