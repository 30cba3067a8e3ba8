// The schedule that jumps over days against the one that takes every step, in every zone of the
// system's data: around changes of the clock, at the ends of the range, and anywhere.
#include "model/LocalZone.h"
#include "tests/proof/ClockChanges.h"
#include "tests/proof/Comparison.h"
#include "tests/proof/OwnProcess.h"
#include "tests/proof/SteppedSchedule.h"
#include "tests/proof/SystemZones.h"
#include "tests/support/EnvironmentNumber.h"
#include "tests/support/LocalTimes.h"

#include <VirtualTime/VirtualClock.h>
#include <VirtualTime/Zone.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

using TestSupport::Day;
using TestSupport::EnvironmentNumber;

constexpr int MomentsPerRule = 4;
constexpr int WalksPerRule = 6;
constexpr int StepsPerWalk = 6;

// NOX_RULES_PER_ZONE sets another number: with 1000, each width sees more than a million cases.
int RulesPerZone() {
  return static_cast<int>(EnvironmentNumber("NOX_RULES_PER_ZONE", NOX_RULES_PER_ZONE));
}

// Draws triggers and moments. A draw of its own: standard distributions differ between word sizes.
class Draw {
 public:
  explicit Draw(unsigned seed) : m_Random(seed), m_Changes(ClockChangesOf32Bits(2 * Day)) {}

  std::int64_t Between(std::int64_t low, std::int64_t high) {
    const std::uint64_t bits = (std::uint64_t{m_Random()} << 32) | m_Random();
    return low + static_cast<std::int64_t>(bits % static_cast<std::uint64_t>(high - low + 1));
  }
  bool OneIn(int n) { return Between(1, n) == 1; }
  long OneOf(const std::vector<long>& values) {
    return values[static_cast<std::size_t>(Between(0, std::ssize(values) - 1))];
  }

  // Every other moment lies within days of a change of the clock or of an end of the range.
  long Moment() {
    if (OneIn(2)) {
      return Nox::Clamp32(Between(OneIn(4) ? Nox::Long32Min : 0, Nox::Long32Max));
    }
    return Nox::Clamp32(OneOf(m_Changes) + Away());
  }
  // A moment close to another: seconds, hours, days, rarely years.
  long Near(long moment) {
    const std::int64_t days = OneIn(10) ? Between(-9000, 9000) : Between(-70, 70);
    return Nox::Clamp32(moment + days * Day + Away());
  }
  std::int64_t Away() {
    static const std::vector<long> hours{0, 0, 1, 2, 3, 6, 12, 23, 24, 25};
    static const std::vector<long> seconds{0, 0, 1, 5, 6, 59, 60, 61, 900, 1800};
    const std::int64_t away = OneIn(3) ? Between(0, 3 * Day) : OneOf(hours) * 3600 + OneOf(seconds);
    return OneIn(2) ? away : -away;
  }

  void DrawRule(CTaskTrigger& trigger) {
    static const std::vector<long> types{0, 1, 1, 2, 2, 3, 3, 4, 4, -2};
    static const std::vector<long> smallCounts{1, 1, 1, 2, 3, 5, 7, 13, 14, 30, 52};
    static const std::vector<long> greatCounts{100, 365, 1000, 1044, 7000, Nox::Long32Max};
    const std::vector<long>& counts = OneIn(20) ? greatCounts : smallCounts;
    static const std::vector<long> periods{0, 0, 0, 3600, 7200, 86340, 86400, 90000, 604800, -300};
    static const std::vector<long> intervals{0, 60, 1800, 3600, 86400, 100000, -60};
    trigger.m_Type = OneOf(types);
    trigger.m_BeginDate = Moment();
    trigger.m_EndDate =
        OneIn(5) ? std::max(Near(trigger.m_BeginDate), trigger.m_BeginDate) : CTaskTrigger::NoTime;
    trigger.m_Duration = OneOf(periods);
    trigger.m_Interval = OneOf(intervals);
    trigger.m_DaysInterval = OneOf(counts);
    trigger.m_WeeksInterval = OneOf(counts);
    trigger.m_DaysOfWeek = OneIn(200) ? 0 : Mask(7);
    trigger.m_DaysOfMonth = OneIn(200) ? 0 : Mask(31);
    trigger.m_MonthsOfYear = OneIn(200) ? 0 : OneIn(10) ? Mask(12) : 0xFFF;
    trigger.m_Week = Nox::Clamp32(Between(1, 5));
  }

 private:
  // One bit as often as many: rare days are those to jump to. Late days are rarer still.
  std::uint32_t Mask(int bits) {
    const auto any = static_cast<std::uint32_t>(Between(0, (std::int64_t{1} << bits) - 1));
    const auto bit = OneIn(3) ? bits - Between(1, 3) : Between(0, bits - 1);
    return OneIn(2) ? any : 1U << bit;
  }

  std::mt19937 m_Random;
  std::vector<long> m_Changes;
};

std::string ShowRule(const CTaskTrigger& trigger) {
  std::ostringstream text;
  text << "type " << trigger.m_Type << " begin " << trigger.m_BeginDate << " end "
       << trigger.m_EndDate << " interval " << trigger.m_Interval << " duration "
       << trigger.m_Duration << " days " << trigger.m_DaysInterval << " weeks "
       << trigger.m_WeeksInterval << " weekdays " << trigger.m_DaysOfWeek << " dates "
       << trigger.m_DaysOfMonth << " months " << trigger.m_MonthsOfYear << " week "
       << trigger.m_Week << " last run " << *trigger.m_pLastRun;
  return text.str();
}

