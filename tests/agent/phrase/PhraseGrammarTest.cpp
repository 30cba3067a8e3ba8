// The grammar that people read is the one that parses.
#include "agent/phrase/PhraseGrammar.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>

namespace NoxAgentTest {

using NoxAgent::PhraseGrammarText;

namespace {

std::string FileText(const char* path) {
  std::ostringstream text;
  text << std::ifstream(path).rdbuf();
  return text.str();
}

}  // namespace

TEST(PhraseGrammar, StandsOnThePageOfSchedules) {
  EXPECT_NE(std::string::npos, FileText(NOX_SCHEDULES_PAGE).find(PhraseGrammarText("    ")))
      << PhraseGrammarText("    ");
}

TEST(PhraseGrammar, StandsInTheManual) {
  std::string manual = FileText(NOX_MANUAL);
  manual.erase(std::remove(manual.begin(), manual.end(), '\\'), manual.end());
  std::string grammar = PhraseGrammarText("");
  // An apostrophe and a dash of the manual are typed with a backslash.
  for (std::size_t at; (at = manual.find("(aq")) != std::string::npos;) {
    manual.replace(at, 3, "'");
  }
  EXPECT_NE(std::string::npos, manual.find(grammar)) << grammar;
}

TEST(PhraseGrammar, KnowsEachKindOfWordsThatItsRulesName) {
  for (const auto& rule : NoxAgent::PhraseRules()) {
    std::istringstream symbols(NoxAgent::Grammar::Shown(rule.m_Text));
    for (std::string symbol; symbols >> symbol;) {
      std::erase_if(symbol, [](unsigned char character) { return std::isalpha(character) == 0; });
      const auto rules = NoxAgent::PhraseRules();
      const bool isRule = std::any_of(rules.begin(), rules.end(),
                                      [&](const auto& each) { return symbol == each.m_Name; });
      if (!symbol.empty() && std::isupper(static_cast<unsigned char>(symbol[0])) != 0 && !isRule) {
        EXPECT_NE(nullptr, NoxAgent::FindPhraseTerminal(symbol)) << symbol;
      }
    }
  }
}

}  // namespace NoxAgentTest
