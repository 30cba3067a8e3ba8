#include "agent/phrase/PhraseValues.h"

#include "agent/phrase/PhraseParts.h"
#include "agent/phrase/PhraseUnits.h"
#include "agent/schedule/LocalCalendar.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>

namespace NoxAgent {

namespace {

using Names = std::vector<std::string>;
constexpr long LongestYears = 10;

struct LengthUnit {
  long m_Seconds;
  Names m_Names;  // the first is written
};

const std::array<LengthUnit, 3>& LengthUnits() {
  static const std::array<LengthUnit, 3> All{
      {{HourSeconds, {"h", "hour", "hours"}},
       {MinuteSeconds, {"min", "m", "minute", "minutes", "mins"}},
       {1, {"s", "sec", "second", "seconds", "secs"}}}};
  return All;
}

std::optional<long> UnitSeconds(const std::string& word) {
  for (const LengthUnit& unit : LengthUnits()) {
    if (std::find(unit.m_Names.begin(), unit.m_Names.end(), word) != unit.m_Names.end()) {
      return unit.m_Seconds;
    }
  }
  return std::nullopt;
}

std::string TwoDigits(long number) {
  return (number < 10 ? "0" : "") + std::to_string(number);
}

constexpr std::chrono::year FirstYear{1970}, LastYear{2038};

// "2027-01-04" as it is written, which need not be a day; what is behind a "t" is not looked at.
std::optional<std::chrono::year_month_day> ReadYearMonthDay(const std::string& word) {
  const std::vector<std::string> parts = Split(word.substr(0, word.find('t')), '-');
  if (parts.size() != 3 || parts[0].size() != 4) {
    return std::nullopt;
  }
  const auto year = ReadDigits(parts[0]), month = ReadDigits(parts[1], 2),
             day = ReadDigits(parts[2], 2);
  if (!year || !month || !day) {
    return std::nullopt;
  }
  return std::chrono::year_month_day(std::chrono::year(static_cast<int>(*year)),
                                     std::chrono::month(static_cast<unsigned>(*month)),
                                     std::chrono::day(static_cast<unsigned>(*day)));
}

long DayNumber(const std::chrono::year_month_day& date) {
  return static_cast<long>(std::chrono::sys_days(date).time_since_epoch().count());
}

// "02:30" or "02:30:15".
std::optional<long> ReadWholeDayClock(const std::string& word) {
  const std::vector<std::string> parts = Split(word, ':');
  if (parts.size() < 2 || parts.size() > 3 || parts[1].size() != 2 || parts.back().size() != 2) {
    return std::nullopt;
  }
  const auto hour = ReadDigits(parts[0], 2), minute = ReadDigits(parts[1]);
  const auto second = parts.size() == 3 ? ReadDigits(parts[2]) : std::optional(0L);
  if (!hour || !minute || !second || *hour > 23 || *minute > 59 || *second > 59) {
    return std::nullopt;
  }
  return *hour * HourSeconds + *minute * MinuteSeconds + *second;
}

// "2:30pm" or "2pm"; the hours go from 12, which stands for 0, to 11.
std::optional<long> ReadHalfDayClock(const std::string& word) {
  constexpr std::size_t MarkLength = 2;
  constexpr long HalfDay = DaySeconds / 2;
  const std::string time = word.substr(0, word.size() - MarkLength);
  const auto clock = ReadWholeDayClock(time.find(':') == std::string::npos ? time + ":00" : time);
  if (!clock || *clock < HourSeconds || *clock >= HalfDay + HourSeconds) {
    return std::nullopt;
  }
  return *clock % HalfDay + (word.ends_with("pm") ? HalfDay : 0);
}

}  // namespace

std::optional<long> ReadClock(const std::string& word) {
  if (word == "midnight" || word == "noon") {
    return word == "noon" ? DaySeconds / 2 : 0;
  }
  return word.ends_with("am") || word.ends_with("pm") ? ReadHalfDayClock(word)
                                                      : ReadWholeDayClock(word);
}

std::optional<std::vector<long>> ReadClockList(const std::string& word) {
  std::vector<long> clocks;
  for (const std::string& part : Split(word, ',')) {
    const auto clock = ReadClock(part);
    if (!clock) {
      return std::nullopt;
    }
    clocks.push_back(*clock);
  }
  std::sort(clocks.begin(), clocks.end());
  clocks.erase(std::unique(clocks.begin(), clocks.end()), clocks.end());
  return clocks;
}

std::optional<PhraseDate> ReadPhraseDate(const std::string& word) {
  const auto date = ReadYearMonthDay(word);
  if (!date || !FaultOfDate(word).empty()) {
    return std::nullopt;
  }
  PhraseDate read{DayNumber(*date), std::nullopt};
  const std::size_t t = word.find('t');
  if (t != std::string::npos) {
    read.m_Clock = ReadClock(word.substr(t + 1));
  }
  return t == std::string::npos || read.m_Clock ? std::optional(read) : std::nullopt;
}

std::string FaultOfDate(const std::string& word) {
  constexpr long LastDay = LocalCalendar::End() / DaySeconds;
  const auto date = ReadYearMonthDay(word);
  if (!date) {
    return {};
  }
  if (date->year() < FirstYear) {
    return "days go from 1970-01-01 on";
  }
  if (date->year() > LastYear || (date->ok() && DayNumber(*date) > LastDay)) {
    return "days go to " + DateWords(LastDay) +
           ", as scheduling ends where seconds since 1970 outgrow 32 bits";
  }
  return date->ok() ? "" : "there is no such day";
}

std::optional<long> ReadLength(const std::string& word) {
  constexpr long Longest = LongestYears * 366 * DaySeconds;
  long seconds = 0;
  for (std::size_t at = 0; at < word.size();) {
    const std::size_t unitAt = std::min(word.find_first_not_of("0123456789", at), word.size());
    const std::size_t next = std::min(word.find_first_of("0123456789", unitAt), word.size());
    const std::string digits = word.substr(at, unitAt - at);
    const auto unit = UnitSeconds(word.substr(unitAt, next - unitAt));
    const auto number = digits.empty() && at == 0 ? std::optional(1L) : ReadDigits(digits, 6);
    if (!unit || !number || *number > (Longest - seconds) / *unit) {
      return std::nullopt;
    }
    seconds += *number * *unit;
    at = next;
  }
  return seconds > 0 ? std::optional(seconds) : std::nullopt;
}

std::optional<long> ReadCount(const std::string& word) {
  const auto number = ReadDigits(word, 3);
  return number && *number >= 2 ? number : std::nullopt;
}

bool IsClock(const std::string& word) {
  return ReadClock(word).has_value();
}

bool IsClockList(const std::string& word) {
  return ReadClockList(word).has_value();
}

bool IsDate(const std::string& word) {
  return ReadPhraseDate(word).has_value();
}

bool IsLength(const std::string& word) {
  return ReadLength(word).has_value();
}

bool IsCount(const std::string& word) {
  return ReadCount(word).has_value();
}

std::string ClockWords(long clock) {
  const long second = clock % MinuteSeconds;
  return TwoDigits(clock / HourSeconds) + ":" + TwoDigits(clock / MinuteSeconds % 60) +
         (second == 0 ? "" : ":" + TwoDigits(second));
}

std::string ClockListWords(const std::vector<long>& clocks) {
  std::string text;
  for (const long clock : clocks) {
    text += (text.empty() ? "" : ",") + ClockWords(clock);
  }
  return text;
}

std::string DateWords(long day) {
  const std::chrono::year_month_day date{std::chrono::sys_days(std::chrono::days(day))};
  return std::to_string(int{date.year()}) + "-" +
         TwoDigits(static_cast<long>(unsigned{date.month()})) + "-" +
         TwoDigits(static_cast<long>(unsigned{date.day()}));
}

std::string LengthWords(long seconds) {
  for (const LengthUnit& unit : LengthUnits()) {
    if (seconds % unit.m_Seconds == 0) {
      return std::to_string(seconds / unit.m_Seconds) + " " + unit.m_Names.front();
    }
  }
  return {};
}

bool IsLengthUnit(const std::string& word) {
  return UnitSeconds(word).has_value();
}

}  // namespace NoxAgent
