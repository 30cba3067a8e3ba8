// What time it is, inside 32 bits.
#include "model/LocalTime.h"

#include <gtest/gtest.h>

#include <ctime>
#include <optional>

namespace {

std::optional<std::time_t> shownTime;

}  // namespace

// The linker sends the questions for the time here (--wrap): virtual time stays in 32 bits.
extern "C" {

std::time_t __real_time(std::time_t* result);
std::time_t __wrap_time(std::time_t* result);

std::time_t __wrap_time(std::time_t* result) {
  return shownTime ? *shownTime : __real_time(result);
}

}  // extern "C"

namespace {

TEST(LocalTime, NowEndsWith32BitTime) {
  shownTime = 1109664000;
  EXPECT_EQ(Nox::Now(), 1109664000);
  if constexpr (sizeof(std::time_t) > 4) {
    shownTime = std::time_t{1} << 32;
    EXPECT_EQ(Nox::Now(), 2147483647);
  }
  shownTime.reset();
}

}  // namespace
