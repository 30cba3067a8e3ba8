#include "tests/proof/PlainSchedule.h"

#include <strings.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <optional>

namespace PlainSchedule {
namespace {

constexpr std::int64_t SecondsPerDay = 86400;
constexpr std::int64_t Lowest = -2147483648LL;
constexpr std::int64_t Highest = 2147483647LL;

// Every sum and product ends at the ends of the 32-bit range.
std::int64_t Bounded(std::int64_t value) {
  return std::clamp(value, Lowest, Highest);
}

// Rounded down also before 1970.
std::int64_t DayOf(std::int64_t seconds) {
  return seconds / SecondsPerDay - (seconds % SecondsPerDay < 0 ? 1 : 0);
}

constexpr std::int64_t FirstDay = -24898;  // 1901-11-01, some weeks before 32-bit time begins
constexpr std::int64_t LastDay = 25201;    // 2038-12-31, some months after it has ended

// Every day of 32-bit time and a few more, counted one at a time: nothing to get wrong.
class Calendar {
 public:
  Calendar() {
    std::tm date{};  // 1901-11-01, a Friday
    date.tm_year = 1;
    date.tm_mon = 10;
    date.tm_mday = 1;
    date.tm_wday = 5;
    date.tm_yday = 304;
    for (; date.tm_year < 139; date = DayAfter(date)) {
      if (date.tm_mday == 1) {
        m_MonthStarts.push_back(FirstDay + static_cast<long>(m_Dates.size()));
      }
      m_Dates.push_back(date);
    }
  }

  /// A date as localtime_r tells it; the clock stands at midnight.
  const std::tm& DateOf(std::int64_t dayNumber) const {
    return m_Dates.at(static_cast<std::size_t>(dayNumber - FirstDay));
  }
  std::int64_t DayNumberOf(const Civil& c) const {
    const int monthsSinceFirst = (c.year - 1901) * 12 + c.month - 11;
    return m_MonthStarts.at(static_cast<std::size_t>(monthsSinceFirst)) + c.day - 1;
  }

 private:
  static std::tm DayAfter(std::tm date) {
    static const int lengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool isLeapYear = date.tm_year % 4 == 0;  // from 1901 to 2099
    const int length = lengths[date.tm_mon] + (isLeapYear && date.tm_mon == 1 ? 1 : 0);
    date.tm_wday = (date.tm_wday + 1) % 7;
    ++date.tm_yday;
    if (++date.tm_mday <= length) {
      return date;
    }
    date.tm_mday = 1;
    if (++date.tm_mon < 12) {
      return date;
    }
    date.tm_mon = 0;
    date.tm_yday = 0;
    ++date.tm_year;
    return date;
  }

  std::vector<std::tm> m_Dates;
  std::vector<std::int64_t> m_MonthStarts;
};

const Calendar& TheCalendar() {
  static const Calendar calendar;
  return calendar;
}

// What the C library says; it is asked only around changes of the clock, for it is slow.
std::tm AskedFields(std::int64_t moment) {
  const std::time_t asTime = static_cast<std::time_t>(moment);
  std::tm fields{};
  localtime_r(&asTime, &fields);
  return fields;
}

struct Jump {
  std::int64_t moment, offsetBefore, offsetAfter;
};

// A zone's offsets from UTC, remembered: walks over twenty years come by the same days again and
// again.
class Offsets {
 public:
  /// All that the zone uses within two days of the UTC day, earliest first.
  const std::vector<std::int64_t>& AroundDay(std::int64_t dayNumber) {
    auto& offsets = m_AroundDay.at(static_cast<std::size_t>(dayNumber - FirstDay));
    if (!offsets.empty()) {
      return offsets;
    }
    for (std::int64_t quarter = dayNumber * 4 - 8; quarter <= dayNumber * 4 + 12; ++quarter) {
      const std::int64_t offset = AtQuarter(quarter);
      if (std::find(offsets.begin(), offsets.end(), offset) == offsets.end()) {
        offsets.push_back(offset);
      }
    }
    return offsets;
  }

