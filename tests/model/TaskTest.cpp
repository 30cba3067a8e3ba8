#include "model/Task.h"

#include "tests/model/TaskFixture.h"

using BaseSDK::ALogger;
using BaseSDK::AString;
using TestSupport::TaskXml;
using TestSupport::TriggerXml;

namespace {

const TriggerXml expiredDaily = TriggerXml::Daily("2005/02/01 08:00:00").End("2005/02/05 08:00:00");
const TriggerXml tomorrow = TriggerXml::Daily("2005/03/02 08:00:00");

using TaskLoad = TaskFixture;

TEST_F(TaskLoad, KeepsWhatItIsGivenAndReadsItsHandler) {
  const CTask& task = Make(TaskXml().Handler("{1}").With(Daily));
  EXPECT_EQ(task.m_pScheduler, &m_Scheduler.Object());
  EXPECT_EQ(task.m_TaskID, AString(L"t"));
  EXPECT_EQ(task.m_TaskXML, TaskXml().Handler("{1}").With(Daily).Text());
  EXPECT_EQ(task.m_HandlerCLSID, AString(L"{1}"));
  EXPECT_FALSE(task.m_Late);
  EXPECT_EQ(task.m_LastRun, -1);
}

TEST_F(TaskLoad, ReadsTheEnabledState) {
  EXPECT_TRUE(Make("<Task/>").m_Enabled);
  EXPECT_TRUE(Make("<Task Enabled=\"\"/>").m_Enabled);
  EXPECT_TRUE(Make("<Task Enabled=\"2\"/>").m_Enabled);
  EXPECT_FALSE(Make("<Task Enabled=\"0\"/>").m_Enabled);
  EXPECT_FALSE(Make("<Task Enabled=\"yes\"/>").m_Enabled);
}

TEST_F(TaskLoad, TakesTheTimeOfAFinishedRun) {
  EXPECT_EQ(Make(TaskXml().LastRun("2005-03-01 08:00:00 Ok")).m_LastRun,
            Moment::At("2005-03-01 08:00:00 -0500"));
  EXPECT_TRUE(m_Scheduler.Log().Messages(ALogger::Warning).empty());
}

TEST_F(TaskLoad, TakesTheTimeOfARunWithoutAState) {
  EXPECT_EQ(Make(TaskXml().LastRun("2005-03-01 08:00:00")).m_LastRun,
            Moment::At("2005-03-01 08:00:00 -0500"));
  EXPECT_TRUE(m_Scheduler.Log().Messages(ALogger::Warning).empty());
}

TEST_F(TaskLoad, CountsAnUnfinishedRunAsNoneAndSaysSo) {
  m_Scheduler.Log().Clear();
  EXPECT_EQ(Make(TaskXml().LastRun("2005-03-01 08:00:00 Started")).m_LastRun, -1);
  const auto lines = m_Scheduler.Log().Lines();
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0].m_Level, ALogger::Warning);
  EXPECT_EQ(lines[0].m_Channel, "Corvane::Agent::TaskScheduler");
  EXPECT_EQ(lines[0].m_Source, "Task");
  EXPECT_EQ(lines[0].m_Message,
            AString(L"Task 't' did not finish last time, the last known state is 'Started'"));
}

TEST_F(TaskLoad, KnowsOkInNoOtherSpelling) {
  for (const char* state : {"OK", "ok", "Ok.", "Okay"}) {
    EXPECT_EQ(Make(TaskXml().LastRun(std::string("2005-03-01 08:00:00 ") + state)).m_LastRun, -1)
        << state;
  }
}

TEST_F(TaskLoad, ReadsOnlyTheFirstWordOfAState) {
  EXPECT_NE(Make(TaskXml().LastRun("2005-03-01 08:00:00 Ok for now")).m_LastRun, -1);
}

