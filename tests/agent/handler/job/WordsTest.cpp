#include "agent/handler/job/Words.h"

#include <gtest/gtest.h>

using Words = std::vector<std::string>;

namespace NoxHandlerTest {

using namespace NoxHandler;

TEST(Words, SplitAtBlanksOutsideOfQuotes) {
  const struct {
    const char* m_Text;
    Words m_Words;
  } rows[] = {
      {"", {}},
      {"  \t ", {}},
      {"a", {"a"}},
      {" a  b\tc ", {"a", "b", "c"}},
      {"'a b' c", {"a b", "c"}},
      {"a'b 'c", {"ab c"}},
      {"\"a b\"", {"a b"}},
      {"'' \"\"", {"", ""}},
      {"a\\ b", {"a b"}},
      {"'a\\b'", {"a\\b"}},
      {"\"a\\\"b\"", {"a\"b"}},
      {"\\'a\\'", {"'a'"}},
      {"'\"' \"'\"", {"\"", "'"}},
      {"$HOME *.c `x`", {"$HOME", "*.c", "`x`"}},
  };
  for (const auto& row : rows) {
    const auto words = SplitWords(row.m_Text);
    ASSERT_TRUE(words.has_value()) << row.m_Text;
    EXPECT_EQ(*words, row.m_Words) << row.m_Text;
  }
}

TEST(Words, RefuseWhatIsNotClosed) {
  for (const char* text : {"'a", "\"a", "a\\", "\"a'", "'a\\'b'"}) {
    EXPECT_FALSE(SplitWords(text).has_value()) << text;
  }
}

TEST(Words, AreJoinedToATextThatIsSplitIntoThemAgain) {
  const std::vector<std::string> words{"a",           "a b",    "",   "it's", "x\"y",
                                       "back\\slash", "'\"\\ ", "\t", "$HOME"};
  EXPECT_EQ(SplitWords(JoinWords(words)), words) << JoinWords(words);
  EXPECT_EQ("a 'a b' \"it's\"", JoinWords({"a", "a b", "it's"}));
}

}  // namespace NoxHandlerTest
