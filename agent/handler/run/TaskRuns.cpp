#include "agent/handler/run/TaskRuns.h"

#include "agent/handler/Log.h"
#include "agent/handler/run/Leftovers.h"
#include "agent/handler/task/ActivePeriod.h"

#include <algorithm>
#include <ctime>
#include <exception>
#include <iterator>
#include <limits>
#include <new>
#include <string_view>
#include <utility>

using BaseSDK::ALogger;
using BaseSDK::AString;

namespace NoxHandler {

namespace {

constexpr const char* HandlerEnds = "the command handler ends";
constexpr const char* HasJustRun = "it has just run, and its state is yet to be recorded";
constexpr const char* NextWaits = "its next run is waiting to start already";

LatestRuns::Ending EndingOf(const Attempts& attempts) {
  return {attempts.StartTime(), attempts.EndTime(), attempts.Succeeded(),
          attempts.IsFinal(),   attempts.Outcome(), attempts.Number()};
}

// Keeps that of the two runs that began last.
void KeepLater(std::optional<LatestRuns::Ending>& kept, const LatestRuns::Ending& other) {
  if (!kept || kept->m_Number < other.m_Number) {
    kept = other;
  }
}

}  // namespace

TaskRuns::TaskRuns(const HandlerSettings& settings, const WaitClock& clock, RunBook& book)
    : m_Settings(settings),
      m_Clock(clock),
      m_Book(book),
      m_Records(settings.m_RecordPath, settings.m_MaxRuns),
      m_Groups(settings.m_GroupPath),
      m_Hooks(settings, book.Outputs(), m_Records, m_Groups) {}

void TaskRuns::EndLeftovers() {
  Leftovers::End(m_Records, m_Settings.m_KillGrace);
}

void TaskRuns::Dispatch(const TaskBatch::Entry& entry) {
  const auto slot = LatestOf(entry.m_TaskId);
  if (m_IsStopping) {
    GiveUpStart(entry.m_TaskId);
  } else if (slot != m_Slots.end()) {
    DispatchToPresent(slot->second, entry);
  } else if (entry.m_NeverRun && m_Book.Scheduler().HasKept(entry.m_TaskId)) {
    LeaveOut(entry, HasJustRun);
  } else {
    m_Book.Scheduler().Cancel(entry.m_TaskId);
    Admit(entry);
  }
}

// The run of the task that was handed over last; the end when there is none.
std::map<TaskRuns::Key, TaskRuns::Slot>::iterator TaskRuns::LatestOf(const AString& taskId) {
  const auto next = m_Slots.upper_bound({taskId, std::numeric_limits<std::uint64_t>::max()});
  const bool isThere = next != m_Slots.begin() && std::prev(next)->first.first == taskId;
  return isThere ? std::prev(next) : m_Slots.end();
}

bool TaskRuns::IsLatest(const Slot& slot) {
  return &LatestOf(slot.m_Attempts->Entry().m_TaskId)->second == &slot;
}

void TaskRuns::DispatchToPresent(Slot& slot, const TaskBatch::Entry& entry) {
  if (slot.m_Attempts->IsOver()) {
    DispatchAfter(slot, entry);
    return;
  }
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
    case OverlapRule::Allow:
      StartBeside(entry);
      break;
  }
}

// It is no overlap: the run is over, but its end is yet to be noted.
void TaskRuns::DispatchAfter(Slot& slot, const TaskBatch::Entry& entry) {
  if (entry.m_NeverRun || slot.m_Next) {
    LeaveOut(entry, entry.m_NeverRun ? HasJustRun : NextWaits);
  } else {
    slot.m_Next = entry;
  }
}

void TaskRuns::Queue(Slot& slot, const TaskBatch::Entry& entry) {
  if (slot.m_Next) {
    LeaveOut(entry, NextWaits);
    return;
  }
  m_Book.NoteQueued(entry.m_TaskId, "starts after it");
  slot.m_Next = entry;
}

