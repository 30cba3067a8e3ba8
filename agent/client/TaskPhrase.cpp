#include "agent/client/TaskPhrase.h"

#include "agent/client/ClockNotes.h"
#include "agent/client/RuleWords.h"
#include "agent/client/TaskSummary.h"
#include "agent/document/TaskGlance.h"
#include "agent/document/TaskTriggers.h"
#include "agent/phrase/PhraseSearch.h"
#include "agent/phrase/PhraseText.h"
#include "agent/schedule/SchedulerTrigger.h"

#include <BaseSDK/AString.h>

#include <algorithm>

namespace NoxAgent {

namespace {

using OptionalRules = std::vector<std::optional<TriggerRule>>;

// Whether the scheduler takes the task for one that never ran.
bool IsNew(const std::string& taskXml, const std::optional<LiveTask>& live) {
  if (live && live->m_Memory) {
    return live->m_Memory->m_LastRun == NoTime;
  }
  const auto run = ReadRunEntry(taskXml);
  return !run || run->m_State != "Ok";
}

bool IsEnabledNow(const std::string& taskXml, const std::optional<LiveTask>& live) {
  return live && live->m_Memory ? live->m_Memory->m_Enabled
                                : GlanceAt(BaseSDK::AString::FromUtf8(taskXml)).m_Enabled;
}

// The run that a new task has at the first begin of all, whatever the days of the rule.
std::optional<TriggerRule> FirstRun(const std::vector<TriggerRule>& rules, long now) {
  const TriggerRule* first = nullptr;
  for (const TriggerRule& rule : rules) {
    if (rule.m_Type != TriggerRule::AsSoonAsPossible &&
        (first == nullptr || rule.m_Begin < first->m_Begin)) {
      first = &rule;
    }
  }
  if (first == nullptr) {
    return std::nullopt;
  }
  TriggerRule run;
  run.m_Type = first->m_Begin > now ? TriggerRule::Once : TriggerRule::AsSoonAsPossible;
  run.m_Begin = first->m_Begin;
  return run;
}

bool HasNow(const std::vector<TriggerRule>& rules) {
  return std::any_of(rules.begin(), rules.end(), [](const TriggerRule& rule) {
    return rule.m_Type == TriggerRule::AsSoonAsPossible;
  });
}

// What the scheduler does with the task, said as triggers.
std::vector<TriggerRule> Effective(const OptionalRules& read, bool isNew,
                                   const LocalCalendar& calendar, long now) {
  std::vector<TriggerRule> rules;
  for (const auto& rule : read) {
    if (rule && (isNew || rule->m_Type != TriggerRule::AsSoonAsPossible)) {
      rules.push_back(*rule);
    }
  }
  const auto first = isNew && !HasNow(rules) ? FirstRun(rules, now) : std::nullopt;
  if (first && first->m_Type == TriggerRule::AsSoonAsPossible) {
    rules.insert(rules.begin(), *first);
  } else if (first) {
    const bool isStart = std::any_of(rules.begin(), rules.end(), [&](const TriggerRule& rule) {
      const SchedulerTrigger trigger(rule, calendar);
      return trigger.StartOn(trigger.BeginDay()) == first->m_Begin;
    });
    if (!isStart) {
      rules.push_back(*first);
    }
  }
  return rules;
}

void NoteSilent(const std::string& taskXml, const OptionalRules& read,
                const std::vector<TriggerRule>& unsaid, std::vector<std::string>& notes) {
  const std::vector<RuleWords> words = ReadTriggers(taskXml);
  for (std::size_t i = 0; i < read.size(); ++i) {
    const std::string name = "Trigger " + std::to_string(i + 1);
    if (!read[i]) {
      notes.push_back(name + ": " + words[i].Rule() + ".");
    } else if (std::find(unsaid.begin(), unsaid.end(), *read[i]) != unsaid.end()) {
      notes.push_back(name + " has no words in this language: " + words[i].Rule() + ". " +
                      words[i].Span());
    }
  }
}

}  // namespace

TaskPhrase SayTask(const std::string& taskXml, const std::optional<LiveTask>& live,
                   const LocalCalendar& calendar, long now) {
  TaskPhrase said;
  const OptionalRules read = ReadTriggerRules(taskXml);
  const bool isNew = IsNew(taskXml, live);
  const auto rules = Effective(read, isNew, calendar, now);
  const PhraseFinding finding = FindPhrase(rules, calendar, now);
  said.m_Words = PhraseText(finding.m_Phrase, calendar);
  NoteSilent(taskXml, read, finding.m_Unsaid, said.m_Notes);
  if (finding.m_Phrase.empty() && finding.m_Unsaid.empty()) {
    said.m_Notes.push_back("No run is to come: " + WhyNever(ReadTriggers(taskXml), now) + ".");
  }
  if (!IsEnabledNow(taskXml, live)) {
    said.m_Notes.push_back(live.value_or(LiveTask()).DisabledText());
  }
  for (std::string& note : ClockChangeNotes(rules, calendar, now)) {
    said.m_Notes.push_back(std::move(note));
  }
  return said;
}

}  // namespace NoxAgent
