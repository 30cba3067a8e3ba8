#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace NoxAgent {

struct HttpResponse {
  unsigned m_Status = 0;
  std::string m_Body;
};

/// HTTP/1.1 requests over a Unix socket, one after the other on one connection.
///
/// Every failure to reach the other side or to get a whole answer from it within half a minute is a
/// CommandError with ExitCode::Unreachable. One thread an object.
class HttpConnection {
 public:
  /// Connects.
  explicit HttpConnection(const std::string& socketPath);
  ~HttpConnection();
  HttpConnection(const HttpConnection&) = delete;
  HttpConnection& operator=(const HttpConnection&) = delete;

  /// Whether another request can be sent: the agent closes a connection behind some answers, and
  /// when nothing is asked for a while. At first it can.
  bool IsOpen() const;

  /// These and the others REQUIRE: IsOpen().
  HttpResponse Get(const std::string& target);
  HttpResponse Post(const std::string& target, const std::string& body);

  /// Sends a request for each of the bodies before it reads the first answer: together they are to
  /// fit into a socket's buffer. The answers in order, at least one; fewer than the bodies when the
  /// agent closes the connection behind the last of them, and it has not looked at the rest then.
  std::vector<HttpResponse> PostAll(const std::string& target,
                                    const std::vector<std::string>& jsons);

  /// Asks for `target` and hands each line of the answer to `line` as it comes, without limit of
  /// time, until `line` returns false or the other side ends the stream. `opened` is called once,
  /// when the other side has begun to answer. An answer other than 200 is returned at once, with
  /// its body, and no line is handed over. No other request can follow.
  HttpResponse Follow(const std::string& target, const std::function<void()>& opened,
                      const std::function<bool(const std::string&)>& line);

 private:
  struct Impl;
  std::unique_ptr<Impl> m_Impl;
};

}  // namespace NoxAgent
