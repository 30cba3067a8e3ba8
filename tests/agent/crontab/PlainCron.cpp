#include "tests/agent/crontab/PlainCron.h"

#include <cstdint>
#include <sstream>

namespace NoxAgentTest {

namespace {

// Names become numbers where they stand: the position in the row, of three letters each.
int PlainNumber(const std::string& word) {
  const std::string months = "...janfebmaraprmayjunjulaugsepoctnovdec";
  const std::string weekdays = "sunmontuewedthufrisat";
  for (const std::string& names : {months, weekdays}) {
    if (const std::size_t at = names.find(word); at != std::string::npos) {
      return static_cast<int>(at / 3);
    }
  }
  return std::stoi(word);
}

std::uint64_t PlainField(const std::string& text, int least, int most) {
  std::uint64_t field = 0;
  std::istringstream parts(text);
  for (std::string part; std::getline(parts, part, ',');) {
    const std::size_t slash = part.find('/');
    const std::string range = part.substr(0, slash);
    const int step = slash == std::string::npos ? 1 : std::stoi(part.substr(slash + 1));
    const std::size_t dash = range.find('-');
    const int first = range == "*" ? least : PlainNumber(range.substr(0, dash));
    const int last = range == "*"                ? most
                     : dash == std::string::npos ? first
                                                 : PlainNumber(range.substr(dash + 1));
    for (int number = first; number <= last; number += step) {
      field |= std::uint64_t{1} << number;
    }
  }
  return field;
}

bool IsSet(std::uint64_t field, int number) {
  return (field >> number & 1) != 0;
}

}  // namespace

HalfHours::HalfHours(long from, long until) : m_From(from), m_Until(until) {
  for (long begin = from - from % Seconds; begin <= until; begin += Seconds) {
    HalfHour half{begin, {}};
    const std::time_t time = begin;
    (void)localtime_r(&time, &half.m_Shown);
    m_All.push_back(half);
  }
}

std::vector<long> PlainCronMinutes(const std::string& expression, const HalfHours& span) {
  std::istringstream words(expression);
  std::string minute;
  std::string hour;
  std::string day;
  std::string month;
  std::string weekday;
  words >> minute >> hour >> day >> month >> weekday;
  const auto minutes = PlainField(minute, 0, 59);
  const auto hours = PlainField(hour, 0, 23);
  const auto days = PlainField(day, 1, 31);
  const auto months = PlainField(month, 1, 12);
  const auto named = PlainField(weekday, 0, 6);
  const auto weekdays = named | named >> 7;  // 7 is Sunday too
  const bool either = day[0] != '*' && weekday[0] != '*';
  std::vector<long> moments;
  for (const HalfHours::HalfHour& half : span.All()) {
    const std::tm& shown = half.m_Shown;
    const bool date = IsSet(days, shown.tm_mday);
    const bool weekdayFits = IsSet(weekdays, shown.tm_wday);
    if (!IsSet(hours, shown.tm_hour) || !IsSet(months, shown.tm_mon + 1) ||
        !(either ? date || weekdayFits : date && weekdayFits)) {
      continue;
    }
    for (int i = 0; i < HalfHours::Seconds / 60; ++i) {
      const long moment = half.m_Begin + i * 60;
      if (IsSet(minutes, shown.tm_min + i) && moment >= span.From() && moment <= span.Until()) {
        moments.push_back(moment);
      }
    }
  }
  return moments;
}

}  // namespace NoxAgentTest
