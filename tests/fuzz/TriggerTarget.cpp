// A trigger at any moment: "ZONE LAST-RUN NOW" on the first line, ZONE being a place in the list
// below and the times seconds since the epoch; then the Trigger element.
#include "model/TaskTrigger.h"
#include "tests/fuzz/FuzzTarget.h"

#include <BaseSDK/ALong32.h>
#include <BaseSDK/AStringTokenizer.h>
#include <VirtualTime/VirtualClock.h>
#include <VirtualTime/Zone.h>

#include <algorithm>
#include <array>

using BaseSDK::AString;
using BaseSDK::Long32Max;
using Fuzz::Require;

namespace {

constexpr std::array Zones = {
    "UTC0",
    "CET-1CEST,M3.5.0,M10.5.0/3",        // a gap and a repetition at night
    "EST5EDT,M3.2.0,M11.1.0",            //
    "LHST-10:30LHDT-11,M10.1.0,M4.1.0",  // by half an hour
    "BRT3BRST,M10.3.0/0,M2.3.0/0",       // midnight is skipped
    "IST-1GMT0,M10.5.0,M3.5.0/1",        // daylight saving in winter, backwards
    "CAT-2CAST-23,J60/0,J300/0",         // nearly a whole day is skipped
    "NZST-12NZDT-13,M9.5.0,M4.1.0/3",    //
};

/// What a due test says.
struct Answers {
  bool m_Due = false;
  long m_Sleep = 86400;
  bool m_Late = false;
  bool m_Expired = false;
  bool m_Changed = false;
};

Answers Ask(CTaskTrigger& trigger) {
  Answers answers;
  answers.m_Due = trigger.IsDue(false, false, answers.m_Sleep, answers.m_Late, answers.m_Expired,
                                answers.m_Changed);
  return answers;
}

void RequireInRange(const CTaskTrigger& trigger) {
  for (const long value :
       {trigger.m_Type, trigger.m_Interval, trigger.m_Duration, trigger.m_BeginDate,
        trigger.m_EndDate, trigger.m_DaysInterval, trigger.m_WeeksInterval, trigger.m_Week,
        trigger.m_NextRun, trigger.m_ClosestRun}) {
    Require(value == BaseSDK::Clamp32(value), "values stay in the signed 32-bit range");
  }
}

/// `now` itself only at the very end of time, where there is nothing after it.
void RequireAhead(long nextRun, long now) {
  Require(nextRun == CTaskTrigger::NoTime || nextRun > now || (nextRun == now && now == Long32Max),
          "the next run lies ahead");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const AString text = Fuzz::Text(data, size);
  const std::size_t headEnd = std::min(text.Find("\n"), text.Length());
  const BaseSDK::AStringTokenizer head(text.Left(headEnd), " ", 0, 3);
  const auto place = static_cast<std::size_t>(std::max(head.Token(0).ToLong(), 0L));
  const VirtualTime::Zone zone(Zones[place % Zones.size()]);
  long lastRun = head.Token(1).ToLong();
  const long now = std::max(head.Token(2).ToLong(), 0L);
  VirtualTime::VirtualClock::Instance().Start(now);

  CTaskTrigger trigger(text.Mid(headEnd), &lastRun);
  RequireInRange(trigger);
  const Answers first = Ask(trigger);
  RequireInRange(trigger);
  RequireAhead(trigger.m_NextRun, now);
  Require(first.m_Sleep > 0 && first.m_Sleep <= 86400, "the sleep is only ever lowered");
  Require(first.m_Due || !first.m_Late, "only what is due can be late");

  const long nextRun = trigger.m_NextRun;
  const Answers second = Ask(trigger);
  Require(!second.m_Changed && trigger.m_NextRun == nextRun && second.m_Due == first.m_Due &&
              second.m_Sleep == first.m_Sleep,
          "the same moment gives the same answers");

  trigger.UpdateClosestRun(true);
  RequireInRange(trigger);
  Require(trigger.m_ClosestRun == (first.m_Due ? now : nextRun), "the closest run is now or next");
  return 0;
}
