#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// The schedule rules a second time, as plainly as they can be said: no members that remember, no
/// shared helper with model/, a calendar of its own. It exists to disagree with model/ when one of
/// the two is wrong, so it must stay ignorant of how model/ does it.
namespace PlainSchedule {

/// A local date and clock time as a person writes it.
struct Civil {
  int year = 1970, month = 1, day = 1, hour = 0, minute = 0, second = 0;
};

/// What a `Trigger` element says, before anything is normalised. Times are local.
struct Rule {
  bool disabledByDocument = false;
  long type = 0;
  long interval = 0;
  std::string intervalUnit;
  long durationMinutes = 0;
  bool hasBegin = true, hasEnd = false;
  Civil begin, end;
  long daysInterval = 1, weeksInterval = 1, week = 1;
  long daysOfWeek = 0, daysOfMonth = 0, monthsOfYear = 0;
  bool killAtEnd = false;

  std::string ToXml() const;
};

/// A rule with the defaults filled in and every time in seconds since the epoch. Its times are
/// local times of the zone in force: no trigger outlives a change of TZ.
struct Trigger {
  explicit Trigger(const Rule& rule);

  bool disabled = false, killAtEnd = false;
  std::int64_t type = 0, interval = 0, duration = 0, begin = 0, end = 0;
  std::int64_t daysInterval = 1, weeksInterval = 1, week = 1;
  std::int64_t daysOfWeek = 0, daysOfMonth = 0, monthsOfYear = 0;
};

struct Answer {
  bool due = false, late = false, expired = false;
  std::int64_t sleepSeconds = 0, nextRun = -1;
};

constexpr std::int64_t Never = -1;

/// The moment at which the zone's clocks show `civil`: the first of two, or as far behind a gap as
/// the time claims to lie; `Never` outside 32 bits.
std::int64_t MomentOf(const Civil& civil);

std::int64_t StartOnDayOf(const Trigger& trigger, std::int64_t moment);

/// The due test at `now` for a task that last ran at `lastRun`, both event flags false.
Answer Evaluate(const Trigger& trigger, std::int64_t lastRun, std::int64_t now,
                std::int64_t sleepSeconds);

struct TaskAnswer {
  bool due = false, late = false, neverRun = false, allExpired = false, deleteTask = false,
       killAtEnd = false;
  std::int64_t sleepSeconds = 0;
};

TaskAnswer EvaluateTask(const std::vector<Trigger>& triggers, std::int64_t lastRun,
                        std::int64_t now, std::int64_t sleepSeconds);

}  // namespace PlainSchedule
