#include "agent/phrase/PhraseHints.h"

#include "agent/phrase/PhraseParts.h"
#include "agent/phrase/PhraseValues.h"

#include <algorithm>

namespace NoxAgent {

namespace {

// The place at which the words could not be read on.
struct Place {
  const PhraseWords& m_Words;
  const Grammar::Outcome& m_Outcome;

  // The word there; empty at the end.
  std::string Word() const {
    const std::size_t at = m_Outcome.m_Understood;
    return at < m_Words.Plain().size() ? m_Words.Plain()[at] : "";
  }

  bool Expects(const std::string& name) const {
    const auto& expected = m_Outcome.m_Expected;
    return std::find(expected.begin(), expected.end(), name) != expected.end();
  }
};

// The fields of a crontab without quotes.
std::string CronHint(const Place& place) {
  const std::string& first = place.m_Words.Plain().front();
  const bool isCron =
      !place.Word().empty() && (first == "cron" || first.starts_with('@') ||
                                first.find_first_not_of("0123456789*/,-") == std::string::npos);
  return isCron ? "a crontab's five fields are one word in quotes: cron '15 3 * * 1-5'" : "";
}

// A command without its mark.
std::string CommandHint(const Place& place) {
  return place.Word().find('/') == std::string::npos ? "" : "the command stands behind --";
}

// A number without a unit, or with one that is none.
std::string UnitHint(const Place& place) {
  const std::string word = place.Word();
  const bool isNumber =
      word.find_first_of(DecimalDigits) == 0 && word.find_first_of(":-") == std::string::npos;
  const bool isBehindCount = place.Expects("days");
  return isBehindCount || (isNumber && place.Expects("DURATION"))
             ? "a length of time is a whole number with its unit, s, min or h, as in 30 min"
             : "";
}

std::string DateHint(const Place& place) {
  return place.Expects("DATE") ? FaultOfDate(place.Word()) : "";
}

std::string ClockHint(const Place& place) {
  const std::vector<std::string> parts = Split(place.Word(), ',');
  const bool hasEndOfDay = std::any_of(parts.begin(), parts.end(), [](const std::string& part) {
    return part == "24:00" || part == "24:00:00";
  });
  return hasEndOfDay && (place.Expects("CLOCK") || place.Expects("CLOCKS"))
             ? "24:00 is 00:00 of the next day"
             : "";
}

}  // namespace

std::string PhraseHint(const PhraseWords& words, const Grammar::Outcome& outcome) {
  const Place place{words, outcome};
  for (const auto& hintAt : {CronHint, CommandHint, UnitHint, DateHint, ClockHint}) {
    if (std::string hint = hintAt(place); !hint.empty()) {
      return hint;
    }
  }
  return {};
}

}  // namespace NoxAgent
