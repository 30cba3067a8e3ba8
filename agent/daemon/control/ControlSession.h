#pragma once

#include "agent/daemon/control/Api.h"
#include "agent/daemon/control/ControlPatience.h"

#include <boost/asio/local/stream_protocol.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http/message.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>

#include <functional>
#include <memory>
#include <optional>

namespace NoxAgent {

/// One connection to the control socket. It reads a request within the bounds, has it answered,
/// writes the answer, and waits for the next request for a while if the client wants that. It keeps
/// itself alive as long as one of these goes on.
///
/// All of it happens on the thread of input and output.
class ControlSession : public std::enable_shared_from_this<ControlSession> {
 public:
  using Socket = boost::asio::local::stream_protocol::socket;

  /// What a session needs of its server.
  struct Server {
    virtual ~Server() = default;
    virtual const ControlPatience& Patience() const = 0;
    /// Has the request answered elsewhere; `done` is called here with the answer.
    virtual void Answer(ApiRequest request, std::function<void(ApiResponse)> done) = 0;
    /// Has the next part of a body made elsewhere; `done` is called here with it, or with nothing
    /// when nobody comes to make it. The caller keeps `parts` until then.
    virtual void Produce(const BodyParts& parts,
                         std::function<void(std::optional<std::string>)> done) = 0;
    /// Goes on with the connection as a stream of notifications. False when there are too many
    /// streams; `socket` is then as it was.
    virtual bool BecomeStream(Socket& socket) = 0;
    /// Whether to offer a client to keep its connection for another request.
    virtual bool MayKeep() const = 0;
    /// Whether no more requests are taken, even on connections that were offered to go on.
    virtual bool IsStopping() const = 0;
    /// A request has been answered with an error.
    virtual void CountError() = 0;
    /// The session has come to its end.
    virtual void Ended(const std::shared_ptr<ControlSession>& session) = 0;
  };

  /// `caller` is at the other end of the socket.
  ControlSession(Socket socket, const Caller& caller, Server& server);

  /// Reads requests and answers them.
  void Start();
  /// Answers the connection with this error, whatever the client sends.
  void Refuse(const RequestError& error);
  /// Ends the session unless its request is being answered already. For the server's stop.
  void Cut();

 private:
  using Parser = boost::beast::http::request_parser<boost::beast::http::string_body>;
  using Response = boost::beast::http::response<boost::beast::http::string_body>;
  using Error = boost::system::error_code;

  void ReadHeader();
  void OnHeader(Error error);
  void Continue();
  void ReadBody();
  void OnBody(Error error);
  void OnReadError(Error error);
  void OnAnswer(const ApiResponse& answer);
  /// `keep`: another request may follow.
  void Write(const ApiResponse& answer, bool keep);
  /// The same with a body in parts: each is made when the one before it has been taken.
  void WriteParts(const BodyParts& parts, bool keep);
  void WritePart(std::string bytes, bool isLast);
  void ProducePart();
  void BreakOff();
  /// After the answer.
  void GoOn(bool keep);
  bool KeepsConnection() const;
  void WaitForNext();
  /// Lets the client finish sending before the connection is closed: closing it with input unread
  /// would reset it, and the client could lose the answer.
  void Linger();
  void Discard();
  void End();
  void StartTimer(unsigned seconds);
  void CutAfter(unsigned seconds, unsigned number);
  void StopTimer();

  Socket m_Socket;
  const Caller m_Caller;
  Server& m_Server;
  boost::asio::steady_timer m_Timer;
  boost::beast::flat_buffer m_Buffer;
  std::optional<Parser> m_Parser;  ///< of the request that is read; never empty once started
  Response m_Response;
  BodyParts m_Parts;
  std::string m_Part;         ///< that is being written
  bool m_KeepsAfter = false;  ///< another request may follow these parts
  unsigned m_Answered = 0;
  unsigned m_LastTimer = 0;
  bool m_IsReading = false;
  bool m_TimedOut = false;
  bool m_Ended = false;
};

}  // namespace NoxAgent
