#include "agent/handler/run/Supervisor.h"

#include "agent/handler/Log.h"
#include "agent/handler/process/LaunchTrial.h"
#include "agent/handler/run/Leftovers.h"
#include "agent/handler/run/OutputFile.h"
#include "agent/handler/system/WallClock.h"
#include "agent/handler/task/ActivePeriod.h"

#include <AgentInterfacesV3/AMsgGroup.h>

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <exception>
#include <limits>
#include <new>

using BaseSDK::ALogger;
using BaseSDK::AMutexGuard;
using BaseSDK::AString;
using Corvane::AgentInterfacesV3::AMsgGroup;
using namespace std::chrono_literals;

namespace NoxHandler {

using Clock = Run::Clock;

namespace {

// Added to the time that the runs may take to end, for whatever else the thread is busy with.
constexpr auto StopMargin = 10s;

constexpr const char* HandlerEnds = "the command handler ends";
constexpr const char* TooManyGoOn = "as many runs go on as may";

void LogSkip(const AString& taskId, const AString& why) {
  ALOG(HandlerLog(), ALogger::Information, HandlerSource,
       AString("Task '%1' is due, but %2").Arg(taskId, why));
}

}  // namespace

Supervisor::Supervisor(const HandlerSettings& settings, const WaitClock& clock)
    : m_Settings(settings),
      m_Clock(clock),
      m_Records(settings.m_RecordPath, settings.m_MaxRuns),
      m_Failures(settings.m_RecordPath),
      m_Reporter(settings.m_SchedulerClassId) {
  RememberFailures();
}

Supervisor::~Supervisor() = default;

// What an earlier agent knew, without the tasks that are gone.
void Supervisor::RememberFailures() {
  for (const auto& [taskId, failure] : std::map(m_Failures.All())) {
    if (access(m_Settings.JobFile(taskId).ToUtf8().c_str(), F_OK) != 0 && errno == ENOENT) {
      m_Failures.Forget(taskId);
    } else {
      m_Latest.NoteEnd(taskId, {failure.m_Start, failure.m_End, false, true, failure.m_Reason});
    }
  }
}

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
      m_Posted.push_back(entry);
      m_Posted.back().m_HandedOver = now;
    }
  }
  m_Wake.Set();
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
  Leftovers::End(m_Records, m_Settings.m_KillGrace);
  for (;;) {
    std::vector<TaskBatch::Entry> entries;
    if (TakePosted(entries)) {
      BeginStop();
    }
    for (const TaskBatch::Entry& entry : entries) {
      if (m_GiveUpAt) {
        Skip(entry.m_TaskId, HandlerEnds);
      } else {
        Dispatch(entry);
      }
    }
    AdvanceRuns();
    m_Reporter.Retry();
    PublishBusy();
    if (IsFinished()) {
      break;
    }
    Wait();
  }
  GiveUp();
  m_Done.Set();
}

// Returns whether the thread is to stop. The entries are then left out: their tasks say "Started"
// and are run after the next start of the agent.
bool Supervisor::TakePosted(std::vector<TaskBatch::Entry>& entries) {
  m_Wake.Clear();
  AMutexGuard guard(m_Lock);
  entries.swap(m_Posted);
  m_IsBusy = m_IsBusy || !entries.empty();
  return m_Stop;
}

void Supervisor::Dispatch(const TaskBatch::Entry& entry) {
  if (const auto slot = m_Slots.find(entry.m_TaskId); slot != m_Slots.end()) {
    DispatchToPresent(slot->second, entry);
  } else if (entry.m_NeverRun && m_Reporter.HasKept(entry.m_TaskId)) {
    LeaveOut(entry, "it has just run, and its state is yet to be recorded");
  } else {
    m_Reporter.Cancel(entry.m_TaskId);
    Admit(entry);
  }
}

void Supervisor::Admit(const TaskBatch::Entry& entry) {
  try {
    Job job = Job::Load(m_Settings.JobFile(entry.m_TaskId));
    Slot& slot = m_Slots[entry.m_TaskId];
    slot.m_Attempts =
        std::make_unique<Attempts>(entry, std::move(job), m_Settings, m_Records, m_Clock);
    slot.m_Before = m_Latest.Find(entry.m_TaskId);
    if (slot.m_Attempts->IsReady()) {
      LineUp(slot);
    } else {
      NoteFacts(*slot.m_Attempts);
    }
  } catch (const std::bad_alloc&) {
    Fail(entry.m_TaskId, "the agent has no memory left");
  } catch (const std::exception& error) {
    Fail(entry.m_TaskId, error.what());
  }
}

