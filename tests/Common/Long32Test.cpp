#include "Common/Long32.h"

#include <gtest/gtest.h>

namespace Nox {
namespace {

TEST(Long32, StopsAtBothEnds) {
  EXPECT_EQ(Clamp32(INT64_MAX), Long32Max);
  EXPECT_EQ(Clamp32(INT64_MIN), Long32Min);
  EXPECT_EQ(Clamp32(std::int64_t{Long32Max} + 1), Long32Max);
  EXPECT_EQ(Clamp32(std::int64_t{Long32Min} - 1), Long32Min);
  EXPECT_EQ(Clamp32(-7), -7);
  EXPECT_EQ(Add32(Long32Max, 1), Long32Max);
  EXPECT_EQ(Add32(Long32Min, -1), Long32Min);
  EXPECT_EQ(Add32(1735689600, 630720000), Long32Max);
  EXPECT_EQ(Add32(40, 2), 42);
  EXPECT_EQ(Sub32(Long32Min, 1), Long32Min);
  EXPECT_EQ(Sub32(Long32Max, -1), Long32Max);
  EXPECT_EQ(Sub32(0, Long32Min), Long32Max);
  EXPECT_EQ(Mul32(Long32Max, 60), Long32Max);
  EXPECT_EQ(Mul32(Long32Min, 60), Long32Min);
  EXPECT_EQ(Mul32(Long32Min, Long32Min), Long32Max);
  EXPECT_EQ(Mul32(-6, 7), -42);
}

TEST(Long32, IsWhat64BitsMakeOfItWithinItsRange) {
  const long values[] = {Long32Min, Long32Min + 1, -65536, -46341,        -46340,   -2, -1, 0, 1,
                         2,         46340,         46341,  Long32Max - 1, Long32Max};
  for (const std::int64_t left : values) {
    for (const std::int64_t right : values) {
      const long a = static_cast<long>(left), b = static_cast<long>(right);
      EXPECT_EQ(Add32(a, b), Clamp32(left + right)) << a << " + " << b;
      EXPECT_EQ(Sub32(a, b), Clamp32(left - right)) << a << " - " << b;
      EXPECT_EQ(Mul32(a, b), Clamp32(left * right)) << a << " * " << b;
    }
  }
}

}  // namespace
}  // namespace Nox
