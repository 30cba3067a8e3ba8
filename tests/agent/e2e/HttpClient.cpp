#include "tests/agent/e2e/HttpClient.h"

#include "tests/support/Patience.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <system_error>

namespace {

[[noreturn]] void Fail(const char* action) {
  throw std::system_error(errno, std::generic_category(), action);
}

// Adds what comes next; false at the end.
bool ReadMore(int fd, std::string& text) {
  pollfd handle{fd, POLLIN, 0};
  std::array<char, 4096> buffer;
  if (poll(&handle, 1, TestSupport::PatienceMilliseconds) != 1) {
    throw std::runtime_error("the agent does not answer; so far: " + text);
  }
  const ssize_t got = read(fd, buffer.data(), buffer.size());
  text.append(buffer.data(), got > 0 ? static_cast<std::size_t>(got) : 0);
  return got > 0;
}

}  // namespace

HttpClient::HttpClient(const std::filesystem::path& socket)
    : m_Fd(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  (void)strncpy(address.sun_path, socket.c_str(), sizeof address.sun_path - 1);
  if (m_Fd < 0 || connect(m_Fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    Fail("connect");
  }
}

HttpClient::~HttpClient() {
  (void)close(m_Fd);
}

void HttpClient::Send(const std::string& bytes) const {
  if (send(m_Fd, bytes.data(), bytes.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(bytes.size())) {
    Fail("send");
  }
}

void HttpClient::EndOfInput() const {
  (void)shutdown(m_Fd, SHUT_WR);
}

std::string HttpClient::ReadAll() const {
  std::string text;
  while (ReadMore(m_Fd, text)) {
  }
  return text;
}

std::string HttpClient::ReadUntil(const std::string& text) const {
  std::string all;
  while (all.find(text) == std::string::npos && ReadMore(m_Fd, all)) {
  }
  return all;
}

HttpClient::Response HttpClient::Ask(const std::filesystem::path& socket, const std::string& method,
                                     const std::string& target, const std::string& body) {
  const HttpClient client(socket);
  client.Send(method + " " + target + " HTTP/1.1\r\nHost: agent\r\nConnection: close\r\n" +
              "Content-Type: application/json\r\nContent-Length: " + std::to_string(body.size()) +
              "\r\n\r\n" + body);
  const std::string answer = client.ReadAll();
  const std::size_t bodyBegin = answer.find("\r\n\r\n");
  if (!answer.starts_with("HTTP/1.1 ") || bodyBegin == std::string::npos) {
    throw std::runtime_error("not an answer: " + answer);
  }
  return {std::stoi(answer.substr(9)), answer.substr(bodyBegin + 4)};
}
