#pragma once

#include <filesystem>
#include <string>

/// Speaks to the agent's control socket in bare HTTP, byte by byte as any client could.
class HttpClient {
 public:
  struct Response {
    int m_Status = 0;
    std::string m_Body;
  };

  explicit HttpClient(const std::filesystem::path& socket);
  HttpClient(const HttpClient&) = delete;
  HttpClient& operator=(const HttpClient&) = delete;
  ~HttpClient();

  void Send(const std::string& bytes) const;
  /// No more will be sent.
  void EndOfInput() const;
  /// All until the agent closes the connection.
  std::string ReadAll() const;
  /// All until the text comes.
  std::string ReadUntil(const std::string& text) const;

  /// One request on a connection of its own.
  static Response Ask(const std::filesystem::path& socket, const std::string& method,
                      const std::string& target, const std::string& body = {});

 private:
  int m_Fd;
};
