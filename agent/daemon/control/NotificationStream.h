#pragma once

#include <boost/asio/local/stream_protocol.hpp>
#include <boost/asio/steady_timer.hpp>

#include <array>
#include <deque>
#include <functional>
#include <memory>
#include <string>

namespace NoxAgent {

/// The connection of a client that follows the notifications: an HTTP answer without an end, of
/// lines.
///
/// All of it happens on the thread of input and output.
class NotificationStream : public std::enable_shared_from_this<NotificationStream> {
 public:
  using Socket = boost::asio::local::stream_protocol::socket;
  using Lines = std::shared_ptr<const std::string>;
  /// Told once, at the end; `dropped` when the client was too slow.
  using OnEnd = std::function<void(const std::shared_ptr<NotificationStream>&, bool dropped)>;

  NotificationStream(Socket socket, unsigned secondsToWrite, OnEnd onEnd);

  void Start();
  /// Sends the lines after those that wait already. Ends the stream as dropped when too much waits.
  void Send(const Lines& lines);
  /// Sends what waits, then ends the stream.
  void Finish();

 private:
  using Error = boost::system::error_code;

  void Enqueue(std::string bytes);
  void WriteNext();
  void WatchClient();
  void End(bool dropped);

  Socket m_Socket;
  const unsigned m_SecondsToWrite;
  OnEnd m_OnEnd;
  boost::asio::steady_timer m_Timer;
  std::deque<std::string> m_Waiting;
  std::size_t m_WaitingBytes = 0;
  std::array<char, 64> m_Input{};
  unsigned m_LastWrite = 0;
  bool m_IsWriting = false;
  bool m_IsFinishing = false;
  bool m_Ended = false;
};

}  // namespace NoxAgent
