#include "model/Task.h"
#include "tests/model/TaskFixture.h"

using BaseSDK::ALogger;
using BaseSDK::AString;
using TestSupport::TaskXml;
using TestSupport::TriggerXml;

namespace {

class TaskRun : public TaskFixture {
 protected:
  void SetClock(const char* localTime) { m_Scheduler.Clock().Start(m_Scheduler.Local(localTime)); }
  std::string FileText() { return m_Scheduler.FileText("t"); }
};

TEST_F(TaskRun, IsWrittenAsStartedIntoTheRewrittenDocument) {
  CTask& task = Make("<Task Extra=\"x\"><HandlerCLSID>{1}</HandlerCLSID><Schedule/></Task>");
  task.RegisterRun();
  const std::string wanted =
      "<Task Enabled=\"1\">\n\t<HandlerCLSID>{1}</HandlerCLSID>\n\t<Schedule/>\n\t"
      "<TaskHistory>\n\t\t<RunTime>2005-03-01 12:00:00 Started</RunTime>\n\t</TaskHistory>\n"
      "</Task>";
  EXPECT_EQ(FileText(), wanted);
  EXPECT_EQ(task.m_TaskXML.ToUtf8(), wanted);
  EXPECT_EQ(task.m_LastRun, Moment::At("2005-03-01 12:00:00 -0500"));
  EXPECT_EQ(Changes(), 1u);
}

TEST_F(TaskRun, IsLogged) {
  CTask& task = Make(TaskXml());
  m_Scheduler.Log().Clear();
  task.RegisterRun();
  const auto lines = m_Scheduler.Log().Lines();
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0].m_Level, ALogger::Information);
  EXPECT_EQ(lines[0].m_Channel, "Corvane::Agent::TaskScheduler");
  EXPECT_EQ(lines[0].m_Source, "Task");
  EXPECT_EQ(lines[0].m_Message, AString(L"Task ID = t was RUN on 2005-03-01 12:00:00"));
}

TEST_F(TaskRun, ReplacesTheRunBefore) {
  CTask& task = Make(TaskXml().With(Daily).LastRun("2004-01-01 08:00:00 Ok"));
  task.RegisterRun();
  SetClock("2005-03-01 12:00:01");
  task.RegisterRun();
  EXPECT_EQ(FileText().find("2004"), std::string::npos);
  EXPECT_EQ(FileText().find("12:00:00"), std::string::npos);
  EXPECT_NE(FileText().find("<RunTime>2005-03-01 12:00:01 Started</RunTime>"), std::string::npos);
}

TEST_F(TaskRun, KeepsADisabledTaskDisabled) {
  Make("<Task Enabled=\"0\"/>").RegisterRun();
  EXPECT_EQ(FileText().substr(0, 18), "<Task Enabled=\"0\">");
}

TEST_F(TaskRun, IsSeenByTheDueTestAtOnce) {
  CTask& task = Make(TaskXml().With(Daily));
  EXPECT_TRUE(IsDueAt("2005-03-01 08:00:00"));
  task.RegisterRun();
  EXPECT_FALSE(IsDueAt("2005-03-01 08:00:00"));
}

TEST_F(TaskRun, StateReplacesStartedAndKeepsTheTime) {
  CTask& task = Make(TaskXml().With(Daily));
  task.RegisterRun();
  SetClock("2005-03-01 13:00:00");
  task.SetRunState("Ok");
  EXPECT_NE(FileText().find("<TaskHistory>\n\t\t<RunTime>2005-03-01 12:00:00 Ok</RunTime>\n\t"
                            "</TaskHistory>"),
            std::string::npos);
  EXPECT_EQ(task.m_TaskXML.ToUtf8(), FileText());
  EXPECT_EQ(task.m_LastRun, m_Scheduler.Local(Noon));
}

TEST_F(TaskRun, FinishedIsTheLastRunOfTheNextLoad) {
  CTask& task = Make(TaskXml().With(Daily));
  task.RegisterRun();
  task.SetRunState("Ok");
  EXPECT_EQ(Make(FileText()).m_LastRun, m_Scheduler.Local(Noon));
}

