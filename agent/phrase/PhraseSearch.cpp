#include "agent/phrase/PhraseSearch.h"

#include "agent/phrase/PhraseProposals.h"
#include "agent/phrase/PhraseTriggers.h"
#include "agent/phrase/TriggerRuns.h"

#include <algorithm>
#include <utility>

namespace NoxAgent {

namespace {

using Runs = std::vector<TriggerRun>;

struct TriggerLeft {
  TriggerRule m_Rule;
  Runs m_Runs;
};

class Search {
 public:
  Search(const LocalCalendar& calendar, long now) : m_Calendar(calendar), m_Now(now) {}

  PhraseFinding Run(const std::vector<TriggerRule>& triggers) {
    for (const TriggerRule& trigger : triggers) {
      Take(trigger);
    }
    // What is left of a period under way is a trigger for one day; the rule it belongs to, if any,
    // says both.
    std::stable_partition(m_Left.begin(), m_Left.end(), [](const TriggerLeft& left) {
      return left.m_Rule.m_Type != TriggerRule::Once;
    });
    while (!m_Left.empty()) {
      SayFirst();
    }
    return std::move(m_Finding);
  }

 private:
  void Take(const TriggerRule& trigger) {
    if (trigger.m_Type == TriggerRule::AsSoonAsPossible) {
      PhraseRule rule;
      rule.m_Days = PhraseRule::Days::Now;
      m_Finding.m_Phrase.push_back(rule);
    } else if (trigger.m_IntervalSeconds < 0 || trigger.m_DurationSeconds < 0) {
      m_Finding.m_Unsaid.push_back(trigger);
    } else if (Runs runs = TriggerRunsAfter(m_Now, trigger, m_Calendar); !runs.empty()) {
      m_Left.push_back({trigger, std::move(runs)});
    }
  }

  void SayFirst() {
    std::vector<TriggerRule> rules;
    for (const TriggerLeft& left : m_Left) {
      rules.push_back(left.m_Rule);
    }
    const TriggerRun first = m_Left.front().m_Runs.front();
    for (const PhraseRule& proposal : ProposePhrases(rules, first, m_Calendar)) {
      if (Says(proposal)) {
        m_Finding.m_Phrase.push_back(proposal);
        return;
      }
    }
    m_Finding.m_Unsaid.push_back(m_Left.front().m_Rule);
    m_Left.erase(m_Left.begin());
  }

  // Takes the triggers away that the rule says, if there are such as have all of its runs together.
  bool Says(const PhraseRule& rule) {
    const Runs wanted = RunsOf(rule);
    const auto isSaid = [&wanted](const TriggerLeft& left) {
      return std::binary_search(wanted.begin(), wanted.end(), left.m_Runs.front()) &&
             std::includes(wanted.begin(), wanted.end(), left.m_Runs.begin(), left.m_Runs.end());
    };
    if (wanted.empty() || !isSaid(m_Left.front())) {
      return false;
    }
    Runs found;
    for (const TriggerLeft& left : m_Left) {
      if (isSaid(left)) {
        found.insert(found.end(), left.m_Runs.begin(), left.m_Runs.end());
      }
    }
    std::sort(found.begin(), found.end());
    found.erase(std::unique(found.begin(), found.end()), found.end());
    if (found != wanted) {
      return false;
    }
    std::erase_if(m_Left, isSaid);
    return true;
  }

  Runs RunsOf(const PhraseRule& rule) const {
    Runs runs;
    try {
      for (const TriggerRule& trigger : MakeTriggers({rule}, m_Calendar, m_Now)) {
        const Runs more = TriggerRunsAfter(m_Now, trigger, m_Calendar);
        runs.insert(runs.end(), more.begin(), more.end());
      }
    } catch (const PhraseError&) {
      return {};
    }
    std::sort(runs.begin(), runs.end());
    runs.erase(std::unique(runs.begin(), runs.end()), runs.end());
    return runs;
  }

  const LocalCalendar& m_Calendar;
  const long m_Now;
  std::vector<TriggerLeft> m_Left;
  PhraseFinding m_Finding;
};

}  // namespace

PhraseFinding FindPhrase(const std::vector<TriggerRule>& triggers, const LocalCalendar& calendar,
                         long now) {
  return Search(calendar, now).Run(triggers);
}

}  // namespace NoxAgent
