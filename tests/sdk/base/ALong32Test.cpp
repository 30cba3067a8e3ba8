#include <BaseSDK/ALong32.h>

#include <gtest/gtest.h>

namespace BaseSDK {
namespace {

TEST(ALong32, SaturatesAtBothEnds) {
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

}  // namespace
}  // namespace BaseSDK
