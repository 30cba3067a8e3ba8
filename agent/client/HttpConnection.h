#pragma once

#include <functional>
#include <memory>
#include <string>

namespace NoxAgent {

/// An answer: its HTTP status and its whole body.
struct HttpResponse {
  unsigned m_Status = 0;
  std::string m_Body;
};

/// HTTP/1.1 requests over a Unix socket, one after the other on one connection.
///
/// When the other side cannot be reached, or does not give a whole answer within half a minute,
/// every operation throws CommandError (Unreachable). One thread at a time.
class HttpConnection {
 public:
  /// Connects.
  explicit HttpConnection(const std::string& socketPath);
  ~HttpConnection();
  HttpConnection(const HttpConnection&) = delete;
  HttpConnection& operator=(const HttpConnection&) = delete;

  /// Whether another request can be sent. The agent closes a connection after some answers, and
  /// when nothing is asked for a while. True at first.
  bool IsOpen() const;

  // All of these REQUIRE: IsOpen().

  /// `target` is path and query.
  HttpResponse Get(const std::string& target);
  HttpResponse Post(const std::string& target, const std::string& body);

  /// Asks for `target` and hands each line of the answer to `line` as it comes. An answer other
  /// than 200 is returned with its body, and no line is handed over.
  HttpResponse GetLines(const std::string& target,
                        const std::function<void(const std::string&)>& line);

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
