#include "tests/model/Moment.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace Moment {

long At(const std::string& text) {
  if (text == "-") {
    return -1;
  }
  std::tm fields{};
  int offset = 0;
  int length = -1;
  const int read = std::sscanf(text.c_str(), "%4d-%2d-%2d %2d:%2d:%2d %5d%n", &fields.tm_year,
                               &fields.tm_mon, &fields.tm_mday, &fields.tm_hour, &fields.tm_min,
                               &fields.tm_sec, &offset, &length);
  if (read == 7 && static_cast<std::size_t>(length) == text.size()) {
    fields.tm_year -= 1900;
    fields.tm_mon -= 1;
    return static_cast<long>(timegm(&fields)) - (offset / 100 * 60 + offset % 100) * 60;
  }
  char* end = nullptr;
  const long seconds = std::strtol(text.c_str(), &end, 10);
  EXPECT_TRUE(!text.empty() && *end == 0) << "no moment: " << text;
  return seconds;
}

std::string Show(long moment) {
  if (moment == -1) {
    return "-";
  }
  const std::time_t time = moment;
  std::tm fields{};
  localtime_r(&time, &fields);
  std::array<char, 64> text{};
  (void)std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S %z", &fields);
  return text.data();
}

}  // namespace Moment
