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
    /// Clock ticks from boot to its start. With the boot's identifier it names the process for
    /// good: numbers are used again.
    unsigned long long m_StartTicks = 0;
  };

  static std::optional<Process> Find(pid_t pid);
  /// Those of the session that have not ended, its leader also when it is yet to make the session.
  static std::vector<Process> OfSession(pid_t session);
  /// Whether the process was started with this variable ("NAME=value"). False also when it is
  /// another user's and may not be asked.
  static bool HasVariable(pid_t pid, const std::string& variable);
  /// Identifies this boot of the machine.
  static std::string BootId();
};

}  // namespace NoxHandler
