#pragma once

#include "agent/phrase/PhraseRule.h"
#include "agent/schedule/LocalCalendar.h"

#include <vector>

namespace NoxAgent {

/// One time of day at which a trigger starts, and how it repeats then; in seconds.
struct PhraseTime {
  long m_Clock = 0;
  long m_Interval = 0;
  long m_Duration = 0;
};

/// The times of day that the rule takes, one trigger each. "Every 10 min" takes two where the
/// clocks change: repetitions count real time, so on a day of 25 hours they end before midnight,
/// and a second start sees to the last hour. Throws PhraseError for lengths that a document cannot
/// have.
std::vector<PhraseTime> TimesOf(const PhraseRule& rule, const LocalCalendar& calendar);

}  // namespace NoxAgent
