#include "tests/proof/Case.h"

#include <algorithm>

using PlainSchedule::Civil;
using PlainSchedule::Rule;

namespace {

constexpr long FirstMoment = -2147483647, LastMoment = 2147483647;

long Bounded(long long value) {
  return static_cast<long>(std::clamp<long long>(value, FirstMoment, LastMoment));
}

}  // namespace

std::string Case::AsRow(const PlainSchedule::Answer& wanted) const {
  const auto flag = [](bool value) { return value ? "true, " : "false, "; };
  return "{\"" + zone + "\", R\"(" + rule.ToXml() + ")\", " + std::to_string(lastRun) + ", " +
         std::to_string(now) + ", " + std::to_string(sleepSeconds) + ", " + flag(wanted.due) +
         flag(wanted.late) + flag(wanted.expired) + std::to_string(wanted.sleepSeconds) + ", " +
         std::to_string(wanted.nextRun) + "},";
}

// A draw of its own: the standard distributions differ between word sizes.
long CaseMaker::Between(long low, long high) {
  const auto span = static_cast<unsigned long long>(static_cast<long long>(high) - low) + 1;
  return Bounded(low + static_cast<long long>(m_Random() % span));
}

Civil CaseMaker::NextCivil(int firstYear, int lastYear) {
  Civil civil;
  civil.year = static_cast<int>(Between(firstYear, lastYear));
  civil.month = static_cast<int>(Between(1, 12));
  civil.day = static_cast<int>(OneIn(4) ? Between(1, 2) : Between(1, 28));
  static const long changeMonths[] = {3, 4, 9, 10, 11, 2, 12, 1};
  if (OneIn(2)) {
    civil.month = static_cast<int>(OneOf(changeMonths));
  }
  static const long lastDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (OneIn(5)) {
    civil.day = static_cast<int>(lastDays[civil.month - 1]);
  }
  static const long edgeSeconds[] = {0,    1800,  3599,  3600,  5400,  7200,  8999,  9000,
                                     9900, 10800, 28800, 43200, 82800, 84600, 86399, 86100};
  const long clock = OneIn(3) ? Between(0, 86399) : OneOf(edgeSeconds);
  civil.hour = static_cast<int>(clock / 3600);
  civil.minute = static_cast<int>(clock / 60 % 60);
  civil.second = static_cast<int>(clock % 60);
  return civil;
}

void CaseMaker::AddRepetition(Rule& rule) {
  static const long minutes[] = {1, 5, 30, 60, 120, 480, 1439, 1440, 1500, 2880, 10080};
  static const long intervals[] = {1, 5, 7, 15, 30, 60, 90, 120, 600, 1440, 3000};
  if (OneIn(2)) {
    return;
  }
  rule.durationMinutes = OneIn(12) ? Between(-200, 200000) : OneOf(minutes);
  rule.interval = OneIn(10) ? Between(-3, 3) : OneOf(intervals);
  if (OneIn(6)) {
    rule.intervalUnit = OneIn(2) ? "hour" : "Second";
  }
  if (OneIn(40)) {
    rule.interval = OneIn(2) ? LastMoment : FirstMoment;
  }
}

void CaseMaker::AddDayRule(Rule& rule) {
  static const long dayIntervals[] = {1, 1, 1, 2, 3, 7, 14, 30, 365};
  static const long weekIntervals[] = {1, 1, 2, 3, 4, 26};
  static const long weekMasks[] = {127, 62, 65, 1, 2, 64, 8};
  static const long monthMasks[] = {4095, 4095, 1, 2, 2048, 1365, 516};
  static const long dateMasks[] = {2147483647, 1, 1 << 30, 1 << 29, 1 << 28, 16384, 1073741825};
  rule.daysInterval = OneIn(20) ? Between(-2, 400) : OneOf(dayIntervals);
  rule.weeksInterval = OneIn(20) ? Between(-2, 60) : OneOf(weekIntervals);
  rule.week = Between(0, 6);
  rule.daysOfWeek = OneIn(3) ? Between(1, 127) : OneOf(weekMasks);
  rule.daysOfMonth = OneIn(3) ? Between(1, LastMoment) : OneOf(dateMasks);
  rule.monthsOfYear = OneIn(3) ? Between(1, 4095) : OneOf(monthMasks);
  // Masks that never match walk the whole twenty years: a few are enough.
  if (OneIn(400)) {
    rule.daysOfWeek = OneIn(2) ? 0 : -1;
  }
  if (OneIn(400)) {
    rule.daysOfMonth = 0;
  }
  if (OneIn(400)) {
    rule.monthsOfYear = 0;
  }
}

Rule CaseMaker::NextRule() {
  static const long types[] = {0, 1, 1, 2, 2, 3, 3, 4, 4, -2};
  Rule rule;
  rule.type = OneOf(types);
  if (OneIn(50)) {
    rule.type = Between(-3, 8);
  }
  rule.disabledByDocument = OneIn(200);
  rule.hasBegin = !OneIn(100);
  rule.begin = OneIn(10) ? NextCivil(1970, 1999) : NextCivil(2000, 2037);
  rule.killAtEnd = OneIn(4);
  if (OneIn(4)) {
    rule.hasEnd = true;
    rule.end = NextCivil(rule.begin.year, std::min(rule.begin.year + 2, 2037));
  }
  AddRepetition(rule);
  AddDayRule(rule);
  return rule;
}

long CaseMaker::DayAfter(const PlainSchedule::Trigger& trigger) {
  const long days = OneIn(8) ? 0 : Between(0, 60);
  return Bounded(trigger.begin + days * 86400LL);
}

// Most often close to a start or to the end of its period, a few seconds either side.
long CaseMaker::MomentNear(const PlainSchedule::Trigger& trigger, long day) {
  static const long nudges[] = {-61, -60, -59, -6, -5,   -1,   0,     1,     4,     5,    6,
                                30,  58,  59,  60, 1800, 3600, 10800, 39600, 43200, 82800};
  long long moment = day;
  const auto start = PlainSchedule::StartOnDayOf(trigger, day);
  if (start != PlainSchedule::Never && !OneIn(5)) {
    moment = start;
  }
  if (OneIn(3)) {
    moment += trigger.duration;
  }
  if (OneIn(3) && trigger.interval < 1000000) {
    moment += trigger.interval * Between(1, 4);
  }
  moment += OneIn(4) ? Between(-90000, 90000) : OneOf(nudges);
  // The ends of the range, and rarely: from one to the other every day of 68 years is walked.
  if (OneIn(500)) {
    moment = OneIn(2) ? LastMoment - Between(0, 200000) : Between(0, 86400 * 3);
  }
  if (OneIn(60) && trigger.end > 0) {
    moment = trigger.end + Between(-2, 2);
  }
  return Bounded(std::max<long long>(moment, 0));
}

Case CaseMaker::NextCase(const Rule& rule, const PlainSchedule::Trigger& trigger) {
  Case made;
  made.zone = m_Zone;
  made.rule = rule;
  const long day = DayAfter(trigger);
  made.now = MomentNear(trigger, day);
  // Half of the last runs belong to the same start: that is where repetitions are told apart.
  if (!OneIn(3)) {
    made.lastRun = MomentNear(trigger, OneIn(2) ? day : DayAfter(trigger));
  }
  // Most runs lie in the past; one in the future is allowed, and rare.
  if (made.lastRun > made.now && !OneIn(10)) {
    std::swap(made.lastRun, made.now);
  }
  made.sleepSeconds = OneIn(3) ? 0 : Between(0, 86400);
  return made;
}
