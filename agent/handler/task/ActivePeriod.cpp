#include "agent/handler/task/ActivePeriod.h"

#include "agent/handler/task/PeriodTrigger.h"

#include <BaseSDK/ALong32.h>
#include <BaseSDK/AXmlDoc.h>

#include <tuple>

using BaseSDK::Add32;
using BaseSDK::AString;
using BaseSDK::AXmlDoc;

namespace NoxHandler {

namespace {

// What a trigger says of the run; the better candidate compares greater.
struct Candidate {
  long m_Due;
  long m_End;

  bool IsBetterThan(const Candidate& other) const {
    return std::tuple(m_Due, -m_End) > std::tuple(other.m_Due, -other.m_End);
  }
};

Candidate CandidateFor(const PeriodTrigger& trigger, long runStart) {
  if (const auto start = trigger.StartOfPeriod(runStart)) {
    return {trigger.LastDue(*start, runStart), Add32(*start, trigger.Duration())};
  }
  return {-1, Add32(runStart, trigger.Duration())};
}

}  // namespace

std::optional<long> ActivePeriod::EndFor(const AString& taskXml, long runStart) {
  AXmlDoc document(taskXml);
  std::optional<Candidate> best;
  if (!document.Find("//Trigger")) {
    return std::nullopt;
  }
  while (document.Read()) {
    const PeriodTrigger trigger(document.GetValue());
    if (!trigger.Kills()) {
      continue;
    }
    const Candidate candidate = CandidateFor(trigger, runStart);
    if (!best || candidate.IsBetterThan(*best)) {
      best = candidate;
    }
  }
  return best ? std::optional(best->m_End) : std::nullopt;
}

}  // namespace NoxHandler
