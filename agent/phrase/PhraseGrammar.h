// The language of schedules in words, as one table. The parser reads by it, and help, manual page
// and docs/schedules.md show it.
#pragma once

#include "agent/phrase/Grammar.h"

#include <span>
#include <string>
#include <vector>

namespace NoxAgent {

/// The rules, first that of the whole.
std::span<const Grammar::Rule> PhraseRules();

/// A kind of words in the language.
struct PhraseTerminal {
  const char* m_Name;
  const char* m_Meaning;  ///< "a time of day: 02:30, or several: 08:00,20:00"
  bool (*m_Recognises)(const std::string& word);
  std::vector<const char*> m_Proposals;  ///< what a shell may offer
};

std::span<const PhraseTerminal> PhraseTerminals();
/// Null when there is none of the name.
const PhraseTerminal* FindPhraseTerminal(const std::string& name);

/// The grammar of the table.
const Grammar& ThePhraseGrammar();

/// Rules and terminals, a line each, as a text for people; each line begins with `indent`.
std::string PhraseGrammarText(const std::string& indent);

}  // namespace NoxAgent
