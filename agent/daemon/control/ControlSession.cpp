#include "agent/daemon/control/ControlSession.h"

#include "agent/daemon/control/ChunkedBody.h"
#include "agent/daemon/control/ControlServer.h"

#include <boost/asio/write.hpp>
#include <boost/beast/http/error.hpp>
#include <boost/beast/http/field.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/http/write.hpp>

#include <chrono>

using BaseSDK::AString;
namespace http = boost::beast::http;
namespace asio = boost::asio;

namespace NoxAgent {
namespace {

constexpr std::size_t BufferBytes = 2 * ControlServer::MaxHeaderBytes;
constexpr unsigned SecondsToLinger = 1;
constexpr unsigned SecondsToCutAgain = 1;

RequestError TooLarge() {
  return RequestError(HttpStatus::BodyTooLarge, "body-too-large",
                      "the body is larger than 1.5 MiB; a task document may have 1 MiB");
}

// The answer to a request that could not be read; null when there is nobody to answer.
std::unique_ptr<RequestError> Explain(const boost::system::error_code& error) {
  if (error == http::error::end_of_stream) {
    return nullptr;
  }
  if (error == http::error::header_limit || error == http::error::buffer_overflow) {
    return std::make_unique<RequestError>(HttpStatus::HeaderTooLarge, "header-too-large",
                                          "the header is larger than 8 KiB");
  }
  if (error == http::error::body_limit) {
    return std::make_unique<RequestError>(TooLarge());
  }
  if (error == http::error::partial_message) {
    return std::make_unique<RequestError>(HttpStatus::BadRequest, "request-cut",
                                          "the request ends in the middle");
  }
  if (error.category() == http::make_error_code(http::error::bad_method).category()) {
    return std::make_unique<RequestError>(HttpStatus::BadRequest, "bad-http",
                                          AString("not HTTP/1.1: ") + error.message().c_str());
  }
  return nullptr;
}

}  // namespace

ControlSession::ControlSession(Socket socket, const Caller& caller, Server& server)
    : m_Socket(std::move(socket)),
      m_Caller(caller),
      m_Server(server),
      m_Timer(m_Socket.get_executor()),
      m_Buffer(BufferBytes) {}

void ControlSession::Start() {
  m_Parser.emplace();
  m_Parser->header_limit(ControlServer::MaxHeaderBytes);
  m_Parser->body_limit(ControlServer::MaxBodyBytes);
  StartTimer(m_Server.Patience().m_ToRead);
  ReadHeader();
}

void ControlSession::Refuse(const RequestError& error) {
  Write(Api::ErrorResponse(error), false);
}

void ControlSession::Cut() {
  if (m_IsReading) {
    End();
  }
}

void ControlSession::ReadHeader() {
  m_IsReading = true;
  http::async_read_header(
      m_Socket, m_Buffer, *m_Parser,
      [self = shared_from_this()](Error error, std::size_t) { self->OnHeader(error); });
}

void ControlSession::OnHeader(Error error) {
  if (error) {
    OnReadError(error);
  } else if (boost::beast::iequals(m_Parser->get()[http::field::expect], "100-continue")) {
    Continue();
  } else {
    ReadBody();
  }
}

void ControlSession::Continue() {
  static constexpr char Text[] = "HTTP/1.1 100 Continue\r\n\r\n";
  asio::async_write(m_Socket, asio::buffer(Text, sizeof(Text) - 1),
                    [self = shared_from_this()](Error error, std::size_t) {
                      if (error) {
                        self->OnReadError(error);
                      } else {
                        self->ReadBody();
                      }
                    });
}

void ControlSession::ReadBody() {
  http::async_read(m_Socket, m_Buffer, *m_Parser,
                   [self = shared_from_this()](Error error, std::size_t) { self->OnBody(error); });
}

void ControlSession::OnBody(Error error) {
  if (error) {
    OnReadError(error);
    return;
  }
  m_IsReading = false;
  StopTimer();
  auto& message = m_Parser->get();
  m_Server.Answer(
      {std::string(message.method_string()), std::string(message.target()),
       std::move(message.body()), m_Caller},
      [self = shared_from_this()](const ApiResponse& answer) { self->OnAnswer(answer); });
}

void ControlSession::OnReadError(Error error) {
  m_IsReading = false;
  if (m_Ended) {
    return;
  }
  if (m_TimedOut && m_Parser->got_some()) {
    Refuse(RequestError(
        HttpStatus::Timeout, "request-too-slow",
        AString("the request did not arrive within %1 s")
            .Arg(AString().SetNum(static_cast<unsigned long>(m_Server.Patience().m_ToRead), 'u'))));
    return;
  }
  const std::unique_ptr<RequestError> reason = Explain(error);
  if (reason == nullptr) {
    End();
  } else {
    Refuse(*reason);
  }
}

void ControlSession::OnAnswer(const ApiResponse& answer) {
  constexpr unsigned VersionWithChunks = 11;
  if ((answer.m_Parts || answer.m_IsStream) && m_Parser->get().version() < VersionWithChunks) {
    Refuse(RequestError(HttpStatus::OldVersion, "http-too-old",
                        "this answer comes in chunks, which need HTTP/1.1"));
  } else if (answer.m_Parts) {
    WriteParts(answer.m_Parts, KeepsConnection());
  } else if (!answer.m_IsStream) {
    Write(answer, KeepsConnection());
  } else if (m_Server.BecomeStream(m_Socket)) {
    End();
  } else {
    Refuse(RequestError(HttpStatus::Unavailable, "too-many-streams",
                        "too many clients follow the notifications already"));
  }
}

void ControlSession::Write(const ApiResponse& answer, bool keep) {
  if (answer.m_Status >= 400) {
    m_Server.CountError();
  }
  ++m_Answered;
  // A body behind the answer to HEAD would be taken for the next answer.
  const bool isHead = m_Parser.has_value() && m_Parser->get().method() == http::verb::head;
  m_Response =
      Response(http::int_to_status(answer.m_Status), 11, isHead ? "" : answer.m_Body + "\n");
  m_Response.set(http::field::content_type, "application/json");
  if (!answer.m_Allow.empty()) {
    m_Response.set(http::field::allow, answer.m_Allow);
  }
  m_Response.keep_alive(keep);
  m_Response.prepare_payload();
  StartTimer(m_Server.Patience().m_ToWrite);
  http::async_write(m_Socket, m_Response,
                    [self = shared_from_this(), keep](Error error, std::size_t) {
                      if (error) {
                        self->End();
                      } else {
                        self->GoOn(keep);
                      }
                    });
}

void ControlSession::WriteParts(const BodyParts& parts, bool keep) {
  ++m_Answered;
  m_Parts = parts;
  m_KeepsAfter = keep;
  WritePart(ChunkedBody::Header(keep), false);
}

void ControlSession::WritePart(std::string bytes, bool isLast) {
  m_Part = std::move(bytes);
  StartTimer(m_Server.Patience().m_ToWrite);
  asio::async_write(m_Socket, asio::buffer(m_Part),
                    [self = shared_from_this(), isLast](Error error, std::size_t) {
                      if (error || self->m_Server.IsStopping()) {
                        self->End();
                      } else if (isLast) {
                        self->m_Parts = nullptr;
                        self->GoOn(self->m_KeepsAfter);
                      } else {
                        self->ProducePart();
                      }
                    });
}

void ControlSession::ProducePart() {
  StopTimer();
  m_Server.Produce(m_Parts, [self = shared_from_this()](const std::optional<std::string>& part) {
    if (part.has_value()) {
      self->WritePart(ChunkedBody::Chunk(*part), part->empty());
    } else {
      self->BreakOff();
    }
  });
}

void ControlSession::BreakOff() {
  const RequestError error(HttpStatus::Unavailable, "busy",
                           "the answer is not whole: the requests before it have not come back "
                           "from their plug-ins; try again later");
  WritePart(ChunkedBody::Chunk(Api::ErrorResponse(error).m_Body + "\n") + ChunkedBody::Chunk({}),
            true);
}

void ControlSession::GoOn(bool keep) {
  if (keep) {
    WaitForNext();
  } else {
    Linger();
  }
}

bool ControlSession::KeepsConnection() const {
  return m_Parser->keep_alive() && m_Answered + 1 < ControlServer::MaxRequests &&
         m_Server.MayKeep();
}

// The client was told that it may send another request, so it may, however many connections have
// come since. The time to read that request begins with its first byte; until then the client may
// think.
void ControlSession::WaitForNext() {
  if (m_Server.IsStopping()) {
    Linger();
  } else if (m_Buffer.size() > 0) {
    Start();
  } else {
    m_IsReading = true;
    StartTimer(m_Server.Patience().m_ToThink);
    m_Socket.async_wait(Socket::wait_read, [self = shared_from_this()](Error error) {
      self->m_IsReading = false;
      if (error) {
        self->End();
      } else {
        self->Start();
      }
    });
  }
}

void ControlSession::Linger() {
  Error ignored;
  (void)m_Socket.shutdown(Socket::shutdown_send, ignored);
  StartTimer(SecondsToLinger);
  Discard();
}

void ControlSession::Discard() {
  m_Buffer.clear();
  m_Socket.async_read_some(m_Buffer.prepare(BufferBytes),
                           [self = shared_from_this()](Error error, std::size_t) {
                             if (error) {
                               self->End();
                             } else {
                               self->Discard();
                             }
                           });
}

void ControlSession::End() {
  if (m_Ended) {
    return;
  }
  m_Ended = true;
  StopTimer();
  Error ignored;
  (void)m_Socket.close(ignored);
  m_Parts = nullptr;
  m_Server.Ended(shared_from_this());
}

void ControlSession::StartTimer(unsigned seconds) {
  m_TimedOut = false;
  CutAfter(seconds, ++m_LastTimer);
}

// A timer that has run out when it is set anew still calls its handler; that call is ignored. What
// is under way goes on when it stood between two of its steps just then: it is cut again.
void ControlSession::CutAfter(unsigned seconds, unsigned number) {
  (void)m_Timer.expires_after(std::chrono::seconds(seconds));
  m_Timer.async_wait([self = shared_from_this(), number](Error error) {
    if (!error && !self->m_Ended && number == self->m_LastTimer) {
      self->m_TimedOut = true;
      Error ignored;
      (void)self->m_Socket.cancel(ignored);
      self->CutAfter(SecondsToCutAgain, number);
    }
  });
}

void ControlSession::StopTimer() {
  ++m_LastTimer;
  (void)m_Timer.cancel();
}

}  // namespace NoxAgent
