#include "agent/handler/run/LatestRuns.h"

#include "agent/handler/Log.h"

#include <algorithm>
#include <utility>

using BaseSDK::AMutexGuard;
using BaseSDK::AString;
using Corvane::AgentInterfacesV3::AStringMap;

namespace NoxHandler {

namespace {

const char* NameOf(LatestRuns::Phase phase) {
  switch (phase) {
    case LatestRuns::Phase::Waiting:
      return "waiting";
    case LatestRuns::Phase::Running:
      return "running";
    case LatestRuns::Phase::None:
      return "none";
    case LatestRuns::Phase::Ended:
      break;
  }
  return "ended";
}

bool IsOfRunUnderWay(const LatestRuns::Facts& facts) {
  return facts.m_Phase == LatestRuns::Phase::Waiting || facts.m_Phase == LatestRuns::Phase::Running;
}

void Put(AStringMap& run, const char* key, std::optional<long> number) {
  if (number) {
    run.emplace(key, DecimalText(*number));
  }
}

void PutCount(AStringMap& run, const char* key, long count) {
  if (count > 0) {
    Put(run, key, count);
  }
}

AString ReportLine(const AString& taskId, const LatestRuns::Facts& facts) {
  if (facts.m_Phase == LatestRuns::Phase::Waiting) {
    return AString("  task '%1', waiting: %2\n").Arg(taskId, facts.m_Reason);
  }
  return AString("  task '%1', process %2%3\n")
      .Arg(taskId, DecimalText(facts.m_Pid),
           facts.m_Queued ? "; its next run is waiting for the end of this one" : "");
}

}  // namespace

long LatestRuns::NewNumber(const AString& taskId) {
  AMutexGuard guard(m_Lock);
  const auto found = m_Runs.find(taskId);
  return found == m_Runs.end() ? 1 : ++found->second.m_Facts.m_Runs;
}

void LatestRuns::NoteWaiting(const AString& taskId, long number, const AString& reason) {
  AMutexGuard guard(m_Lock);
  Facts facts = OfRun(taskId, number);
  facts.m_Reason = reason;
  (void)Renew(taskId, facts);
}

void LatestRuns::NoteStart(const AString& taskId, long number, long start, long pid) {
  AMutexGuard guard(m_Lock);
  Facts facts = OfRun(taskId, number);
  facts.m_Phase = Phase::Running;
  facts.m_Start = start;
  facts.m_Pid = pid;
  (void)Renew(taskId, facts);
}

void LatestRuns::NotePause(const AString& taskId, long number, long start, const AString& reason) {
  AMutexGuard guard(m_Lock);
  Facts facts = OfRun(taskId, number);
  facts.m_Start = start;
  facts.m_Reason = reason;
  (void)Renew(taskId, facts);
}

void LatestRuns::NoteEnd(const AString& taskId, const Ending& ending) {
  AMutexGuard guard(m_Lock);
  Facts facts = OfRun(taskId, ending.m_Number);
  facts.m_Phase = Phase::Ended;
  facts.m_Start = ending.m_Start;
  facts.m_End = ending.m_End;
  facts.m_Succeeded = ending.m_Succeeded;
  facts.m_IsFinal = ending.m_IsFinal;
  facts.m_Reason = ending.m_Reason;
  facts.m_Queued.reset();
  EnterEnded(taskId, Renew(taskId, facts));
}

void LatestRuns::NoteLeftOut(const AString& taskId, const std::optional<Facts>& before,
                             const AString& reason, long moment) {
  Facts facts;
  facts.m_Phase = Phase::None;
  if (before && before->m_Phase == Phase::Ended) {
    facts = *before;
    facts.m_IsFinal = !facts.m_Succeeded;
  }
  facts.m_Skipped = moment;
  facts.m_SkipReason = reason;
  AMutexGuard guard(m_Lock);
  Entry& entry = Renew(taskId, facts);
  ++entry.m_Facts.m_Skips;
  EnterEnded(taskId, entry);
}

void LatestRuns::NoteQueued(const AString& taskId, long moment) {
  AMutexGuard guard(m_Lock);
  if (const auto found = m_Runs.find(taskId); found != m_Runs.end()) {
    found->second.m_Facts.m_Queued = moment;
  }
}

void LatestRuns::NoteNoneQueued(const AString& taskId) {
  AMutexGuard guard(m_Lock);
  if (const auto found = m_Runs.find(taskId); found != m_Runs.end()) {
    found->second.m_Facts.m_Queued.reset();
  }
}

void LatestRuns::NoteSkip(const AString& taskId, const AString& reason, long moment) {
  AMutexGuard guard(m_Lock);
  if (const auto found = m_Runs.find(taskId); found != m_Runs.end()) {
    Facts& facts = found->second.m_Facts;
    facts.m_Skipped = moment;
    facts.m_SkipReason = reason;
    ++facts.m_Skips;
  }
}

bool LatestRuns::IsUnderWay(const AString& taskId) const {
  const auto facts = Find(taskId);
  return facts && IsOfRunUnderWay(*facts);
}

std::optional<LatestRuns::Facts> LatestRuns::Find(const AString& taskId) const {
  AMutexGuard guard(m_Lock);
  const auto found = m_Runs.find(taskId);
  return found == m_Runs.end() ? std::nullopt : std::optional(found->second.m_Facts);
}

AStringMap LatestRuns::Describe(const AString& taskId) const {
  AStringMap run;
  const auto facts = Find(taskId);
  if (!facts) {
    return run;
  }
  run.emplace("state", NameOf(facts->m_Phase));
  PutCount(run, "number", facts->m_Number);
  PutCount(run, "runs", facts->m_Runs);
  PutCount(run, "skips", facts->m_Skips);
  Put(run, "start", facts->m_Start);
  Put(run, "end", facts->m_End);
  Put(run, "queued", facts->m_Queued);
  Put(run, "skipped", facts->m_Skipped);
  if (facts->m_Skipped) {
    run.emplace("skipReason", facts->m_SkipReason);
  }
  if (facts->m_Phase == Phase::Running) {
    run.emplace("pid", DecimalText(facts->m_Pid));
  } else if (facts->m_Phase != Phase::None) {
    run.emplace("reason", facts->m_Reason);
  }
  if (facts->m_Phase == Phase::Ended) {
    run.emplace("result", facts->m_Succeeded ? "Ok" : "Failed");
    if (facts->m_IsFinal) {
      run.emplace("final", "1");
    }
  }
  return run;
}

AString LatestRuns::Report() const {
  long running = 0;
  long waiting = 0;
  AString lines;
  AMutexGuard guard(m_Lock);
  for (const auto& [taskId, entry] : m_Runs) {
    const Facts& facts = entry.m_Facts;
    if (IsOfRunUnderWay(facts)) {
      running += facts.m_Phase == Phase::Running ? 1 : 0;
      waiting += facts.m_Phase == Phase::Waiting || facts.m_Queued ? 1 : 0;
      lines += ReportLine(taskId, facts);
    }
  }
  return AString("Command handler: %1 running, %2 waiting\n")
             .Arg(DecimalText(running), DecimalText(waiting)) +
         lines;
}

// What stays known when that run comes into another phase, or is told of again, for a later one
// that went on beside it has ended.
LatestRuns::Facts LatestRuns::OfRun(const AString& taskId, long number) const {
  Facts facts;
  facts.m_Number = number;
  const auto found = m_Runs.find(taskId);
  if (found == m_Runs.end()) {
    return facts;
  }
  const Facts& before = found->second.m_Facts;
  if (IsOfRunUnderWay(before) && number <= before.m_Number) {
    facts.m_Queued = before.m_Queued;
    facts.m_Skipped = before.m_Skipped;
    facts.m_SkipReason = before.m_SkipReason;
  }
  return facts;
}

LatestRuns::Entry& LatestRuns::Renew(const AString& taskId, Facts facts) {
  Entry& entry = m_Runs[taskId];
  m_Ended.erase(entry.m_EndedAs);
  facts.m_Runs = std::max(entry.m_Facts.m_Runs, facts.m_Number);
  facts.m_Skips = entry.m_Facts.m_Skips;
  entry = {std::move(facts), 0};
  return entry;
}

void LatestRuns::EnterEnded(const AString& taskId, Entry& entry) {
  entry.m_EndedAs = ++m_Ends;
  m_Ended.emplace(entry.m_EndedAs, taskId);
  if (m_Ended.size() > m_MostEnded) {
    m_Runs.erase(m_Ended.begin()->second);
    m_Ended.erase(m_Ended.begin());
  }
}

}  // namespace NoxHandler
