#include "agent/handler/job/InputText.h"

#include <gtest/gtest.h>

namespace NoxHandlerTest {

using namespace NoxHandler;

TEST(InputText, KnowsThreeEscapes) {
  std::string input = "before";
  EXPECT_EQ(ReadInputText(R"(a\tb\\n "c"\n)", input).ToUtf8(), "");
  EXPECT_EQ(input, "a\tb\\n \"c\"\n");
  EXPECT_EQ(ReadInputText("", input).ToUtf8(), "");
  EXPECT_EQ(input, "");
}

TEST(InputText, RefusesAnyOther) {
  for (const char* text : {"\\", "a\\", "\\x", "\\r", "\\\\\\"}) {
    std::string input = "before";
    EXPECT_EQ(ReadInputText(text, input).ToUtf8(),
              "a backslash is to be followed by n, t or another backslash")
        << text;
    EXPECT_EQ(input, "before");
  }
}

TEST(InputText, Has32KiBAtMost) {
  std::string input;
  const std::string most(32 * 1024, 'x');
  EXPECT_EQ(ReadInputText(most.c_str(), input).ToUtf8(), "");
  EXPECT_EQ(input, most);
  EXPECT_EQ(ReadInputText((most + "\\n").c_str(), input).ToUtf8(), "is to be 32 KiB at most");
}

}  // namespace NoxHandlerTest