TEST_F(TaskRun, UnfinishedIsNoneInTheNextLoad) {
  Make(TaskXml().With(Daily)).RegisterRun();
  EXPECT_EQ(Make(FileText()).m_LastRun, -1);
  m_Task->SetRunState("Failed");
  EXPECT_EQ(Make(FileText()).m_LastRun, -1);
  EXPECT_TRUE(Logged(ALogger::Warning,
                     "Task 't' did not finish last time, the last known state is 'Failed'"));
}

TEST_F(TaskRun, StateIsWrittenAsItIsGiven) {
  CTask& task = Make(TaskXml().LastRun("2005-03-01 08:00:00 Started"));
  task.SetRunState("Ok %1 then");
  EXPECT_NE(FileText().find("<RunTime>2005-03-01 08:00:00 Ok %1 then</RunTime>"),
            std::string::npos);
  EXPECT_EQ(Make(FileText()).m_LastRun, Moment::At("2005-03-01 08:00:00 -0500"));
}

TEST_F(TaskRun, StateWithMarkupSpoilsTheDocumentOnPurpose) {
  CTask& task = Make(TaskXml().With(Daily).LastRun("2005-03-01 08:00:00 Started"));
  task.SetRunState("<Ok");
  EXPECT_NE(FileText().find("2005-03-01 08:00:00 <Ok</RunTime>"), std::string::npos);
  EXPECT_TRUE(Make(FileText()).m_Triggers.empty());
}

TEST_F(TaskRun, EmptyStateLeavesARunWithoutOne) {
  Make(TaskXml().LastRun("2005-03-01 08:00:00 Started")).SetRunState("");
  EXPECT_NE(FileText().find("<RunTime>2005-03-01 08:00:00 </RunTime>"), std::string::npos);
  EXPECT_EQ(Make(FileText()).m_LastRun, Moment::At("2005-03-01 08:00:00 -0500"));
}

TEST_F(TaskRun, StateOfATaskThatNeverRanIsLoggedAndNotWritten) {
  CTask& task = Make(TaskXml().With(Daily));
  m_Scheduler.Log().Clear();
  task.SetRunState("Ok");
  const auto lines = m_Scheduler.Log().Lines();
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0].m_Level, ALogger::Trace);
  EXPECT_EQ(lines[0].m_Source, "Task");
  EXPECT_EQ(lines[0].m_Message, AString(L"Set run state to 'Ok' for task ID = t"));
  EXPECT_FALSE(m_Scheduler.HasFile("t"));
  EXPECT_EQ(task.m_TaskXML, TaskXml().With(Daily).Text());
  EXPECT_EQ(Changes(), 0u);
}

TEST_F(TaskRun, StateOfARunWithoutADateIsNotWritten) {
  CTask& task = Make(TaskXml().With(Daily).LastRun(" 08:00:00 Started"));
  task.SetRunState("Ok");
  EXPECT_FALSE(m_Scheduler.HasFile("t"));
  EXPECT_NE(task.m_TaskXML.Find(L"<RunTime> 08:00:00 Started</RunTime>"), AString::npos);
}

TEST_F(TaskRun, StateAfterALateTestTellsOnce) {
  CTask& task = Make(TaskXml().With(Daily));
  EXPECT_TRUE(IsDueAt(Noon));
  ASSERT_TRUE(task.m_Late);
  m_Scheduler.Host().ClearNotifications();
  task.SetRunState("Ok");
  EXPECT_FALSE(task.m_Late);
  EXPECT_EQ(Changes(), 1u);
  task.SetRunState("Ok");
  EXPECT_EQ(Changes(), 1u);
}

TEST_F(TaskRun, StateAfterALateRunTellsOfTheLatenessAndOfTheDocument) {
  CTask& task = Make(TaskXml().With(Daily));
  EXPECT_TRUE(IsDueAt(Noon));
  task.RegisterRun();
  m_Scheduler.Host().ClearNotifications();
  task.SetRunState("Ok");
  EXPECT_EQ(Changes(), 2u);
  task.SetRunState("Ok");
  EXPECT_EQ(Changes(), 3u);
}

// What a notification can see. Listeners look at the task and its file when they are told.

