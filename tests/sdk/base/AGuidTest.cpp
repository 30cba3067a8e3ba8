#include <BaseSDK/AGuid.h>

#include <gtest/gtest.h>

namespace BaseSDK {
namespace {

constexpr char Written[] = "{7C0A1D52-3B4E-4F6A-9A51-2D8E6C9B4F10}";

TEST(AGuid, ReadsAndWritesItsForm) {
  const AGuid guid(Written);
  EXPECT_TRUE(guid.IsValid());
  EXPECT_EQ(guid.ToString(), AString(Written));
  EXPECT_EQ(guid.Value().Data1, 0x7C0A1D52u);
  EXPECT_EQ(guid.Value().Data2, 0x3B4E);
  EXPECT_EQ(guid.Value().Data3, 0x4F6A);
  EXPECT_EQ(guid.Value().Data4[0], 0x9A);
  EXPECT_EQ(guid.Value().Data4[7], 0x10);
  EXPECT_EQ(AGuid(guid.Value()), guid);
}

TEST(AGuid, TakesEitherCaseWithAndWithoutBraces) {
  EXPECT_EQ(AGuid("7c0a1d52-3b4e-4f6a-9a51-2d8e6c9b4f10"), AGuid(Written));
  EXPECT_EQ(AGuid(AString("{7c0a1d52-3b4e-4f6a-9a51-2d8e6c9b4f10}")), AGuid(Written));
}

TEST(AGuid, AnyOtherTextIsNotValid) {
  const char* const texts[] = {"",
                               "{}",
                               "{7C0A1D52-3B4E-4F6A-9A51-2D8E6C9B4F10",
                               "7C0A1D52-3B4E-4F6A-9A51-2D8E6C9B4F10}",
                               "(7C0A1D52-3B4E-4F6A-9A51-2D8E6C9B4F10)",
                               "7C0A1D523B4E4F6A9A512D8E6C9B4F10",
                               "7C0A1D52-3B4E-4F6A-9A51-2D8E6C9B4F1",
                               "7C0A1D52-3B4E-4F6A-9A51-2D8E6C9B4F1G",
                               "7C0A1D52-3B4E-4F6A-9A512-D8E6C9B4F10",
                               "{7C0A1D52-3B4E-4F6A-9A51-2D8E6C9B4F10} "};
  for (const char* text : texts) {
    EXPECT_FALSE(AGuid(text).IsValid()) << text;
  }
  EXPECT_FALSE(AGuid(static_cast<const char*>(nullptr)).IsValid());
  EXPECT_FALSE(AGuid().IsValid());
}

TEST(AGuid, OrdersAsWritten) {
  const char* const ascending[] = {
      "00000000-0000-0000-0000-000000000000", "00000000-0000-0000-0000-000000000001",
      "00000000-0000-0000-0001-000000000000", "00000000-0000-0001-0000-000000000000",
      "00000000-0001-0000-0000-000000000000", "00000001-0000-0000-0000-000000000000",
      "80000000-0000-0000-0000-000000000000", "FFFFFFFF-0000-0000-0000-000000000000"};
  for (std::size_t i = 0; i < std::size(ascending); ++i) {
    for (std::size_t j = 0; j < std::size(ascending); ++j) {
      const int order = AGuid(ascending[i]).Compare(AGuid(ascending[j]));
      EXPECT_EQ(order, i < j ? -1 : i > j ? 1 : 0) << ascending[i] << ' ' << ascending[j];
    }
  }
}

}  // namespace
}  // namespace BaseSDK
