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
  explicit Impl(const std::string& path) : m_Path(path), m_Stream(m_Context) {}

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

  void Send(http::verb verb, const std::string& target, const std::vector<std::string>& bodies) {
    std::ostringstream bytes;
    for (const std::string& body : bodies) {
      http::request<http::string_body> request(verb, target, 11, body);
      request.set(http::field::host, "localhost");
      request.set(http::field::user_agent, "noxctl");
      if (!body.empty()) {
        request.set(http::field::content_type, "application/json");
      }
      request.prepare_payload();
      bytes << request;
    }
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

  HttpResponse Receive() {
    http::response_parser<http::string_body> parser;
    parser.body_limit(LargestAnswer);
    m_Stream.expires_after(AnswerTime);
    Await("read from the agent at",
          [&](auto done) { http::async_read(m_Stream, m_Buffer, parser, done); });
    m_KeepsOpen = parser.get().keep_alive();
    m_LastUse = std::chrono::steady_clock::now();
    return {parser.get().result_int(), std::move(parser.get().body())};
  }

  HttpResponse Exchange(http::verb verb, const std::string& target, const std::string& body) {
    Send(verb, target, {body});
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

std::vector<HttpResponse> HttpConnection::PostAll(const std::string& target,
                                                  const std::vector<std::string>& jsons) {
  m_Impl->Send(http::verb::post, target, jsons);
  std::vector<HttpResponse> answers;
  do {
    answers.push_back(m_Impl->Receive());
  } while (answers.size() < jsons.size() && m_Impl->m_KeepsOpen);
  return answers;
}

HttpResponse HttpConnection::Follow(const std::string& target, const std::function<void()>& opened,
                                    const std::function<bool(const std::string&)>& line) {
  Impl& impl = *m_Impl;
  impl.Send(http::verb::get, target, {""});
  http::response_parser<http::string_body> parser;
  parser.body_limit(std::numeric_limits<std::uint64_t>::max());
  const char* const reading = "read from the agent at";
  impl.Await(reading, [&](auto done) {
    http::async_read_header(impl.m_Stream, impl.m_Buffer, parser, done);
  });
  const bool isStream = parser.get().result() == http::status::ok;
  std::string& body = parser.get().body();
  if (isStream) {
    impl.m_Stream.expires_never();
    opened();
  }
  for (bool wantsMore = true; wantsMore && !parser.is_done();) {
    impl.Await(reading, [&](auto done) {
      http::async_read_some(impl.m_Stream, impl.m_Buffer, parser, done);
    });
    wantsMore = !isStream || TakeLines(body, line);
  }
  return {parser.get().result_int(), std::move(body)};
}

}  // namespace NoxAgent
