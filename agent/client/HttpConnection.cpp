#include "agent/client/HttpConnection.h"

#include "agent/client/ExitCode.h"
#include "agent/client/SocketDenial.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/local/stream_protocol.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core/basic_stream.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http.hpp>

#include <chrono>
#include <cstdint>
#include <limits>
#include <sstream>

namespace NoxAgent {

namespace beast = boost::beast;
namespace http = beast::http;
namespace net = boost::asio;

namespace {

constexpr std::chrono::seconds AnswerTime{30};
// Well below the time after which the agent closes an idle connection, so that a request hardly
// ever meets a connection that the agent is just closing.
constexpr std::chrono::seconds ReuseTime{2};
constexpr int SendAttempts = 3;
constexpr std::uint64_t LargestAnswer = 64 * 1024 * 1024;
constexpr std::size_t BufferBytes = 64 * 1024;
constexpr const char* Reading = "read from the agent at";

// Takes the whole lines off the front of `text`; false when `line` wants no more.
bool TakeLines(std::string& text, const std::function<bool(const std::string&)>& line) {
  std::size_t begin = 0;
  bool more = true;
  for (std::size_t end; more && (end = text.find('\n', begin)) != std::string::npos;
       begin = end + 1) {
    if (end > begin) {
      more = line(text.substr(begin, end - begin));
    }
  }
  text.erase(0, begin);
  return more;
}

}  // namespace

struct HttpConnection::Impl {
  explicit Impl(const std::string& path) : m_Path(path), m_Stream(m_Context) {
    m_Buffer.reserve(BufferBytes);
  }

  // Runs one asynchronous operation to its end, so that the stream's time limit holds for it.
  template <class Start>
  beast::error_code Outcome(Start start) {
    beast::error_code failure = net::error::would_block;
    start([&failure](beast::error_code error, std::size_t = 0) { failure = error; });
    m_Context.restart();
    m_Context.run();
    return failure;
  }

  template <class Start>
  void Await(const char* doing, Start start) {
    if (const beast::error_code failure = Outcome(start)) {
      Fail(doing, failure);
    }
  }

  [[noreturn]] void Fail(const char* doing, const beast::error_code& error) const {
    const std::string hint = error == net::error::access_denied
                                 ? SocketDenialHint(m_Path)
                                 : "see that noxagentd runs, or name its socket with --socket";
    throw CommandError(ExitCode::Unreachable, std::string("cannot ") + doing + " " + m_Path + ": " +
                                                  error.message() + "; " + hint);
  }

  void Connect() {
    if (m_Path.size() >= sizeof(sockaddr_un::sun_path)) {
      throw CommandError(ExitCode::Usage, "the socket path " + m_Path +
                                              " is too long; name a shorter one with --socket");
    }
    m_Stream.expires_after(AnswerTime);
    Await("connect to the agent at", [this](auto done) {
      m_Stream.async_connect(net::local::stream_protocol::endpoint(m_Path), done);
    });
  }

  bool IsOpen() const {
    return m_KeepsOpen && std::chrono::steady_clock::now() - m_LastUse < ReuseTime;
  }

  void Send(http::verb verb, const std::string& target, const std::string& body) {
    http::request<http::string_body> request(verb, target, 11, body);
    request.set(http::field::host, "localhost");
    request.set(http::field::user_agent, "noxctl");
    if (!body.empty()) {
      request.set(http::field::content_type, "application/json");
    }
    request.prepare_payload();
    std::ostringstream bytes;
    bytes << request;
    m_KeepsOpen = false;
    SendAll(bytes.str());
  }

  // The agent closes a connection on which it hears nothing for some seconds. That happens to a
  // client that the system did not let run. The request has not come through then, and another
  // connection is made.
  void SendAll(const std::string& text) {
    beast::error_code failure;
    for (int attempt = 0; attempt < SendAttempts; ++attempt) {
      std::size_t sent = 0;
      m_Stream.expires_after(AnswerTime);
      failure = Outcome([&](auto done) {
        net::async_write(m_Stream, net::buffer(text),
                         [&sent, done](beast::error_code error, std::size_t count) mutable {
                           sent = count;
                           done(error);
                         });
      });
      if (!failure) {
        return;
      }
      if (failure != net::error::broken_pipe || sent > 0) {
        break;
      }
      m_Stream.close();
      m_Buffer.clear();
      Connect();
    }
    Fail("send to the agent at", failure);
  }

