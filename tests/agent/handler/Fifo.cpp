#include "tests/agent/handler/Fifo.h"

#include "tests/support/Patience.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace NoxHandlerTest {

// Open in both directions, so that neither side's coming and going ends the pipe.
Fifo::Fifo(const std::string& path)
    : m_Path(path),
      m_Fd(mkfifo(path.c_str(), 0666) == 0 && chmod(path.c_str(), 0666) == 0
               ? open(path.c_str(), O_RDWR | O_CLOEXEC | O_NONBLOCK)
               : -1) {
  if (m_Fd < 0) {
    throw std::system_error(errno, std::generic_category(), path);
  }
}

Fifo::~Fifo() {
  (void)close(m_Fd);
}

std::string Fifo::ReadLine() {
  while (m_Text.find('\n') == std::string::npos) {
    if (!Fill(TestSupport::PatienceMilliseconds)) {
      return std::string();
    }
  }
  const std::size_t end = m_Text.find('\n');
  std::string line = m_Text.substr(0, end);
  m_Text.erase(0, end + 1);
  return line;
}

bool Fifo::HasLine() {
  while (Fill(0)) {
  }
  return m_Text.find('\n') != std::string::npos;
}

void Fifo::WriteLine(const std::string& line) {
  const std::string bytes = line + "\n";
  if (write(m_Fd, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) {
    throw std::system_error(errno, std::generic_category(), m_Path);
  }
}

bool Fifo::Fill(int milliseconds) {
  pollfd handle{m_Fd, POLLIN, 0};
  std::array<char, 1024> buffer;
  if (poll(&handle, 1, milliseconds) <= 0) {
    return false;
  }
  const ssize_t got = read(m_Fd, buffer.data(), buffer.size());
  if (got <= 0) {
    return false;
  }
  m_Text.append(buffer.data(), static_cast<std::size_t>(got));
  return true;
}

}  // namespace NoxHandlerTest
