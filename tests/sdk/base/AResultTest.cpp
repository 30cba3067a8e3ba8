#include <BaseSDK/AResult.h>

#include <gtest/gtest.h>

#include <cerrno>

namespace BaseSDK {
namespace {

TEST(AResult, CarriesTheErrnoUnderTopBitsBinaryTen) {
  EXPECT_EQ(ResultFromErrno(0), 0u);
  EXPECT_EQ(ResultFromErrno(ENOENT), 0x80050002UL);
  EXPECT_EQ(ResultFromErrno(ENOSPC) >> 30, 2u);
  EXPECT_EQ(ErrnoFromResult(ResultFromErrno(ENOSPC)), ENOSPC);
}

TEST(AResult, OtherCodesCarryNoErrno) {
  for (const unsigned long code : {0UL, 2UL, 0x80000044UL, 0xC0050002UL, 0x40050002UL}) {
    EXPECT_EQ(ErrnoFromResult(code), 0) << code;
  }
}

}  // namespace
}  // namespace BaseSDK
