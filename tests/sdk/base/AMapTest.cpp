#include <BaseSDK/ALtstr.h>
#include <BaseSDK/AMap.h>

#include <gtest/gtest.h>

namespace BaseSDK {
namespace {

TEST(AMap, OrdersStringsByCodePoint) {
  Container::AMap<AString, int, ALtstr> map;
  map["b"] = 3;
  map["B"] = 1;
  map[L"\u00E4"] = 4;
  map["a"] = 2;
  int expected = 1;
  for (const auto& [key, value] : map) {
    EXPECT_EQ(value, expected++) << key.ToUtf8();
  }
  EXPECT_FALSE(map.insert({"a", 9}).second);
  EXPECT_EQ(map["a"], 2);
}

}  // namespace
}  // namespace BaseSDK
