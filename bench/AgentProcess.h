#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

namespace Workbench {

/// A real agent as a child process, from its start to its end. What goes wrong is an exception.
class AgentProcess {
 public:
  /// Returns when the agent answers and has loaded so many tasks. `stateDirectory` has to have a
  /// short path: the control socket lies below it.
  AgentProcess(const std::filesystem::path& stateDirectory, long tasks);
  AgentProcess(const AgentProcess&) = delete;
  AgentProcess& operator=(const AgentProcess&) = delete;
  ~AgentProcess();

  /// Runs noxctl to its end, which is success.
  void RunClient(const std::vector<std::string>& arguments) const;
  std::string Socket() const { return (m_RunDirectory / "control.sock").string(); }
  /// The memory of the process that is not swapped out.
  double ResidentBytes() const;

 private:
  bool HasLoaded(long tasks) const;

  const std::filesystem::path m_RunDirectory;
  pid_t m_Pid;
};

}  // namespace Workbench
