#include <BaseSDK/AText.h>

#include <gtest/gtest.h>

namespace BaseSDK {
namespace {

TEST(AText, KnowsTheWordsForTrue) {
  for (const char* text : {"true", "TRUE", "True", "yes", "YES", "on", "On", "1", "2", "-1"}) {
    EXPECT_TRUE(AText::StrToBool(text)) << text;
  }
  for (const char* text : {"", "false", "no", "off", "0", "00", "y", "Y", "t", "truely", "1x"}) {
    EXPECT_FALSE(AText::StrToBool(text)) << text;
  }
}

struct SplitRow {
  const char* m_Text;
  const char* m_Separator;
  std::vector<AString> m_Parts;
};

TEST(AText, SplitsAtEverySeparator) {
  const SplitRow rows[] = {
      {"a:b:c", ":", {"a", "b", "c"}},
      {"a", ":", {"a"}},
      {"", ":", {}},
      {":", ":", {"", ""}},
      {"a::b", ":", {"a", "", "b"}},
      {":a:", ":", {"", "a", ""}},
      {"a, b", ", ", {"a", "b"}},
      {"aaa", "aa", {"", "a"}},
      {"abc", "", {"abc"}},
  };
  for (const SplitRow& row : rows) {
    std::vector<AString> parts = {"old"};
    AText::StrToVector(row.m_Text, row.m_Separator, parts);
    EXPECT_EQ(parts, row.m_Parts) << '"' << row.m_Text << "\" at \"" << row.m_Separator << '"';
  }
}

TEST(AText, SplitsATextThatIsOneOfTheOldParts) {
  std::vector<AString> parts = {"a:b", ":"};
  AText::StrToVector(parts[0], parts[1], parts);
  EXPECT_EQ(parts, (std::vector<AString>{"a", "b"}));
}

}  // namespace
}  // namespace BaseSDK
