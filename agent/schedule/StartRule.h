#pragma once

#include "agent/schedule/LocalCalendar.h"
#include "agent/schedule/TriggerRule.h"

#include <optional>
#include <vector>

namespace NoxAgent {

/// A rule before it has a begin: on which days it starts, at which time of day, and how it repeats
/// then. Words and crontab lines are made into these first; the moment from which they are to hold
/// makes triggers of them.
struct StartRule {
  TriggerRule m_Rule;  ///< Daily or greater; m_Begin is not looked at
  long m_Clock = 0;    ///< of the starts, in seconds since midnight
};

/// The trigger that has its first start at `from` or as soon after it as the rule allows, so that
/// it runs nothing before. A day whose clocks leave the time of day out is passed over: a begin on
/// it would move all other starts. Nothing when there is no such start up to the rule's end, or
/// within the calendar.
std::optional<TriggerRule> BeginAtFirstStart(const StartRule& rule, const LocalCalendar& calendar,
                                             long from);

/// The starts from `from` on that lie before that trigger's begin: those of days that lack the time
/// of day, where they come at another one.
std::vector<long> MovedStartsBeforeBegin(const StartRule& rule, const LocalCalendar& calendar,
                                         long from);

}  // namespace NoxAgent
