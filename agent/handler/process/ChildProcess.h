#pragma once

#include "agent/handler/process/Launch.h"
#include "agent/handler/system/FileDescriptor.h"

#include <BaseSDK/AString.h>

#include <sys/types.h>

#include <optional>
#include <string>

namespace NoxHandler {

/// A command's process: a session and process group of its own, standard input empty, standard
/// output and error both to Output(), no other descriptor of the agent, signals as for a fresh
/// program. One thread at a time uses it; the destructor reaps a process that has ended and leaves
/// alone one that has not.
class ChildProcess {
 public:
  /// For the words about a start that failed.
  struct Names {
    BaseSDK::AString m_User;
    BaseSDK::AString m_Directory;
    BaseSDK::AString m_Command;
  };

  /// Creates the process, which waits for Go() before it becomes the command. Throws JobError when
  /// the system refuses.
  explicit ChildProcess(const Launch& launch);
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;
  ~ChildProcess();

  /// Lets it become the command. Should the agent die before this, so does the process.
  void Go();

  pid_t Pid() const { return m_Pid; }
  /// Becomes readable when the process has ended.
  int EndHandle() const { return m_PidFd.Get(); }
  /// Where its output comes from; does not block. Closed by CloseOutput.
  int Output() const { return m_Output.Get(); }
  void CloseOutput() { m_Output.Close(); }

  /// How it ended. Its number stays taken until Reap.
  struct Outcome {
    bool m_Exited = false;  ///< else a signal ended it
    int m_Code = 0;         ///< exit status or signal number
  };
  std::optional<Outcome> End() const;
  /// Why it could not become the command; empty when it could. For a process that has ended.
  BaseSDK::AString StartFailure() const;
  /// Forgets the process that has ended. Afterwards its number may name another one.
  void Reap();

 private:
  const Names m_Names;
  pid_t m_Pid = -1;  ///< -1 when reaped
  FileDescriptor m_PidFd;
  FileDescriptor m_Output;
  FileDescriptor m_Failure;  ///< the new process says here why it could not become the command
  FileDescriptor m_Go;
};

}  // namespace NoxHandler