TEST_F(TaskRun, IsOneInstantInMemoryAndInTheFileAlsoWhenTheClockMovesMeanwhile) {
  CTask& task = Make(TaskXml().With(Daily));
  m_Scheduler.Host().Observe([this](const auto&) { m_Scheduler.Clock().StepWallClock(7); });
  task.RegisterRun();
  EXPECT_EQ(task.m_LastRun, m_Scheduler.Local(Noon));
  EXPECT_NE(FileText().find("<RunTime>2005-03-01 12:00:00 Started</RunTime>"), std::string::npos);
}

TEST_F(TaskRun, IsInTheDocumentFirstThenInTheFileThenTheLastRunThenInTheLog) {
  CTask& task = Make(TaskXml().With(Daily));
  unsigned told = 0;
  m_Scheduler.Host().Observe([&](const auto&) {
    ++told;
    EXPECT_EQ(task.m_TaskXML.ToUtf8(), FileText());
    EXPECT_NE(FileText().find(" Started</RunTime>"), std::string::npos);
    EXPECT_EQ(task.m_LastRun, -1);
    EXPECT_EQ(m_Scheduler.Log().CountContaining(L"was RUN on"), 0u);
  });
  long lastRunAtLog = 0;
  m_Scheduler.Log().Observe([&](const auto&) { lastRunAtLog = task.m_LastRun; });
  task.RegisterRun();
  EXPECT_EQ(told, 1u);
  EXPECT_EQ(lastRunAtLog, m_Scheduler.Local(Noon));
}

TEST_F(TaskRun, StateIsLoggedThenTheLatenessClearedAndToldOfThenWritten) {
  CTask& task = Make(TaskXml().With(Daily).LastRun("2005-02-28 08:00:00 Ok"));
  EXPECT_TRUE(IsDueAt(Noon));
  ASSERT_TRUE(task.m_Late);
  bool lateAtLog = false;
  m_Scheduler.Log().Observe([&](const auto&) { lateAtLog = task.m_Late; });
  std::vector<bool> writtenWhenTold;
  m_Scheduler.Host().Observe([&](const auto&) {
    EXPECT_FALSE(task.m_Late);
    EXPECT_EQ(m_Scheduler.Log().CountContaining(L"Set run state to 'Failed'"), 1u);
    const bool inMemory = task.m_TaskXML.Find(L" Failed</RunTime>") != AString::npos;
    EXPECT_EQ(inMemory, m_Scheduler.HasFile("t"));
    writtenWhenTold.push_back(inMemory);
  });
  task.SetRunState("Failed");
  EXPECT_TRUE(lateAtLog);
  EXPECT_EQ(writtenWhenTold, (std::vector<bool>{false, true}));
}

TEST_F(TaskRun, DueTestHasSettledTheLatenessWhenItTellsOfANextRun) {
  CTask& task = Make(TaskXml().With(Daily));
  task.m_Triggers[0]->m_NextRun = 1;
  bool lateWhenTold = false;
  m_Scheduler.Host().Observe([&](const auto&) { lateWhenTold = task.m_Late; });
  EXPECT_TRUE(IsDueAt(Noon));
  EXPECT_TRUE(lateWhenTold);
}

TEST_F(TaskRun, EnabledIsSetBeforeTheFileIsWritten) {
  CTask& task = Make(TaskXml().With(Daily));
  bool enabledWhenTold = true;
  m_Scheduler.Host().Observe([&](const auto&) { enabledWhenTold = task.m_Enabled; });
  EXPECT_EQ(task.Enable(false), 1);
  EXPECT_FALSE(enabledWhenTold);
}

TEST_F(TaskRun, GoesOnInMemoryWhenTheFileCannotBeWritten) {
  CTask& task = Make(TaskXml().With(Daily).Utf8(), "no/such/directory");
  task.RegisterRun();
  task.SetRunState("Ok");
  EXPECT_EQ(task.m_LastRun, m_Scheduler.Local(Noon));
  EXPECT_NE(task.m_TaskXML.Find(L"2005-03-01 12:00:00 Ok"), AString::npos);
  EXPECT_TRUE(m_Scheduler.Directory().Names().empty());
}

}  // namespace
