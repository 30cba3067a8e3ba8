// The diagnostic report.
#include "tests/scheduler/SchedulerFixture.h"

namespace {

using BaseSDK::AString;

class ReportTest : public SchedulerFixture {};

TEST_F(ReportTest, WithoutTasksIsItsHeadingAndTheGate) {
  EXPECT_EQ(AString(L"Currently running tasks:\n\n\nTask processing is disabled.\n"), Report());
  StartWithOpenGate();
  EXPECT_EQ(AString(L"Currently running tasks:\n\n\nTask processing is enabled.\n"), Report());
}

TEST_F(ReportTest, OnPurposeListsEveryTaskInMemoryAsRunningInTheOrderOfTheirIds) {
  Store("T2", Task(Daily("2030-01-01 08:00:00")));
  Store("T1", Task(Daily("2030-01-01 08:00:00")));
  StartWithOpenGate();
  EXPECT_EQ(AString(L"Currently running tasks:\n T1\n T2\n\n\nTask processing is enabled.\n"),
            Report());
}

TEST_F(ReportTest, SaysDisabledBeforeTheAgentHasStarted) {
  Start();
  EXPECT_EQ(AString(L"Currently running tasks:\n\n\nTask processing is disabled.\n"), Report());
}

TEST_F(ReportTest, OverwritesWhatTheArgumentHeld) {
  AString report(L"before");
  EXPECT_EQ(1, m_Scheduler->ObjectDebugInfo(report));
  EXPECT_EQ(0U, report.Find(L"Currently"));
}

}  // namespace
