#pragma once

#include <sys/types.h>

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

/// What to start, and as whom.
struct Command {
  std::vector<std::string> m_Arguments;                ///< the program's path first
  std::map<std::string, std::string> m_Environment{};  ///< on top of the test's own
  bool m_AsNobody = false;  ///< a user without any rights; only root can do that
};

/// A program under test, with its output. One that still runs is killed at the end.
class Program {
 public:
  /// `output` takes what it writes to both streams.
  Program(const Command& command, const std::filesystem::path& output);
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;
  ~Program();

  pid_t Pid() const { return m_Pid; }
  void Signal(int number) const;
  bool HasEnded();
  /// Waits for its end, two minutes at most: the exit status, or 1000 and the signal that ended it.
  int WaitForEnd();
  std::string Output() const;
  /// Waits until the output holds the text, two minutes at most.
  bool WaitForOutput(const std::string& text) const;

  struct Result {
    int m_Status = -1;
    std::string m_Output;  ///< standard output
    std::string m_Error;
  };
  /// Runs a program to its end; one that takes more than two minutes is killed. `input` is its
  /// standard input.
  static Result Run(const Command& command, const std::filesystem::path& scratch,
                    const std::string& input = {});

 private:
  const std::filesystem::path m_OutputFile;
  pid_t m_Pid;
  std::optional<int> m_Status;
};

/// Asks again and again, a hundredth of a second apart, until it is so; false after two minutes.
template <class Question>
bool WaitUntil(Question question);

void PauseBeforeAskingAgain();
bool IsPatienceOver(int asked);

template <class Question>
bool WaitUntil(Question question) {
  for (int asked = 0; !question(); ++asked) {
    if (IsPatienceOver(asked)) {
      return false;
    }
    PauseBeforeAskingAgain();
  }
  return true;
}
