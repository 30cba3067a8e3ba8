#include <BaseSDK/AUrl.h>

#include <gtest/gtest.h>

#include <string>

namespace BaseSDK {
namespace {

TEST(AUrl, KeepsUnreservedCharacters) {
  const AString unreserved = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~";
  EXPECT_EQ(AUrl::Encode(unreserved), unreserved);
}

TEST(AUrl, EncodesAllElseAsUpperCaseHexadecimal) {
  EXPECT_EQ(AUrl::Encode("a b:c;d/e%f+g"), AString("a%20b%3Ac%3Bd%2Fe%25f%2Bg"));
  EXPECT_EQ(AUrl::Encode(L"\u00E4\u20AC"), AString("%C3%A4%E2%82%AC"));
  EXPECT_EQ(AUrl::Encode(""), AString());
}

TEST(AUrl, DecodeUndoesEncodeForAnyBytes) {
  std::string bytes;
  for (int i = 0; i < 256; ++i) {
    bytes += static_cast<char>(i);
  }
  const AString text = AString::FromUtf8(bytes);
  EXPECT_EQ(AUrl::Decode(AUrl::Encode(text)), text);
}

TEST(AUrl, DecodesBothCasesAndLeavesWhatIsNoEncoding) {
  EXPECT_EQ(AUrl::Decode("%c3%A4"), AString(L"\u00E4"));
  EXPECT_EQ(AUrl::Decode("%"), AString("%"));
  EXPECT_EQ(AUrl::Decode("%4"), AString("%4"));
  EXPECT_EQ(AUrl::Decode("%4g%g4%%41"), AString("%4g%g4%A"));
  EXPECT_EQ(AUrl::Decode("a+b"), AString("a+b"));
}

}  // namespace
}  // namespace BaseSDK
