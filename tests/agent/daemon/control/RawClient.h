#pragma once

#include <string>

namespace NoxAgent {

/// A client of the control socket that sends whatever bytes a test likes and reads whatever comes.
class RawClient {
 public:
  /// Connects; throws std::system_error when it cannot. A test that fails does not hang: every wait
  /// ends after half a minute with an exception.
  explicit RawClient(const std::string& socketPath);
  RawClient(const RawClient&) = delete;
  RawClient& operator=(const RawClient&) = delete;
  ~RawClient();

  /// What does not fit any more because the other side has closed is dropped.
  RawClient& Send(const std::string& bytes);
  /// No more will be sent.
  RawClient& Shut();
  /// All up to the end of the connection.
  std::string ReadAll();
  /// Up to and with the first occurrence of `end`, counted from what was read last.
  std::string ReadUntil(const std::string& end);

  /// One whole request and its answer.
  static std::string Ask(const std::string& socketPath, const std::string& method,
                         const std::string& target, const std::string& body = {});
  /// Asks for the end of the connection behind the answer.
  static std::string Request(const std::string& method, const std::string& target,
                             const std::string& body);

 private:
  bool ReadMore();

  int m_Fd = -1;
  std::string m_Input;
};

/// The number after "HTTP/1.1 "; 0 for what is no answer.
unsigned StatusOf(const std::string& answer);
/// What follows the header.
std::string BodyOf(const std::string& answer);

}  // namespace NoxAgent
