#include "agent/phrase/PhraseValues.h"

#include "agent/phrase/PhraseUnits.h"
#include "agent/schedule/LocalCalendar.h"
#include "agent/schedule/TriggerRule.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <chrono>

namespace NoxAgent {

namespace {

using Names = std::vector<std::string>;
constexpr long LongestYears = 10;

const Names& WeekdayNames() {
  static const Names All{"sunday",   "monday", "tuesday", "wednesday",
                         "thursday", "friday", "saturday"};
  return All;
}

const Names& MonthNames() {
  static const Names All{"january", "february", "march",     "april",   "may",      "june",
                         "july",    "august",   "september", "october", "november", "december"};
  return All;
}

const Names& OrdinalNames() {
  static const Names All{"first", "second", "third", "fourth", "last"};
  return All;
}

std::vector<std::string> Split(const std::string& text, char separator) {
  std::vector<std::string> parts(1);
  for (const char character : text) {
    if (character == separator) {
      parts.emplace_back();
    } else {
      parts.back() += character;
    }
  }
  return parts;
}

// Digits alone, at most four of them.
std::optional<long> ReadDigits(const std::string& text, std::size_t most = 4) {
  const bool isDigits = !text.empty() && text.size() <= most &&
                        std::all_of(text.begin(), text.end(), [](unsigned char character) {
                          return std::isdigit(character) != 0;
                        });
  return isDigits ? std::optional(std::stol(text)) : std::nullopt;
}

// "mon" or "monday"; the index in the names.
std::optional<long> ReadName(const Names& names, const std::string& word) {
  constexpr std::size_t ShortLength = 3;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (word == names[i] || word == names[i].substr(0, ShortLength)) {
      return static_cast<long>(i);
    }
  }
  return std::nullopt;
}

// A list of values and of spans of values, as a mask. A span may go over the end: "sat-mon".
template <typename ReadOne>
std::optional<long> ReadMask(const std::string& word, int count, bool mayWrap,
                             const ReadOne& readOne) {
  long mask = 0;
  for (const std::string& part : Split(word, ',')) {
    const std::vector<std::string> ends = Split(part, '-');
    const std::optional<long> first = readOne(ends.front());
    const std::optional<long> last = readOne(ends.back());
    if (!first || !last || ends.size() > 2 || (*last < *first && !mayWrap)) {
      return std::nullopt;
    }
    for (long bit = *first;; bit = (bit + 1) % count) {
      mask |= 1L << bit;
      if (bit == *last) {
        break;
      }
    }
  }
  return mask;
}

// "1,3-5" of a mask; spans from three values on. `begin` is the bit that comes first.
template <typename Name>
std::string MaskWords(long mask, int count, int begin, const Name& name) {
  std::string text;
  for (int i = 0; i < count;) {
    if (!HasBit(mask, (begin + i) % count)) {
      ++i;
      continue;
    }
    int end = i;
    while (end + 1 < count && HasBit(mask, (begin + end + 1) % count)) {
      ++end;
    }
    text += (text.empty() ? "" : ",") + name((begin + i) % count);
    if (end - i >= 2) {
      text += "-" + name((begin + end) % count);
      i = end + 1;
    } else {
      ++i;
    }
  }
  return text;
}

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

}  // namespace

std::optional<long> ReadClock(const std::string& word) {
  if (word == "midnight" || word == "noon") {
    return word == "noon" ? DaySeconds / 2 : 0;
  }
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
  constexpr long FirstYear = 1970, LastYear = 2038;
  const std::size_t t = word.find('t');
  const std::vector<std::string> parts = Split(word.substr(0, t), '-');
  if (parts.size() != 3 || parts[0].size() != 4) {
    return std::nullopt;
  }
  const auto year = ReadDigits(parts[0]), month = ReadDigits(parts[1], 2),
             day = ReadDigits(parts[2], 2);
  if (!year || !month || !day || *year < FirstYear || *year > LastYear) {
    return std::nullopt;
  }
  const std::chrono::year_month_day date(std::chrono::year(static_cast<int>(*year)),
                                         std::chrono::month(static_cast<unsigned>(*month)),
                                         std::chrono::day(static_cast<unsigned>(*day)));
  PhraseDate read;
  if (t != std::string::npos) {
    read.m_Clock = ReadClock(word.substr(t + 1));
  }
  if (!date.ok() || (t != std::string::npos && !read.m_Clock)) {
    return std::nullopt;
  }
  read.m_Day = static_cast<long>(std::chrono::sys_days(date).time_since_epoch().count());
  return read.m_Day <= LocalCalendar::End() / DaySeconds ? std::optional(read) : std::nullopt;
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

std::optional<long> ReadWeekdayList(const std::string& word) {
  constexpr long MondayToFriday = 0x3E, Weekend = 0x41;
  if (word == "weekdays" || word == "weekday") {
    return MondayToFriday;
  }
  if (word == "weekends" || word == "weekend") {
    return Weekend;
  }
  return ReadMask(word, 7, true,
                  [](const std::string& name) { return ReadName(WeekdayNames(), name); });
}

std::optional<long> ReadMonthDayList(const std::string& word) {
  constexpr long Days = 31;
  return ReadMask(word, Days, false, [](const std::string& text) -> std::optional<long> {
    const auto day = ReadDigits(text, 2);
    return day && *day >= 1 && *day <= Days ? std::optional(*day - 1) : std::nullopt;
  });
}

std::optional<long> ReadMonthList(const std::string& word) {
  return ReadMask(word, 12, true,
                  [](const std::string& name) { return ReadName(MonthNames(), name); });
}

std::optional<long> ReadOrdinal(const std::string& word) {
  const auto found = std::find(OrdinalNames().begin(), OrdinalNames().end(), word);
  return found == OrdinalNames().end()
             ? std::nullopt
             : std::optional(static_cast<long>(found - OrdinalNames().begin()) + 1);
}

std::optional<long> ReadWeek(const std::string& word) {
  const auto week = ReadDigits(word, 1);
  return week && *week >= 1 && *week <= TriggerRule::LastWeek ? week : std::nullopt;
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

bool IsWeekdayList(const std::string& word) {
  return ReadWeekdayList(word).has_value();
}

bool IsMonthDayList(const std::string& word) {
  return ReadMonthDayList(word).has_value();
}

bool IsMonthList(const std::string& word) {
  return ReadMonthList(word).has_value();
}

bool IsOrdinal(const std::string& word) {
  return ReadOrdinal(word).has_value();
}

bool IsWeek(const std::string& word) {
  return ReadWeek(word).has_value();
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

std::string WeekdayListWords(long mask) {
  if (mask == ReadWeekdayList("weekdays") || mask == ReadWeekdayList("weekends")) {
    return mask == ReadWeekdayList("weekdays") ? "weekdays" : "weekends";
  }
  return MaskWords(mask, 7, 1, [](int day) {
    return WeekdayNames()[static_cast<std::size_t>(day)].substr(0, 3);
  });
}

std::string MonthDayListWords(long mask) {
  return MaskWords(mask, 31, 0, [](int bit) { return std::to_string(bit + 1); });
}

std::string MonthListWords(long mask) {
  return MaskWords(mask, 12, 0, [](int month) {
    return MonthNames()[static_cast<std::size_t>(month)].substr(0, 3);
  });
}

std::string OrdinalWord(long week) {
  return OrdinalNames()[static_cast<std::size_t>(week - 1)];
}

bool IsLengthUnit(const std::string& word) {
  return UnitSeconds(word).has_value();
}

}  // namespace NoxAgent
