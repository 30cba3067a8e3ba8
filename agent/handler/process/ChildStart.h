#pragma once

#include <vector>

namespace NoxHandler {

struct Launch;

/// The part of starting a command that runs in the new process, between fork and exec. Make the
/// object before the fork. Run does only what a signal handler may do, because other threads of the
/// agent may have held any lock at the moment of the fork.
class ChildStart {
 public:
  /// How far the start had come when it failed.
  enum Stage {
    Streams,
    Nice,
    IoPriority,
    Memory,
    CpuTime,
    Files,
    OomScore,
    User,
    Directory,
    Program
  };

  /// What the new process writes to m_FailureFd when it cannot become the command.
  struct Failure {
    Stage m_Stage;
    int m_Errno;
  };

  /// The lowest number that a descriptor given here may have: the process puts its own in the
  /// places below.
  static constexpr int FirstFree = 5;

  /// What the new process is given; each number is FirstFree or above.
  struct Descriptors {
    int m_Go;       ///< a byte here lets it go on; the end of input makes it end
    int m_Input;    ///< standard input
    int m_Output;   ///< standard output and error
    int m_Failure;  ///< where it writes a Failure
  };

  /// `launch` is borrowed.
  ChildStart(const Launch& launch, const Descriptors& descriptors);

  /// In the new process, with all signals blocked. Becomes the command or ends the process.
  [[noreturn]] void Run() const;

 private:
  void ResetSignals() const;
  void AwaitGo() const;
  void ConnectStreams() const;
  void SetLimits() const;
  void BecomeUser() const;
  void EnterDirectory() const;
  void Execute() const;
  [[noreturn]] void Fail(Stage stage, int error) const;

  const Launch& m_Launch;
  const Descriptors m_Descriptors;
  const std::vector<char*> m_Arguments;  ///< as exec takes them: borrowed texts, null at the end
  const std::vector<char*> m_Environment;
};

}  // namespace NoxHandler
