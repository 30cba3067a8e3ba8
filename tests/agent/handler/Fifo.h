#pragma once

#include <string>

namespace NoxHandlerTest {

/// A named pipe between a test and the jobs it runs: how one waits for the other without sleeping.
class Fifo {
 public:
  explicit Fifo(const std::string& path);
  Fifo(const Fifo&) = delete;
  Fifo& operator=(const Fifo&) = delete;
  ~Fifo();

  const std::string& Path() const { return m_Path; }
  /// The next line that a job writes; empty when none comes in two minutes.
  std::string ReadLine();
  /// Whether a line is there already.
  bool HasLine();
  /// Lets one job's "read" return.
  void WriteLine(const std::string& line = "go");

 private:
  bool Fill(int milliseconds);

  const std::string m_Path;
  int m_Fd;
  std::string m_Text;
};

}  // namespace NoxHandlerTest
