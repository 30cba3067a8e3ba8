#pragma once

#include "agent/handler/system/FileDescriptor.h"
#include "agent/handler/system/ProcessTable.h"

#include <sys/types.h>

#include <string>
#include <vector>

namespace NoxHandler {

/// The processes of one run: those of the command's session, in whatever process groups they are.
/// Processes are held by handles (pidfds), so that no signal ever reaches a stranger whose number
/// one of them had before.
class Session {
 public:
  /// `id` is the process number of the command. With a `token` only processes that were given it
  /// as NOX_RUN_ID belong.
  explicit Session(pid_t id, std::string token = {}) : m_Id(id), m_Token(std::move(token)) {}

  /// Looks at who is there now. False when nobody is.
  bool Refresh();
  /// To all that the last Refresh found.
  void Signal(int number) const;
  /// To all that the last Refresh found: asks them to end. Stopped ones are woken to hear it.
  void Terminate() const;
  /// Each becomes readable when one of the processes has ended. Valid until the next Refresh.
  const std::vector<FileDescriptor>& EndHandles() const { return m_Processes; }

 private:
  bool Belongs(const ProcessTable::Process& process) const;

  const pid_t m_Id;
  const std::string m_Token;
  std::vector<FileDescriptor> m_Processes;
};

}  // namespace NoxHandler
