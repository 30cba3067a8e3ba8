#include "agent/client/HandlerRun.h"

#include "tests/support/Texts.h"

#include <VirtualTime/Zone.h>

#include <gtest/gtest.h>

namespace NoxAgentTest {

using NoxAgent::ReadHandlerRun;
using TestSupport::Texts;

namespace {

using Answer = std::map<std::string, std::string>;

Texts Told(const Answer& answer) {
  const VirtualTime::Zone zone("UTC0");
  return ReadHandlerRun(answer).value().Sentences();
}

}  // namespace

TEST(HandlerRun, IsNoneWithoutAStateThatIsKnown) {
  EXPECT_FALSE(ReadHandlerRun(std::nullopt));
  EXPECT_FALSE(ReadHandlerRun(Answer{}));
  EXPECT_FALSE(ReadHandlerRun(Answer{{"state", "asleep"}}));
  EXPECT_TRUE(NoxAgent::ToJson(std::nullopt).IsNull());
}

TEST(HandlerRun, TellsWhatItWaitsForAndWhatWaitsForIt) {
  EXPECT_EQ(Told({{"state", "waiting"}, {"reason", "4 other runs go on"}}),
            Texts{"A run waits to be started: 4 other runs go on."});
  EXPECT_EQ(Told({{"state", "running"}, {"start", "1781510400"}, {"queued", "1781510460"}}),
            (Texts{"A run is under way since 2026-06-15 08:00:00 +0000.",
                   "Its next run has been waiting for the end of that one since 2026-06-15 "
                   "08:01:00 +0000."}));
}

TEST(HandlerRun, TellsHowItEndedUnlessWell) {
  EXPECT_EQ(Told({{"state", "ended"}, {"result", "Failed"}}), Texts{"Its run failed."});
  EXPECT_EQ(Told({{"state", "ended"},
                  {"start", "1781510400"},
                  {"result", "Failed"},
                  {"reason", "there is no job file /x/y.job"}}),
            Texts{"Its run of 2026-06-15 08:00:00 +0000 failed: there is no job file "
                  "/x/y.job."});
  EXPECT_EQ(Told({{"state", "ended"}, {"result", "Ok"}, {"reason", "exit status 0"}}), Texts());
}

TEST(HandlerRun, TellsOfAttempts) {
  EXPECT_EQ(Told({{"state", "waiting"}, {"start", "1781510400"}, {"reason", "exit status 1"}}),
            Texts{"The run of 2026-06-15 08:00:00 +0000 goes on with another attempt: exit status "
                  "1."});
  EXPECT_EQ(Told({{"state", "ended"},
                  {"start", "1781510400"},
                  {"result", "Failed"},
                  {"final", "1"},
                  {"reason", "exit status 1"}}),
            Texts{"Its run of 2026-06-15 08:00:00 +0000 failed: exit status 1. It is not tried "
                  "again: the scheduler was told that it is finished."});
}

TEST(HandlerRun, TellsOfAStartThatWasLeftOutThoughNoRunIsKnown) {
  const auto run = ReadHandlerRun(
      Answer{{"state", "none"}, {"skipped", "1781510400"}, {"skipReason", "it is late"}});
  ASSERT_TRUE(run);
  EXPECT_FALSE(run->IsUnderWay());
  EXPECT_EQ("it is late", run->ReasonAgainst("Skipped"));
  const VirtualTime::Zone zone("UTC0");
  EXPECT_EQ(run->Sentences(),
            Texts{"Its start at 2026-06-15 08:00:00 +0000 was left out: it is late."});
}

TEST(HandlerRun, KnowsTheReasonOfAFailureAlone) {
  const auto ok = ReadHandlerRun(Answer{{"state", "ended"}, {"result", "Ok"}, {"reason", "x"}});
  EXPECT_EQ("", ok.value().ReasonAgainst("Failed")) << "somebody else has said so";
  const auto failed =
      ReadHandlerRun(Answer{{"state", "ended"}, {"result", "Failed"}, {"reason", "x"}});
  EXPECT_EQ("x", failed.value().ReasonAgainst("Failed"));
}

}  // namespace NoxAgentTest
