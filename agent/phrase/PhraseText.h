#pragma once

#include "agent/phrase/PhraseRule.h"
#include "agent/schedule/LocalCalendar.h"

#include <string>

namespace NoxAgent {

/// The schedule in words, as ReadPhrase reads them: "mon at 07:00 and daily at 12:00,18:00". The
/// calendar is that of the zone in which the words will be read.
std::string PhraseText(const Phrase& phrase, const LocalCalendar& calendar);

}  // namespace NoxAgent