// Begins the slot's attempt if its time has come, now or in its turn.
void Supervisor::LineUp(Slot& slot) {
  if (slot.m_IsInLine || !slot.m_Attempts->IsReady()) {
    return;
  }
  const AString& taskId = slot.m_Attempts->Entry().m_TaskId;
  slot.m_IsInLine = true;
  m_Waiting.push_back(taskId);
  BeginWaiting();
  if (slot.m_IsInLine) {
    LogSkip(taskId, AString("%1: starts after one of them").Arg(TooManyGoOn));
    NoteFacts(*slot.m_Attempts);
  }
}

void Supervisor::BeginWaiting() {
  while (!m_Waiting.empty() && m_Running < m_Settings.m_MaxRuns) {
    const auto slot = m_Slots.find(m_Waiting.front());
    m_Waiting.pop_front();
    if (slot != m_Slots.end() && slot->second.m_Attempts->IsReady()) {
      slot->second.m_IsInLine = false;
      BeginAttempt(slot->second);
    }
  }
}

void Supervisor::BeginAttempt(Slot& slot) {
  Attempts& attempts = *slot.m_Attempts;
  if (const AString why = WhyTooLate(attempts); !why.IsEmpty()) {
    attempts.LeaveOut(why);
    return;
  }
  if (!attempts.HasBegun() && attempts.Entry().m_KillAtEnd) {
    attempts.EndAt(
        ActivePeriod::EndFor(m_Reporter.TaskXml(attempts.Entry().m_TaskId), std::time(nullptr)));
  }
  attempts.Begin();
  m_Running += attempts.IsRunning() ? 1U : 0U;
  NoteFacts(attempts);
}

AString Supervisor::WhyTooLate(const Attempts& attempts) const {
  if (attempts.HasBegun()) {
    return AString();
  }
  return attempts.WhyTooLate(
      attempts.AsksForDueTime() ? m_Reporter.TaskXml(attempts.Entry().m_TaskId) : AString());
}

// Of one that is over, NoteEnd tells.
void Supervisor::NoteFacts(const Attempts& attempts) {
  const AString& taskId = attempts.Entry().m_TaskId;
  if (attempts.IsRunning()) {
    m_Latest.NoteStart(taskId, attempts.StartTime(), attempts.Pid());
  } else if (!attempts.HasBegun()) {
    m_Latest.NoteWaiting(taskId, attempts.IsReady()
                                     ? AString("%1; it starts after one of them").Arg(TooManyGoOn)
                                     : attempts.WaitsFor());
  } else if (attempts.IsReady()) {
    m_Latest.NotePause(taskId, attempts.StartTime(),
                       AString("%1; %2, and the next one begins after one of them")
                           .Arg(attempts.Outcome(), TooManyGoOn));
  } else if (!attempts.IsOver()) {
    m_Latest.NotePause(taskId, attempts.StartTime(), attempts.WaitsFor());
  }
}

void Supervisor::DispatchToPresent(Slot& slot, const TaskBatch::Entry& entry) {
  if (!slot.m_Attempts->HasBegun()) {
    LeaveOut(entry, "it is waiting to start already");
    return;
  }
  switch (DecideOverlap(slot.m_Attempts->Overlap(), entry.m_NeverRun)) {
    case OverlapRule::Skip:
      LeaveOut(entry, "its previous run goes on");
      break;
    case OverlapRule::Queue:
      Queue(slot, entry);
      break;
    case OverlapRule::Kill:
      Replace(slot, entry);
      break;
  }
}

void Supervisor::Queue(Slot& slot, const TaskBatch::Entry& entry) {
  if (slot.m_Next) {
    LeaveOut(entry, "its next run is waiting to start already");
    return;
  }
  LogSkip(entry.m_TaskId, "its previous run goes on: starts after it");
  m_Latest.NoteQueued(entry.m_TaskId, WallSeconds());
  slot.m_Next = entry;
}

