#pragma once

#include "agent/handler/process/Launch.h"
#include "agent/handler/system/FileDescriptor.h"

#include <BaseSDK/AString.h>

#include <sys/types.h>

#include <optional>
#include <string>

namespace NoxHandler {

/// A command's process. It has a session and process group of its own, the launch's input, no
/// other descriptor of the agent, and signals as a fresh program has them; its standard output and
/// error both go to Output(). One thread at a time may use the object. The destructor reaps a
/// process that has ended, and leaves one alone that has not.
class ChildProcess {
 public:
  /// What messages about a failed start call things.
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

  /// Lets the process become the command. If the agent dies before this call, the process ends.
  void Go();

  pid_t Pid() const { return m_Pid; }
  /// A descriptor to wait on: it becomes readable when the process has ended.
  int EndHandle() const { return m_PidFd.Get(); }
  /// The descriptor that its output comes from; reading does not block. -1 after CloseOutput.
  int Output() const { return m_Output.Get(); }
  void CloseOutput() { m_Output.Close(); }

  /// How it ended.
  struct Outcome {
    bool m_Exited = false;  ///< else a signal ended it
    int m_Code = 0;         ///< exit status or signal number
  };
  /// How it ended; nothing while it runs. The process number stays taken until Reap.
  std::optional<Outcome> End() const;
  /// Why the process could not become the command; empty when it could. REQUIRES: it has ended.
  BaseSDK::AString StartFailure() const;
  /// Frees the number of the process; it may name another process afterwards. REQUIRES: it has
  /// ended.
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
