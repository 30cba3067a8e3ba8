#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace NoxHandler {

/// The system's processes, as /proc shows them at the moment of asking.
struct ProcessTable {
  struct Process {
    pid_t m_Pid = 0;
    char m_State = '?';  ///< as in /proc: 'Z' for one that has ended and waits for its parent
    pid_t m_Group = 0;
    pid_t m_Session = 0;
    /// When it started, in clock ticks since the boot. Together with the number and BootId() this
    /// names the process for good; its number alone is used again.
    unsigned long long m_StartTicks = 0;
  };

  /// Nothing when there is no such process.
  static std::optional<Process> Find(pid_t pid);
  /// The processes of the session that have not ended. The leader counts also before it has made
  /// the session.
  static std::vector<Process> OfSession(pid_t session);
  /// Whether the process was started with this environment variable ("NAME=value"). False also when
  /// the agent may not look, as with another user's process.
  static bool HasVariable(pid_t pid, const std::string& variable);
  /// The identifier of this boot of the machine.
  static std::string BootId();
};

}  // namespace NoxHandler
