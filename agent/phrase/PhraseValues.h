// Times of day, days, lengths and counts in a schedule, in both directions. Words are lower-case,
// as PhraseWords makes them.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace NoxAgent {

/// A day, and a time of day if one is written with it.
struct PhraseDate {
  long m_Day = 0;  ///< from 1970-01-01 on, which is day 0
  std::optional<long> m_Clock;
};

// Each is empty when the word is none of its kind.

std::optional<long> ReadClock(const std::string& word);  ///< seconds since midnight
std::optional<std::vector<long>> ReadClockList(const std::string& word);  ///< in order, each once
std::optional<PhraseDate> ReadPhraseDate(const std::string& word);        ///< to January 2038
std::optional<long> ReadLength(const std::string& word);  ///< in seconds, more than 0
std::optional<long> ReadCount(const std::string& word);   ///< from 2 to 999

/// Why what is written like a day is none that a schedule can have; empty for all else.
std::string FaultOfDate(const std::string& word);

bool IsClock(const std::string& word);
bool IsClockList(const std::string& word);
bool IsDate(const std::string& word);
bool IsLength(const std::string& word);
bool IsCount(const std::string& word);

std::string ClockWords(long clock);
std::string ClockListWords(const std::vector<long>& clocks);
std::string DateWords(long day);
std::string LengthWords(long seconds);  ///< "10 min", in the largest unit that fits

/// Whether a number may have the word behind it as a unit of time: "min", "hours".
bool IsLengthUnit(const std::string& word);

}  // namespace NoxAgent
