#include "agent/client/RunCalendar.h"

#include "agent/client/LocalTime.h"

#include <chrono>
#include <ctime>
#include <iomanip>
#include <sstream>

namespace NoxAgent {

namespace {

constexpr const char* Week = "     Sun     Mon     Tue     Wed     Thu     Fri     Sat";
constexpr int DaysOfWeek = 7;
constexpr int CellWidth = 8;
constexpr int RunsWidth = 5;

std::chrono::year_month YearMonth(int year, int month) {
  return std::chrono::year(year) / std::chrono::month(static_cast<unsigned>(month) + 1);
}

int WeekdayOfFirst(int year, int month) {
  const std::chrono::sys_days first = YearMonth(year, month) / 1;
  return static_cast<int>(std::chrono::weekday(first).c_encoding());
}

int DaysIn(int year, int month) {
  const std::chrono::year_month_day last = YearMonth(year, month) / std::chrono::last;
  return static_cast<int>(static_cast<unsigned>(last.day()));
}

}  // namespace

RunCalendar::Date RunCalendar::DateOf(long seconds) {
  const std::time_t time = seconds;
  std::tm fields{};
  (void)::localtime_r(&time, &fields);
  return {fields.tm_year + 1900, fields.tm_mon, fields.tm_mday};
}

void RunCalendar::Add(long run) {
  ++m_Runs[DateOf(run)];
}

void RunCalendar::Print(std::ostream& out) const {
  const Date first = DateOf(m_From), last = DateOf(m_To);
  for (int month = first.m_Year * 12 + first.m_Month; month <= last.m_Year * 12 + last.m_Month;
       ++month) {
    PrintMonth(month / 12, month % 12, out);
  }
}

void RunCalendar::PrintMonth(int year, int month, std::ostream& out) const {
  out << MonthName(month) << ' ' << year << '\n' << Week << '\n';
  int column = WeekdayOfFirst(year, month);
  std::string line(static_cast<std::size_t>(column * CellWidth), ' ');
  for (int day = 1; day <= DaysIn(year, month); ++day) {
    line += Cell({year, month, day});
    if (++column % DaysOfWeek != 0 && day != DaysIn(year, month)) {
      continue;
    }
    out << line.substr(0, line.find_last_not_of(' ') + 1) << '\n';
    line.clear();
  }
  out << '\n';
}

std::string RunCalendar::Cell(const Date& date) const {
  std::ostringstream cell;
  cell << std::setw(CellWidth - RunsWidth) << date.m_Day << std::setw(RunsWidth);
  const auto found = m_Runs.find(date);
  if (found != m_Runs.end()) {
    cell << found->second;
  } else {
    cell << (date < DateOf(m_From) || date > DateOf(m_To) ? "" : ".");
  }
  return cell.str();
}

}  // namespace NoxAgent