  /// Where the clocks are set forward within two days of the UTC day.
  std::vector<Jump> JumpsAroundDay(std::int64_t dayNumber) {
    std::vector<Jump> jumps;
    for (std::int64_t quarter = dayNumber * 4 - 8; quarter <= dayNumber * 4 + 12; ++quarter) {
      const std::int64_t before = AtQuarter(quarter), after = AtQuarter(quarter + 1);
      if (after <= before) {
        continue;
      }
      std::int64_t moment = quarter * (SecondsPerDay / 4);
      while (AskedFields(moment).tm_gmtoff == before) {
        moment += 60;
      }
      jumps.push_back({moment, before, after});
    }
    return jumps;
  }

 private:
  static constexpr std::int64_t FirstQuarter = (FirstDay - 2) * 4;
  static constexpr std::int64_t LastQuarter = (LastDay + 4) * 4;

  std::int64_t AtQuarter(std::int64_t quarter) {
    auto& offset = m_AtQuarter.at(static_cast<std::size_t>(quarter - FirstQuarter));
    if (!offset) {
      offset = AskedFields(Bounded(quarter * (SecondsPerDay / 4))).tm_gmtoff;
    }
    return *offset;
  }

  std::vector<std::vector<std::int64_t>> m_AroundDay =
      std::vector<std::vector<std::int64_t>>(LastDay - FirstDay + 1);
  std::vector<std::optional<long>> m_AtQuarter =
      std::vector<std::optional<long>>(LastQuarter - FirstQuarter + 1);
};

// Those of the zone in which the latest trigger was made.
Offsets offsetsInForce;

void UseZoneInForce() {
  static std::string zone;
  const char* const current = std::getenv("TZ");
  if (zone != (current ? current : "")) {
    zone = current ? current : "";
    offsetsInForce = {};
  }
}

std::tm LocalFields(std::int64_t moment) {
  const auto& offsets = offsetsInForce.AroundDay(DayOf(moment));
  if (offsets.size() != 1) {
    return AskedFields(moment);
  }
  const std::int64_t shown = moment + offsets.front();
  std::tm fields = TheCalendar().DateOf(DayOf(shown));
  const std::int64_t clock = shown - DayOf(shown) * SecondsPerDay;
  fields.tm_hour = static_cast<int>(clock / 3600);
  fields.tm_min = static_cast<int>(clock / 60 % 60);
  fields.tm_sec = static_cast<int>(clock % 60);
  return fields;
}

std::int64_t AsIfUtc(const Civil& c) {
  return TheCalendar().DayNumberOf(c) * SecondsPerDay + c.hour * 3600 + c.minute * 60 + c.second;
}

bool Shows(std::int64_t moment, const Civil& c) {
  const std::tm f = LocalFields(moment);
  return f.tm_year + 1900 == c.year && f.tm_mon + 1 == c.month && f.tm_mday == c.day &&
         f.tm_hour == c.hour && f.tm_min == c.minute && f.tm_sec == c.second;
}

bool SameLocalDay(std::int64_t a, std::int64_t b) {
  const std::tm x = LocalFields(a), y = LocalFields(b);
  return x.tm_year == y.tm_year && x.tm_yday == y.tm_yday;
}

std::int64_t IntervalSeconds(const Rule& rule) {
  if (strcasecmp(rule.intervalUnit.c_str(), "HOUR") == 0) {
    return Bounded(rule.interval * 3600LL);
  }
  if (strcasecmp(rule.intervalUnit.c_str(), "SECOND") == 0) {
    return rule.interval;
  }
  return Bounded(rule.interval * 60LL);
}

bool BitIsSet(std::int64_t mask, int bit) {
  return (mask >> bit) % 2 != 0;
}

bool DayMatches(const Trigger& trigger, std::int64_t days, const std::tm& at,
                const std::tm& begin) {
  const bool monthMatches = BitIsSet(trigger.monthsOfYear, at.tm_mon);
  const bool weekdayMatches = BitIsSet(trigger.daysOfWeek, at.tm_wday);
  switch (trigger.type) {
    case 0:
      return days == 0 && at.tm_mday == begin.tm_mday;
    case 1:
      return days % trigger.daysInterval == 0;
    case 2:
      return ((days + begin.tm_wday) / 7) % trigger.weeksInterval == 0 && weekdayMatches;
    case 3:
      return monthMatches && BitIsSet(trigger.daysOfMonth, at.tm_mday - 1);
    case 4:
      return monthMatches && weekdayMatches && trigger.week == at.tm_mday / 7 + 1;
    default:
      return true;
  }
}

bool Repeats(const Trigger& trigger) {
  return trigger.duration != 0 && trigger.interval != 0;
}

// The start, or the repetition of a start, that a run at `now` would be for.
std::int64_t WhatARunNowWouldBeFor(const Trigger& trigger, std::int64_t lastRun, std::int64_t now) {
  std::int64_t from = lastRun;
  if (StartOnDayOf(trigger, lastRun) > now) {
    from = StartOnDayOf(trigger, Bounded(lastRun - trigger.duration));
  }
  if (from == Never) {
    from = trigger.begin;
  }

  std::int64_t candidate = from, cursor = from;
  while (true) {
    const std::int64_t start = StartOnDayOf(trigger, cursor);
    bool cursorIsStart = false;
    if (start > now) {
      return candidate;
    }
    if (start != Never) {
      candidate = start;
      if (lastRun == Never || lastRun < start) {
        return candidate;
      }
      const std::int64_t since = Bounded(now - start);
      if (Repeats(trigger) && since <= Bounded(trigger.duration + 5)) {
        return Bounded(start + Bounded(since / trigger.interval * trigger.interval));
      }
      cursor = start;
      cursorIsStart = true;
    }
    if (cursor >= now || (lastRun != Never && lastRun < candidate)) {
      return candidate;
    }
    cursor = Bounded(cursor + SecondsPerDay);
    // A day of 25 hours still has the cursor on it: it must not find the same start for ever.
    if (cursorIsStart && SameLocalDay(cursor, start)) {
      cursor = Bounded(cursor + SecondsPerDay);
    }
    // On the last day of 32-bit time there is nowhere to go on to.
    if (cursorIsStart && SameLocalDay(cursor, start)) {
      return candidate;
    }
  }
}

bool IsDueFor(const Trigger& trigger, std::int64_t candidate, std::int64_t lastRun,
              std::int64_t now) {
  if (candidate > now) {
    return false;
  }
  if (lastRun == Never) {
    return true;
  }
  if (lastRun >= candidate) {
    return false;
  }
  return trigger.type != 0 || lastRun < Bounded(trigger.begin + trigger.duration);
}

std::int64_t NextStartOrRepetition(const Trigger& trigger, std::int64_t now) {
  const std::int64_t earlier = Bounded(now - trigger.duration);
  std::int64_t next = StartOnDayOf(trigger, earlier);
  if (next == Never || next < earlier) {
    next = StartOnDayOf(trigger, now);
  }
  if (Repeats(trigger) && next != Never && next <= now) {
    const std::int64_t end = Bounded(next + trigger.duration);
    if (now <= end) {
      const std::int64_t steps = Bounded(now - next) / trigger.interval + 1;
      const std::int64_t repetition = Bounded(next + Bounded(steps * trigger.interval));
      if (repetition <= end) {
        next = repetition;
      }
    }
  }
  return next;
}

std::int64_t FirstStartFrom(const Trigger& trigger, std::int64_t from, bool expired) {
  if (trigger.disabled || expired || trigger.type == 6 || trigger.type == 7) {
    return Never;
  }
  if (trigger.end != Never && from >= trigger.end) {
    return Never;
  }
  if (from >= trigger.begin && trigger.type == 0) {
    return Never;
  }
  const std::int64_t first = from < trigger.begin ? trigger.begin : from;
  const std::int64_t limit = trigger.end != Never ? trigger.end : Bounded(first + 630720000);
  for (std::int64_t cursor = first; cursor < limit; cursor = Bounded(cursor + SecondsPerDay)) {
    const std::int64_t start = StartOnDayOf(trigger, cursor);
    if (start == from || (start != Never && start > from)) {
      return start;
    }
  }
  return Never;
}

void LowerTo(std::int64_t& sleepSeconds, std::int64_t seconds) {
  sleepSeconds = std::min(sleepSeconds, seconds);
}

std::int64_t MomentInForce(const Civil& civil) {
  const std::int64_t asIfUtc = AsIfUtc(civil);
  const std::int64_t dayNumber = TheCalendar().DayNumberOf(civil);
  std::int64_t first = Highest + 1;
  for (const std::int64_t offset : offsetsInForce.AroundDay(dayNumber)) {
    if (Shows(Bounded(asIfUtc - offset), civil)) {
      first = std::min(first, asIfUtc - offset);
    }
  }
  if (first > Highest) {
    // In the gap: the clock as it ran until then is taken to run on.
    for (const Jump& jump : offsetsInForce.JumpsAroundDay(dayNumber)) {
      if (asIfUtc - jump.offsetBefore >= jump.moment && asIfUtc - jump.offsetAfter < jump.moment) {
        first = std::min(first, asIfUtc - jump.offsetBefore);
      }
    }
  }
  return first < Lowest || first > Highest ? Never : first;
}

}  // namespace

std::int64_t MomentOf(const Civil& civil) {
  UseZoneInForce();
  return MomentInForce(civil);
}

Trigger::Trigger(const Rule& rule) {
  if (rule.disabledByDocument) {
    disabled = true;
    return;
  }
  type = rule.type;
  if (type > 4) {
    disabled = true;
    return;
  }
  interval = IntervalSeconds(rule);
  duration = Bounded(rule.durationMinutes * 60LL);
  if (interval == 0 && duration < 0) {
    duration = 0;
  }
  killAtEnd = rule.killAtEnd;
  begin = rule.hasBegin ? MomentOf(rule.begin) : Never;
  if (begin == 0) {
    begin = Never;
  }
  end = rule.hasEnd ? MomentOf(rule.end) : Never;
  if (end == 0) {
    end = Never;
  }
  if (begin == Never && type != -1) {
    disabled = true;
    return;
  }
  if (end != Never && end < begin) {
    end = begin;
  }
  daysInterval = std::max(rule.daysInterval, 1L);
  weeksInterval = std::max(rule.weeksInterval, 1L);
  week = rule.week >= 1 && rule.week <= 5 ? rule.week : 1;
  daysOfWeek = rule.daysOfWeek;
  daysOfMonth = rule.daysOfMonth;
  monthsOfYear = rule.monthsOfYear;
}

std::int64_t StartOnDayOf(const Trigger& trigger, std::int64_t moment) {
  if (trigger.type == -1) {
    return moment;
  }
  const std::tm at = LocalFields(moment), begin = LocalFields(trigger.begin);
  const std::int64_t start = MomentInForce(Civil{at.tm_year + 1900, at.tm_mon + 1, at.tm_mday,
                                                 begin.tm_hour, begin.tm_min, begin.tm_sec});
  if (start == Never) {
    return Never;
  }
  const std::int64_t days = Bounded(start - trigger.begin) / SecondsPerDay;
  if (days < 0) {
    return Never;
  }
  if (days == 0 && moment < trigger.begin && at.tm_mday != begin.tm_mday) {
    return Never;
  }
  return DayMatches(trigger, days, at, begin) ? start : Never;
}

Answer Evaluate(const Trigger& trigger, std::int64_t lastRun, std::int64_t now,
                std::int64_t sleepSeconds) {
  Answer answer;
  answer.sleepSeconds = sleepSeconds;
  std::int64_t next = 0;
  if (trigger.disabled || trigger.type == 6 || trigger.type == 7) {
    // Nothing to look for.
  } else if (trigger.type == -1) {
    answer.expired = true;
    answer.due = lastRun == Never;
  } else if (now < trigger.begin) {
    next = StartOnDayOf(trigger, now);
    if (next != Never && next > now) {
      LowerTo(answer.sleepSeconds, next - now);
    }
  } else if (trigger.end != Never && now > trigger.end) {
    answer.expired = true;
  } else {
    const std::int64_t candidate = WhatARunNowWouldBeFor(trigger, lastRun, now);
    answer.due = IsDueFor(trigger, candidate, lastRun, now);
    answer.late = answer.due && now - candidate > 59;
    next = NextStartOrRepetition(trigger, now);
    if (next > now) {
      LowerTo(answer.sleepSeconds, next - now);
    }
  }
  answer.nextRun =
      next < 1 || next <= now ? FirstStartFrom(trigger, Bounded(now + 60), answer.expired) : next;
  return answer;
}

TaskAnswer EvaluateTask(const std::vector<Trigger>& triggers, std::int64_t lastRun,
                        std::int64_t now, std::int64_t sleepSeconds) {
  TaskAnswer task;
  task.sleepSeconds = sleepSeconds;
  task.neverRun = lastRun == Never;
  task.allExpired = true;
  task.deleteTask = true;
  bool soonSeen = false;
  for (const Trigger& trigger : triggers) {
    const Answer answer = Evaluate(trigger, lastRun, now, task.sleepSeconds);
    task.sleepSeconds = answer.sleepSeconds;
    if (answer.due) {
      task.due = true;
      soonSeen = soonSeen || trigger.type == -1;
      task.late = !soonSeen && (task.late || answer.late);
      task.killAtEnd = task.killAtEnd || trigger.killAtEnd;
    }
    task.allExpired = task.allExpired && answer.expired;
    task.deleteTask = task.deleteTask && task.allExpired && trigger.type != -1;
  }
  return task;
}

std::string Rule::ToXml() const {
  const auto element = [](const char* name, const std::string& text) {
    return "<" + std::string(name) + ">" + text + "</" + name + ">";
  };
  const auto date = [](const Civil& c, char separator) {
    char text[64];
    (void)std::snprintf(text, sizeof text, "%04d%c%02d%c%02d %02d:%02d:%02d", c.year, separator,
                        c.month, separator, c.day, c.hour, c.minute, c.second);
    return std::string(text);
  };
  std::string xml = "<Trigger Type=\"" + std::to_string(type) + "\"";
  if (disabledByDocument) {
    xml += " Disabled=\"Y\"";
  }
  if (interval != 0) {
    xml += " Interval=\"" + std::to_string(interval) + "\"";
  }
  if (!intervalUnit.empty()) {
    xml += " IntervalUnit=\"" + intervalUnit + "\"";
  }
  if (durationMinutes != 0) {
    xml += " Duration=\"" + std::to_string(durationMinutes) + "\"";
  }
  if (killAtEnd) {
    xml += " KillAtEnd=\"1\"";
  }
  xml += ">";
  if (hasBegin) {
    xml += element("BeginDate", date(begin, '/'));
  }
  if (hasEnd) {
    xml += element("EndDate", date(end, '-'));
  }
  xml += element("DaysInterval", std::to_string(daysInterval));
  xml += element("WeeksInterval", std::to_string(weeksInterval));
  xml += element("DaysOfWeek", std::to_string(daysOfWeek));
  xml += element("DaysOfMonth", std::to_string(daysOfMonth));
  xml += element("MonthsOfYear", std::to_string(monthsOfYear));
  xml += element("Week", std::to_string(week));
  return xml + "</Trigger>";
}

}  // namespace PlainSchedule
