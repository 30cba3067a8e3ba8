// Runs of one task that go on beside each other.
#include "tests/agent/handler/run/SupervisorFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

using States = std::vector<std::string>;
using testing::HasSubstr;

namespace NoxHandlerTest {

using namespace NoxHandler;

namespace {

// The jobs end with the status that they are told, each through a gate of its own: the first
// attempt of the first run has the gate, later runs the file "second".
class Beside : public SupervisorFixture {
 protected:
  Beside() : m_Second((m_Directory / "second").string()) {}

  void AddAllowedJob(const std::string& keys = "") {
    AddJob("a",
           "gate=$GATE; [ $NOX_LATE = 1 ] && gate=" + m_Second.Path() +
               "; echo $$ > $STARTED; read status < $gate; echo done $status; exit $status",
           "overlap = allow\n" + keys);
  }
  // The second run is told apart by being late.
  std::string StartSecond() {
    m_Supervisor->Post({{"a", true, false, false}});
    return Started();
  }
  void EndFirst(int status) { m_Gate.WriteLine(std::to_string(status)); }
  void EndSecond(int status) { m_Second.WriteLine(std::to_string(status)); }

  Fifo m_Second;
};

}  // namespace

TEST_F(Beside, AreReportedWhenTheLastOneHasEnded) {
  AddAllowedJob();
  StartSupervisor();
  Dispatch("a", false);
  const std::string first = Started();
  const std::string second = StartSecond();
  EXPECT_TRUE(IsAlive(first));
  EXPECT_TRUE(WaitUntilTold("a", "pid", second));
  EXPECT_EQ(RecordedTasks(), (States{"a", "a"}));
  EXPECT_EQ(LogCount("Task 'a' is due, but its previous run goes on: starts beside it"), 1u);
  EndFirst(7);
  ASSERT_TRUE(WaitUntil([&] { return LogCount("Task 'a' failed: exit status 7 after ") == 1; }));
  EXPECT_EQ(Told("a")["pid"], second);
  EXPECT_TRUE(m_Scheduler.States().empty());
  EndSecond(0);
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Ok"}) << "the one that began last counts";
  EXPECT_EQ(Told("a")["result"], "Ok");
  EXPECT_THAT(Output("a"), HasSubstr("done 7\n-- "));
  EXPECT_THAT(Output("a"), HasSubstr("done 0\n-- "));
  EXPECT_EQ(RecordedTasks(), States{});
}

TEST_F(Beside, HaveTheStateOfTheOneThatBeganLastAlsoWhenItEndsFirst) {
  AddAllowedJob("retry = never");
  StartSupervisor();
  Dispatch("a", false);
  const std::string first = Started();
  (void)StartSecond();
  EndSecond(3);
  ASSERT_TRUE(WaitUntilTold("a", "pid", first));
  EXPECT_EQ(Told("a")["state"], "running");
  EXPECT_EQ(Told("a")["number"], "1");
  EXPECT_EQ(Told("a")["runs"], "2");
  EXPECT_TRUE(m_Scheduler.States().empty());
  Dispatch("a", true);  // an echo
  EndFirst(0);
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Ok"});
  EXPECT_EQ(Told("a")["result"], "Failed");
  EXPECT_EQ(Told("a")["final"], "1");
  EXPECT_EQ(Told("a")["number"], "2");
  EXPECT_THAT(Told("a")["reason"], HasSubstr("exit status 3 after "));
  EXPECT_FALSE(m_Started.HasLine());
}

TEST_F(Beside, TakeAPlaceEach) {
  AddAllowedJob();
  StartSupervisor(LongGrace, 1);
  Dispatch("a", false);
  (void)Started();
  m_Supervisor->Post({{"a", true, false, false}});
  ASSERT_TRUE(WaitUntilTold("a", "state", "waiting"));
  Dispatch("a", false);
  ASSERT_TRUE(WaitUntilTold("a", "skipReason", "it is waiting to start already"));
  EndFirst(0);
  (void)Started();
  EndSecond(0);
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Ok"});
}

TEST_F(Beside, AreLeftOutAloneWhenTheyAreTooLate) {
  AddAllowedJob("max_late = 1m");
  StartSupervisor();
  Dispatch("a", false);
  const std::string first = Started();
  m_Supervisor->Post({{"a", true, false, false}});  // nobody knows how late
  ASSERT_TRUE(WaitUntil([&] { return Told("a").contains("skipped"); }));
  EXPECT_TRUE(WaitUntilTold("a", "pid", first));
  EXPECT_TRUE(m_Scheduler.States().empty());
  EndFirst(7);
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Failed"});
  EXPECT_EQ(Told("a")["result"], "Failed");
}

TEST_F(Beside, GoOnWhenALaterOneHasNoJobWhichCountsInTheEnd) {
  AddAllowedJob();
  StartSupervisor();
  Dispatch("a", false);
  const std::string first = Started();
  std::filesystem::remove(m_Directory / "jobs/a.job");
  Dispatch("a", false);
  ASSERT_TRUE(WaitUntil([&] { return LogCount("Task 'a' failed: there is no job file") == 1; }));
  EXPECT_THAT(Output("a"), HasSubstr(" there is no job file "));
  EXPECT_EQ(Told("a")["pid"], first);
  EXPECT_TRUE(m_Scheduler.States().empty());
  EndFirst(0);
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Failed"});
  EXPECT_EQ(Told("a")["result"], "Failed");
  EXPECT_EQ(Told("a")["number"], "2");
  EXPECT_THAT(Told("a")["reason"], HasSubstr("there is no job file "));
}

TEST_F(Beside, HaveTheStateOfALaterOneThanThatWithoutAJob) {
  AddAllowedJob();
  StartSupervisor();
  Dispatch("a", false);
  (void)Started();
  std::filesystem::rename(m_Directory / "jobs/a.job", m_Directory / "kept.job");
  Dispatch("a", false);
  ASSERT_TRUE(WaitUntil([&] { return LogCount("Task 'a' failed: there is no job file") == 1; }));
  std::filesystem::rename(m_Directory / "kept.job", m_Directory / "jobs/a.job");
  (void)StartSecond();
  EndSecond(0);
  EndFirst(7);
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Ok"});
  EXPECT_EQ(Told("a")["number"], "3");
}

TEST_F(Beside, HaveTheStateOfTheOneThatBeganLastWhenALaterOneIsLeftOut) {
  AddAllowedJob("retry = never");
  StartSupervisor();
  Dispatch("a", false);
  (void)Started();
  (void)StartSecond();
  EndSecond(3);
  ASSERT_TRUE(WaitUntil([&] { return LogCount("Task 'a' failed: exit status 3 after ") == 1; }));
  AddAllowedJob("splay = 1h");
  Dispatch("a", false);
  ASSERT_TRUE(WaitUntilTold("a", "number", "3"));
  EndFirst(0);
  ASSERT_TRUE(WaitUntil([&] { return LogCount("Task 'a' succeeded: exit status 0 after ") == 1; }));
  EXPECT_TRUE(m_Supervisor->StopRun("a"));
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Ok"});
  EXPECT_EQ(Told("a")["number"], "2");
  EXPECT_THAT(Told("a")["reason"], HasSubstr("exit status 3 after "));
  EXPECT_EQ(Told("a")["skipReason"], "it was ended by request");
}

TEST_F(Beside, EndWithTheHandler) {
  AddAllowedJob();
  StartSupervisor();
  Dispatch("a", false);
  const std::string first = Started();
  const std::string second = StartSecond();
  ASSERT_TRUE(m_Supervisor->Stop());
  EXPECT_FALSE(IsAlive(first));
  EXPECT_FALSE(IsAlive(second));
  EXPECT_EQ(m_Scheduler.States(), States{"a Failed"});
  EXPECT_EQ(RecordedTasks(), States{});
}

}  // namespace NoxHandlerTest
