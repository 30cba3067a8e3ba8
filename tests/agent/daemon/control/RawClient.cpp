#include "tests/agent/daemon/control/RawClient.h"

#include "tests/support/Patience.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <system_error>

namespace NoxAgent {
RawClient::RawClient(const std::string& socketPath) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, socketPath.c_str(), socketPath.size() + 1);
  m_Fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (::connect(m_Fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
    throw std::system_error(errno, std::generic_category(), socketPath);
  }
}

RawClient::~RawClient() {
  (void)::close(m_Fd);
}

RawClient& RawClient::Send(const std::string& bytes) {
  std::size_t sent = 0;
  while (sent < bytes.size()) {
    const ssize_t count = ::send(m_Fd, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
    if (count < 0) {
      break;
    }
    sent += static_cast<std::size_t>(count);
  }
  return *this;
}

RawClient& RawClient::Shut() {
  (void)::shutdown(m_Fd, SHUT_WR);
  return *this;
}

std::string RawClient::ReadAll() {
  while (ReadMore()) {
  }
  return std::move(m_Input);
}

std::string RawClient::ReadUntil(const std::string& end) {
  std::size_t found = m_Input.find(end);
  while (found == std::string::npos) {
    if (!ReadMore()) {
      throw std::runtime_error("the connection ended after: " + m_Input);
    }
    found = m_Input.find(end);
  }
  std::string text = m_Input.substr(0, found + end.size());
  m_Input.erase(0, text.size());
  return text;
}

bool RawClient::ReadMore() {
  pollfd entry{m_Fd, POLLIN, 0};
  if (::poll(&entry, 1, TestSupport::PatienceMilliseconds) != 1) {
    throw std::runtime_error("no more came after: " + m_Input);
  }
  char buffer[65536];
  const ssize_t count = ::recv(m_Fd, buffer, sizeof(buffer), 0);
  if (count > 0) {
    m_Input.append(buffer, static_cast<std::size_t>(count));
  }
  return count > 0;
}

std::string RawClient::Request(const std::string& method, const std::string& target,
                               const std::string& body) {
  return method + " " + target +
         " HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\nContent-Length: " +
         std::to_string(body.size()) + "\r\n\r\n" + body;
}

std::string RawClient::Ask(const std::string& socketPath, const std::string& method,
                           const std::string& target, const std::string& body) {
  return RawClient(socketPath).Send(Request(method, target, body)).ReadAll();
}

unsigned StatusOf(const std::string& answer) {
  const std::string prefix = "HTTP/1.1 ";
  return answer.compare(0, prefix.size(), prefix) == 0
             ? static_cast<unsigned>(std::strtoul(answer.c_str() + prefix.size(), nullptr, 10))
             : 0;
}

std::string BodyOf(const std::string& answer) {
  const std::size_t end = answer.find("\r\n\r\n");
  return end == std::string::npos ? std::string() : answer.substr(end + 4);
}

}  // namespace NoxAgent
