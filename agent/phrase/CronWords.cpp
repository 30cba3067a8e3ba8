#include "agent/phrase/CronWords.h"

#include "agent/phrase/PhraseRule.h"

#include <variant>

namespace NoxAgent {

CronExpression ReadCron(const std::string& text) {
  const auto read = CronExpression::Parse(text);
  if (const auto* const refusal = std::get_if<CronRefusal>(&read)) {
    throw PhraseError(CronRefusalText(text, *refusal));
  }
  return std::get<CronExpression>(read);
}

std::string CronRefusalText(const std::string& text, const CronRefusal& refusal) {
  return "cron '" + text + "': " + refusal.m_Reason +
         (refusal.m_Advice.empty() ? "" : "; " + refusal.m_Advice);
}

}  // namespace NoxAgent