// Asks both the same.
void Compare(CTaskTrigger& trigger, long now) {
  const SteppedSchedule stepped(trigger);
  SCOPED_TRACE(ShowRule(trigger) + " now " + std::to_string(now));
  EXPECT_EQ(trigger.GetTriggerStartTime(now), stepped.StartOnDayOf(now));
  trigger.CalculateNextRunTime(now, false);
  EXPECT_EQ(trigger.m_NextRun, stepped.NextRun(now, false));
  EXPECT_EQ(Show(Ask(trigger, now, 86400)), Show(stepped.Ask(now, 86400)));
}

// Asks one trigger at one moment after the other, as the monitor does: an answer that is kept must
// be the answer of the later moments too. They lie around a start after `from` and its period.
void CompareAlong(CTaskTrigger& trigger, long& lastRun, long from, Draw& draw) {
  static const std::vector<long> steps{1,    2,     3,     4,     5,     6,  0,   1,    4,    5,
                                       6,    29,    30,    59,    60,    61, 299, 600,  1800, 3540,
                                       7200, 21600, 43200, 82800, 86400, -1, -59, -3600};
  const SteppedSchedule stepped(trigger);
  trigger.CalculateNextRunTime(from, false);
  const long start = trigger.m_NextRun == CTaskTrigger::NoTime ? from : trigger.m_NextRun;
  const long away = draw.OneOf({-80000, -3600, -61, -6, -3, -1, 0, 10, 3595});
  long now = Nox::Add32(start, draw.OneIn(2) ? away : Nox::Add32(away, trigger.m_Duration));
  lastRun = draw.OneIn(10) ? draw.OneOf({CTaskTrigger::NoTime, Nox::Add32(now, 100)})
                           : std::min(now, Nox::Add32(start, draw.OneOf({-Day, -1, 0, 5, 3600})));
  for (int step = 0; step < StepsPerWalk && !::testing::Test::HasFailure(); ++step) {
    SCOPED_TRACE(ShowRule(trigger) + " now " + std::to_string(now));
    const PlainSchedule::Answer answer = Ask(trigger, now, 86400);
    EXPECT_EQ(Show(answer), Show(stepped.Ask(now, 86400)));
    lastRun = answer.due && draw.OneIn(2) ? now : lastRun;
    now = Nox::Clamp32(std::int64_t{now} + draw.OneOf(steps));
  }
}

void CompareZone(const std::string& name, unsigned seed) {
  const VirtualTime::Zone zone(name.c_str());
  SCOPED_TRACE(name);
  long lastRun = CTaskTrigger::NoTime;
  CTaskTrigger trigger(L"<Trigger><BeginDate>2005-03-01 08:00:00</BeginDate></Trigger>", &lastRun);
  Draw draw(seed);
  for (int rule = RulesPerZone(); rule > 0 && !::testing::Test::HasFailure(); --rule) {
    draw.DrawRule(trigger);
    for (int moment = 0; moment < MomentsPerRule; ++moment) {
      const long now = draw.OneIn(5) ? draw.Moment() : draw.Near(trigger.m_BeginDate);
      lastRun = draw.OneIn(3)   ? CTaskTrigger::NoTime
                : draw.OneIn(3) ? draw.Near(trigger.m_BeginDate)
                                : draw.Near(now);
      Compare(trigger, now);
    }
    for (int walk = 0; walk < WalksPerRule; ++walk) {
      CompareAlong(trigger, lastRun, draw.OneIn(2) ? draw.Moment() : draw.Near(trigger.m_BeginDate),
                   draw);
    }
  }
}

TEST(ElapsedDays, EndWithThe32BitRange) {
  const VirtualTime::Zone zone("UTC0");
  long lastRun = CTaskTrigger::NoTime;
  CTaskTrigger trigger(L"<Trigger><BeginDate>2005-03-01 08:00:00</BeginDate></Trigger>", &lastRun);
  trigger.m_BeginDate = -2147304563;  // 1901-12-15: 68 years later the count of days stands still
  trigger.m_DaysOfWeek = 1U << 5;
  for (const long count : {2, 3, 5, 7, 11, 52, 24855}) {
    trigger.m_WeeksInterval = trigger.m_DaysInterval = count;
    for (const long type : {CTaskTrigger::Daily, CTaskTrigger::Weekly}) {
      trigger.m_Type = type;
      for (const long now : {-100 * Day, 0L, 100 * Day, 216483795L}) {
        Compare(trigger, now);
      }
    }
  }
}

class JumpProof : public ::testing::TestWithParam<int> {};

TEST_P(JumpProof, SaysWhatStepsOfADaySay) {
  const std::vector<std::string> zones = SystemZones();
  ASSERT_GT(zones.size(), 100U) << "the system's zone data is missing";
  for (std::size_t i = static_cast<std::size_t>(GetParam()); i < zones.size();
       i += 4 * NOX_ZONE_STRIDE) {
    InOwnProcess([&] { CompareZone(zones[i], static_cast<unsigned>(i)); });
  }
}

INSTANTIATE_TEST_SUITE_P(Quarter, JumpProof, ::testing::Range(0, 4));

}  // namespace
