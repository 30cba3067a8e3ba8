#pragma once

#include "tests/agent/e2e/HttpClient.h"
#include "tests/agent/e2e/Program.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

/// The real agent with the real plug-ins in a directory of its own, and its client.
class AgentFixture : public testing::Test {
 protected:
  AgentFixture();
  ~AgentFixture() override;

  /// Starts the agent and waits until it serves requests.
  void StartAgent(const std::vector<std::string>& options = {},
                  const std::map<std::string, std::string>& environment = {});
  /// Asks it to stop; its exit status.
  int StopAgent();
  /// As a crash would end it.
  void KillAgent();

  Program::Result Ctl(const std::vector<std::string>& arguments, const std::string& input = {});
  HttpClient::Response Http(const std::string& method, const std::string& target,
                            const std::string& body = {}) const;

  /// A job that is a shell script.
  void AddJob(const std::string& id, const std::string& script, const std::string& keys = {});
  /// A task with these triggers, through the client; succeeds or fails the test.
  void AddTask(const std::string& id, const std::string& triggers);
  /// Job and task that runs as soon as possible.
  void AddAsapTask(const std::string& id, const std::string& script, const std::string& keys = {});

  /// The file of the task; empty when there is none.
  std::string TaskFile(const std::string& id) const;
  /// The last run in it: "YYYY-MM-DD HH:MM:SS" and the state, empty when it never ran.
  std::string LastRun(const std::string& id) const;
  std::string State(const std::string& id) const;
  bool WaitForState(const std::string& id, const std::string& state) const;
  bool WaitForFile(const std::string& name) const;
  /// The lines of a file that jobs write to.
  std::size_t CountLines(const std::string& name) const;

  /// Whether the process is there and has not ended.
  static bool IsAlive(int process);

  static std::string Trigger(int type, const std::string& begin, const std::string& attributes = {},
                             const std::string& children = {});
  static std::string Document(const std::string& triggers);
  /// So many seconds from now, as documents write it.
  static std::string FromNow(long seconds);

  std::string Path(const std::string& name) const { return (m_Directory / name).string(); }
  std::string Socket() const { return Path("state/run/control.sock"); }

  const TestSupport::TempDir m_Directory;
  std::unique_ptr<Program> m_Agent;
  int m_Starts = 0;
};
