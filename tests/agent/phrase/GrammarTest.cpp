#include "agent/phrase/Grammar.h"

#include <gtest/gtest.h>

namespace NoxAgentTest {

using NoxAgent::Grammar;
using Words = std::vector<std::string>;

namespace {

const Grammar& Sample() {
  static const Grammar grammar(
      {{"WHOLE", "PART [and WHOLE]"}, {"PART", "now | every N=count (days | weeks) [at N]"}},
      [](const std::string&, const std::string& word) {
        return !word.empty() && word.find_first_not_of("0123456789") == std::string::npos;
      });
  return grammar;
}

std::string Labels(const Grammar::Outcome& outcome) {
  std::string labels;
  for (const Grammar::Capture& capture : outcome.m_Captures) {
    labels += capture.m_Label + std::to_string(capture.m_Word) + " ";
  }
  return labels;
}

}  // namespace

TEST(Grammar, LabelsEachWordOfAMatch) {
  const auto outcome = Sample().Match({"every", "2", "weeks", "at", "7", "and", "now"});
  EXPECT_TRUE(outcome.m_IsWhole);
  EXPECT_EQ("every0 count1 weeks2 at3 N4 and5 now6 ", Labels(outcome));
}

TEST(Grammar, TellsWhatCouldStandAtTheFirstWordThatCannot) {
  const auto outcome = Sample().Match({"every", "2", "moons"});
  EXPECT_FALSE(outcome.m_IsWhole);
  EXPECT_EQ(2U, outcome.m_Understood);
  EXPECT_EQ((Words{"days", "weeks"}), outcome.m_Expected);
  EXPECT_FALSE(outcome.m_CouldEnd);
}

TEST(Grammar, TellsThatItCouldEndWhereAWordIsTooMany) {
  const auto outcome = Sample().Match({"every", "2", "days", "2"});
  EXPECT_EQ(3U, outcome.m_Understood);
  EXPECT_EQ((Words{"at", "and"}), outcome.m_Expected);
  EXPECT_TRUE(outcome.m_CouldEnd);
}

TEST(Grammar, TellsWhatCouldFollowWordsThatEndTooEarly) {
  const auto outcome = Sample().Match({"every"});
  EXPECT_FALSE(outcome.m_IsWhole);
  EXPECT_EQ(1U, outcome.m_Understood);
  EXPECT_EQ(Words{"N"}, outcome.m_Expected);
}

TEST(Grammar, IsShownWithoutLabels) {
  EXPECT_EQ("every N (days | weeks) [at N]", Grammar::Shown("every N=count (days | weeks) [at N]"));
}

}  // namespace NoxAgentTest