TEST_F(TaskLoad, CountsAnUnreadableRunAsNone) {
  for (const char* entry : {"", "yesterday", "2005-02-30 08:00:00 Ok", "2005-03-01 24:00:00 Ok"}) {
    EXPECT_EQ(Make(TaskXml().LastRun(entry)).m_LastRun, -1) << entry;
  }
  EXPECT_TRUE(m_Scheduler.Log().Messages(ALogger::Warning).empty());
}

TEST_F(TaskLoad, KnowsRunsBefore1970) {
  EXPECT_EQ(Make(TaskXml().LastRun("1969-12-31 12:00:00 Ok")).m_LastRun,
            Moment::At("1969-12-31 12:00:00 -0500"));
}

TEST_F(TaskLoad, BuildsItsTriggersInDocumentOrderOnItsOwnLastRun) {
  const CTask& task = Make(TaskXml().With(TriggerXml::Asap()).With(Daily).With(tomorrow));
  ASSERT_EQ(task.m_Triggers.size(), 3u);
  EXPECT_EQ(task.m_Triggers[0]->m_Type, -1);
  EXPECT_EQ(task.m_Triggers[1]->m_Type, 1);
  EXPECT_LT(task.m_Triggers[1]->m_BeginDate, task.m_Triggers[2]->m_BeginDate);
  for (const CTaskTrigger* trigger : task.m_Triggers) {
    EXPECT_EQ(trigger->m_pLastRun, &task.m_LastRun);
  }
}

TEST_F(TaskLoad, WorksOutTheClosestRunsWithoutTellingAnyone) {
  const CTask& task = Make(TaskXml().With(Daily).With(tomorrow));
  EXPECT_EQ(task.m_Triggers[0]->m_ClosestRun, m_Scheduler.Local(Noon));
  EXPECT_EQ(Moment::Show(task.m_Triggers[1]->m_ClosestRun), "2005-03-02 08:00:00 -0500");
  EXPECT_EQ(Changes(), 0u);
}

TEST_F(TaskLoad, OfADisabledTaskLeavesItsTriggersWithoutRuns) {
  const CTask& task = Make(TaskXml().Enabled(false).With(Daily));
  EXPECT_EQ(task.m_Triggers[0]->m_ClosestRun, -1);
  EXPECT_EQ(task.m_Triggers[0]->m_NextRun, -1);
}

TEST_F(TaskLoad, OfADocumentThatDoesNotParseMakesAnEmptyTaskThatAsksToBeDeleted) {
  const CTask& task = Make("<Task Enabled=\"0\"><Schedule>");
  EXPECT_TRUE(task.m_HandlerCLSID.IsEmpty());
  EXPECT_TRUE(task.m_Enabled);
  EXPECT_EQ(task.m_LastRun, -1);
  EXPECT_TRUE(task.m_Triggers.empty());
  EXPECT_FALSE(IsDueAt(Noon));
  EXPECT_TRUE(m_NeverRun);
  EXPECT_TRUE(m_AllExpired);
  EXPECT_TRUE(m_DeleteTask);
}

using TaskDue = TaskFixture;

TEST_F(TaskDue, WhenAnyTriggerIsDue) {
  Make(TaskXml().With(TriggerXml(Daily).Disabled()).With(Daily));
  EXPECT_TRUE(IsDueAt("2005-03-01 08:00:00"));
  EXPECT_FALSE(m_AllExpired);
  EXPECT_FALSE(m_DeleteTask);
  Make(TaskXml().With(tomorrow).With(Daily));
  EXPECT_TRUE(IsDueAt("2005-03-01 08:00:00"));
  Make(TaskXml().With(tomorrow));
  EXPECT_FALSE(IsDueAt("2005-03-01 08:00:00"));
}

TEST_F(TaskDue, DisabledTriggersKeepATaskFromExpiring) {
  Make(TaskXml().With(TriggerXml(Daily).Disabled()).With(expiredDaily));
  EXPECT_FALSE(IsDueAt(Noon));
  EXPECT_FALSE(m_AllExpired);
  EXPECT_FALSE(m_DeleteTask);
}

