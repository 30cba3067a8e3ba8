#include "agent/phrase/PhraseLists.h"

#include "agent/phrase/PhraseParts.h"
#include "agent/schedule/TriggerRule.h"

#include <algorithm>

namespace NoxAgent {

namespace {

using Names = std::vector<std::string>;

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

}  // namespace

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

}  // namespace NoxAgent
