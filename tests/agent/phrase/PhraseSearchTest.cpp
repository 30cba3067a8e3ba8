#include "agent/phrase/PhraseSearch.h"

#include "agent/document/TaskTriggers.h"
#include "agent/document/TaskWriter.h"
#include "agent/phrase/PhraseReader.h"
#include "agent/phrase/PhraseText.h"
#include "agent/phrase/PhraseTriggers.h"
#include "tests/agent/phrase/RandomPhrase.h"
#include "tests/agent/simulation/TaskText.h"
#include "tests/support/EnvironmentNumber.h"
#include "tests/support/LocalTimes.h"

#include <VirtualTime/Zone.h>

#include <gtest/gtest.h>

#include <algorithm>

namespace NoxAgentTest {

using NoxAgent::FindPhrase;
using NoxAgent::LocalCalendar;
using NoxAgent::MakeTriggers;
using NoxAgent::Phrase;
using NoxAgent::PhraseError;
using NoxAgent::PhraseFinding;
using NoxAgent::PhraseText;
using NoxAgent::ReadPhrase;
using NoxAgent::TriggerRule;
using Simulation::Random;
using TestSupport::Day;
using TestSupport::Hour;

namespace {

constexpr const char* Zones[] = {TestSupport::Utc, TestSupport::NewYork, TestSupport::Berlin,
                                 TestSupport::LordHowe};

// What the words of a schedule are later.
std::string SaidAgain(const std::string& words, const std::string& made, const std::string& asked) {
  const long then = Local(made), now = Local(asked);
  const LocalCalendar calendar(then - 366 * Day);
  const auto triggers = MakeTriggers(ReadPhrase({words}, calendar, then), calendar, then);
  const PhraseFinding finding = FindPhrase(triggers, calendar, now);
  return PhraseText(finding.m_Phrase, calendar) + (finding.m_Unsaid.empty() ? "" : " ...");
}

std::string SaidAtOnce(const std::string& words) {
  return SaidAgain(words, "2026-11-23 12:03:00", "2026-11-23 12:03:00");
}

/// The first run that only one of the two has.
std::string FirstDifference(const std::vector<long>& one, const std::vector<long>& other) {
  const auto [left, right] = std::mismatch(one.begin(), one.end(), other.begin(), other.end());
  return (left == one.end() ? "none" : Show(*left)) + " against " +
         (right == other.end() ? "none" : Show(*right));
}

/// A task that is added at `made`, and what it runs after `asked`, for ten years.
std::vector<long> RunsAfter(long asked, const std::vector<TriggerRule>& triggers, long made,
                            const LocalCalendar& calendar) {
  auto runs = RunsOf(triggers, calendar, made, std::min(asked + 3652 * Day, LocalCalendar::End()));
  std::erase_if(runs, [asked](long run) { return run <= asked; });
  return runs;
}

/// What the scheduler reads in the document that has these triggers.
std::vector<TriggerRule> AsDocument(const std::vector<TriggerRule>& triggers) {
  const std::string document =
      NoxAgent::WriteTaskDocument({triggers, "{7C0A1D52-3B4E-4F6A-9A51-2D8E6C9B4F10}", "a & b"});
  std::vector<TriggerRule> read;
  for (const auto& rule : NoxAgent::ReadTriggerRules(document)) {
    read.push_back(rule.value());
  }
  EXPECT_TRUE(read == triggers) << document;
  return read;
}

// From words to a document, later to words, and to a document again.
// False when no document can say the words.
bool GoRound(std::uint64_t seed, const char* zoneRule) {
  const VirtualTime::Zone zone(zoneRule);
  Random random(seed);
  const long made = Local("2026-01-01 00:00:00") + random.Between(0, 365 * Day);
  const LocalCalendar calendar(made - 366 * Day);
  Phrase phrase;
  for (long rules = random.OneOf({1, 1, 1, 2}); rules > 0; --rules) {
    phrase.push_back(RandomPhraseRule(random, calendar, made));
  }
  const std::string words = PhraseText(phrase, calendar);
  SCOPED_TRACE("seed " + std::to_string(seed) + " in " + zoneRule + " at " + Show(made) + ": " +
               words);
  EXPECT_TRUE(ReadPhrase({words}, calendar, made) == phrase)
      << PhraseText(ReadPhrase({words}, calendar, made), calendar);
  std::vector<TriggerRule> triggers;
  try {
    triggers = AsDocument(MakeTriggers(phrase, calendar, made));
  } catch (const PhraseError&) {
    return false;
  }
  const long asked =
      made + random.OneOf({0L, random.Between(0, Day), random.Between(0, 400 * Day)});
  const PhraseFinding finding = FindPhrase(triggers, calendar, asked);
  EXPECT_TRUE(finding.m_Unsaid.empty()) << PhraseText(finding.m_Phrase, calendar);
  const std::string again = PhraseText(finding.m_Phrase, calendar);
  const Phrase read = finding.m_Phrase.empty() ? Phrase() : ReadPhrase({again}, calendar, asked);
  EXPECT_TRUE(read == finding.m_Phrase) << again;
  const auto expected = RunsAfter(asked, triggers, made, calendar);
  const auto runs =
      RunsAfter(asked, AsDocument(MakeTriggers(read, calendar, asked)), asked, calendar);
  EXPECT_TRUE(expected == runs) << "asked at " << Show(asked) << ": " << again << "\n"
                                << FirstDifference(expected, runs);
  return true;
}

}  // namespace

TEST(PhraseSearch, WordsThatAreMadeIntoTriggersAndBackHaveTheSameRunsForTenYears) {
  const auto first =
      static_cast<std::uint64_t>(TestSupport::EnvironmentNumber("NOX_PHRASE_SEED", 1));
  const auto count =
      static_cast<std::uint64_t>(TestSupport::EnvironmentNumber("NOX_PHRASE_RUNS", 60));
  std::uint64_t whole = 0;
  for (std::uint64_t seed = first; seed < first + count; ++seed) {
    whole += GoRound(seed, Zones[seed % std::size(Zones)]) ? 1U : 0U;
    if (HasFailure()) {
      return;
    }
  }
  EXPECT_GE(whole, count / 2) << "most words can be said";
}

TEST(PhraseSearch, SaysTheSameWordsAtOnce) {
  const VirtualTime::Zone zone(TestSupport::NewYork);
  for (const char* const words : {"daily at 02:30",
                                  "every 10 min from 08:00 until 18:00 on weekdays",
                                  "mon at 07:00 and monthly on 1,15 at 06:00",
                                  "once 2027-01-04 09:00",
                                  "every 10 min",
                                  "every 6 h",
                                  "every 2 h on weekends",
                                  "monthly on first mon at 09:00",
                                  "monthly on last fri in jan-mar at 23:30",
                                  "monthly on week 1 mon at 09:00",
                                  "monthly on last day at 18:00",
                                  "monthly on last day in feb at 08:00,20:00",
                                  "monthly on last day in jan,apr at 18:00 until 2030-06-30",
                                  "monthly on 31 at 08:00",
                                  "mon in aug at 08:00 until 2027-12-31",
                                  "mon,tue in jan,aug at 08:00 until 2028-08-20",
                                  "mon,wed at 08:00,20:00",
                                  "mon in jan,jul at 05:00",
                                  "daily in dec at 05:00",
                                  "daily at 22:00 for 6 h then stop",
                                  "every 2 days at 08:00 from 2026-11-25",
                                  "every 2 weeks on mon,sun at 08:00 from 2026-12-06",
                                  "daily at 08:00 from 2027-01-01 until 2027-06-30"}) {
    EXPECT_EQ(words, SaidAtOnce(words));
  }
}

}  // namespace NoxAgentTest
