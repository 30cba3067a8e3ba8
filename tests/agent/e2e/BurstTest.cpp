// Many tasks come due at once, and the agent is killed among their runs: whatever has run is on
// record, and what is on record as finished does not run again.
#include "tests/agent/e2e/AgentFixture.h"

#include <BaseSDK/AXmlDoc.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <sstream>
#include <utility>
#include <vector>

using BaseSDK::AString;
using BaseSDK::AXmlDoc;

namespace {

class Burst : public AgentFixture {
 protected:
  static constexpr int Tasks = 60;

  // Each job notes which agent has run it.
  Burst() {
    std::filesystem::create_directories(m_Directory / "state/var/tasks");
    const std::string document = Document(Trigger(1, FromNow(1)));
    for (int i = 0; i < Tasks; ++i) {
      AddJob(IdOf(i), "echo $PPID >> " + IdOf(i) + ".runs");
      m_Directory.Write("state/var/tasks/" + IdOf(i) + ".vsk", document);
    }
  }

  static std::string IdOf(int task) { return "task" + std::to_string(task); }
  static bool IsFinished(const std::string& run) { return run.ends_with(" Ok"); }
  bool IsAny(const std::function<bool(const std::string& id)>& question) const {
    for (int i = 0; i < Tasks; ++i) {
      if (question(IdOf(i))) {
        return true;
      }
    }
    return false;
  }

  // Kills the agent as soon as it is so for any of the tasks, and starts the next one.
  void KillWhenAny(const std::function<bool(const std::string& id)>& question) {
    StartAgent();
    ASSERT_TRUE(WaitUntil([&] { return IsAny(question); }));
    KillAgent();
    ExpectWholeDocuments();
    for (int i = 0; i < Tasks; ++i) {
      m_AtTheKill.push_back(LastRun(IdOf(i)));
    }
    StartAgent();
  }
  void ExpectNothingLost() {
    for (int i = 0; i < Tasks; ++i) {
      SCOPED_TRACE(IdOf(i));
      ASSERT_TRUE(WaitForState(IdOf(i), "Ok"));
    }
    const std::string log = m_Agent->Output();
    for (int i = 0; i < Tasks; ++i) {
      SCOPED_TRACE(IdOf(i));
      ExpectRunsOnRecord(IdOf(i), m_AtTheKill[static_cast<std::size_t>(i)], log);
    }
    ExpectWholeDocuments();
    ExpectNoTemporaries();
  }

 private:
  // A run whose end is not on record takes place again: the next agent cannot know better. It says
  // so, which shows that the start was on record.
  void ExpectRunsOnRecord(const std::string& id, const std::string& atTheKill,
                          const std::string& log) const {
    const auto [first, second] = CountRuns(id);
    const bool wasStarted = log.find("Task '" + id +
                                     "' did not finish last time, the last known "
                                     "state is 'Started'") != std::string::npos;
    EXPECT_LE(first, 1);
    EXPECT_LE(second, 1);
    EXPECT_GE(first + second, 1);
    EXPECT_TRUE(first == 0 || second == 0 || wasStarted) << "it has run and was not on record";
    if (IsFinished(atTheKill)) {
      EXPECT_EQ(second, 0) << "it had finished: " << atTheKill;
      EXPECT_EQ(LastRun(id), atTheKill);
    }
  }
  // By the agent that was killed, and by the next one.
  std::pair<int, int> CountRuns(const std::string& id) const {
    const std::string name = id + ".runs";
    std::istringstream lines(m_Directory.Has(name) ? m_Directory.Read(name) : std::string());
    int first = 0;
    int second = 0;
    for (std::string line; std::getline(lines, line);) {
      ++(line == std::to_string(m_Agent->Pid()) ? second : first);
    }
    return {first, second};
  }
  void ExpectWholeDocuments() const {
    for (int i = 0; i < Tasks; ++i) {
      const std::string text = TaskFile(IdOf(i));
      const AXmlDoc document(AString(text.c_str()));
      EXPECT_TRUE(document.IsParsed()) << IdOf(i) << ": " << text;
      EXPECT_FALSE(document.SelectSingleNode("/Task/Schedule").IsEmpty()) << IdOf(i);
    }
  }
  void ExpectNoTemporaries() const {
    for (const auto& entry : std::filesystem::directory_iterator(m_Directory / "state/var/tasks")) {
      EXPECT_EQ(entry.path().extension(), ".vsk") << entry.path();
    }
  }

  std::vector<std::string> m_AtTheKill;  ///< the last run of each task then
};

}  // namespace

TEST_F(Burst, LosesNothingWhenTheAgentIsKilledAtTheFirstRecord) {
  KillWhenAny([&](const std::string& id) { return !LastRun(id).empty(); });
  ExpectNothingLost();
}

TEST_F(Burst, LosesNothingWhenTheAgentIsKilledAtTheFirstRun) {
  KillWhenAny([&](const std::string& id) { return m_Directory.Has(id + ".runs"); });
  ExpectNothingLost();
}

TEST_F(Burst, RunsNoFinishedTaskAgainWhenTheAgentIsKilledAtTheFirstEnd) {
  KillWhenAny([&](const std::string& id) { return IsFinished(LastRun(id)); });
  ExpectNothingLost();
}
