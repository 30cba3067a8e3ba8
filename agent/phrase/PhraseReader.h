#pragma once

#include "agent/phrase/PhraseRule.h"
#include "agent/schedule/LocalCalendar.h"

#include <string>
#include <vector>

namespace NoxAgent {

/// Reads a schedule in words. `words` are the arguments of a command line, or one text; `now` is
/// what "once in 2 h" counts from. Throws PhraseError that points at the word that cannot stand
/// where it does, and says what could.
Phrase ReadPhrase(const std::vector<std::string>& words, const LocalCalendar& calendar, long now);

/// Reads "2027-01-04" or "2027-01-04 09:00", the begin of that day or, with `isEnd`, its last
/// second. PhraseError names `option` as what holds the text.
long ReadPhraseMoment(const std::string& option, const std::string& text,
                      const LocalCalendar& calendar, bool isEnd);

/// What could stand behind these words, for completion: words themselves and names of terminals.
/// Empty when the words cannot be understood.
std::vector<std::string> ExpectedBehind(const std::vector<std::string>& words);

}  // namespace NoxAgent
