#pragma once

#include <vector>

namespace NoxHandler {

struct Launch;

/// The part of starting a command that runs in the new process, between fork and exec. Made before
/// the fork; afterwards only what a signal handler may do is done.
class ChildStart {
 public:
  enum Stage { Streams, User, Directory, Program };

  /// What the new process writes to m_FailureFd when it cannot become the command.
  struct Failure {
    Stage m_Stage;
    int m_Errno;
  };

  /// The lowest number that a descriptor given here may have; those below are put in their place.
  static constexpr int FirstFree = 5;

  struct Descriptors {
    int m_Go;
    int m_Null;
    int m_Output;
    int m_Failure;
  };

  /// `launch` is borrowed.
  ChildStart(const Launch& launch, const Descriptors& descriptors);

  /// In the new process, with all signals blocked. Becomes the command or ends the process.
  [[noreturn]] void Run() const;

 private:
  void ResetSignals() const;
  void AwaitGo() const;
  void ConnectStreams() const;
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
