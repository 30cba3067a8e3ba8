#include "agent/handler/run/LatestRuns.h"

#include <gtest/gtest.h>

using BaseSDK::AString;
using Corvane::AgentInterfacesV3::AStringMap;

namespace NoxHandlerTest {

using namespace NoxHandler;

TEST(LatestRuns, KnowNothingOfATaskThatNeverRan) {
  LatestRuns runs;
  runs.NoteSkip("a", "why", 5);
  runs.NoteQueued("a", 5);
  EXPECT_TRUE(runs.Describe("a").empty());
  EXPECT_EQ(runs.Report(), AString("Command handler: 0 running, 0 waiting\n"));
}

TEST(LatestRuns, DescribeEachPhase) {
  LatestRuns runs;
  runs.NoteWaiting("a", 1, "too many");
  EXPECT_EQ(
      runs.Describe("a"),
      (AStringMap{{"state", "waiting"}, {"number", "1"}, {"runs", "1"}, {"reason", "too many"}}));
  runs.NoteStart("a", 1, 100, 7);
  EXPECT_EQ(
      runs.Describe("a"),
      (AStringMap{
          {"state", "running"}, {"number", "1"}, {"runs", "1"}, {"start", "100"}, {"pid", "7"}}));
  runs.NoteEnd("a", {100, 130, true, false, "exit status 0", 1});
  EXPECT_EQ(runs.Describe("a"), (AStringMap{{"state", "ended"},
                                            {"number", "1"},
                                            {"runs", "1"},
                                            {"start", "100"},
                                            {"end", "130"},
                                            {"result", "Ok"},
                                            {"reason", "exit status 0"}}));
  runs.NoteEnd("a", {200, 200, false, false, "no job", 2});
  EXPECT_EQ(runs.Describe("a"), (AStringMap{{"state", "ended"},
                                            {"number", "2"},
                                            {"runs", "2"},
                                            {"start", "200"},
                                            {"end", "200"},
                                            {"result", "Failed"},
                                            {"reason", "no job"}}));
}

TEST(LatestRuns, KeepWhatWasLeftOutUntilTheNextRunBegins) {
  LatestRuns runs;
  runs.NoteStart("a", 1, 100, 7);
  runs.NoteSkip("a", "first", 110);
  runs.NoteSkip("a", "second", 120);
  runs.NoteEnd("a", {100, 130, true, false, "fine", 1});
  AStringMap run = runs.Describe("a");
  EXPECT_EQ(run["start"], AString("100"));
  EXPECT_EQ(run["skipped"], AString("120"));
  EXPECT_EQ(run["skipReason"], AString("second"));
  EXPECT_EQ(run["skips"], AString("2"));
  runs.NoteStart("a", 2, 140, 8);
  EXPECT_EQ(runs.Describe("a").count("skipped"), 0u);
}

TEST(LatestRuns, TellOfTheNextRunThatIsQueuedUntilThisOneEnds) {
  LatestRuns runs;
  runs.NoteStart("a", 1, 100, 7);
  runs.NoteQueued("a", 110);
  EXPECT_EQ(runs.Describe("a").at("queued"), AString("110"));
  runs.NoteEnd("a", {100, 130, true, false, "fine", 1});
  EXPECT_EQ(runs.Describe("a").count("queued"), 0u);
}

TEST(LatestRuns, KeepWhatTheyKnowOfARunThroughItsAttempts) {
  LatestRuns runs;
  runs.NoteEnd("a", {50, 60, false, false, "earlier", 1});
  runs.NotePause("a", 2, 100, "exit status 1; again soon");
  EXPECT_EQ(runs.Describe("a"), (AStringMap{{"state", "waiting"},
                                            {"number", "2"},
                                            {"runs", "2"},
                                            {"start", "100"},
                                            {"reason", "exit status 1; again soon"}}));
  runs.NoteSkip("a", "first", 110);
  runs.NoteStart("a", 2, 100, 8);
  EXPECT_EQ(runs.Describe("a").at("skipped"), AString("110"));
  runs.NoteEnd("a", {100, 130, false, true, "exit status 2", 2});
  EXPECT_EQ(runs.Describe("a"), (AStringMap{{"state", "ended"},
                                            {"number", "2"},
                                            {"runs", "2"},
                                            {"start", "100"},
                                            {"end", "130"},
                                            {"skipped", "110"},
                                            {"skipReason", "first"},
                                            {"skips", "1"},
                                            {"result", "Failed"},
                                            {"final", "1"},
                                            {"reason", "exit status 2"}}));
}

TEST(LatestRuns, TellOfAStartThatWasLeftOutBesideTheRunBeforeIt) {
  LatestRuns runs;
  runs.NoteLeftOut("a", std::nullopt, "too late", 100);
  EXPECT_EQ(
      runs.Describe("a"),
      (AStringMap{
          {"state", "none"}, {"skipped", "100"}, {"skipReason", "too late"}, {"skips", "1"}}));
  runs.NoteEnd("a", {200, 210, true, false, "fine", 1});
  const auto before = runs.Find("a");
  runs.NoteWaiting("a", 2, "its splay");
  runs.NoteLeftOut("a", before, "too late", 300);
  EXPECT_EQ(runs.Describe("a"), (AStringMap{{"state", "ended"},
                                            {"number", "1"},
                                            {"runs", "2"},
                                            {"start", "200"},
                                            {"end", "210"},
                                            {"result", "Ok"},
                                            {"reason", "fine"},
                                            {"skipped", "300"},
                                            {"skipReason", "too late"},
                                            {"skips", "2"}}));
  EXPECT_EQ(runs.Report(), AString("Command handler: 0 running, 0 waiting\n"));
}

TEST(LatestRuns, CountTheRunsOfEachTask) {
  LatestRuns runs;
  EXPECT_EQ(runs.NewNumber("a"), 1);
  runs.NoteEnd("a", {50, 60, false, true, "of an earlier agent", 0});
  EXPECT_EQ(runs.Describe("a").count("number"), 0u);
  EXPECT_EQ(runs.Describe("a").count("runs"), 0u);
  EXPECT_EQ(runs.NewNumber("a"), 1);
  runs.NoteEnd("a", {100, 100, false, false, "exit status 1", 1});
  EXPECT_EQ(runs.NewNumber("a"), 2);
  EXPECT_EQ(runs.Describe("a").at("number"), AString("1"));
  EXPECT_EQ(runs.Describe("a").at("runs"), AString("2")) << "it has a number, and begins soon";
  runs.NoteEnd("a", {100, 100, false, false, "exit status 1", 2});
  EXPECT_EQ(runs.Describe("a").at("number"), AString("2"));
  EXPECT_EQ(runs.NewNumber("b"), 1);
}

TEST(LatestRuns, TellOfAnEarlierRunAgainWhenOneBesideItHasEnded) {
  LatestRuns runs;
  runs.NoteStart("a", 1, 100, 7);
  runs.NoteSkip("a", "first", 110);
  runs.NoteStart("a", 2, 120, 8);
  EXPECT_EQ(runs.Describe("a").count("skipped"), 0u) << "since that run";
  EXPECT_EQ(runs.Describe("a").at("skips"), AString("1"));
  runs.NoteSkip("a", "second", 130);
  runs.NoteStart("a", 1, 100, 7);
  EXPECT_EQ(runs.Describe("a"), (AStringMap{{"state", "running"},
                                            {"number", "1"},
                                            {"runs", "2"},
                                            {"start", "100"},
                                            {"skipped", "130"},
                                            {"skipReason", "second"},
                                            {"skips", "2"},
                                            {"pid", "7"}}));
}

TEST(LatestRuns, ForgetTheOldestEndedOnesFirst) {
  LatestRuns runs(2);
  runs.NoteStart("running", 1, 1, 7);
  runs.NoteWaiting("waiting", 1, "too many");
  for (const char* taskId : {"a", "b", "c"}) {
    runs.NoteEnd(taskId, {2, 2, false, false, "no job", 1});
  }
  EXPECT_TRUE(runs.Describe("a").empty());
  for (const char* taskId : {"b", "c", "running", "waiting"}) {
    EXPECT_FALSE(runs.Describe(taskId).empty()) << taskId;
  }
  // One that has begun anew is none of the ended ones, and ends as the youngest.
  runs.NoteStart("b", 2, 3, 8);
  runs.NoteEnd("d", {4, 4, false, false, "no job", 1});
  runs.NoteEnd("b", {3, 5, true, false, "fine", 2});
  EXPECT_TRUE(runs.Describe("c").empty());
  EXPECT_FALSE(runs.Describe("b").empty());
  EXPECT_FALSE(runs.Describe("d").empty());
}

TEST(LatestRuns, ReportWhatRunsAndWaits) {
  LatestRuns runs;
  runs.NoteStart("a", 1, 100, 7);
  runs.NoteStart("b", 1, 100, 8);
  runs.NoteQueued("b", 110);
  runs.NoteWaiting("c", 1, "too many");
  runs.NoteEnd("d", {110, 110, false, false, "no job", 1});
  EXPECT_EQ(runs.Report(), AString("Command handler: 2 running, 2 waiting\n"
                                   "  task 'a', process 7\n"
                                   "  task 'b', process 8; its next run is waiting for the end of "
                                   "this one\n"
                                   "  task 'c', waiting: too many\n"));
}

}  // namespace NoxHandlerTest
