#pragma once

#include "agent/handler/run/Supervisor.h"
#include "tests/agent/handler/FakeScheduler.h"
#include "tests/agent/handler/Fifo.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace NoxHandlerTest {

using namespace NoxHandler;

/// Goes as the system's, and further ahead when a test says so.
class MovedClock : public WaitClock {
 public:
  Moment Now() const override { return WaitClock::Now() + std::chrono::seconds(m_Ahead.load()); }
  void Move(std::chrono::seconds length) { m_Ahead += static_cast<long>(length.count()); }

 private:
  std::atomic<long> m_Ahead{0};
};

/// A supervisor with its directories, and jobs that are shell scripts. In a script, $STARTED is the
/// pipe that Started() reads, and $GATE the one that OpenGate() writes.
class SupervisorFixture : public testing::Test {
 protected:
  static constexpr std::chrono::seconds LongGrace{60};

  SupervisorFixture();
  ~SupervisorFixture() override;

  /// The task "name", known to the scheduler, whose job runs the script; `keys` are further lines
  /// of the job's section.
  void AddJob(const std::string& name, const std::string& script, const std::string& keys = "");
  /// One whose job says its process number and goes on until the gate opens.
  void AddGatedJob(const std::string& name, const std::string& keys = "");
  void Dispatch(const std::string& name, bool neverRun = true, bool killAtEnd = false);
  /// By default nothing is killed, however long a busy machine takes to end it.
  void StartSupervisor(std::chrono::milliseconds killGrace = LongGrace, std::size_t maxRuns = 200);
  /// Runs one job to its end; the state it ended in.
  std::string RunToEnd(const std::string& script, const std::string& keys = "");

  /// What the next started job says.
  std::string Started() { return m_Started.ReadLine(); }
  void OpenGate() { m_Gate.WriteLine(); }
  std::string Output(const std::string& name) const;
  /// The tasks on record, as an agent would read them that comes after this one.
  std::vector<std::string> RecordedTasks() const;
  /// Looks again and again; false when it never came true.
  static bool WaitUntil(const std::function<bool()>& condition);
  unsigned LogCount(const std::string& part) const;
  /// Whether the process is alive (one that has ended and is not yet forgotten is not).
  static bool IsAlive(const std::string& pid);
  /// Waits until it is not.
  static bool WaitForEnd(const std::string& pid);

  /// The time for which the supervisor waits before a run begins goes on by so much, at once.
  void PassTime(std::chrono::seconds length);
  /// What GetRun tells of the task.
  std::map<std::string, std::string> Told(const std::string& name) const;
  /// Waits until GetRun tells this.
  bool WaitUntilTold(const std::string& name, const std::string& key, const std::string& value);
  /// Ends the supervisor's work, for another one to start.
  void StopSupervisor();

  TestSupport::TempDir m_Directory;
  TestSupport::LogCapture m_Log;
  FakeScheduler m_Scheduler;
  Fifo m_Started;
  Fifo m_Gate;
  MovedClock m_Clock;
  // For a supervisor that is yet to start.
  bool m_LogOutput = true;
  std::string m_GroupPath;
  std::unique_ptr<Supervisor> m_Supervisor;
};

}  // namespace NoxHandlerTest
