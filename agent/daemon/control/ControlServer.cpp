#include "agent/daemon/control/ControlServer.h"

#include "agent/Protocol.h"
#include "agent/daemon/control/ControlSession.h"
#include "agent/daemon/control/JsonMessage.h"
#include "agent/daemon/control/NotificationStream.h"
#include "agent/daemon/control/SafeLines.h"
#include "agent/daemon/process/AgentLog.h"
#include "agent/library/Json.h"

#include <BaseSDK/AEvent.h>
#include <BaseSDK/AFileSystem.h>

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/thread_pool.hpp>

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <set>
#include <system_error>
#include <thread>

using BaseSDK::AEvent;
using BaseSDK::ALogger;
using BaseSDK::AString;
namespace asio = boost::asio;
using Protocol = asio::local::stream_protocol;

namespace NoxAgent {
namespace {

// Connections beyond the limit get an error as answer; beyond this many they are just closed.
constexpr std::size_t MaxRefusals = 64;
constexpr std::chrono::milliseconds PauseWithoutDescriptors(100);

bool IsAboutTask(long code) {
  return code == TaskChanged || code == TaskDeleted || code == TaskAdded;
}

std::string MakeLine(const NotificationCenter::Notification& notification) {
  return JsonMessage::Dump(
             {{"time", notification.m_Time},
              {"code", notification.m_Code},
              {IsAboutTask(notification.m_Code) ? "id" : "text", notification.m_Text.ToUtf8()}}) +
         "\n";
}

int Duplicate(int fd) {
  const int copy = ::fcntl(fd, F_DUPFD_CLOEXEC, 0);
  if (copy < 0) {
    throw std::system_error(errno, std::generic_category(), "cannot listen on the control socket");
  }
  return copy;
}

}  // namespace

// A request on its way to a worker. The worker or the timer answers it, whichever claims it first.
class ControlServer::Turn {
 public:
  explicit Turn(asio::io_context& io) : m_Timer(io) {}

  // True for the first caller. [any thread]
  bool Claim() { return !m_IsClaimed.exchange(true); }

  asio::steady_timer m_Timer;  // on the thread of input and output alone

 private:
  std::atomic<bool> m_IsClaimed{false};
};

// All members are used on the thread of input and output alone, unless they say otherwise.
struct ControlServer::Impl final : ControlSession::Server {
  Impl(int fd, const PeerCheck& peers, Api& api, NotificationCenter& notifications,
       const ControlPatience& patience);

  const ControlPatience& Patience() const override { return m_Patience; }
  void Answer(ApiRequest request, std::function<void(ApiResponse)> done) override;
  void Produce(const BodyParts& parts,
               std::function<void(std::optional<std::string>)> done) override;
  bool BecomeStream(ControlSession::Socket& socket) override;
  bool MayKeep() const override;
  bool IsStopping() const override { return m_Stopping; }
  void CountError() override;
  void Ended(const std::shared_ptr<ControlSession>& session) override;

  void GiveUpLater(const std::shared_ptr<Turn>& turn, std::function<void()> giveUp);
  void WaitForClient();
  void AcceptAll();
  void Admit(int fd);
  void Broadcast(const NotificationStream::Lines& lines);
  void StreamEnded(const std::shared_ptr<NotificationStream>& stream, bool dropped);
  void BeginStop();
  void CheckIdle();

  const PeerCheck m_Peers;
  const ControlPatience m_Patience;
  Api& m_Api;                           // used by the workers
  NotificationCenter& m_Notifications;  // constant
  asio::io_context m_Io{1};
  asio::executor_work_guard<asio::io_context::executor_type> m_Work{m_Io.get_executor()};
  Protocol::acceptor m_Acceptor;
  asio::steady_timer m_Pause;
  std::set<std::shared_ptr<ControlSession>> m_Sessions;
  std::set<std::shared_ptr<NotificationStream>> m_Streams;
  unsigned m_UnderWay = 0;  // requests and parts with the workers, or waiting for one
  bool m_Stopping = false;
  AEvent m_Idle{AEvent::ManualReset};  // set when stopping and nothing is under way

  // Written here, read by anyone.
  std::atomic<unsigned long> m_Requests{0};
  std::atomic<unsigned long> m_Errors{0};
  std::atomic<unsigned long> m_Dropped{0};
  std::atomic<unsigned> m_SessionCount{0};
  std::atomic<unsigned> m_StreamCount{0};

