// What watches over the lives must see each kind of loss, and nothing where there is none.
#include "tests/agent/daemon/lives/TaskLedger.h"

#include "tests/support/LocalTimes.h"

#include <BaseSDK/ADateTime.h>
#include <VirtualTime/Zone.h>

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

namespace NoxAgent {
namespace {

using TestSupport::Day;
using TestSupport::Hour;
using Lines = std::vector<std::string>;

constexpr long Begin = 1109664000;  // 2005-03-01 08:00:00

class TaskLedgerTest : public testing::Test {
 protected:
  static std::string FileWithRun(long time, const std::string& state) {
    const std::string start = BaseSDK::ADateTime(time).ToString(L"%Y-%m-%d %H:%M:%S ").ToUtf8();
    std::string text = MakeTaskText({1, Begin});
    return text.replace(text.find("</Task>"), 0,
                        "<TaskHistory><RunTime>" + start + state + "</RunTime></TaskHistory>");
  }
  static std::string DisabledFile() {
    const std::string enabled = "Enabled=\"1\"";
    std::string text = MakeTaskText({1, Begin});
    return text.replace(text.find(enabled), enabled.size(), "Enabled=\"0\"");
  }

  void Add() {
    m_Ledger.AskToAdd("T1", {1, Begin});
    m_Ledger.Added("T1", {1, Begin});
  }
  void Run(long now, bool isNew) { m_Ledger.Run("T1", isNew, now); }
  void Report(const std::string& state, long now) {
    m_Ledger.AskToReport("T1", state, now);
    m_Ledger.Reported("T1", state);
  }
  /// What is wrong when the next life finds this.
  Lines Find(const std::map<std::string, std::string>& files) {
    m_Ledger.Restart(files, Begin + Day);
    return m_Problems;
  }
  Lines FindFile(const std::string& text) { return Find({{"T1", text}}); }

