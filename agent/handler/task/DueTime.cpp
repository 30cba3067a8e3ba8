#include "agent/handler/task/DueTime.h"

#include "agent/handler/task/PeriodTrigger.h"

#include <BaseSDK/ALong32.h>
#include <BaseSDK/AXmlDoc.h>

#include <algorithm>

using BaseSDK::AString;
using BaseSDK::AXmlDoc;

namespace NoxHandler {

namespace {

constexpr long DayLength = 86400;

std::optional<long> LastOf(const PeriodTrigger& trigger, long moment, long seconds) {
  // After its end a trigger is not due any more.
  const long last = std::min(moment, trigger.End().value_or(moment));
  const long days = (BaseSDK::Add32(seconds, trigger.Duration())) / DayLength + 2;
  const auto start = trigger.LastStart(last, days);
  if (!start) {
    return trigger.Begin() <= last ? std::optional(trigger.Begin()) : std::nullopt;
  }
  const long periodEnd = BaseSDK::Add32(*start, std::max(trigger.Duration(), 0L));
  return trigger.LastDue(*start, std::min(last, periodEnd));
}

}  // namespace

std::optional<long> DueTime::LastBefore(const AString& taskXml, long moment, long seconds) {
  AXmlDoc document(taskXml);
  std::optional<long> latest;
  if (!document.Find("//Trigger")) {
    return std::nullopt;
  }
  while (document.Read()) {
    const PeriodTrigger trigger(document.GetValue());
    const auto due = trigger.IsDated() ? LastOf(trigger, moment, seconds) : std::nullopt;
    latest = std::max(latest, due);
  }
  return latest;
}

}  // namespace NoxHandler