void TaskRuns::Replace(Slot& slot, const TaskBatch::Entry& entry) {
  if (slot.m_Next) {
    m_Book.NoteSkip(entry.m_TaskId, "a later start takes its place");
  }
  m_Book.NoteQueued(entry.m_TaskId, "ending that one first");
  slot.m_Next = entry;
  slot.m_Attempts->End(Run::EndReason::Replaced);
}

void TaskRuns::LeaveOut(const TaskBatch::Entry& entry, const char* why) {
  if (entry.m_NeverRun) {
    m_Book.NoteEcho(entry.m_TaskId, why);
  } else {
    m_Book.NoteSkip(entry.m_TaskId, why);
  }
}

void TaskRuns::StartBeside(const TaskBatch::Entry& entry) {
  m_Book.NoteBeside(entry.m_TaskId);
  Admit(entry);
}

void TaskRuns::Admit(const TaskBatch::Entry& entry) {
  const Key key(entry.m_TaskId, ++m_LastNumber);
  const long number = m_Book.NewNumber(entry.m_TaskId);
  try {
    Job job = Job::Load(m_Settings.JobFile(entry.m_TaskId));
    Slot& slot = m_Slots[key];
    slot.m_Attempts = std::make_unique<Attempts>(entry, number, std::move(job), m_Settings,
                                                 m_Book.Outputs(), m_Records, m_Groups, m_Clock);
    slot.m_Before = m_Book.Latest().Find(entry.m_TaskId);
    if (slot.m_Attempts->IsReady()) {
      LineUp(key, slot);
    } else {
      NoteProgress(slot);
    }
  } catch (const std::bad_alloc&) {
    Fail(key, number, "the agent has no memory left");
  } catch (const std::exception& error) {
    Fail(key, number, error.what());
  }
}

void TaskRuns::Fail(const Key& key, long number, const AString& reason) {
  LeaveLine(key);
  m_Slots.erase(key);
  const LatestRuns::Ending ending = m_Book.NoteNoJob(key.first, number, reason);
  if (const auto earlier = LatestOf(key.first); earlier != m_Slots.end()) {
    KeepLater(earlier->second.m_Ended, ending);
  } else {
    m_Book.Report({{key.first, m_Book.NoteEnd(key.first, ending)}});
  }
}

void TaskRuns::NoteProgress(const Slot& slot) {
  if (IsLatest(slot) && !slot.m_Attempts->IsOver()) {
    m_Book.NoteProgress(*slot.m_Attempts);
  }
}

// Begins the run's attempt if its time has come, now or in its turn.
void TaskRuns::LineUp(const Key& key, Slot& slot) {
  if (slot.m_IsInLine || !slot.m_Attempts->IsReady()) {
    return;
  }
  slot.m_IsInLine = true;
  m_Line.push_back(key);
  BeginThoseInLine();
  if (slot.m_IsInLine && IsLatest(slot)) {
    m_Book.NoteInLine(*slot.m_Attempts);
  }
}

void TaskRuns::LeaveLine(const Key& key) {
  (void)std::erase(m_Line, key);
}

std::size_t TaskRuns::FreePlaces() const {
  const std::size_t taken = m_Running + m_Hooks.Running();
  return m_Settings.m_MaxRuns - std::min(taken, m_Settings.m_MaxRuns);
}

void TaskRuns::BeginThoseInLine() {
  while (!m_Line.empty() && FreePlaces() > 0) {
    Slot& slot = m_Slots.at(m_Line.front());
    m_Line.pop_front();
    slot.m_IsInLine = false;
    if (slot.m_Attempts->IsReady()) {
      BeginAttempt(slot);
    }
  }
}

void TaskRuns::BeginAttempt(Slot& slot) {
  Attempts& attempts = *slot.m_Attempts;
  if (attempts.HasBegun()) {
    attempts.Begin();
  } else {
    BeginFirst(attempts);
  }
  m_Running += attempts.IsRunning() ? 1U : 0U;
  NoteProgress(slot);
}

