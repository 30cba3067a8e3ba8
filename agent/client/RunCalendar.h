#pragma once

#include <map>
#include <ostream>
#include <string>
#include <vector>

namespace NoxAgent {

/// Prints months like a wall calendar, with the number of runs on each day.
///
/// Weeks begin on Sunday, as those of weekly triggers do. Local time (TZ).
class RunCalendar {
 public:
  /// Shows the days from that of `from` to that of `to`, both in seconds since the epoch.
  RunCalendar(long from, long to) : m_From(from), m_To(to) {}

  /// Counts a run, in seconds since the epoch.
  void Add(long run);
  /// A dot stands for a day without runs; days outside the span have neither number nor dot.
  void Print(std::ostream& out) const;

 private:
  struct Date {
    int m_Year;
    int m_Month;  ///< from 0
    int m_Day;

    auto operator<=>(const Date&) const = default;
  };

  static Date DateOf(long seconds);
  void PrintMonth(int year, int month, std::ostream& out) const;
  std::string Cell(const Date& date) const;

  const long m_From;
  const long m_To;
  std::map<Date, unsigned> m_Runs;
};

}  // namespace NoxAgent
