#pragma once

#include "agent/phrase/Grammar.h"
#include "agent/phrase/PhraseWords.h"

#include <string>

namespace NoxAgent {

/// What to write instead of the words that the grammar could not read on from, where experience
/// tells what was meant; empty otherwise.
std::string PhraseHint(const PhraseWords& words, const Grammar::Outcome& outcome);

}  // namespace NoxAgent