  // Used by ControlServer.
  SafeLines m_Lines{[this](std::string lines) {
    const auto shared = std::make_shared<const std::string>(std::move(lines));
    asio::post(m_Io, [this, shared] { Broadcast(shared); });
  }};
  unsigned m_Listener = 0;
  asio::thread_pool m_Workers{Workers};
  std::thread m_Thread;
};

ControlServer::Impl::Impl(int fd, const PeerCheck& peers, Api& api,
                          NotificationCenter& notifications, const ControlPatience& patience)
    : m_Peers(peers),
      m_Patience(patience),
      m_Api(api),
      m_Notifications(notifications),
      m_Acceptor(m_Io, Protocol(), Duplicate(fd)),
      m_Pause(m_Io) {
  m_Acceptor.non_blocking(true);
}

void ControlServer::Impl::Answer(ApiRequest request, std::function<void(ApiResponse)> done) {
  m_Requests.fetch_add(1, std::memory_order_relaxed);
  const auto turn = std::make_shared<Turn>(m_Io);
  if (++m_UnderWay > Workers) {
    GiveUpLater(turn, [done] {
      done(Api::ErrorResponse(RequestError(
          HttpStatus::Unavailable, "busy",
          "nothing was done: the requests before this one have not come back from their plug-ins; "
          "try again later")));
    });
  }
  asio::post(m_Workers, [this, turn, request = std::move(request), done = std::move(done)] {
    if (turn->Claim()) {
      asio::post(m_Io, [this, turn, done, answer = m_Api.Handle(request)] {
        (void)turn->m_Timer.cancel();
        --m_UnderWay;
        done(answer);
      });
    }
  });
}

// Whoever claims the turn has `parts` for sure: its owner waits.
void ControlServer::Impl::Produce(const BodyParts& parts,
                                  std::function<void(std::optional<std::string>)> done) {
  const auto turn = std::make_shared<Turn>(m_Io);
  if (++m_UnderWay > Workers) {
    GiveUpLater(turn, [done] { done(std::nullopt); });
  }
  asio::post(m_Workers, [this, turn, &parts, done = std::move(done)] {
    if (turn->Claim()) {
      asio::post(m_Io, [this, turn, done, part = parts()] {
        (void)turn->m_Timer.cancel();
        --m_UnderWay;
        done(part);
      });
    }
  });
}

void ControlServer::Impl::GiveUpLater(const std::shared_ptr<Turn>& turn,
                                      std::function<void()> giveUp) {
  (void)turn->m_Timer.expires_after(std::chrono::seconds(m_Patience.m_ToWait));
  turn->m_Timer.async_wait(
      [this, turn, giveUp = std::move(giveUp)](const boost::system::error_code& error) {
        if (!error && turn->Claim()) {
          --m_UnderWay;
          giveUp();
        }
      });
}

bool ControlServer::Impl::BecomeStream(ControlSession::Socket& socket) {
  if (m_Stopping || m_Streams.size() >= MaxStreams) {
    return false;
  }
  const auto stream = std::make_shared<NotificationStream>(
      std::move(socket), m_Patience.m_ToWrite,
      [this](const auto& ended, bool dropped) { StreamEnded(ended, dropped); });
  m_Streams.insert(stream);
  m_StreamCount = static_cast<unsigned>(m_Streams.size());
  stream->Start();
  return true;
}

bool ControlServer::Impl::MayKeep() const {
  return !m_Stopping && m_Sessions.size() <= MaxKeptConnections;
}

void ControlServer::Impl::CountError() {
  m_Errors.fetch_add(1, std::memory_order_relaxed);
}

void ControlServer::Impl::Ended(const std::shared_ptr<ControlSession>& session) {
  m_Sessions.erase(session);
  m_SessionCount = static_cast<unsigned>(m_Sessions.size());
  CheckIdle();
}

void ControlServer::Impl::WaitForClient() {
  m_Acceptor.async_wait(Protocol::acceptor::wait_read,
                        [this](const boost::system::error_code& error) {
                          if (!error && !m_Stopping) {
                            AcceptAll();
                          }
                        });
}

void ControlServer::Impl::AcceptAll() {
  for (;;) {
    // Closed on exec from the start: a handler may be starting a command right now.
    const int fd =
        ::accept4(m_Acceptor.native_handle(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (fd >= 0) {
      Admit(fd);
    } else if (errno == EMFILE || errno == ENFILE || errno == ENOMEM) {
      ALOG(AgentLog(), ALogger::Warning, "ControlServer",
           AString("A client has to wait: %1").Arg(std::strerror(errno)));
      (void)m_Pause.expires_after(PauseWithoutDescriptors);
      m_Pause.async_wait([this](const boost::system::error_code& error) {
        if (!error) {
          WaitForClient();
        }
      });
      return;
    } else if (errno == EAGAIN) {
      WaitForClient();
      return;
    }
  }
}

void ControlServer::Impl::Admit(int fd) {
  if (m_Sessions.size() >= MaxConnections + MaxRefusals) {
    (void)::close(fd);
    return;
  }
  const std::optional<Caller> caller = m_Peers.CallerAt(fd);
  const bool isFull = m_Sessions.size() >= MaxConnections;
  const auto session = std::make_shared<ControlSession>(
      ControlSession::Socket(m_Io, Protocol(), fd), caller.value_or(Caller()), *this);
  m_Sessions.insert(session);
  m_SessionCount = static_cast<unsigned>(m_Sessions.size());
  if (!caller.has_value()) {
    session->Refuse(RequestError(HttpStatus::Forbidden, "not-allowed",
                                 "the control socket is for root, the agent's own user and the "
                                 "group named by socket_group"));
  } else if (isFull) {
    session->Refuse(RequestError(HttpStatus::Unavailable, "too-many-connections",
                                 "too many connections; try again in a moment"));
  } else {
    session->Start();
  }
}

void ControlServer::Impl::Broadcast(const NotificationStream::Lines& lines) {
  // A copy: a stream that is dropped leaves the set.
  const auto streams = m_Streams;
  for (const auto& stream : streams) {
    stream->Send(lines);
  }
}

void ControlServer::Impl::StreamEnded(const std::shared_ptr<NotificationStream>& stream,
                                      bool dropped) {
  m_Streams.erase(stream);
  // Written in this order and read in the other: a reader that finds the stream gone also finds it
  // counted as dropped.
  m_Dropped.fetch_add(dropped ? 1 : 0, std::memory_order_relaxed);
  m_StreamCount = static_cast<unsigned>(m_Streams.size());
  CheckIdle();
}

void ControlServer::Impl::BeginStop() {
  m_Stopping = true;
  boost::system::error_code ignored;
  (void)m_Acceptor.close(ignored);
  (void)m_Pause.cancel();
  const auto sessions = m_Sessions;
  for (const auto& session : sessions) {
    session->Cut();
  }
  const auto streams = m_Streams;
  for (const auto& stream : streams) {
    stream->Finish();
  }
  CheckIdle();
}

void ControlServer::Impl::CheckIdle() {
  if (m_Stopping && m_Sessions.empty() && m_Streams.empty()) {
    (void)m_Idle.Set();
  }
}

ControlServer::ControlServer(int fd, const PeerCheck& peers, Api& api,
                             NotificationCenter& notifications, const ControlPatience& patience)
    : m_Impl(std::make_unique<Impl>(fd, peers, api, notifications, patience)) {
  Impl* const impl = m_Impl.get();
  impl->m_Listener =
      notifications.AddListener([impl](const NotificationCenter::Notification& notification) {
        if (impl->m_StreamCount > 0) {
          impl->m_Lines.Add(MakeLine(notification));
        }
      });
  impl->m_Thread = std::thread([impl] { impl->m_Io.run(); });
}

ControlServer::~ControlServer() {
  m_Impl->m_Notifications.RemoveListener(m_Impl->m_Listener);
  m_Impl->m_Workers.join();
  m_Impl->m_Io.stop();
  m_Impl->m_Thread.join();
}

void ControlServer::Start() {
  asio::post(m_Impl->m_Io, [impl = m_Impl.get()] { impl->WaitForClient(); });
}

bool ControlServer::Stop(unsigned long milliseconds) {
  // Streams end behind the lines that are on their way to them.
  m_Impl->m_Lines.Finish(
      [impl = m_Impl.get()] { asio::post(impl->m_Io, [impl] { impl->BeginStop(); }); });
  return m_Impl->m_Idle.Wait(milliseconds, BaseSDK::ClockSkewIgnore) == AEvent::WasSet;
}

ControlServer::Counters ControlServer::Count() const {
  const unsigned streams = m_Impl->m_StreamCount;
  return {m_Impl->m_Requests, m_Impl->m_Errors, m_Impl->m_Dropped, m_Impl->m_SessionCount, streams};
}

}  // namespace NoxAgent