void Supervisor::Replace(Slot& slot, const TaskBatch::Entry& entry) {
  if (slot.m_Next) {
    Skip(entry.m_TaskId, "a later start takes its place");
  }
  LogSkip(entry.m_TaskId, "its previous run goes on: ending that one first");
  m_Latest.NoteQueued(entry.m_TaskId, WallSeconds());
  slot.m_Next = entry;
  slot.m_Attempts->End(Run::EndReason::Replaced);
}

void Supervisor::LeaveOut(const TaskBatch::Entry& entry, const char* why) {
  if (entry.m_NeverRun) {
    // The scheduler has only read the task again while its run goes on: no start is lost.
    LogSkip(entry.m_TaskId, AString("%1: left out").Arg(why));
  } else {
    Skip(entry.m_TaskId, why);
  }
}

void Supervisor::Skip(const AString& taskId, const AString& why) {
  LogSkip(taskId, AString("%1: left out").Arg(why));
  m_Latest.NoteSkip(taskId, why, WallSeconds());
  AppendNote(taskId, AString("left out: %1").Arg(why));
}

// The output file of a task with a run is open already.
void Supervisor::AppendNote(const AString& taskId, const AString& text) {
  if (const auto slot = m_Slots.find(taskId); slot != m_Slots.end()) {
    slot->second.m_Attempts->AppendNote(text);
  } else {
    OutputFile(m_Settings.OutputFile(taskId)).AppendNote(text);
  }
}

// Without its job nobody knows what is to become of a task that failed: the scheduler decides.
void Supervisor::Fail(const AString& taskId, const AString& reason) {
  m_Slots.erase(taskId);
  ALOG(HandlerLog(), ALogger::Error, HandlerSource,
       AString("Task '%1' failed: %2").Arg(taskId, reason));
  const long now = WallSeconds();
  m_Latest.NoteEnd(taskId, {now, now, false, false, reason});
  AppendNote(taskId, reason);
  m_Failures.Forget(taskId);
  m_Failures.Save();
  m_Reporter.Report(taskId, "Failed");
}

void Supervisor::BeginStop() {
  if (m_GiveUpAt) {
    return;
  }
  m_GiveUpAt = Clock::now() + m_Settings.m_KillGrace + HandlerSettings::AfterKill;
  m_Waiting.clear();
  for (auto it = m_Slots.begin(); it != m_Slots.end();) {
    auto& [taskId, slot] = *it;
    const bool hasBegun = slot.m_Attempts->HasBegun();
    if (slot.m_Next || !hasBegun) {
      Skip(taskId, HandlerEnds);
      slot.m_Next.reset();
    }
    slot.m_Attempts->End(Run::EndReason::Shutdown);
    it = hasBegun ? std::next(it) : m_Slots.erase(it);
  }
}

void Supervisor::AdvanceRuns() {
  std::vector<TaskBatch::Entry> next;
  std::map<AString, const char*> ended;
  for (auto it = m_Slots.begin(); it != m_Slots.end();) {
    auto& [taskId, slot] = *it;
    if (NeedsAdvance(slot)) {
      Advance(slot);
    }
    if (!slot.m_Attempts->IsOver()) {
      LineUp(slot);
      ++it;
      continue;
    }
    const char* const state =
        slot.m_Attempts->HasBegun() ? NoteEnd(*slot.m_Attempts) : NoteLeftOut(slot);
    if (slot.m_Next) {
      next.push_back(*slot.m_Next);  // the state on record is already that of this run: "Started"
    } else {
      ended[taskId] = state;
    }
    it = m_Slots.erase(it);
  }
  ReportEnds(ended);
  for (const TaskBatch::Entry& entry : next) {
    Admit(entry);
  }
  BeginWaiting();
}

void Supervisor::Advance(Slot& slot) {
  Attempts& attempts = *slot.m_Attempts;
  const bool wasRunning = attempts.IsRunning();
  attempts.Advance();
  if (wasRunning && !attempts.IsRunning()) {
    --m_Running;
    NoteFacts(attempts);
  }
}

const char* Supervisor::NoteEnd(const Attempts& attempts) {
  const AString& taskId = attempts.Entry().m_TaskId;
  const LatestRuns::Ending ending{attempts.StartTime(), WallSeconds(), attempts.Succeeded(),
                                  attempts.IsFinal(), attempts.Outcome()};
  m_Latest.NoteEnd(taskId, ending);
  if (ending.m_IsFinal) {
    m_Failures.Note(taskId, {ending.m_Start, ending.m_End, ending.m_Reason});
  } else {
    m_Failures.Forget(taskId);
  }
  return ending.m_Succeeded || ending.m_IsFinal ? "Ok" : "Failed";
}

