// A task whose triggers are all quiet is passed over: it must say what a task says that was not
// asked before.
#include "model/LocalZone.h"
#include "tests/model/TaskFixture.h"
#include "tests/support/LocalTimes.h"

#include <VirtualTime/Zone.h>

#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace TaskQuietTest {
namespace {

using TestSupport::Day;
using TestSupport::TaskXml;
using TestSupport::TriggerXml;

class TaskQuiet : public TaskFixture {
 protected:
  // Asks the task at a moment; all that it answers, and its next runs.
  std::string AnswerAt(CTask& task, long now) {
    m_Scheduler.Clock().Start(now);
    long sleep = m_LongSleep;
    bool late = true, neverRun = true, allExpired = true, deleteTask = true, killAtEnd = true;
    const bool due =
        task.IsDue(false, false, sleep, late, neverRun, allExpired, deleteTask, killAtEnd);
    std::ostringstream text;
    text << (due ? "due" : "-") << (late ? " late" : "") << (task.m_Late ? " (late)" : "")
         << (neverRun ? " never run" : "") << (allExpired ? " expired" : "")
         << (deleteTask ? " delete" : "") << (killAtEnd ? " kill" : "") << " sleep " << sleep;
    for (const CTaskTrigger* trigger : task.m_Triggers) {
      text << " next " << trigger->m_NextRun;
    }
    return text.str();
  }
  std::string AnswerAt(const char* localTime) {
    return AnswerAt(*m_Task, m_Scheduler.Local(localTime));
  }
  long Local(const char* localTime) { return m_Scheduler.Local(localTime); }

  const long m_LongSleep = 86400;
};

std::string Next(long moment) {
  return " next " + std::to_string(moment);
}

TEST_F(TaskQuiet, LowersTheSleepToTheFirstStartOfAllTriggers) {
  CTask& task = Make(TaskXml()
                         .With(TriggerXml::Daily("2005/02/01 18:00:00"))
                         .With(TriggerXml::Daily("2005/02/01 15:00:00")));
  task.m_LastRun = Local("2005-02-28 18:00:00");
  const std::string runs = Next(Local("2005-03-01 18:00:00")) + Next(Local("2005-03-01 15:00:00"));
  EXPECT_EQ(AnswerAt("2005-03-01 12:00:00"), "- sleep 10800" + runs);
  EXPECT_EQ(AnswerAt("2005-03-01 12:00:01"), "- sleep 10799" + runs);
  EXPECT_EQ(AnswerAt("2005-03-01 14:59:59"), "- sleep 1" + runs);
  EXPECT_EQ(
      AnswerAt("2005-03-01 15:00:00"),
      "due sleep 10800" + Next(Local("2005-03-01 18:00:00")) + Next(Local("2005-03-02 15:00:00")));
}

TEST_F(TaskQuiet, EndsWithARun) {
  CTask& task = Make(TaskXml().With(TriggerXml::Daily("2005/02/01 08:00:00")));
  task.m_LastRun = Local("2005-03-01 08:00:00");
  const std::string tomorrow = " sleep 86400" + Next(Local("2005-03-02 08:00:00"));
  EXPECT_EQ(AnswerAt("2005-03-01 12:00:00"), "-" + tomorrow);
  task.m_LastRun = CTaskTrigger::NoTime;
  EXPECT_EQ(AnswerAt("2005-03-01 12:00:01"), "due late (late) never run" + tomorrow);
}

TEST_F(TaskQuiet, IsNotLateAnyMore) {
  CTask& task = Make(TaskXml().With(TriggerXml::Daily("2005/02/01 08:00:00")));
  task.m_LastRun = Local("2005-03-01 08:00:00");
  (void)AnswerAt("2005-03-01 12:00:00");
  task.m_Late = true;
  (void)AnswerAt("2005-03-01 12:00:01");
  EXPECT_FALSE(task.m_Late);
}

TEST_F(TaskQuiet, EndsWhenTheZoneBecomesAnother) {
  CTask& task = Make(TaskXml().With(TriggerXml::Daily("2005/02/01 08:00:00")));
  task.m_LastRun = Local("2005-03-01 08:00:00");
  const long noon = Local("2005-03-01 12:00:00");
  EXPECT_EQ(AnswerAt(task, noon), "- sleep 86400" + Next(Local("2005-03-02 08:00:00")));
  const VirtualTime::Zone tokyo("Asia/Tokyo");  // 02:00 there
  Nox::LocalZone::Refresh();
  EXPECT_EQ(AnswerAt(task, noon), "- sleep 72000" + Next(noon + 72000)) << "22:00 there";
}

// The next run of a moment before is another one. The monitor has to tell of the change back.
TEST_F(TaskQuiet, EndsWhenTheClosestRunIsAskedForBeforeIt) {
  CTask& task = Make(TaskXml().With(TriggerXml::Daily("2005/02/01 15:00:00")));
  task.m_LastRun = Local("2005-02-28 15:00:00");
  const std::string today = "- sleep 10800" + Next(Local("2005-03-01 15:00:00"));
  EXPECT_EQ(AnswerAt("2005-03-01 12:00:00"), today);
  m_Scheduler.Clock().Start(Local("2005-02-28 12:00:00"));
  task.UpdateClosestRun();
  ASSERT_EQ(task.m_Triggers[0]->m_NextRun, Local("2005-02-28 15:00:00"));
  const unsigned changes = Changes();
  EXPECT_EQ(AnswerAt("2005-03-01 12:00:00"), today);
  EXPECT_EQ(Changes(), changes + 1);
}

TEST_F(TaskQuiet, EndsWithAnAnswerThatIsNotKept) {
  CTask& task =
      Make(TaskXml().With(TriggerXml::Daily("2005/02/01 15:00:00").End("2005-03-10 12:00:00")));
  task.m_LastRun = Local("2005-02-28 15:00:00");
  const std::string today = "- sleep 10800" + Next(Local("2005-03-01 15:00:00"));
  EXPECT_EQ(AnswerAt("2005-03-01 12:00:00"), today);
  EXPECT_EQ(AnswerAt("2005-03-10 12:00:01"), "- expired delete sleep 86400" + Next(-1));
  EXPECT_EQ(AnswerAt("2005-03-01 12:00:00"), today) << "the clock was set back";
}

TEST_F(TaskQuiet, IsOverBeforeAnEventOrARunAsSoonAsPossible) {
  CTask& task = Make(TaskXml()
                         .With(TriggerXml::Daily("2005/02/01 08:00:00"))
                         .With(TriggerXml::Daily("2005/02/01 08:00:00")));
  task.m_LastRun = Local("2005-03-01 08:00:00");
  for (const long type : {CTaskTrigger::FirstEvent, CTaskTrigger::SecondEvent}) {
    task.m_Triggers[1]->m_Type = type;
    EXPECT_FALSE(IsDueAt("2005-03-01 12:00:00"));
    EXPECT_TRUE(task.IsDue(true, true, m_Sleep, m_IsLate, m_NeverRun, m_AllExpired, m_DeleteTask,
                           m_KillAtEnd));
  }
}

// Draws tasks of some triggers. A draw of its own: standard distributions differ between machines.
class Draw {
 public:
  long Below(long count) {
    return static_cast<long>(m_Random() % static_cast<unsigned long>(count));
  }
  template <typename T>
  T OneOf(const std::vector<T>& values) {
    return values[static_cast<std::size_t>(Below(static_cast<long>(values.size())))];
  }

