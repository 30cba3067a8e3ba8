#include "tests/sdk/base/ScratchDirectory.h"

#include <BaseSDK/AEvent.h>
#include <BaseSDK/ASystemZone.h>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
// The C library guards its zone by a lock of its own, which the sanitizer does not see: it takes
// the texts that one thread frees and another makes there for a race. Of this test alone.
extern "C" const char* __tsan_default_suppressions() {
  return "race:ASystemZoneTest_IsTheOldOneOrTheNewOneForOtherThreads_Test";
}
#endif
#endif

namespace {

using BaseSDK::AEvent;
using BaseSDK::AString;
using BaseSDK::ASystemZone;
using BaseSDK::ScratchDirectory;

constexpr long Hour = 3600;

/// A compiled zone without clock changes, so many seconds east of UTC.
std::string ZoneBytes(long offset) {
  std::string bytes = "TZif" + std::string(16, '\0');
  const auto add = [&](unsigned long number) {
    for (const int shift : {24, 16, 8, 0}) {
      bytes += static_cast<char>((number >> shift) & 0xFF);
    }
  };
  for (const unsigned long count : {0UL, 0UL, 0UL, 0UL, 1UL, 4UL}) {  // one type, four characters
    add(count);
  }
  add(static_cast<unsigned long>(offset));
  return bytes + std::string(2, '\0') + std::string("ABC\0", 4);
}

/// The zone is held for the rest of the process, so each test has one of its own.
class ASystemZoneTest : public testing::Test {
 protected:
  void Write(const std::string& name, long offset) const {
    m_Directory.Put(name, ZoneBytes(offset));
  }
  /// Puts another file in the place of the zone's.
  void Replace(long offset) const {
    Write("new", offset);
    std::filesystem::rename(Path("new"), Path("localtime"));
  }
  std::string Path(const std::string& name) const { return m_Directory.Name(name).ToUtf8(); }
  void Hold() const { ASystemZone::Hold(Path("localtime").c_str()); }

  /// Runs a part of the test in a child process, in which no zone is set.
  static void InChild(const std::function<void()>& body) {
    EXPECT_EXIT(
        {
          (void)unsetenv("TZ");
          body();
          (void)std::fflush(stdout);
          _exit(testing::Test::HasFailure() ? 1 : 0);
        },
        testing::ExitedWithCode(0), "");
  }
  /// How far local time is east of UTC.
  static long Offset() {
    std::tm fields{};
    fields.tm_year = 100;
    fields.tm_mday = 1;
    return 946684800L - static_cast<long>(std::mktime(&fields));
  }