// Were it not finished to the scheduler, it would come again within the hour, later still.
const char* Supervisor::NoteLeftOut(const Slot& slot) {
  const AString& taskId = slot.m_Attempts->Entry().m_TaskId;
  const AString& why = slot.m_Attempts->Outcome();
  LogSkip(taskId, AString("%1: left out").Arg(why));
  m_Latest.NoteLeftOut(taskId, slot.m_Before, why, WallSeconds());
  AppendNote(taskId, AString("left out: %1").Arg(why));
  if (const auto facts = m_Latest.Find(taskId); facts && facts->m_IsFinal) {
    m_Failures.Note(taskId, {*facts->m_Start, *facts->m_End, facts->m_Reason});
  }
  return "Ok";
}

// As a group: the states of runs that end together are made safe together.
void Supervisor::ReportEnds(const std::map<AString, const char*>& ended) {
  m_Failures.Save();  // first: else nobody would know of a failure if the agent ended in between
  if (ended.empty()) {
    return;
  }
  const AMsgGroup group;
  for (const auto& [taskId, state] : ended) {
    m_Reporter.Report(taskId, state);
  }
}

bool Supervisor::NeedsAdvance(const Slot& slot) const {
  const auto begin = m_Handles.begin() + static_cast<std::ptrdiff_t>(slot.m_FirstHandle);
  const auto end = begin + static_cast<std::ptrdiff_t>(slot.m_HandleCount);
  return slot.m_Attempts->IsDue() ||
         std::any_of(begin, end, [](const pollfd& handle) { return handle.revents != 0; });
}

void Supervisor::PublishBusy() {
  AMutexGuard guard(m_Lock);
  m_IsBusy = !m_Slots.empty();
}

bool Supervisor::IsFinished() const {
  if (!m_GiveUpAt) {
    return false;
  }
  return (m_Slots.empty() && !m_Reporter.NextTry()) || *m_GiveUpAt <= Clock::now();
}

void Supervisor::GiveUp() {
  for (const auto& [taskId, slot] : m_Slots) {
    ALOG(HandlerLog(), ALogger::Error, HandlerSource,
         AString("Cannot end the run of task '%1' (process %2): leaving it to the next start")
             .Arg(taskId, DecimalText(slot.m_Attempts->Pid())));
  }
  m_Slots.clear();
}

void Supervisor::Wait() {
  m_Handles.clear();
  m_Handles.push_back({m_Wake.Get(), POLLIN, 0});
  m_Handles.push_back({m_PeriodTimer.Get(), POLLIN, 0});
  std::optional<long> periodEnd;
  for (auto& [taskId, slot] : m_Slots) {
    slot.m_FirstHandle = m_Handles.size();
    slot.m_Attempts->AddHandles(m_Handles);
    slot.m_HandleCount = m_Handles.size() - slot.m_FirstHandle;
    if (const auto end = slot.m_Attempts->PeriodEnd()) {
      periodEnd = periodEnd ? std::min(*periodEnd, *end) : *end;
    }
  }
  m_PeriodTimer.Set(periodEnd);
  (void)poll(m_Handles.data(), m_Handles.size(), WaitMilliseconds());
}

int Supervisor::WaitMilliseconds() const {
  std::optional<Clock::duration> rest;
  const auto consider = [&](std::optional<Clock::duration> length) {
    if (length) {
      rest = std::min(rest.value_or(*length), *length);
    }
  };
  const auto now = Clock::now();
  if (m_GiveUpAt) {
    consider(*m_GiveUpAt - now);
  }
  if (const auto nextTry = m_Reporter.NextTry()) {
    consider(*nextTry - now);
  }
  for (const auto& [taskId, slot] : m_Slots) {
    consider(slot.m_Attempts->Rest());
  }
  if (!rest) {
    return -1;
  }
  const auto milliseconds = std::chrono::ceil<std::chrono::milliseconds>(*rest).count();
  return static_cast<int>(std::clamp<long long>(milliseconds, 0, std::numeric_limits<int>::max()));
}

}  // namespace NoxHandler
