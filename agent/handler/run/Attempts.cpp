#include "agent/handler/run/Attempts.h"

#include "agent/handler/Log.h"
#include "agent/handler/job/Duration.h"
#include "agent/handler/system/WallClock.h"
#include "agent/handler/task/DueTime.h"
#include "agent/handler/task/Splay.h"

#include <BaseSDK/ADateTime.h>
#include <BaseSDK/ALong32.h>

#include <algorithm>
#include <chrono>
#include <exception>
#include <new>

using BaseSDK::ADateTime;
using BaseSDK::ALogger;
using BaseSDK::AString;
using namespace std::chrono_literals;

namespace NoxHandler {

namespace {

constexpr const char* ConditionKey = "condition";
constexpr auto AskAgain = 30s;

const char* WhyNoneFollows(Run::EndReason reason) {
  switch (reason) {
    case Run::EndReason::PeriodEnd:
      return "its active period has ended";
    case Run::EndReason::Replaced:
      return "the task's next run takes its place";
    case Run::EndReason::Request:
      return EndedByRequest;
    default:
      return "the command handler ends";
  }
}

}  // namespace

Attempts::Attempts(const TaskBatch::Entry& entry, long number, Job job,
                   const HandlerSettings& settings, OutputFiles& outputs, RunRecords& records,
                   RunGroups& groups, const WaitClock& clock)
    : m_Entry(entry),
      m_Number(number),
      m_Job(std::move(job)),
      m_Settings(settings),
      m_Outputs(outputs),
      m_Records(records),
      m_Groups(groups),
      m_Clock(clock),
      m_Attempt{0, m_Job.m_Retry.m_Times + 1},
      m_IsAllowed(m_Job.m_Condition.empty()),
      m_Delay(Splay::ShareOf(m_Job.m_SplaySeconds, settings.m_MachineId, entry.m_TaskId)) {
  // One that was queued has waited already.
  const std::chrono::milliseconds waited = std::chrono::seconds(WallSeconds() - entry.m_HandedOver);
  m_NextAt = clock.Now() + m_Delay - std::clamp(waited, 0ms, m_Delay);
}

// The last second at which it may begin, since the epoch; nothing when that cannot be told. For a
// job with max_late.
std::optional<long> Attempts::LatestStart(const AString& taskXml) const {
  const long allowed = m_Job.m_MaxLateSeconds;
  // A run that is not late was handed over at its time.
  const auto due = m_Entry.m_Late ? DueTime::LastBefore(taskXml, m_Entry.m_HandedOver, allowed)
                                  : std::optional(m_Entry.m_HandedOver);
  const auto delay = static_cast<long>(std::chrono::ceil<std::chrono::seconds>(m_Delay).count());
  return due ? std::optional(BaseSDK::Add32(*due, allowed + delay)) : std::nullopt;
}

AString Attempts::WhyTooLate(const AString& taskXml) const {
  const long allowed = m_Job.m_MaxLateSeconds;
  if (allowed == 0) {
    return AString();
  }
  const auto latest = LatestStart(taskXml);
  if (latest && WallSeconds() <= *latest) {
    return AString();
  }
  return latest ? AString("it would start more than %1 late").Arg(Duration::Text(allowed))
                : AString("it is late, and how much cannot be told");
}

// What kept it from beginning is the answer, not that it has become late meanwhile.
void Attempts::LeaveOut(const AString& why) {
  m_Outcome = m_Refusal.IsEmpty() ? why : m_Refusal;
  m_End = WallSeconds();
}

void Attempts::Ask(const AString& taskXml) {
  if (!m_AskUntil) {
    const bool mayWait = m_Job.m_MaxLateSeconds > 0;
    const long now = WallSeconds();
    const long latest = mayWait ? LatestStart(taskXml).value_or(now) : now;
    m_AskUntil = m_Clock.Now() + std::chrono::seconds(latest - now);
  }
  try {
    m_Run = std::make_unique<Run>(m_Entry, ConditionAnswer::QuestionOf(m_Job),
                                  AttemptNumber{1, 1, ConditionKey}, std::nullopt, m_Settings,
                                  nullptr, m_Records, m_Groups);
  } catch (const std::bad_alloc&) {
    FailUnasked("the agent has no memory left");
  } catch (const std::exception& error) {
    FailUnasked(error.what());
  }
}

void Attempts::TakeAnswer(const ConditionAnswer& answer) {
  m_IsAllowed = answer.m_Kind == ConditionAnswer::Kind::Yes;
  m_Refusal = AString();
  if (m_EndedFor == Run::EndReason::Request) {
    LeaveOut(EndedByRequest);
  } else if (answer.m_Kind == ConditionAnswer::Kind::Unknown) {
    FailUnasked(answer.m_Reason);
  } else if (m_EndedFor) {
    FailUnasked(WhyNoneFollows(*m_EndedFor));
  } else if (!m_IsAllowed) {
    TakeRefusal(answer.m_Reason);
  }
}

void Attempts::TakeRefusal(const AString& reason) {
  m_Refusal = reason;
  m_NextAt = m_Clock.Now() + AskAgain;
  if (m_NextAt > *m_AskUntil) {
    LeaveOut(reason);
  }
}

// Nobody knows whether it was to run: no attempt follows.
void Attempts::FailUnasked(const AString& reason) {
  m_Start = WallSeconds();
  m_Outcome = AString("its condition: %1").Arg(reason);
  m_End = WallSeconds();
  ALOG(HandlerLog(), ALogger::Error, HandlerSource,
       AString("Task '%1' failed: %2").Arg(m_Entry.m_TaskId, m_Outcome));
  AppendNote(m_Outcome);
}

bool Attempts::IsReady() const {
  return !m_Run && !IsOver() && m_NextAt <= m_Clock.Now();
}

void Attempts::Begin() {
  ++m_Attempt.m_Number;
  m_Start = m_Start.value_or(WallSeconds());
  try {
    m_Run = std::make_unique<Run>(m_Entry, m_Job, m_Attempt, m_PeriodEnd, m_Settings,
                                  m_Outputs.Of(m_Entry.m_TaskId), m_Records, m_Groups);
  } catch (const std::bad_alloc&) {
    NoteFailedStart("the agent has no memory left");
  } catch (const std::exception& error) {
    NoteFailedStart(error.what());
  }
}

void Attempts::NoteFailedStart(const AString& reason) {
  const AString outcome = reason + m_Attempt.Suffix();
  ALOG(HandlerLog(), ALogger::Error, HandlerSource,
       AString("Task '%1' failed: %2").Arg(m_Entry.m_TaskId, outcome));
  AppendNote(outcome);
  Conclude(false, outcome);
}

void Attempts::AddHandles(std::vector<pollfd>& handles) const {
  if (m_Run) {
    m_Run->AddHandles(handles);
  }
}

std::optional<WaitClock::Moment::duration> Attempts::Rest() const {
  using Length = WaitClock::Moment::duration;
  if (IsOver()) {
    return Length::zero();
  }
  if (m_Run) {
    const auto deadline = m_Run->Deadline();
    return deadline ? std::optional<Length>(*deadline - Run::Clock::now()) : std::nullopt;
  }
  const Length rest = m_NextAt - m_Clock.Now();
  return rest > Length::zero() ? std::optional(rest) : std::nullopt;
}

std::optional<long> Attempts::PeriodEnd() const {
  return m_Run ? m_Run->PeriodEnd() : IsOver() ? std::nullopt : m_PeriodEnd;
}

bool Attempts::IsDue() const {
  if (m_Run) {
    return m_Run->IsDue();
  }
  const auto periodEnd = PeriodEnd();
  return periodEnd && *periodEnd <= WallSeconds();
}

void Attempts::Advance() {
  if (!m_Run) {
    if (IsDue()) {
      End(Run::EndReason::PeriodEnd);
    }
    return;
  }
  m_Run->Advance();
  if (m_Run->IsOver()) {
    const auto run = std::move(m_Run);
    if (!HasBegun()) {
      TakeAnswer(ConditionAnswer::Of(*run));
      return;
    }
    if (run->Reason() == Run::EndReason::PeriodEnd) {
      m_EndedFor = m_EndedFor.value_or(Run::EndReason::PeriodEnd);
    }
    Conclude(run->Succeeded(), run->Outcome());
  }
}

void Attempts::Conclude(bool succeeded, const AString& outcome) {
  m_Succeeded = succeeded;
  m_Outcome = outcome;
  m_NextAt = m_Clock.Now() + std::chrono::seconds(m_Job.m_Retry.m_EverySeconds);
  if (succeeded || m_Attempt.IsLast() || m_EndedFor) {
    m_End = WallSeconds();
  }
}

AString Attempts::NextStep() const {
  if (HasBegun()) {
    return m_Outcome + "; the next one begins";
  }
  if (!m_Refusal.IsEmpty()) {
    return m_Refusal + "; it is asked again";
  }
  const bool wasAsked = m_IsAllowed && !m_Job.m_Condition.empty();
  return wasAsked ? "its condition says yes: it begins" : "its splay: it begins";
}

AString Attempts::WaitsFor() const {
  if (m_Run) {
    return "its condition: it is being asked";
  }
  const auto rest = std::chrono::ceil<std::chrono::seconds>(m_NextAt - m_Clock.Now());
  const long next = BaseSDK::Add32(WallSeconds(), static_cast<long>(rest.count()));
  return AString("%1 at %2").Arg(NextStep(), ADateTime(next).ToString("%Y-%m-%d %H:%M:%S"));
}

void Attempts::End(Run::EndReason reason) {
  if (IsOver() || m_EndedFor) {
    return;
  }
  m_EndedFor = reason;
  if (m_Run) {
    m_Run->End(reason);
    return;
  }
  m_End = WallSeconds();
  if (HasBegun()) {
    const AString words = AString("not tried again: %1").Arg(WhyNoneFollows(reason));
    m_Outcome += "; " + words;
    AppendNote(words);
  }
}

void Attempts::AppendNote(const AString& text) {
  m_Outputs.Of(m_Entry.m_TaskId)->AppendNote(text);
}

bool Attempts::IsFinal() const {
  const bool isCutShort = m_EndedFor == Run::EndReason::Shutdown && !m_Attempt.IsLast();
  return !m_Succeeded && !m_Job.m_Retry.m_IsHourly && !isCutShort;
}

}  // namespace NoxHandler
