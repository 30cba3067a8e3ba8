#pragma once

#include <ctime>
#include <string>
#include <vector>

namespace NoxAgentTest {

/// A span of time, each half of an hour of it with what the clocks show then, by the C library. No
/// clock of the zones in these tests is set within one.
class HalfHours {
 public:
  static constexpr long Seconds = 1800;

  struct HalfHour {
    long m_Begin = 0;
    std::tm m_Shown{};
  };

  /// The zone in force counts.
  HalfHours(long from, long until);

  long From() const { return m_From; }
  long Until() const { return m_Until; }
  const std::vector<HalfHour>& All() const { return m_All; }

 private:
  const long m_From;
  const long m_Until;
  std::vector<HalfHour> m_All;
};

/// All minutes of the span that a crontab expression of five fields names. The simplest way there
/// is: a look at each of them. It shares nothing with what it is to prove.
std::vector<long> PlainCronMinutes(const std::string& expression, const HalfHours& span);

}  // namespace NoxAgentTest