TEST_F(TaskDue, ADisabledTaskIsNotDueAndWritesNoAnswer) {
  CTask& task = Make(TaskXml().Enabled(false).With(Daily));
  task.m_Late = true;
  for (const bool flag : {false, true}) {
    m_Sleep = 12345;
    m_IsLate = m_NeverRun = m_AllExpired = m_DeleteTask = m_KillAtEnd = flag;
    EXPECT_FALSE(IsDueAt(Noon));
    EXPECT_EQ(m_Sleep, 12345);
    for (const bool answer : {m_IsLate, m_NeverRun, m_AllExpired, m_DeleteTask, m_KillAtEnd}) {
      EXPECT_EQ(answer, flag);
    }
  }
  EXPECT_FALSE(task.m_Late);
}

TEST_F(TaskDue, AsSoonAsPossibleAloneExpiresButIsNotDeleted) {
  CTask& task = Make(TaskXml().With(TriggerXml::Asap()));
  EXPECT_TRUE(IsDueAt(Noon));
  EXPECT_TRUE(m_NeverRun);
  EXPECT_TRUE(m_AllExpired);
  EXPECT_FALSE(m_DeleteTask);
  task.m_LastRun = m_Scheduler.Local(Noon);
  EXPECT_FALSE(IsDueAt(Noon));
  EXPECT_FALSE(m_NeverRun);
  EXPECT_TRUE(m_AllExpired);
  EXPECT_FALSE(m_DeleteTask);
}

TEST_F(TaskDue, AsSoonAsPossibleBesideAnExpiredTriggerIsNotDeletedInEitherOrder) {
  for (const bool asapFirst : {true, false}) {
    Make(asapFirst ? TaskXml().With(TriggerXml::Asap()).With(expiredDaily)
                   : TaskXml().With(expiredDaily).With(TriggerXml::Asap()));
    EXPECT_TRUE(IsDueAt(Noon));
    EXPECT_TRUE(m_AllExpired);
    EXPECT_FALSE(m_DeleteTask);
  }
}

TEST_F(TaskDue, IsDeletedWhenEveryTriggerHasExpired) {
  Make(TaskXml().With(expiredDaily).With(expiredDaily));
  EXPECT_FALSE(IsDueAt(Noon));
  EXPECT_TRUE(m_AllExpired);
  EXPECT_TRUE(m_DeleteTask);
  Make(TaskXml().With(expiredDaily).With(Daily));
  EXPECT_TRUE(IsDueAt(Noon));
  EXPECT_FALSE(m_AllExpired);
  EXPECT_FALSE(m_DeleteTask);
}

TEST_F(TaskDue, AOnceTriggerThatRanDoesNotExpireOnPurpose) {
  Make(TaskXml().With(TriggerXml::Once("2005/03/01 08:00:00")).LastRun("2005-03-01 08:00:00 Ok"));
  EXPECT_FALSE(IsDueAt("2005-03-09 12:00:00"));
  EXPECT_FALSE(m_AllExpired);
  EXPECT_FALSE(m_DeleteTask);
}

TEST_F(TaskDue, IsLateWhenADueTriggerIs) {
  const CTask& task = Make(TaskXml().With(tomorrow).With(Daily));
  EXPECT_TRUE(IsDueAt("2005-03-01 08:00:59"));
  EXPECT_FALSE(m_IsLate);
  EXPECT_FALSE(task.m_Late);
  EXPECT_TRUE(IsDueAt("2005-03-01 08:01:00"));
  EXPECT_TRUE(m_IsLate);
  EXPECT_TRUE(task.m_Late);
}

TEST_F(TaskDue, StaysLateWhenALaterTriggerIsPunctual) {
  Make(TaskXml().With(Daily).With(TriggerXml::Daily("2005/03/01 12:00:00")));
  EXPECT_TRUE(IsDueAt(Noon));
  EXPECT_TRUE(m_IsLate);
}

