#include "agent/client/LocalTime.h"

#include <BaseSDK/ADateTime.h>

#include <array>
#include <cstdint>

namespace NoxAgent {

std::string LocalTimeText(long seconds) {
  return BaseSDK::ADateTime(seconds).ToString("%Y-%m-%d %H:%M:%S %z").ToUtf8();
}

Json MomentOrNull(long seconds) {
  return seconds > 0 ? Json{{"seconds", seconds}, {"local", LocalTimeText(seconds)}} : Json();
}

const char* MonthName(int month) {
  constexpr std::array<const char*, 12> Names = {"January",   "February", "March",    "April",
                                                 "May",       "June",     "July",     "August",
                                                 "September", "October",  "November", "December"};
  return Names.at(static_cast<std::size_t>(month));
}

std::string DurationText(std::chrono::milliseconds duration) {
  struct Unit {
    std::int64_t m_Seconds;
    const char* m_Name;
  };
  constexpr std::array<Unit, 4> Units = {{{86400, " d"}, {3600, " h"}, {60, " min"}, {1, " s"}}};
  const std::int64_t tenths = duration.count() / 100;
  const std::int64_t seconds = tenths / 10;
  if (seconds < 10) {
    return std::to_string(seconds) + "." + std::to_string(tenths % 10) + " s";
  }
  std::size_t large = 0;
  while (Units.at(large).m_Seconds > seconds) {
    ++large;
  }
  const Unit& unit = Units.at(large);
  std::string text = std::to_string(seconds / unit.m_Seconds) + unit.m_Name;
  if (large + 1 == Units.size()) {
    return text;
  }
  const Unit& next = Units.at(large + 1);
  const std::int64_t rest = seconds % unit.m_Seconds / next.m_Seconds;
  return rest == 0 ? text : text + " " + std::to_string(rest) + next.m_Name;
}

}  // namespace NoxAgent
