#pragma once

#include "agent/handler/system/FileDescriptor.h"
#include "agent/handler/system/ProcessTable.h"

#include <sys/types.h>

#include <string>
#include <vector>

namespace NoxHandler {

/// The processes of one run: all that are in the command's session, in whatever process group. It
/// holds them by handles (pidfds), so a signal never reaches a stranger that got the number of a
/// process that has ended.
class Session {
 public:
  /// `id` is the process number of the command. With a `token`, only processes belong that have it
  /// as the value of NOX_RUN_ID in their environment.
  explicit Session(pid_t id, std::string token = {}) : m_Id(id), m_Token(std::move(token)) {}

  /// Looks which processes are there now; false when there are none.
  bool Refresh();
  /// Sends the signal to all processes that the last Refresh found.
  void Signal(int number) const;
  /// Asks all processes that the last Refresh found to end (SIGTERM), and wakes stopped ones so
  /// that they can.
  void Terminate() const;
  /// Each becomes readable when one of the processes has ended. Valid until the next Refresh.
  const std::vector<FileDescriptor>& EndHandles() const { return m_Processes; }

 private:
  bool Look();
  bool Belongs(const ProcessTable::Process& process) const;

  const pid_t m_Id;
  const std::string m_Token;
  std::vector<FileDescriptor> m_Processes;
};

}  // namespace NoxHandler
