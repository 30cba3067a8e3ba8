// Weekdays, days of the month, months and weeks in a schedule, in both directions. Words are
// lower-case, as PhraseWords makes them.
#pragma once

#include <optional>
#include <string>

namespace NoxAgent {

// Each is empty when the word is none of its kind.

std::optional<long> ReadWeekdayList(const std::string& word);   ///< mask, bit 0 is Sunday
std::optional<long> ReadMonthDayList(const std::string& word);  ///< mask, bit 0 is the 1st
std::optional<long> ReadMonthList(const std::string& word);     ///< mask, bit 0 is January
std::optional<long> ReadOrdinal(const std::string& word);       ///< 1 to 4, TriggerRule::LastWeek
std::optional<long> ReadWeek(const std::string& word);          ///< 1 to 5

bool IsWeekdayList(const std::string& word);
bool IsMonthDayList(const std::string& word);
bool IsMonthList(const std::string& word);
bool IsOrdinal(const std::string& word);
bool IsWeek(const std::string& word);

std::string WeekdayListWords(long mask);
std::string MonthDayListWords(long mask);
std::string MonthListWords(long mask);
std::string OrdinalWord(long week);

}  // namespace NoxAgent
