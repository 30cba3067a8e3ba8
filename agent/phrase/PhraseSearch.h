#pragma once

#include "agent/phrase/PhraseRule.h"
#include "agent/schedule/LocalCalendar.h"
#include "agent/schedule/TriggerRule.h"

#include <vector>

namespace NoxAgent {

/// What a task's triggers say in words.
struct PhraseFinding {
  Phrase m_Phrase;                    ///< MakeTriggers makes triggers with the same runs of it
  std::vector<TriggerRule> m_Unsaid;  ///< for these the language has no words
};

/// Finds the words for the runs that are to come after `now`. A trigger that has none is left out.
///
/// Words are proposed for one trigger after the other and made into triggers again; they are right
/// when those have the same runs. So one rule may stand for several triggers, and what is found
/// always means what the document does.
PhraseFinding FindPhrase(const std::vector<TriggerRule>& triggers, const LocalCalendar& calendar,
                         long now);

}  // namespace NoxAgent
