#include <BaseSDK/AStringTokenizer.h>

#include <gtest/gtest.h>

#include <vector>

namespace BaseSDK {
namespace {

struct TokenRow {
  const char* m_Text;
  const char* m_Delimiters;
  int m_KeepEmpty;
  int m_MaxTokens;
  std::vector<AString> m_Tokens;
};

TEST(AStringTokenizer, Splits) {
  const TokenRow rows[] = {
      {"a b c", " ", 0, 0, {"a", "b", "c"}},
      {" a  b ", " ", 0, 0, {"a", "b"}},
      {" a  b ", " ", 1, 0, {"", "a", "", "b", ""}},
      {"a,b;c", ",;", 0, 0, {"a", "b", "c"}},
      {"a:b:c", ":", 0, 2, {"a", "b"}},
      {"::a:b:c", ":", 0, 2, {"a", "b"}},
      {"2005-03-01 08:00:00 Ok", " ", 1, 3, {"2005-03-01", "08:00:00", "Ok"}},
      {"d t two words", " ", 1, 3, {"d", "t", "two"}},
      {"d  t s", " ", 1, 3, {"d", "", "t"}},
      {"", " ", 0, 0, {}},
      {"", " ", 1, 0, {""}},
      {" ", " ", 0, 0, {}},
      {" ", " ", 1, 0, {"", ""}},
      {"abc", "", 0, 0, {"abc"}},
      {"abc", " ", 0, -1, {"abc"}},
      {"T1:0:1:0;T2:1:0:1;", ";", 0, 0, {"T1:0:1:0", "T2:1:0:1"}},
  };
  for (const TokenRow& row : rows) {
    SCOPED_TRACE(testing::Message() << '"' << row.m_Text << "\" at \"" << row.m_Delimiters << "\" "
                                    << row.m_KeepEmpty << ' ' << row.m_MaxTokens);
    const AStringTokenizer tokenizer(row.m_Text, row.m_Delimiters, row.m_KeepEmpty,
                                     row.m_MaxTokens);
    ASSERT_EQ(tokenizer.Count(), row.m_Tokens.size());
    for (std::size_t i = 0; i < row.m_Tokens.size(); ++i) {
      EXPECT_EQ(tokenizer.Token(i), row.m_Tokens[i]) << i;
    }
  }
}

TEST(AStringTokenizer, TokenPastTheEndIsEmpty) {
  const AStringTokenizer tokenizer("a b", " ");
  EXPECT_TRUE(tokenizer.Token(2).IsEmpty());
  EXPECT_TRUE(tokenizer.Token(static_cast<std::size_t>(-1)).IsEmpty());
}

}  // namespace
}  // namespace BaseSDK
