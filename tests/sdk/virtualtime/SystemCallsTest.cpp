#include <VirtualTime/VirtualClock.h>

#include <gtest/gtest.h>

#include <sys/select.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace {

using VirtualTime::VirtualClock;

class SystemCalls : public testing::Test {
 protected:
  static constexpr long Begin = 1109664000;

  SystemCalls() { m_Clock.Start(Begin); }
  std::int64_t SinceBegin() const { return m_Clock.NowMilliseconds() - std::int64_t{Begin} * 1000; }
  VirtualClock& m_Clock = VirtualClock::Instance();
};

TEST_F(SystemCalls, SelectWithoutDescriptorsIsASleep) {
  timeval timeout{0, 100000};
  EXPECT_EQ(select(0, nullptr, nullptr, nullptr, &timeout), 0);
  EXPECT_EQ(SinceBegin(), 100);
  EXPECT_EQ(timeout.tv_sec, 0);
  EXPECT_EQ(timeout.tv_usec, 0);
}

TEST_F(SystemCalls, SelectSleepsNoLessThanAskedFor) {
  timeval timeout{2, 1};
  EXPECT_EQ(select(0, nullptr, nullptr, nullptr, &timeout), 0);
  EXPECT_EQ(SinceBegin(), 2001);
}

TEST_F(SystemCalls, SelectWithDescriptorsIsTheSystems) {
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe(ends.data()), 0);
  fd_set readable;
  FD_ZERO(&readable);
  FD_SET(ends[0], &readable);
  timeval none{0, 0};
  EXPECT_EQ(select(ends[0] + 1, &readable, nullptr, nullptr, &none), 0);
  ASSERT_EQ(write(ends[1], "x", 1), 1);
  FD_SET(ends[0], &readable);
  EXPECT_EQ(select(ends[0] + 1, &readable, nullptr, nullptr, nullptr), 1);
  EXPECT_TRUE(FD_ISSET(ends[0], &readable));
  EXPECT_EQ(SinceBegin(), 0);
  (void)close(ends[0]);
  (void)close(ends[1]);
  errno = 0;
  FD_SET(ends[0], &readable);
  EXPECT_EQ(select(ends[0] + 1, &readable, nullptr, nullptr, &none), -1);
  EXPECT_EQ(errno, EBADF);
}

}  // namespace
