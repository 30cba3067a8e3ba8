// What tests of crontabs share.
#pragma once

#include "agent/crontab/CronExpression.h"

#include <gtest/gtest.h>

#include <string>

namespace NoxAgentTest {

/// An expression that is known to be good.
inline NoxAgent::CronExpression Expression(const std::string& text) {
  auto parsed = NoxAgent::CronExpression::Parse(text);
  if (const auto* const refusal = std::get_if<NoxAgent::CronRefusal>(&parsed)) {
    ADD_FAILURE() << text << ": " << refusal->m_Reason;
    return std::get<NoxAgent::CronExpression>(NoxAgent::CronExpression::Parse("* * * * *"));
  }
  return std::get<NoxAgent::CronExpression>(parsed);
}

}  // namespace NoxAgentTest
