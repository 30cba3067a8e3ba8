#pragma once

#include "agent/phrase/PhraseRule.h"
#include "agent/schedule/LocalCalendar.h"
#include "agent/schedule/TriggerRule.h"

#include <vector>

namespace NoxAgent {

/// A part of the days of a rule in words: those that a trigger selects in a span of time.
struct DaySpan {
  TriggerRule m_Trigger;  ///< without begin, end and repetition
  long m_From = 0;
  long m_Until = NoTime;
};

/// The parts that are all days of the rule from `from` up to its end. Documents have no word for
/// some days: then a trigger selects them for a year, or for the years between two leap years. The
/// rule has days, and they are not counted.
std::vector<DaySpan> DaySpans(const PhraseRule& rule, const LocalCalendar& calendar, long from);

}  // namespace NoxAgent
