// A plain directory stands for the control group here: what is written can be read, and a script
// plays the kernel.
#include "agent/handler/run/RunGroups.h"

#include "tests/agent/handler/run/SupervisorFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

using BaseSDK::AString;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;

namespace NoxHandlerTest {

using namespace NoxHandler;

namespace {

class RunGroupsTest : public SupervisorFixture {
 protected:
  RunGroupsTest() { m_GroupPath = m_Groups.Path().string(); }

  std::string In(const std::string& file) const {
    return m_Groups.Read(m_Groups.Names().at(0) + "/" + file);
  }

  TestSupport::TempDir m_Groups;
  /// For scripts: goes to the directory of the run's own group.
  const std::string m_GoThere = "cd " + m_Groups.Path().string() + "/a.*.run; ";
};

}  // namespace

TEST_F(RunGroupsTest, LimitTheMemoryOfAllProcessesTogether) {
  const std::string script = m_GoThere + "echo $$; cat cgroup.procs; ulimit -v";
  EXPECT_EQ(RunToEnd(script, "memory = 512M"), "a Ok");
  EXPECT_THAT(m_Groups.Names(), ElementsAre(MatchesRegex("a\\.[0-9a-f]{8}\\.run")));
  EXPECT_EQ(In("memory.max"), "536870912");
  EXPECT_EQ(In("memory.swap.max"), "0");
  EXPECT_EQ(In("memory.oom.group"), "1");
  const std::string pid = In("cgroup.procs");
  EXPECT_EQ(Output("a").find(pid + "\n" + pid + "unlimited\n"), 0U) << Output("a");
}

TEST_F(RunGroupsTest, SayThatTheMemoryWasNotEnough) {
  const std::string events = "printf 'low 0\\noom 1\\noom_kill 2\\n' > memory.events; ";
  EXPECT_EQ(RunToEnd(m_GoThere + events + "kill -9 $$", "memory = 1536K"), "a Failed");
  EXPECT_EQ(LogCount("Task 'a' failed: killed for taking more than its memory of 1536K after "),
            1U);
}

TEST_F(RunGroupsTest, DoNotTakeTheWholeMachinesLackForTheRuns) {
  const std::string events = "printf 'oom 0\\noom_kill 1\\n' > memory.events; ";
  EXPECT_EQ(RunToEnd(m_GoThere + events + "kill -9 $$", "memory = 1G"), "a Failed");
  EXPECT_EQ(LogCount("Task 'a' failed: signal 9 (Killed) after "), 1U);
}

TEST_F(RunGroupsTest, EndARunWhoseProcessesHaveTakenTheirTimeTogether) {
  const std::string spent = "ulimit -t; echo usage_usec 1000000 > cpu.stat; ";
  EXPECT_EQ(RunToEnd(m_GoThere + spent + "exec sleep 1000", "cpu_time = 1s"), "a Failed");
  EXPECT_EQ(LogCount("Task 'a' failed: ended by its cpu_time of 1s after "), 1U);
  EXPECT_EQ(Output("a").find("unlimited\n"), 0U) << Output("a");
}

TEST_F(RunGroupsTest, AreForLimitsAlone) {
  EXPECT_EQ(RunToEnd("true", "nice = 19\nfiles = 64"), "a Ok");
  EXPECT_THAT(m_Groups.Names(), IsEmpty());
}

TEST_F(RunGroupsTest, LeaveTheLimitsToEachProcessWhereThereIsNone) {
  std::filesystem::remove(m_Groups.Path());
  EXPECT_EQ(RunToEnd("ulimit -v; ulimit -t", "memory = 512M\ncpu_time = 10m"), "a Ok");
  EXPECT_EQ(Output("a").find("524288\n600\n"), 0U) << Output("a");
  EXPECT_EQ(LogCount("Task 'a': no control group for its run, so its limits are of each process by "
                     "itself: " +
                     m_Groups.Path().string()),
            1U);
}

TEST_F(RunGroupsTest, AreNamedByTheTask) {
  RunGroups groups(AString::FromUtf8(m_GroupPath));
  ProcessLimits limits;
  limits.m_CpuSeconds = 1;
  const auto group =
      groups.Make("a b\n{C}:" + AString(std::string(200, 'x').c_str()), "0123456789abcdef", limits);
  EXPECT_THAT(m_Groups.Names(), ElementsAre("a_b__C__" + std::string(92, 'x') + ".01234567.run"));
  EXPECT_FALSE(m_Groups.Has(m_Groups.Names().at(0) + "/memory.max"));
}

// A process that has made a session of its own outlives its run.
TEST_F(RunGroupsTest, GoWithTheLastProcess) {
  const auto make = [](RunGroups& groups, const char* taskId) {
    ProcessLimits limits;
    limits.m_CpuSeconds = 1;
    return groups.Make(taskId, "01234567", limits);
  };
  RunGroups groups(AString::FromUtf8(m_GroupPath));
  auto first = make(groups, "first");
  auto second = make(groups, "second");
  first.reset();
  EXPECT_THAT(m_Groups.Names(), ElementsAre("second.01234567.run"));
  m_Groups.Write("second.01234567.run/held", "");
  second.reset();
  first = make(groups, "first");
  EXPECT_THAT(m_Groups.Names(), ElementsAre("first.01234567.run", "second.01234567.run"));
  std::filesystem::remove(m_Groups / "second.01234567.run/held");
  const auto third = make(groups, "third");
  EXPECT_THAT(m_Groups.Names(), ElementsAre("first.01234567.run", "third.01234567.run"));
}

TEST_F(RunGroupsTest, OfAnEarlierAgentAreRemovedIfNoProcessIsLeft) {
  std::filesystem::create_directory(m_Groups / "agent");
  std::filesystem::create_directory(m_Groups / "a.01234567.run");
  std::filesystem::create_directory(m_Groups / "b.01234567.run");
  m_Groups.Write("b.01234567.run/held", "");
  const RunGroups groups(AString::FromUtf8(m_GroupPath));
  EXPECT_THAT(m_Groups.Names(), ElementsAre("agent", "b.01234567.run"));
}

}  // namespace NoxHandlerTest
