// The zone in memory against the C library: in every zone of the system's data, around every change
// of the clock and in between.
#include "model/LocalZone.h"
#include "tests/proof/ClockChanges.h"
#include "tests/proof/OwnProcess.h"
#include "tests/proof/SystemZones.h"
#include "tests/support/EnvironmentNumber.h"
#include "tests/support/LocalTimes.h"

#include <BaseSDK/ALong32.h>
#include <VirtualTime/Zone.h>

#include <gtest/gtest.h>

#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

namespace {

using Nox::LocalTime;
using Nox::LocalZone;
using Nox::Long32Max;
using Nox::Long32Min;
using TestSupport::Day;
using TestSupport::EnvironmentNumber;

// The C library is asked this often whether its clock has changed. NOX_PROBE_SECONDS sets another
// stride: 3600 is a proof of some minutes.
long ProbeSeconds() {
  return EnvironmentNumber("NOX_PROBE_SECONDS", 2 * Day);
}

std::tm Fields(long moment) {
  const std::time_t time = moment;
  std::tm fields{};
  (void)localtime_r(&time, &fields);
  return fields;
}

LocalTime Shown(const std::tm& fields) {
  namespace chrono = std::chrono;
  const chrono::local_days day{chrono::year(fields.tm_year + 1900) /
                               chrono::month(static_cast<unsigned>(fields.tm_mon + 1)) /
                               chrono::day(static_cast<unsigned>(fields.tm_mday))};
  return {static_cast<long>(day.time_since_epoch().count()),
          fields.tm_hour * 3600L + fields.tm_min * 60L + fields.tm_sec};
}

bool IsSame(const LocalTime& a, const LocalTime& b) {
  return a.m_Day == b.m_Day && a.m_Second == b.m_Second;
}

// Asks the zone in memory and the C library the same.
class Contest {
 public:
  void AskMoment(long moment) {
    const LocalTime given = m_Zone.LocalTimeAt(moment), wanted = Shown(Fields(moment));
    if (!IsSame(given, wanted)) {
      ADD_FAILURE() << moment << " is day " << wanted.m_Day << " second " << wanted.m_Second
                    << ", not day " << given.m_Day << " second " << given.m_Second;
    }
  }

  void AskLocalTime(const LocalTime& local) {
    std::tm fields{};
    fields.tm_year = 70;
    fields.tm_mday = 1 + static_cast<int>(local.m_Day);
    fields.tm_hour = static_cast<int>(local.m_Second / 3600);
    fields.tm_min = static_cast<int>(local.m_Second / 60 % 60);
    fields.tm_sec = static_cast<int>(local.m_Second % 60);
    fields.tm_isdst = -1;
    const long given = m_Zone.MomentOf(local), wanted = BaseSDK::MakeTime32(fields);
    if (given != wanted) {
      ADD_FAILURE() << "day " << local.m_Day << " second " << local.m_Second << " is " << wanted
                    << ", not " << given;
    }
  }

  // Both ways: the moment, and the local times that the clocks before and after it show then.
  void AskAround(long change) {
    for (const long away : {0L, 1L, 1799L, 3599L, 3600L, 9000L, Day - 1, Day + 3600}) {
      for (const std::int64_t moment :
           {std::int64_t{change} - away, std::int64_t{change} + away - 1}) {
        const long at = Nox::Clamp32(moment);
        AskMoment(at);
        const LocalTime shown = m_Zone.LocalTimeAt(at);
        const LocalTime before = AtClockOf(Nox::Sub32(change, 1), at);
        const LocalTime after = AtClockOf(change, at);
        AskLocalTime(shown);
        if (!IsSame(before, shown)) {
          AskLocalTime(before);
        }
        if (!IsSame(after, shown) && !IsSame(after, before)) {
          AskLocalTime(after);
        }
      }
    }
  }

 private:
  // What is shown at `moment` by a clock that is set as the zone's clock is at `set`.
  LocalTime AtClockOf(long set, long moment) const {
    const LocalTime shown = m_Zone.LocalTimeAt(set);
    const std::int64_t second = shown.m_Second + (std::int64_t{moment} - set);
    const auto days = static_cast<long>(second / Day - (second % Day < 0 ? 1 : 0));
    return {shown.m_Day + days, static_cast<long>(second - std::int64_t{days} * Day)};
  }

  const LocalZone m_Zone;
};

void CompareZone(const std::string& name) {
  const VirtualTime::Zone zone(name.c_str());
  SCOPED_TRACE(name);
  Contest contest;
  for (const long change : ClockChangesOf32Bits(ProbeSeconds())) {
    contest.AskAround(change);
    if (::testing::Test::HasFailure()) {
      return;
    }
  }
  for (long at = Long32Min; at < Long32Max - 40 * Day; at += 37 * Day + 3607) {
    contest.AskMoment(at);
    contest.AskLocalTime(Shown(Fields(at)));
  }
}

// Puts the zone in the place of the machine's, for this process alone.
bool BecomeMachinesZone(const char* name) {
  const std::string file = std::string("/usr/share/zoneinfo/") + name;
  return mount(file.c_str(), "/etc/localtime", nullptr, MS_BIND, nullptr) == 0;
}

// Whether a change is seen at the next look and not before. Who may not mount anything cannot make
// one: there it is left to see that a look without a change finds the same zone.
bool FollowsTheMachine() {
  const auto hour = [] { return LocalZone::InForce().LocalTimeAt(0).m_Second / 3600; };
  (void)unsetenv("TZ");
  LocalZone::Refresh();
  if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0 || !BecomeMachinesZone("Asia/Kolkata")) {
    const LocalZone* const before = &LocalZone::InForce();
    LocalZone::Refresh();
    return before == &LocalZone::InForce();
  }
  LocalZone::Refresh();
  const bool first = hour() == 5;
  const bool changed = BecomeMachinesZone("Asia/Tokyo");
  const bool kept = hour() == 5;
  LocalZone::Refresh();
  return first && changed && kept && hour() == 9;
}

TEST(LocalZoneProof, TheMachinesNewZoneCountsFromTheNextLookOn) {
  const pid_t child = fork();
  ASSERT_NE(child, -1);
  if (child == 0) {
    std::_Exit(FollowsTheMachine() ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0);
}

class LocalZonesProof : public ::testing::TestWithParam<int> {};

TEST_P(LocalZonesProof, SaysWhatTheCLibrarySays) {
  std::vector<std::string> zones = SystemZones();
  ASSERT_GT(zones.size(), 100U) << "the system's zone data is missing";
  for (const char* rule :
       {TestSupport::NewYork, TestSupport::SaoPaulo, TestSupport::LordHowe, TestSupport::Dublin,
        TestSupport::Utc, "<-14>14", "<+14>-14", "<+24>-24:59:59"}) {
    zones.emplace_back(rule);
  }
  for (std::size_t i = static_cast<std::size_t>(GetParam()); i < zones.size();
       i += 4 * NOX_ZONE_STRIDE) {
    InOwnProcess([&] { CompareZone(zones[i]); });
  }
}

INSTANTIATE_TEST_SUITE_P(Quarter, LocalZonesProof, ::testing::Range(0, 4));

}  // namespace