TEST_F(TaskDue, IsNotLateWhenOneRunsAsSoonAsPossibleInEitherOrder) {
  for (const bool asapFirst : {true, false}) {
    const CTask& task = Make(asapFirst ? TaskXml().With(TriggerXml::Asap()).With(Daily)
                                       : TaskXml().With(Daily).With(TriggerXml::Asap()));
    EXPECT_TRUE(IsDueAt(Noon));
    EXPECT_FALSE(m_IsLate);
    EXPECT_FALSE(task.m_Late);
  }
}

TEST_F(TaskDue, ForgetsItsLatenessAtTheNextTestThatIsNotLate) {
  CTask& task = Make(TaskXml().With(Daily));
  EXPECT_TRUE(IsDueAt(Noon));
  EXPECT_TRUE(task.m_Late);
  task.m_LastRun = m_Scheduler.Local(Noon);
  EXPECT_FALSE(IsDueAt(Noon));
  EXPECT_FALSE(task.m_Late);
}

TEST_F(TaskDue, KillsAtTheEndWhenADueTriggerWantsIt) {
  Make(TaskXml().With(TriggerXml(Daily).KillAtEnd()).With(Daily));
  EXPECT_TRUE(IsDueAt(Noon));
  EXPECT_TRUE(m_KillAtEnd);
  Make(TaskXml().With(TriggerXml(tomorrow).KillAtEnd()).With(Daily));
  EXPECT_TRUE(IsDueAt(Noon));
  EXPECT_FALSE(m_KillAtEnd);
}

TEST_F(TaskDue, SleepsUntilTheEarliestOfItsTriggers) {
  Make(TaskXml()
           .With(TriggerXml::Daily("2005/03/01 14:00:00"))
           .With(TriggerXml::Daily("2005/03/01 13:00:00"))
           .With(TriggerXml::Daily("2005/03/01 15:00:00")));
  EXPECT_FALSE(IsDueAt(Noon));
  EXPECT_EQ(m_Sleep, 3600);
  EXPECT_TRUE(m_NeverRun);
}

TEST_F(TaskDue, HandsTheFirstEventToTheFirstAndTheSecondToTheSecondKindOfEventTrigger) {
  CTask& task = Make(TaskXml().With(Daily).With(Daily));
  task.m_Triggers[0]->m_Type = CTaskTrigger::FirstEvent;
  for (const bool first : {false, true}) {
    for (const bool second : {false, true}) {
      const auto isDue = [&] {
        return task.IsDue(first, second, m_Sleep, m_IsLate, m_NeverRun, m_AllExpired, m_DeleteTask,
                          m_KillAtEnd);
      };
      task.m_Triggers[1]->m_Disabled = true;
      EXPECT_EQ(isDue(), first);
      task.m_Triggers[1]->m_Disabled = false;
      task.m_Triggers[1]->m_Type = CTaskTrigger::SecondEvent;
      EXPECT_EQ(isDue(), first || second);
    }
  }
}

TEST_F(TaskDue, TellsThatANextRunMovedOncePerTest) {
  Make(TaskXml().With(Daily).With(Daily).LastRun("2005-03-01 08:00:00 Ok"));
  EXPECT_FALSE(IsDueAt(Noon));
  EXPECT_EQ(Changes(), 0u);
  EXPECT_TRUE(IsDueAt("2005-03-02 08:00:00"));
  EXPECT_EQ(Changes(), 1u);
  EXPECT_TRUE(IsDueAt("2005-03-02 08:00:00"));
  EXPECT_EQ(Changes(), 1u);
}

TEST_F(TaskDue, TellsOfAnyTriggerWhoseNextRunMoved) {
  for (const bool first : {true, false}) {
    m_Scheduler.Host().ClearNotifications();
    Make(first ? TaskXml().With(Daily).With(expiredDaily)
               : TaskXml().With(expiredDaily).With(Daily));
    (void)IsDueAt("2005-03-02 08:00:00");
    EXPECT_EQ(Changes(), 1u);
    m_Scheduler.Clock().Start(m_Scheduler.Local(Noon));
  }
}

