#include "agent/library/Pattern.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

namespace NoxAgent {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(Pattern, MatchesTheWholeTextOrNothing) {
  EXPECT_THAT(MatchPattern("[a-z]+", "task"), ElementsAre("task"));
  EXPECT_THAT(MatchPattern("[a-z]+", "task 1"), IsEmpty());
  EXPECT_THAT(MatchPattern("[a-z]+", "1 task"), IsEmpty());
  EXPECT_THAT(MatchPattern("a|ab", "ab"), ElementsAre("ab"));
  EXPECT_THAT(MatchPattern("[a-z]*", ""), ElementsAre(""));
}

TEST(Pattern, TellsWhatEachGroupMatches) {
  EXPECT_THAT(MatchPattern("(.*)=([0-9]+)(s)?", "a=b=12"), ElementsAre("a=b=12", "a=b", "12", ""));
}

TEST(Pattern, ThatIsNoneIsAnError) {
  EXPECT_THROW(MatchPattern("(", "text"), std::invalid_argument);
}

}  // namespace
}  // namespace NoxAgent
