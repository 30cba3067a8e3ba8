// A run is on record before its command starts, whatever happens to the disk.
#include "tests/agent/handler/FullDisk.h"
#include "tests/agent/handler/run/SupervisorFixture.h"

#include <BaseSDK/AFileSystem.h>

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <functional>

using BaseSDK::ALogger;
using States = std::vector<std::string>;

namespace NoxHandlerTest {

using namespace NoxHandler;

namespace {

class SupervisorRecords : public SupervisorFixture {};

}  // namespace

TEST_F(SupervisorRecords, NotesARunForAsLongAsItGoesOn) {
  AddGatedJob("a");
  StartSupervisor();
  Dispatch("a");
  (void)Started();
  EXPECT_EQ(RecordedTasks(), States{"a"});
  OpenGate();
  (void)m_Scheduler.WaitForStates(1);
  EXPECT_EQ(RecordedTasks(), States{});
}

// Notes when all is made safe, while it is in force.
class SafetyWatch : public BaseSDK::AFileSystem {
 public:
  explicit SafetyWatch(std::function<void()> call) : m_Call(std::move(call)) {
    (void)Replace(this);
  }
  ~SafetyWatch() override { (void)Replace(nullptr); }
  void MakeSafe() override { m_Call(); }

 private:
  const std::function<void()> m_Call;
};

TEST_F(SupervisorRecords, MakesTheStateOfARunSafeBehindIt) {
  std::atomic<unsigned> told{0};
  std::atomic<unsigned> safe{0};
  std::atomic<unsigned> toldWhenSafe{0};
  m_Scheduler.OnState([&] { ++told; });
  const SafetyWatch files([&] {
    toldWhenSafe = told.load();
    ++safe;
  });
  AddGatedJob("a");
  StartSupervisor();
  Dispatch("a");
  (void)Started();
  EXPECT_EQ(safe, 0u) << "nothing has ended";
  OpenGate();
  EXPECT_TRUE(WaitUntil([&] { return safe > 0; }));
  EXPECT_EQ(toldWhenSafe, 1u);
  EXPECT_TRUE(m_Supervisor->Stop());
  EXPECT_EQ(safe, 1u);
}

// Else the job that would make room could not run either.
TEST_F(SupervisorRecords, RunsJobsOnAFullDisk) {
  AddJob("a", "echo out; echo $$ > $STARTED; read line < $GATE");
  AddJob("b", "exit 3");
  StartSupervisor(LongGrace, 2);
  {
    const FullDisk full(m_Directory.Path());
    Dispatch("a");
    (void)Started();
    EXPECT_EQ(RecordedTasks(), States{"a"});
    Dispatch("b");
    EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"b Failed"});
    EXPECT_EQ(LogCount("Task 'b' failed: exit status 3 after "), 1u);
    OpenGate();
    EXPECT_EQ(m_Scheduler.WaitForStates(2).back(), "a Ok");
  }
  for (const char* name : {"a", "b"}) {
    EXPECT_EQ(LogCount("Cannot open the output file " +
                       (m_Directory / ("output/" + std::string(name) + ".log")).string() +
                       ": No space left on device"),
              1u);
  }
  EXPECT_EQ(m_Log.Messages(ALogger::Error).size(), 0u);
  EXPECT_EQ(RecordedTasks(), States{});
}

TEST_F(SupervisorRecords, RunsNothingThatItCannotNote) {
  AddGatedJob("a");
  std::filesystem::remove(m_Directory / "records");
  StartSupervisor();
  Dispatch("a");
  EXPECT_EQ(m_Scheduler.WaitForStates(1), States{"a Failed"});
  EXPECT_EQ(LogCount("cannot note the run on disk: No such file or directory"), 1u);
  EXPECT_FALSE(m_Started.HasLine());
}

}  // namespace NoxHandlerTest
