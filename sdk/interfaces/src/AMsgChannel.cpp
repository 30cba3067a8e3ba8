#include "AMsgChannel.h"

#include <BaseSDK/AFileSystem.h>
#include <BaseSDK/AWaitableLock.h>

#include <map>
#include <utility>

namespace Corvane::AgentInterfacesV3 {
namespace {

using BaseSDK::AMutex;
using BaseSDK::AMutexGuard;

struct ARegistry {
  AMutex m_Lock;
  std::map<int, std::shared_ptr<AMsgChannel>> m_Channels NOX_GUARDED_BY(m_Lock);
};

ARegistry& Registry() {
  static ARegistry registry;
  return registry;
}

/// Requests that the thread is answering; one may lead to another.
thread_local unsigned answering = 0;
/// The thread has a group of requests, which it sends while it answers so many.
thread_local std::optional<unsigned> groupAt;

void MakeSafeUnlessGrouped(bool grouped) {
  if (!grouped) {
    BaseSDK::AFileSystem::Current().MakeSafe();
  }
}

}  // namespace

/// Counts one request, also when it ends in an exception.
class AMsgChannel::AVisit {
 public:
  AVisit(AMsgChannel& channel, AMsgReply& reply)
      : m_Channel(channel), m_Server(channel.Enter(reply)) {
    ++answering;
  }
  AVisit(const AVisit&) = delete;
  AVisit& operator=(const AVisit&) = delete;
  ~AVisit() {
    --answering;
    if (m_Server != nullptr) {
      m_Channel.Leave();
    }
  }
  /// Null: not let in, and the reply says why.
  AMsgQueueServer* Server() const { return m_Server; }

 private:
  AMsgChannel& m_Channel;
  AMsgQueueServer* const m_Server;
};

std::shared_ptr<AMsgChannel> AMsgChannel::Find(int number) {
  ARegistry& registry = Registry();
  const AMutexGuard guard(registry.m_Lock);
  const auto found = registry.m_Channels.find(number);
  return found == registry.m_Channels.end() ? nullptr : found->second;
}

bool AMsgChannel::Register(int number, const std::shared_ptr<AMsgChannel>& channel) {
  ARegistry& registry = Registry();
  const AMutexGuard guard(registry.m_Lock);
  return number >= 0 && registry.m_Channels.emplace(number, channel).second;
}

void AMsgChannel::Unregister(int number) {
  ARegistry& registry = Registry();
  const AMutexGuard guard(registry.m_Lock);
  registry.m_Channels.erase(number);
}

bool AMsgChannel::Bind(AMsgQueueServer& server) {
  const AMutexGuard guard(m_Lock);
  if (m_Server != nullptr) {
    return false;
  }
  m_Server = &server;
  return true;
}

void AMsgChannel::Unbind() {
  const AMutexGuard guard(m_Lock);
  m_Unbinding = true;
  (void)WaitForIdle(std::nullopt);
  m_Server = nullptr;
  m_Unbinding = false;
}

bool AMsgChannel::HasServer() const {
  const AMutexGuard guard(m_Lock);
  return m_Server != nullptr && !m_Unbinding;
}

long AMsgChannel::Send(const AMsgIn& request) {
  AMsgReply& reply = request.Reply();
  const bool grouped = groupAt == answering;
  const AVisit visit(*this, reply);
  if (visit.Server() == nullptr) {
    return -1;
  }
  MakeSafeUnlessGrouped(grouped);
  (void)visit.Server()->ProcessRequest(&request);
  MakeSafeUnlessGrouped(grouped);
  if (!reply.IsAnswered()) {
    reply.SetError(AMsgError::OperationFailed, "The object left the request unanswered.");
  }
  return reply.IsError() ? -1 : 1;
}

AMsgQueueServer* AMsgChannel::Enter(AMsgReply& reply) {
  const AMutexGuard guard(m_Lock);
  if (m_Closed) {
    reply.SetError(AMsgError::QueueClosed, InfoOf(AMsgError::QueueClosed).m_Meaning);
    return nullptr;
  }
  if (m_Server == nullptr || m_Unbinding) {
    reply.SetError(AMsgError::NoObject, InfoOf(AMsgError::NoObject).m_Meaning);
    return nullptr;
  }
  ++m_UnderWay;
  return m_Server;
}

void AMsgChannel::Leave() {
  const AMutexGuard guard(m_Lock);
  if (--m_UnderWay == 0) {
    m_Idle.notify_all();
  }
}

bool AMsgChannel::IsAnswering() {
  return answering != 0;
}

std::optional<unsigned> AMsgChannel::BeginGroup() {
  return std::exchange(groupAt, answering);
}

void AMsgChannel::EndGroup(std::optional<unsigned> before) {
  groupAt = before;
}

bool AMsgChannel::IsClosed() const {
  const AMutexGuard guard(m_Lock);
  return m_Closed;
}

bool AMsgChannel::Close(ADeadline deadline) {
  const AMutexGuard guard(m_Lock);
  m_Closed = true;
  return WaitForIdle(deadline);
}

void AMsgChannel::Reopen() {
  const AMutexGuard guard(m_Lock);
  m_Closed = false;
}

bool AMsgChannel::WaitForIdle(ADeadline deadline) {
  BaseSDK::AWaitableLock lock(m_Lock);
  while (m_UnderWay != 0) {
    if (!deadline) {
      m_Idle.wait(lock);
    } else if (m_Idle.wait_until(lock, *deadline) == std::cv_status::timeout) {
      return m_UnderWay == 0;
    }
  }
  return true;
}

}  // namespace Corvane::AgentInterfacesV3