  TaskXml Task() {
    TaskXml task;
    for (long count = 1 + Below(3); count > 0; --count) {
      task.With(Trigger());
    }
    return task;
  }

 private:
  TriggerXml Trigger() {
    static const std::vector<std::string> begins{"2005/02/01 08:00:00", "2005/02/28 23:30:00",
                                                 "2005/03/01 00:00:00", "2005/03/03 02:30:00",
                                                 "2005/03/10 12:00:00", "2004/01/31 15:00:00"};
    const std::string begin = OneOf(begins);
    TriggerXml trigger = OneOf<TriggerXml>(
        {TriggerXml::Daily(begin, 1 + Below(3)), TriggerXml::Daily(begin), TriggerXml::Once(begin),
         TriggerXml::Weekly(begin, 1 + Below(127), 1 + Below(2)),
         TriggerXml::MonthlyByDate(begin, OneOf<long>({1, 3, 7, 1L << 30})),
         TriggerXml::MonthlyByWeekday(begin, 1 + Below(5), 1 + Below(127)), TriggerXml::Asap()});
    if (Below(3) == 0) {
      trigger.EveryMinutes(OneOf<long>({1, 30, 60})).ForMinutes(OneOf<long>({10, 120, 1439}));
    }
    if (Below(4) == 0) {
      trigger.End(OneOf<std::string>({"2005-03-02 12:00:00", "2005-03-05 08:00:00"}));
    }
    if (Below(4) == 0) {
      trigger.KillAtEnd();
    }
    return Below(10) == 0 ? trigger.Disabled() : trigger;
  }

  std::mt19937 m_Random{20050301};
};

// Walks a task through days as the monitor does; each answer is that of a new task with its last
// run.
TEST_F(TaskQuiet, SaysWhatATaskSaysThatWasNotAskedBefore) {
  static const std::vector<long> steps{0,   1,    1,    5,    29,    30,    59,    60,
                                       300, 1799, 3600, 7200, 43200, 86399, -1800, -90000};
  Draw draw;
  for (int walk = 0; walk < 200 && !HasFailure(); ++walk) {
    const std::string document = draw.Task().Utf8();
    SCOPED_TRACE(document);
    long now = Local("2005-02-28 00:00:00") + draw.Below(5 * Day);
    m_Scheduler.Clock().Start(now);
    CTask& asked = Make(document);
    asked.m_LastRun = draw.OneOf<long>({CTaskTrigger::NoTime, now - 1, now - Day, now + 3600});
    for (int step = 0; step < 50 && !HasFailure(); ++step) {
      SCOPED_TRACE("at " + m_Scheduler.Show(now) + ", last run " + std::to_string(asked.m_LastRun));
      m_Scheduler.Clock().Start(now);
      CTask fresh(&m_Scheduler.Object(), "fresh", BaseSDK::AString::FromUtf8(document));
      fresh.m_LastRun = asked.m_LastRun;
      if (draw.Below(20) == 0) {
        asked.UpdateClosestRun();
      }
      const std::string answer = AnswerAt(asked, now);
      EXPECT_EQ(answer, AnswerAt(fresh, now));
      if (answer.starts_with("due") && draw.Below(4) != 0) {
        asked.m_LastRun = now;
      }
      now += draw.OneOf(steps);
    }
  }
}

}  // namespace
}  // namespace TaskQuietTest
