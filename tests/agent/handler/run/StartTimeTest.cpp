// When a run begins that is handed over, and whether it begins at all.
#include "tests/agent/handler/run/SupervisorFixture.h"

#include <BaseSDK/ADateTime.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

using States = std::vector<std::string>;
using testing::HasSubstr;
using testing::MatchesRegex;

namespace NoxHandlerTest {

using namespace NoxHandler;

namespace {

class StartTime : public SupervisorFixture {
 protected:
  StartTime() { UseZone("UTC0"); }
  ~StartTime() override {
    if (m_Supervisor) {
      StopSupervisor();
    }
    UseZone(nullptr);
  }

  // The scheduler knows of a start so long ago, and hands it over now.
  void DispatchLate(const std::string& name, long seconds) {
    const long begin = BaseSDK::ADateTime::Now().GetTime() - seconds;
    m_Scheduler.AddStoredTask(name,
                              "<Task><Schedule><Trigger Type='0'><BeginDate>" +
                                  BaseSDK::ADateTime(begin).ToString("%Y/%m/%d %H:%M:%S").ToUtf8() +
                                  "</BeginDate></Trigger></Schedule></Task>");
    m_Supervisor->Post({{BaseSDK::AString(name.c_str()), true, false, false}});
  }

 private:
  static void UseZone(const char* zone) {
    (void)(zone != nullptr ? setenv("TZ", zone, 1) : unsetenv("TZ"));
    tzset();
  }
};

}  // namespace

TEST_F(StartTime, MayBeAsLateAsTheJobAllows) {
  AddJob("a", "exit 0", "max_late = 3h");
  AddJob("b", "exit 0", "max_late = 1m");
  StartSupervisor();
  DispatchLate("a", 7200);
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Ok"});
  EXPECT_EQ(Told("a")["result"], "Ok");
  Dispatch("b", false);  // at its time, whatever the document says
  EXPECT_EQ(m_Scheduler.WaitForStates(2).back(), "b Ok");
  EXPECT_EQ(Told("b")["result"], "Ok");
}

TEST_F(StartTime, IsLeftOutWhenItIsLater) {
  AddJob("a", "exit 0", "max_late = 1h");
  StartSupervisor();
  DispatchLate("a", 7200);
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Ok"}) << "it does not come again";
  auto told = Told("a");
  EXPECT_FALSE(told["skipped"].empty());
  told.erase("skipped");
  EXPECT_EQ(
      told,
      (std::map<std::string, std::string>{
          {"state", "none"}, {"skipReason", "it would start more than 1h late"}, {"skips", "1"}}));
  EXPECT_THAT(Output("a"), MatchesRegex("-- [-0-9: ]+ left out: it would start more than 1h "
                                        "late\n"));
  EXPECT_EQ(LogCount("Task 'a' is due, but it would start more than 1h late: left out"), 1u);
  EXPECT_TRUE(WaitUntil([&] { return !m_Supervisor->IsBusy(); }));
}

TEST_F(StartTime, ThatIsLeftOutLeavesAStartAloneThatComesWithIt) {
  AddJob("a", "echo begun > $STARTED", "max_late = 1h");
  StartSupervisor();
  // In one hand-over: the first is late, and nobody can tell how much.
  m_Supervisor->Post({{"a", true, false, false}, {"a", false, false, false}});
  EXPECT_EQ(Started(), "begun");
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Ok"});
  EXPECT_EQ(Told("a")["result"], "Ok");
  EXPECT_EQ(Told("a")["skips"], "1");
}

TEST_F(StartTime, IsLeftOutWhenItIsLateAndNobodyCanTellHowMuch) {
  AddJob("a", "exit 0", "max_late = 1h");
  StartSupervisor();
  m_Supervisor->Post({{"a", true, true, false}});
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Ok"});
  EXPECT_EQ(Told("a")["skipReason"], "it is late, and how much cannot be told");
}

TEST_F(StartTime, ThatIsLeftOutMakesAFailureBeforeItFinal) {
  AddJob("a", "exit 7", "max_late = 1h");
  StartSupervisor();
  Dispatch("a", false);
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Failed"});
  DispatchLate("a", 7200);
  EXPECT_EQ(m_Scheduler.WaitForStates(2).back(), "a Ok");
  EXPECT_EQ(Told("a")["result"], "Failed");
  EXPECT_EQ(Told("a")["final"], "1");
  EXPECT_EQ(Told("a")["skipReason"], "it would start more than 1h late");
  StopSupervisor();
  StartSupervisor();
  EXPECT_EQ(Told("a")["result"], "Failed");
}

TEST_F(StartTime, WaitsForItsShareOfTheSplay) {
  AddJob("a", "echo begun > $STARTED", "splay = 1h");
  StartSupervisor();
  Dispatch("a", false);
  ASSERT_TRUE(WaitUntilTold("a", "state", "waiting"));
  EXPECT_THAT(Told("a")["reason"], MatchesRegex("its splay: it begins at [-0-9: ]+"));
  EXPECT_TRUE(m_Supervisor->IsBusy());
  Dispatch("a", false);
  ASSERT_TRUE(WaitUntilTold("a", "skipReason", "it is waiting to start already"));
  EXPECT_TRUE(m_Scheduler.States().empty());
  EXPECT_FALSE(m_Started.HasLine());
  PassTime(std::chrono::hours(1));
  EXPECT_EQ(Started(), "begun");
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Ok"});
  EXPECT_FALSE(m_Started.HasLine());
}

TEST_F(StartTime, TakesNoPlaceOfARunBeforeItHasCome) {
  AddJob("a", "echo a > $STARTED", "splay = 1h");
  AddJob("b", "echo b > $STARTED");
  StartSupervisor(LongGrace, 1);
  Dispatch("a", false);
  ASSERT_TRUE(WaitUntilTold("a", "state", "waiting"));
  Dispatch("b", false);
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"b Ok"});
  PassTime(std::chrono::hours(1));
  EXPECT_EQ(m_Scheduler.WaitForStates(2).back(), "a Ok");
}

TEST_F(StartTime, DoesNotComeForATaskThatWaitsWhenTheHandlerEnds) {
  AddJob("a", "exit 0", "splay = 1h");
  StartSupervisor();
  Dispatch("a", false);
  ASSERT_TRUE(WaitUntilTold("a", "state", "waiting"));
  ASSERT_TRUE(m_Supervisor->Stop());
  EXPECT_TRUE(m_Scheduler.States().empty()) << "it says Started, and comes again";
  EXPECT_THAT(Output("a"), HasSubstr("left out: the command handler ends\n"));
}

TEST_F(StartTime, IsNotLateForItsSplay) {
  AddJob("a", "exit 0", "splay = 1h\nmax_late = 1m");
  StartSupervisor();
  Dispatch("a", false);
  ASSERT_TRUE(WaitUntilTold("a", "state", "waiting"));
  PassTime(std::chrono::hours(1));
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Ok"});
  EXPECT_EQ(Told("a")["result"], "Ok");
}

}  // namespace NoxHandlerTest