void TaskRuns::BeginFirst(Attempts& attempts) {
  const TaskBatch::Entry& entry = attempts.Entry();
  const bool asksForDocument = entry.m_KillAtEnd || attempts.AsksForDueTime();
  const AString taskXml = asksForDocument ? m_Book.Scheduler().TaskXml(entry.m_TaskId) : AString();
  if (const AString why = attempts.WhyTooLate(taskXml); !why.IsEmpty()) {
    attempts.LeaveOut(why);
    return;
  }
  if (attempts.MustAsk()) {
    attempts.Ask(taskXml);
    return;
  }
  if (entry.m_KillAtEnd) {
    attempts.EndAt(ActivePeriod::EndFor(taskXml, std::time(nullptr)));
  }
  attempts.Begin();
}

void TaskRuns::EndRuns(const AString& taskId) {
  for (auto it = m_Slots.lower_bound({taskId, 0}); it != m_Slots.end() && it->first.first == taskId;
       ++it) {
    EndByRequest(it->second);
  }
}

void TaskRuns::EndByRequest(Slot& slot) {
  Attempts& attempts = *slot.m_Attempts;
  if (slot.m_Next) {
    m_Book.NoteQueuedSkip(attempts.Entry().m_TaskId, EndedByRequest);
    slot.m_Next.reset();
  }
  if (attempts.IsOver()) {
    return;
  }
  if (attempts.HasBegun() || attempts.IsRunning()) {
    attempts.End(Run::EndReason::Request);
  } else {
    attempts.LeaveOut(EndedByRequest);
  }
}

void TaskRuns::BeginStop() {
  m_IsStopping = true;
  m_Line.clear();
  std::vector<AString> givenUp;
  for (auto it = m_Slots.begin(); it != m_Slots.end();) {
    auto& [key, slot] = *it;
    const bool goesOn = slot.m_Attempts->HasBegun() || slot.m_Attempts->IsRunning();
    if (slot.m_Next || !goesOn) {
      givenUp.push_back(key.first);
      slot.m_Next.reset();
    }
    slot.m_Attempts->End(Run::EndReason::Shutdown);
    it = goesOn ? std::next(it) : m_Slots.erase(it);
  }
  for (const AString& taskId : givenUp) {
    GiveUpStart(taskId);
  }
  m_Hooks.BeginStop();
}

// Its task says "Started", and is run after the next start of the agent; also when a run that goes
// on would say that the task is finished.
void TaskRuns::GiveUpStart(const AString& taskId) {
  m_Book.NoteSkip(taskId, HandlerEnds);
  if (const auto slot = LatestOf(taskId); slot != m_Slots.end()) {
    slot->second.m_ComesAgain = true;
  }
}

void TaskRuns::AddHandles(std::vector<pollfd>& handles) {
  for (auto& [key, slot] : m_Slots) {
    slot.m_FirstHandle = handles.size();
    slot.m_Attempts->AddHandles(handles);
    slot.m_HandleCount = handles.size() - slot.m_FirstHandle;
  }
  m_Hooks.AddHandles(handles);
}

std::optional<WaitClock::Moment::duration> TaskRuns::Rest() const {
  std::optional<WaitClock::Moment::duration> least = m_Hooks.Rest();
  for (const auto& [key, slot] : m_Slots) {
    if (const auto rest = slot.m_Attempts->Rest()) {
      least = std::min(least.value_or(*rest), *rest);
    }
  }
  return least;
}

std::optional<long> TaskRuns::PeriodEnd() const {
  std::optional<long> first;
  for (const auto& [key, slot] : m_Slots) {
    if (const auto end = slot.m_Attempts->PeriodEnd()) {
      first = std::min(first.value_or(*end), *end);
    }
  }
  return first;
}

