#include "agent/daemon/control/NotificationStream.h"

#include "agent/daemon/control/ChunkedBody.h"
#include "agent/daemon/control/ControlServer.h"

#include <boost/asio/write.hpp>

#include <chrono>

namespace asio = boost::asio;

namespace NoxAgent {
NotificationStream::NotificationStream(Socket socket, unsigned secondsToWrite, OnEnd onEnd)
    : m_Socket(std::move(socket)),
      m_SecondsToWrite(secondsToWrite),
      m_OnEnd(std::move(onEnd)),
      m_Timer(m_Socket.get_executor()) {}

void NotificationStream::Start() {
  WatchClient();
  Enqueue(ChunkedBody::Header(false));
}

void NotificationStream::Send(const Lines& lines) {
  if (m_WaitingBytes >= ControlServer::MaxStreamBacklog) {
    End(true);
  } else {
    Enqueue(ChunkedBody::Chunk(*lines));
  }
}

void NotificationStream::Finish() {
  m_IsFinishing = true;
  Enqueue(ChunkedBody::Chunk({}));
}

void NotificationStream::Enqueue(std::string bytes) {
  if (m_Ended) {
    return;
  }
  m_WaitingBytes += bytes.size();
  m_Waiting.push_back(std::move(bytes));
  if (!m_IsWriting) {
    WriteNext();
  }
}

void NotificationStream::WriteNext() {
  m_IsWriting = true;
  (void)m_Timer.expires_after(std::chrono::seconds(m_SecondsToWrite));
  // A timer that has run out when its write ends still calls its handler; that call is ignored.
  m_Timer.async_wait([self = shared_from_this(), number = ++m_LastWrite](Error error) {
    if (!error && self->m_IsWriting && number == self->m_LastWrite) {
      self->End(true);
    }
  });
  asio::async_write(m_Socket, asio::buffer(m_Waiting.front()),
                    [self = shared_from_this()](Error error, std::size_t) {
                      self->m_IsWriting = false;
                      (void)self->m_Timer.cancel();
                      self->m_WaitingBytes -= self->m_Waiting.front().size();
                      self->m_Waiting.pop_front();
                      if (error || (self->m_IsFinishing && self->m_Waiting.empty())) {
                        self->End(false);
                      } else if (!self->m_Waiting.empty()) {
                        self->WriteNext();
                      }
                    });
}

// The client has nothing more to send. When input arrives, it has closed the connection, or it
// breaks the rules; both end the stream.
void NotificationStream::WatchClient() {
  m_Socket.async_read_some(asio::buffer(m_Input),
                           [self = shared_from_this()](Error, std::size_t) { self->End(false); });
}

void NotificationStream::End(bool dropped) {
  if (m_Ended) {
    return;
  }
  m_Ended = true;
  (void)m_Timer.cancel();
  Error ignored;
  (void)m_Socket.close(ignored);
  m_OnEnd(shared_from_this(), dropped);
}

}  // namespace NoxAgent