TEST_F(TaskDue, RefreshesTheClosestRunOfEachTrigger) {
  CTask& task = Make(TaskXml().With(Daily).With(tomorrow));
  task.m_LastRun = m_Scheduler.Local(Noon);
  task.UpdateClosestRun();
  for (const CTaskTrigger* trigger : task.m_Triggers) {
    EXPECT_EQ(Moment::Show(trigger->m_ClosestRun), "2005-03-02 08:00:00 -0500");
  }
  task.m_Enabled = false;
  task.UpdateClosestRun();
  for (const CTaskTrigger* trigger : task.m_Triggers) {
    EXPECT_EQ(trigger->m_ClosestRun, -1);
  }
}

using TaskEnable = TaskFixture;

TEST_F(TaskEnable, ToTheSameStateSaysSoAndWritesNothing) {
  CTask& task = Make(TaskXml().With(Daily));
  EXPECT_EQ(task.Enable(true), -1);
  EXPECT_TRUE(Logged(ALogger::Trace, "Task 't' enable state is not changed"));
  EXPECT_EQ(m_Scheduler.Log().Lines().back().m_Source, "Task");
  EXPECT_FALSE(m_Scheduler.HasFile("t"));
  EXPECT_EQ(Make(TaskXml().Enabled(false)).Enable(false), -1);
  EXPECT_EQ(Changes(), 0u);
}

TEST_F(TaskEnable, WritesTheStateIntoTheFileAndKeepsHandlerScheduleAndHistory) {
  const std::string document =
      "<Task Name=\"n\"><HandlerCLSID>{1}</HandlerCLSID><Extra/><Schedule><Trigger Type=\"-1\"/>"
      "</Schedule><TaskHistory><RunTime>2005-03-01 08:00:00 Ok</RunTime></TaskHistory></Task>";
  CTask& task = Make(document);
  EXPECT_EQ(task.Enable(false), 1);
  EXPECT_FALSE(task.m_Enabled);
  EXPECT_EQ(m_Scheduler.FileText("t"),
            "<Task Enabled=\"0\">\n\t<HandlerCLSID>{1}</HandlerCLSID>\n\t<Schedule><Trigger "
            "Type=\"-1\"/></Schedule>\n\t<TaskHistory><RunTime>2005-03-01 08:00:00 Ok</RunTime>"
            "</TaskHistory>\n</Task>");
  EXPECT_EQ(task.Enable(true), 1);
  EXPECT_EQ(m_Scheduler.FileText("t").substr(0, 18), "<Task Enabled=\"1\">");
  EXPECT_EQ(Changes(), 2u);
}

TEST_F(TaskEnable, LeavesItsDocumentAndItsTriggersToTheNextLoad) {
  CTask& task = Make(TaskXml().With(Daily));
  const long closestRun = task.m_Triggers[0]->m_ClosestRun;
  EXPECT_EQ(task.Enable(false), 1);
  EXPECT_EQ(task.m_TaskXML, TaskXml().With(Daily).Text());
  EXPECT_EQ(task.m_Triggers[0]->m_ClosestRun, closestRun);
}

TEST_F(TaskEnable, OfADocumentWithoutPartsLeavesTheirPlacesEmpty) {
  EXPECT_EQ(Make("<Task/>").Enable(false), 1);
  EXPECT_EQ(m_Scheduler.FileText("t"), "<Task Enabled=\"0\">\n\t\n\t\n\t\n</Task>");
}

TEST_F(TaskEnable, ReturnsTheFailureOfTheStorageAndIsInTheNewStateAllTheSame) {
  CTask& task = Make("<Task/>", "");
  EXPECT_EQ(task.Enable(false), -1);
  EXPECT_FALSE(task.m_Enabled);
}

}  // namespace