  const VirtualTime::Zone m_Zone{"UTC0"};
  Lines m_Problems;
  TaskLedger m_Ledger{[this](const std::string& problem) { m_Problems.push_back(problem); }};
};

TEST_F(TaskLedgerTest, ReadsBackWhatItMakes) {
  const auto facts = ReadTaskText(FileWithRun(Begin, "Ok"));
  ASSERT_TRUE(facts);
  EXPECT_EQ(facts->m_Document, 1);
  EXPECT_EQ(facts->m_LastRun, Begin);
  EXPECT_EQ(facts->m_State, "Ok");
  EXPECT_FALSE(ReadTaskText(DisabledFile())->m_IsEnabled);
}

TEST_F(TaskLedgerTest, TellsAPartAndAMixtureFromAWhole) {
  const std::string text = MakeTaskText({1, Begin});
  EXPECT_FALSE(ReadTaskText(text.substr(0, text.size() - 1)));
  const std::string other = MakeTaskText({2, Begin});
  const std::size_t half = text.find("<Trigger", text.find("<Trigger") + 1);
  const std::size_t otherHalf = other.find("<Trigger", other.find("<Trigger") + 1);
  EXPECT_FALSE(ReadTaskText(text.substr(0, half) + other.substr(otherHalf)));
}

TEST_F(TaskLedgerTest, KnowsTheStartsOfAPlan) {
  const TaskPlan plan{1, Begin, Hour};
  EXPECT_EQ(plan.NextStart(Begin - 1), Begin);
  EXPECT_EQ(plan.LatestStart(Begin + Hour - 1), Begin);
  EXPECT_EQ(plan.NextStart(Begin + Hour - 1), Begin + Hour);
  EXPECT_EQ(plan.LatestStart(Begin + 22 * Hour), Begin + 22 * Hour);
  EXPECT_EQ(plan.NextStart(Begin + 22 * Hour), Begin + Day);
  EXPECT_EQ(plan.LatestStart(Begin + 23 * Hour), Begin);
}

TEST_F(TaskLedgerTest, AnAddedTaskStays) {
  Add();
  EXPECT_EQ(Find({}), Lines{"task T1 is lost"});
}

TEST_F(TaskLedgerTest, AnAdditionThatWasNotAnsweredMayLeaveAnything) {
  m_Ledger.AskToAdd("T1", {1, Begin});
  EXPECT_EQ(Find({}), Lines{});
  m_Ledger.AskToAdd("T2", {2, Begin});
  EXPECT_EQ(Find({{"T2", "<Task"}}), Lines{});
  m_Ledger.LeftUnnamed({3, Begin});
  EXPECT_EQ(Find({{"T2", "<Task"}, {"corvane_task_a1B2c3", MakeTaskText({3, Begin})}}), Lines{});
}

TEST_F(TaskLedgerTest, AReplacedTaskHasTheNewDocument) {
  Add();
  m_Ledger.AskToAdd("T1", {2, Begin});
  EXPECT_EQ(FindFile(MakeTaskText({1, Begin})), Lines{});
  m_Ledger.AskToAdd("T1", {3, Begin});
  m_Ledger.Added("T1", {3, Begin});
  EXPECT_EQ(FindFile(MakeTaskText({1, Begin})), Lines{"task T1 has document 1"});
}

TEST_F(TaskLedgerTest, AFileIsWhole) {
  Add();
  EXPECT_EQ(FindFile("<Task"), Lines{"task T1 has a file that is no whole document:\n<Task"});
}

TEST_F(TaskLedgerTest, ADeletedTaskStaysAway) {
  Add();
  m_Ledger.AskToDelete("T1");
  EXPECT_EQ(FindFile(MakeTaskText({1, Begin})), Lines{});
  m_Ledger.AskToDelete("T1");
  m_Ledger.Deleted("T1");
  EXPECT_EQ(FindFile(MakeTaskText({1, Begin})), Lines{"task T1 is back"});
}

TEST_F(TaskLedgerTest, OnlyATaskThatHasEndedMayBeGone) {
  m_Ledger.AskToAdd("T1", {1, Begin, 0, Begin + Hour});
  m_Ledger.Added("T1", {1, Begin, 0, Begin + Hour});
  m_Ledger.AskToAdd("T2", {2, Begin, 0, Begin + 2 * Day});
  m_Ledger.Added("T2", {2, Begin, 0, Begin + 2 * Day});
  EXPECT_EQ(Find({}), Lines{"task T2 is lost"});
}

TEST_F(TaskLedgerTest, ADisabledTaskStaysDisabled) {
  Add();
  m_Ledger.AskToEnable("T1", false);
  EXPECT_EQ(FindFile(DisabledFile()), Lines{});
  m_Ledger.AskToEnable("T1", true);
  m_Ledger.Enabled("T1", true, Begin);
  EXPECT_EQ(FindFile(DisabledFile()), Lines{"task T1 is disabled"});
}

TEST_F(TaskLedgerTest, ARunThatTheHandlerHeardOfIsInTheFile) {
  Add();
  Run(Begin, true);
  EXPECT_EQ(FindFile(MakeTaskText({1, Begin})), Lines{"task T1 has lost its last run"});
}

TEST_F(TaskLedgerTest, AReportedStateIsInTheFile) {
  Add();
  Run(Begin, true);
  Report("Failed", Begin);
  EXPECT_EQ(FindFile(FileWithRun(Begin, "Started")), Lines{"task T1 has a run that is Started"});
}

TEST_F(TaskLedgerTest, AnAcceptedRunIsFinishedWhenSomethingElseWasTold) {
  Add();
  Run(Begin, true);
  m_Ledger.Accepted("T1", Begin);
  EXPECT_EQ(FindFile(FileWithRun(Begin, "Started")), Lines{});
  Run(Begin + Day, true);
  m_Ledger.Accepted("T1", Begin + Day);
  m_Ledger.Told();
  EXPECT_EQ(FindFile(FileWithRun(Begin + Day, "Started")),
            Lines{"task T1 has a run that is Started"});
}

TEST_F(TaskLedgerTest, AFinishedRunIsNotRunAgain) {
  Add();
  Run(Begin, true);
  Report("Ok", Begin);
  Run(Begin + Hour, false);
  EXPECT_EQ(m_Problems, Lines{"task T1 runs again"});
}

TEST_F(TaskLedgerTest, AnUnfinishedRunMayBeRunAgain) {
  Add();
  Run(Begin, true);
  Report("Failed", Begin);
  Run(Begin + Hour, true);
  EXPECT_EQ(m_Problems, Lines{});
}

TEST_F(TaskLedgerTest, ATaskRunsWhenItIsDueAndOnlyThen) {
  Add();
  m_Ledger.CheckRuns(Begin - 1);
  Run(Begin - 1, true);
  EXPECT_EQ(m_Problems, Lines{"task T1 runs before its begin"});
  m_Ledger.CheckRuns(Begin);
  EXPECT_EQ(m_Problems.back(), "task T1 is due and does not run");
}

}  // namespace
}  // namespace NoxAgent