  const ScratchDirectory m_Directory;
};

TEST_F(ASystemZoneTest, IsTheZoneOfTheFileWithoutOneInTheEnvironment) {
  Write("localtime", 5 * Hour);
  InChild([&] {
    Hold();
    EXPECT_TRUE(ASystemZone::IsHeld());
    EXPECT_EQ(Offset(), 5 * Hour);
    const char* const variable = std::getenv("TZ");
    ASSERT_NE(variable, nullptr);
    EXPECT_EQ(variable[0], ':');
    EXPECT_TRUE(std::filesystem::equivalent(variable + 1, Path("localtime")));
  });
}

TEST_F(ASystemZoneTest, IsTheAdministratorsWhenHeSetsOne) {
  Write("localtime", 5 * Hour);
  InChild([&] {
    ASSERT_EQ(setenv("TZ", "XYZ-3", 1), 0);
    Hold();
    EXPECT_FALSE(ASystemZone::IsHeld());
    Replace(7 * Hour);
    ASystemZone::Refresh();
    EXPECT_STREQ(std::getenv("TZ"), "XYZ-3");
    EXPECT_EQ(Offset(), 3 * Hour);
    EXPECT_EQ(ASystemZone::Value(), AString("XYZ-3"));
    EXPECT_EQ(ASystemZone::Name(), AString("XYZ-3"));
  });
}

TEST_F(ASystemZoneTest, IsReadAnewWhenAnotherFileIsThere) {
  Write("localtime", 5 * Hour);
  InChild([&] {
    Hold();
    for (const long offset : {7 * Hour, -2 * Hour, 0L}) {
      const long before = Offset();
      Replace(offset);
      EXPECT_EQ(Offset(), before) << "no conversion looks at the file";
      ASystemZone::Refresh();
      EXPECT_EQ(Offset(), offset);
      ASystemZone::Refresh();
      EXPECT_EQ(Offset(), offset);
    }
  });
}

TEST_F(ASystemZoneTest, IsReadAnewWhenTheLinkPointsElsewhere) {
  Write("one", Hour);
  Write("two", 2 * Hour);
  std::filesystem::create_symlink("one", Path("localtime"));
  InChild([&] {
    Hold();
    EXPECT_EQ(Offset(), Hour);
    std::filesystem::remove(Path("localtime"));
    std::filesystem::create_symlink("two", Path("localtime"));
    ASystemZone::Refresh();
    EXPECT_EQ(Offset(), 2 * Hour);
  });
}

TEST_F(ASystemZoneTest, IsReadAnewWhenTheFileWasWrittenOver) {
  Write("localtime", 5 * Hour);
  const timespec longAgo[] = {{1000000000, 0}, {1000000000, 0}};
  ASSERT_EQ(utimensat(AT_FDCWD, Path("localtime").c_str(), longAgo, 0), 0);
  InChild([&] {
    Hold();
    EXPECT_EQ(Offset(), 5 * Hour);
    Write("localtime", 6 * Hour);
    ASystemZone::Refresh();
    EXPECT_EQ(Offset(), 6 * Hour);
  });
}

TEST_F(ASystemZoneTest, IsUtcWhileThereIsNoFile) {
  InChild([&] {
    Hold();
    EXPECT_EQ(Offset(), 0);
    Replace(5 * Hour);
    ASystemZone::Refresh();
    EXPECT_EQ(Offset(), 5 * Hour);
    std::filesystem::remove(Path("localtime"));
    ASystemZone::Refresh();
    EXPECT_EQ(Offset(), 0);
  });
}

TEST_F(ASystemZoneTest, IsLookedForByWaitsThatWatchTheWallClock) {
  Write("localtime", 5 * Hour);
  InChild([&] {
    Hold();
    EXPECT_EQ(Offset(), 5 * Hour);
    AEvent event(AEvent::AutoReset);
    Replace(7 * Hour);
    (void)event.Wait(0, BaseSDK::ClockSkewIgnore);
    EXPECT_EQ(Offset(), 5 * Hour);
    (void)event.Wait(0, BaseSDK::ClockSkewEndOnSet);
    EXPECT_EQ(Offset(), 7 * Hour) << "of no length";
    Replace(8 * Hour);
    (void)event.Set();
    (void)event.Wait(1000, BaseSDK::ClockSkewEndOnSet);
    EXPECT_EQ(Offset(), 8 * Hour) << "that was set";
    Replace(9 * Hour);
    (void)event.Wait(1, BaseSDK::ClockSkewEndOnSet);
    EXPECT_EQ(Offset(), 9 * Hour) << "that ran its time";
  });
}

TEST_F(ASystemZoneTest, IsTheOldOneOrTheNewOneForOtherThreads) {
  Write("localtime", 5 * Hour);
  InChild([&] {
    Hold();
    std::atomic<bool> end = false;
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 2; ++i) {
      threads.emplace_back([&] {
        while (!end) {
          const long offset = Offset();
          wrong += offset == 5 * Hour || offset == 6 * Hour ? 0 : 1;
        }
      });
    }
    for (int round = 0; round < 200; ++round) {
      Replace((round % 2 == 0 ? 6 : 5) * Hour);
      ASystemZone::Refresh();
    }
    end = true;
    for (std::thread& thread : threads) {
      thread.join();
    }
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(Offset(), 5 * Hour);
  });
}

TEST_F(ASystemZoneTest, HasTheNameThatTheLinkSays) {
  std::filesystem::create_directories(Path("zoneinfo/Area"));
  Write("zoneinfo/Area/Town", Hour);
  std::filesystem::create_symlink("zoneinfo/Area/Town", Path("localtime"));
  InChild([&] {
    Hold();
    EXPECT_EQ(ASystemZone::Value(), AString((":" + Path("localtime")).c_str()));
    EXPECT_EQ(ASystemZone::Name(), AString("Area/Town"));
    std::filesystem::remove(Path("localtime"));
    Write("localtime", Hour);
    EXPECT_EQ(ASystemZone::Name(), AString(Path("localtime").c_str())) << "no link";
  });
}

TEST_F(ASystemZoneTest, HasTheNameThatTheEnvironmentSays) {
  for (const char* variable : {"Area/Town", ":Area/Town"}) {
    InChild([&] {
      ASSERT_EQ(setenv("TZ", variable, 1), 0);
      Hold();
      EXPECT_EQ(ASystemZone::Value(), AString(variable));
      EXPECT_EQ(ASystemZone::Name(), AString("Area/Town"));
    });
  }
}

}  // namespace
