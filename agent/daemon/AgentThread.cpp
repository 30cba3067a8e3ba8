#include "agent/daemon/AgentThread.h"

#include <future>
#include <limits>
#include <memory>

using BaseSDK::AMutexGuard;

namespace NoxAgent {
namespace {

constexpr unsigned long LongWaitMilliseconds = 3600UL * 1000;

}  // namespace

AgentThread::AgentThread()
    : m_Wake(BaseSDK::AEvent::AutoReset), m_Thread(&AgentThread::Run, this) {}

AgentThread::~AgentThread() {
  {
    AMutexGuard guard(m_Lock);
    m_Stop = true;
  }
  (void)m_Wake.Set();
  m_Thread.join();
}

bool AgentThread::Post(Job job) {
  return Enqueue(std::move(job), MaxWaiting);
}

void AgentThread::Call(const Job& job) {
  if (std::this_thread::get_id() == m_Thread.get_id()) {
    job();
    return;
  }
  // Shared: the thread may still be inside the task when the wait is over.
  const auto task = std::make_shared<std::packaged_task<void()>>(job);
  std::future<void> done = task->get_future();
  // Its caller waits for it, so there are never many of these.
  (void)Enqueue([task] { (*task)(); }, std::numeric_limits<std::size_t>::max());
  done.get();
}

bool AgentThread::Enqueue(Job job, std::size_t maxWaiting) {
  {
    AMutexGuard guard(m_Lock);
    if (m_Jobs.size() >= maxWaiting) {
      return false;
    }
    m_Jobs.push_back(std::move(job));
  }
  (void)m_Wake.Set();
  return true;
}

void AgentThread::Run() {
  Job job;
  for (;;) {
    while (Take(job)) {
      job();
      job = nullptr;
    }
    // Looked at before every wait: the wake-up that came with the stop may have been used up by a
    // job before it.
    if (IsStopped()) {
      return;
    }
    (void)m_Wake.Wait(LongWaitMilliseconds, BaseSDK::ClockSkewIgnore);
  }
}

bool AgentThread::Take(Job& job) {
  AMutexGuard guard(m_Lock);
  if (m_Jobs.empty()) {
    return false;
  }
  job = std::move(m_Jobs.front());
  m_Jobs.pop_front();
  return true;
}

bool AgentThread::IsStopped() {
  AMutexGuard guard(m_Lock);
  return m_Stop && m_Jobs.empty();
}

}  // namespace NoxAgent
