// Ten years of runs in every zone that the system knows: they end, and they only go forward.
#include "model/TaskTrigger.h"
#include "tests/proof/ClockChanges.h"
#include "tests/proof/OwnProcess.h"
#include "tests/proof/SystemZones.h"
#include "tests/support/TempDir.h"

#include <VirtualTime/VirtualClock.h>
#include <VirtualTime/Zone.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
constexpr long TenYears = 3653L * 86400;
// The begin, ten years, and what the search for a next run looks at, with room for any offset.
constexpr long SweepStart = 1109635200 - 3L * 86400;  // 2005-03-01 UTC
constexpr long SweepEnd = SweepStart + TenYears + 100L * 86400;
constexpr long LongestSleep = 86400;

// All that the sweep can see of a zone. No clock changes twice in a week.
std::string ClockOverTheSweep(const std::string& zone) {
  const VirtualTime::Zone set(zone.c_str());
  std::vector<long> moments = ClockChanges(SweepStart, SweepEnd, 7L * 86400);
  moments.insert(moments.begin(), SweepStart);
  std::ostringstream text;
  for (const long moment : moments) {
    const ClockSetting setting = ClockSettingAt(moment);
    text << moment << ' ' << setting.m_OffsetFromUtc << ' ' << setting.m_IsDaylight << ' ';
  }
  return text.str();
}

// One name for each different clock: zones that have agreed ever since would repeat the sweep.
void WriteDifferentZones(const fs::path& file) {
  std::map<std::string, std::string> byClock;
  for (const std::string& zone : SystemZones()) {
    byClock.emplace(ClockOverTheSweep(zone), zone);
  }
  std::ofstream names(file);
  for (const auto& [clock, zone] : byClock) {
    names << zone << '\n';
  }
}

std::vector<std::string> DifferentZones() {
  const TestSupport::TempDir directory;
  InOwnProcess([&] { WriteDifferentZones(directory / "zones"); });
  std::istringstream names(directory.Read("zones"));
  return {std::istream_iterator<std::string>(names), {}};
}

const char* const kinds[] = {
    R"(Type="0")",
    R"(Type="1")",
    R"(Type="2")",
    R"(Type="3")",
    R"(Type="4")",
    R"(Type="-2")",
    R"(Type="1" Interval="720" Duration="1200")",
    R"(Type="2" Interval="300" Duration="3000")",
};
const char* const clocks[] = {"00:00:00", "02:30:00", "23:30:00"};

std::string TriggerXml(const char* kind, const char* clock) {
  return std::string("<Trigger ") + kind + "><BeginDate>2005/03/01 " + clock +
         "</BeginDate><DaysInterval>1</DaysInterval><WeeksInterval>2</WeeksInterval>"
         "<DaysOfWeek>73</DaysOfWeek><DaysOfMonth>1610612737</DaysOfMonth>"
         "<MonthsOfYear>4095</MonthsOfYear><Week>5</Week></Trigger>";
}

// Runs the trigger as a monitor would that sleeps until the trigger's own next run.
void RunTenYears(const std::string& xml) {
  long lastRun = -1;
  CTaskTrigger trigger(BaseSDK::AString::FromUtf8(xml), &lastRun);
  ASSERT_FALSE(trigger.m_Disabled) << xml;
  auto& clock = VirtualTime::VirtualClock::Instance();
  const long end = trigger.m_BeginDate + TenYears;
  for (long now = trigger.m_BeginDate; now < end;) {
    clock.Start(now);
    long sleepSeconds = LongestSleep;
    bool late = false, expired = false, changed = false;
    if (trigger.IsDue(false, false, sleepSeconds, late, expired, changed)) {
      ASSERT_LT(lastRun, now) << xml;
      lastRun = now;
    }
    const long next = trigger.m_NextRun;
    if (next == -1) {
      return;
    }
    ASSERT_GT(next, now) << xml;
    now = sleepSeconds > 0 && sleepSeconds < LongestSleep ? now + sleepSeconds : next;
  }
}

void SweepZone(const std::string& name) {
  const VirtualTime::Zone zone(name.c_str());
  SCOPED_TRACE(name);
  for (const char* kind : kinds) {
    for (const char* clock : clocks) {
      RunTenYears(TriggerXml(kind, clock));
    }
  }
}

class ZoneSweep : public ::testing::TestWithParam<int> {};

TEST_P(ZoneSweep, TenYearsOfRunsEndAndOnlyGoForward) {
  static const std::vector<std::string> zones = DifferentZones();
  ASSERT_GT(zones.size(), 100u) << "the system's zone data is missing";
  for (std::size_t i = static_cast<std::size_t>(GetParam()); i < zones.size();
       i += 4 * NOX_ZONE_STRIDE) {
    InOwnProcess([&] { SweepZone(zones[i]); });
    if (HasFailure()) {
      return;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Quarter, ZoneSweep, ::testing::Range(0, 4));

}  // namespace
