#include "agent/handler/run/Supervisor.h"

#include "agent/handler/process/LaunchTrial.h"
#include "agent/handler/system/WallClock.h"

#include <algorithm>
#include <csignal>
#include <limits>

using BaseSDK::AMutexGuard;
using BaseSDK::AString;
using namespace std::chrono_literals;

namespace NoxHandler {

using Clock = Run::Clock;

namespace {

// Added to the time that the runs may take to end, for whatever else the thread is busy with.
constexpr auto StopMargin = 10s;

}  // namespace

Supervisor::Supervisor(const HandlerSettings& settings, const WaitClock& clock)
    : m_Settings(settings), m_Book(m_Settings), m_Runs(m_Settings, clock, m_Book) {}

Supervisor::~Supervisor() = default;

void Supervisor::Start() {
  // The agent's signals are for the agent's own threads.
  sigset_t all;
  sigset_t before;
  (void)sigfillset(&all);
  (void)pthread_sigmask(SIG_SETMASK, &all, &before);
  try {
    m_Thread = std::thread([this] { Main(); });
  } catch (...) {
    (void)pthread_sigmask(SIG_SETMASK, &before, nullptr);
    throw;
  }
  (void)pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

void Supervisor::Post(const std::vector<TaskBatch::Entry>& entries) {
  {
    AMutexGuard guard(m_Lock);
    const long now = WallSeconds();
    for (const TaskBatch::Entry& entry : entries) {
      m_Posted.push_back({entry});
      m_Posted.back().m_Entry.m_HandedOver = now;
    }
  }
  m_Wake.Set();
}

// Without waiting for the thread: it may be waiting for the scheduler, whose thread may be the
// caller's.
bool Supervisor::StopRun(const AString& taskId) {
  if (!Latest().IsUnderWay(taskId)) {
    return false;
  }
  {
    AMutexGuard guard(m_Lock);
    m_Posted.push_back({{taskId}, true});
  }
  m_Wake.Set();
  return true;
}

bool Supervisor::Stop() {
  if (!m_Thread.joinable()) {
    return true;
  }
  {
    AMutexGuard guard(m_Lock);
    m_Stop = true;
  }
  m_Wake.Set();
  const auto limit = 2 * m_Settings.m_KillGrace + 2 * HandlerSettings::AfterKill + StopMargin;
  if (!m_Done.Wait(static_cast<int>(std::chrono::milliseconds(limit).count()))) {
    return false;
  }
  m_Thread.join();
  return true;
}

AString Supervisor::ProblemOfJob(const AString& taskId) const {
  if (!TaskBatch::IsTaskId(taskId)) {
    return AString("no job file can bear the ID \"%1\"").Arg(taskId);
  }
  try {
    LaunchTrial::Check(Job::Load(m_Settings.JobFile(taskId)));
    return AString();
  } catch (const JobError& error) {
    return error.Message();
  }
}

std::optional<OutputPart> Supervisor::OutputOf(const AString& taskId,
                                               std::uint64_t position) const {
  return TaskBatch::IsTaskId(taskId) ? OutputPart::Read(m_Settings.OutputFile(taskId), position)
                                     : std::nullopt;
}

bool Supervisor::IsBusy() const {
  AMutexGuard guard(m_Lock);
  return m_IsBusy || !m_Posted.empty();
}

// Each turn takes what was posted, advances the runs whose handles or clocks ask for it, reports,
// and waits for the next thing to happen.
void Supervisor::Main() {
  m_Runs.EndLeftovers();
  for (;;) {
    std::vector<Order> orders;
    if (TakePosted(orders)) {
      BeginStop();
    }
    for (const Order& order : orders) {
      Follow(order);
    }
    m_Runs.Advance(m_Handles);
    m_Book.Scheduler().Retry();
    PublishBusy();
    if (IsFinished()) {
      break;
    }
    Wait();
  }
  m_Runs.GiveUp();
  m_Done.Set();
}

// Returns whether the thread is to stop.
bool Supervisor::TakePosted(std::vector<Order>& orders) {
  m_Wake.Clear();
  AMutexGuard guard(m_Lock);
  orders.swap(m_Posted);
  m_IsBusy = m_IsBusy || !orders.empty();
  return m_Stop;
}

void Supervisor::Follow(const Order& order) {
  if (order.m_IsEnd) {
    m_Runs.EndRuns(order.m_Entry.m_TaskId);
  } else {
    m_Runs.Dispatch(order.m_Entry);
  }
}

void Supervisor::BeginStop() {
  if (!m_GiveUpAt) {
    m_GiveUpAt = Clock::now() + m_Settings.m_KillGrace + HandlerSettings::AfterKill;
    m_Runs.BeginStop();
  }
}

void Supervisor::PublishBusy() {
  AMutexGuard guard(m_Lock);
  m_IsBusy = !m_Runs.IsEmpty();
}

bool Supervisor::IsFinished() const {
  if (!m_GiveUpAt) {
    return false;
  }
  const bool isDone = m_Runs.IsEmpty() && !m_Book.Scheduler().NextTry();
  return isDone || *m_GiveUpAt <= Clock::now();
}

void Supervisor::Wait() {
  m_Handles.clear();
  m_Handles.push_back({m_Wake.Get(), POLLIN, 0});
  m_Handles.push_back({m_PeriodTimer.Get(), POLLIN, 0});
  m_Runs.AddHandles(m_Handles);
  m_PeriodTimer.Set(m_Runs.PeriodEnd());
  (void)poll(m_Handles.data(), m_Handles.size(), WaitMilliseconds());
}

int Supervisor::WaitMilliseconds() const {
  std::optional<Clock::duration> rest = m_Runs.Rest();
  const auto now = Clock::now();
  for (const auto& moment : {m_GiveUpAt, m_Book.Scheduler().NextTry()}) {
    if (moment) {
      rest = std::min(rest.value_or(*moment - now), *moment - now);
    }
  }
  if (!rest) {
    return -1;
  }
  const auto milliseconds = std::chrono::ceil<std::chrono::milliseconds>(*rest).count();
  return static_cast<int>(std::clamp<long long>(milliseconds, 0, std::numeric_limits<int>::max()));
}

}  // namespace NoxHandler