  using Parser = http::response_parser<http::string_body>;

  HttpResponse Receive() {
    Parser parser;
    parser.body_limit(LargestAnswer);
    m_Stream.expires_after(AnswerTime);
    Await(Reading, [&](auto done) { http::async_read(m_Stream, m_Buffer, parser, done); });
    return TakeAnswer(parser);
  }

  void ReceiveHeader(Parser& parser) {
    parser.body_limit(std::numeric_limits<std::uint64_t>::max());
    m_Stream.expires_after(AnswerTime);
    Await(Reading, [&](auto done) { http::async_read_header(m_Stream, m_Buffer, parser, done); });
  }

  // The rest of an answer. Its lines are handed over as they come, if it is one of 200. A stream
  // may be silent as long as it likes.
  HttpResponse ReceiveLines(Parser& parser, bool isStream,
                            const std::function<bool(const std::string&)>& line) {
    const bool hasLines = parser.get().result() == http::status::ok;
    if (isStream && hasLines) {
      m_Stream.expires_never();
    }
    for (bool wantsMore = true; wantsMore && !parser.is_done();) {
      if (!isStream) {
        m_Stream.expires_after(AnswerTime);
      }
      Await(Reading, [&](auto done) { http::async_read_some(m_Stream, m_Buffer, parser, done); });
      wantsMore = !hasLines || TakeLines(parser.get().body(), line);
    }
    return TakeAnswer(parser);
  }

  // Another request may follow an answer that was read to its end.
  HttpResponse TakeAnswer(Parser& parser) {
    m_KeepsOpen = parser.is_done() && parser.get().keep_alive();
    m_LastUse = std::chrono::steady_clock::now();
    return {parser.get().result_int(), std::move(parser.get().body())};
  }

  HttpResponse Exchange(http::verb verb, const std::string& target, const std::string& body) {
    Send(verb, target, body);
    return Receive();
  }

  const std::string m_Path;
  net::io_context m_Context;
  beast::basic_stream<net::local::stream_protocol> m_Stream;
  beast::flat_buffer m_Buffer;
  bool m_KeepsOpen = true;
  std::chrono::steady_clock::time_point m_LastUse = std::chrono::steady_clock::now();
};

HttpConnection::HttpConnection(const std::string& socketPath)
    : m_Impl(std::make_unique<Impl>(socketPath)) {
  m_Impl->Connect();
}

HttpConnection::~HttpConnection() = default;

bool HttpConnection::IsOpen() const {
  return m_Impl->IsOpen();
}

HttpResponse HttpConnection::Get(const std::string& target) {
  return m_Impl->Exchange(http::verb::get, target, {});
}

HttpResponse HttpConnection::Post(const std::string& target, const std::string& body) {
  return m_Impl->Exchange(http::verb::post, target, body);
}

HttpResponse HttpConnection::GetLines(const std::string& target,
                                      const std::function<void(const std::string&)>& line) {
  m_Impl->Send(http::verb::get, target, {});
  Impl::Parser parser;
  m_Impl->ReceiveHeader(parser);
  return m_Impl->ReceiveLines(parser, false, [&](const std::string& text) {
    line(text);
    return true;
  });
}

HttpResponse HttpConnection::Follow(const std::string& target, const std::function<void()>& opened,
                                    const std::function<bool(const std::string&)>& line) {
  m_Impl->Send(http::verb::get, target, {});
  Impl::Parser parser;
  m_Impl->ReceiveHeader(parser);
  if (parser.get().result() == http::status::ok) {
    opened();
  }
  return m_Impl->ReceiveLines(parser, true, line);
}

}  // namespace NoxAgent