void TaskRuns::Advance(const std::vector<pollfd>& handles) {
  RunBook::States states;
  for (auto it = m_Slots.begin(); it != m_Slots.end();) {
    auto& [key, slot] = *it;
    if (NeedsAdvance(slot, handles)) {
      AdvanceSlot(slot);
    }
    if (slot.m_Attempts->IsOver()) {
      it = End(it, states);
    } else {
      LineUp(key, slot);
      ++it;
    }
  }
  m_Hooks.Save();  // first: else a failure that the agent's end follows would not count
  m_Book.Report(states);
  m_Hooks.Advance();
  m_Hooks.Begin(FreePlaces());
  for (const TaskBatch::Entry& entry : std::exchange(m_Next, {})) {
    Admit(entry);
  }
  BeginThoseInLine();
}

// Takes the run that is over out of the slots, and returns the one after it. As long as others of
// its task go on, the state on record stays "Started".
std::map<TaskRuns::Key, TaskRuns::Slot>::iterator TaskRuns::End(std::map<Key, Slot>::iterator it,
                                                                RunBook::States& states) {
  const Key key = it->first;
  if (it->second.m_IsInLine) {
    LeaveLine(key);
  }
  Slot slot = std::move(it->second);
  const auto after = m_Slots.erase(it);
  if (slot.m_Attempts->HasBegun()) {
    m_Hooks.NoteEnd(*slot.m_Attempts);
    KeepLater(slot.m_Ended, EndingOf(*slot.m_Attempts));
  }
  const auto other = LatestOf(key.first);
  if (other == m_Slots.end()) {
    const char* const state = NoteLastEnd(slot);
    if (!slot.m_Next && !(slot.m_ComesAgain && std::string_view(state) == "Ok")) {
      states[key.first] = state;
    }
  } else {
    LeaveTo(other->second, slot);
    if (other->first < key) {
      NoteProgress(other->second);  // it is the latest again
    }
  }
  if (slot.m_Next) {
    m_Next.push_back(*slot.m_Next);  // the state on record is already that of this run: "Started"
  }
  return after;
}

// Others of its task go on: what there is to tell of the run is told at the end of the last one.
void TaskRuns::LeaveTo(Slot& other, const Slot& ended) {
  other.m_ComesAgain = other.m_ComesAgain || ended.m_ComesAgain;
  if (!ended.m_Attempts->HasBegun()) {
    m_Book.NoteSkip(ended.m_Attempts->Entry().m_TaskId, ended.m_Attempts->Outcome());
  }
  if (ended.m_Ended) {
    KeepLater(other.m_Ended, *ended.m_Ended);
  }
}

// Tells of the run that began last; one that was left out is none.
const char* TaskRuns::NoteLastEnd(const Slot& slot) {
  const Attempts& attempts = *slot.m_Attempts;
  if (!slot.m_Ended) {
    return m_Book.NoteLeftOut(attempts, slot.m_Before);
  }
  if (!attempts.HasBegun()) {
    m_Book.NoteSkip(attempts.Entry().m_TaskId, attempts.Outcome());
  }
  return m_Book.NoteEnd(attempts.Entry().m_TaskId, *slot.m_Ended);
}

void TaskRuns::AdvanceSlot(Slot& slot) {
  Attempts& attempts = *slot.m_Attempts;
  const bool wasRunning = attempts.IsRunning();
  attempts.Advance();
  if (!wasRunning || attempts.IsRunning()) {
    return;
  }
  --m_Running;
  NoteProgress(slot);
}

bool TaskRuns::NeedsAdvance(const Slot& slot, const std::vector<pollfd>& handles) {
  const auto begin = handles.begin() + static_cast<std::ptrdiff_t>(slot.m_FirstHandle);
  const auto end = begin + static_cast<std::ptrdiff_t>(slot.m_HandleCount);
  return slot.m_Attempts->IsDue() ||
         std::any_of(begin, end, [](const pollfd& handle) { return handle.revents != 0; });
}

void TaskRuns::GiveUp() {
  for (const auto& [key, slot] : m_Slots) {
    ALOG(HandlerLog(), ALogger::Error, HandlerSource,
         AString("Cannot end the run of task '%1' (process %2): leaving it to the next start")
             .Arg(key.first, DecimalText(slot.m_Attempts->Pid())));
  }
  m_Slots.clear();
  m_Hooks.GiveUp();
}

}  // namespace NoxHandler
