#include "agent/phrase/PhraseGrammar.h"

#include "agent/phrase/PhraseLists.h"
#include "agent/phrase/PhraseValues.h"

#include <algorithm>
#include <array>

namespace NoxAgent {

namespace {

constexpr std::size_t NameWidth = 11;
constexpr std::size_t LineWidth = 66;

constexpr std::array<Grammar::Rule, 7> Rules{{
    {"WHEN", "RULE [and WHEN]"},
    {"RULE", "now | ONCE | DAYS at CLOCKS [REPEAT] [SPAN] | EVERY [SPAN] | cron EXPRESSION [SPAN]"},
    {"ONCE",
     "once (DATE=moment [CLOCK=momentclock] | at CLOCK=nextclock | in DURATION=delay) [REPEAT]"},
    {"DAYS",
     "(daily | every day | [every] WEEKDAYS) [in MONTHS] | every COUNT days | every COUNT weeks on "
     "WEEKDAYS | "
     "monthly on (MONTHDAYS | last day=lastday | ORDINAL WEEKDAYS | week WEEK WEEKDAYS) [in "
     "MONTHS]"},
    {"REPEAT",
     "every DURATION=step (for DURATION | until CLOCK) [then stop] | "
     "for DURATION then stop"},
    {"EVERY",
     "(hourly | every DURATION=allday) [from CLOCK=first until CLOCK=lastclock] [on WEEKDAYS]"},
    {"SPAN", "[from DATE=begin [CLOCK=beginclock]] [until DATE=end [CLOCK=endclock]]"},
}};

const std::array<PhraseTerminal, 11>& Terminals() {
  static const std::array<PhraseTerminal, 11> All{{
      {"CLOCKS", "times of day: 02:30, or 08:00,20:00", IsClockList, {}},
      {"CLOCK", "a time of day: 02:30, 02:30:15 or 2:30pm", IsClock, {}},
      {"DATE", "a day: 2027-01-04; with its time also 2027-01-04T09:00", IsDate, {}},
      {"DURATION", "a length of time: 30 s, 10 min, 1 h 30 min", IsLength, {}},
      {"COUNT", "a number from 2 on", IsCount, {}},
      {"WEEKDAYS",
       "mon,wed or mon-fri or weekdays or weekends",
       IsWeekdayList,
       {"mon", "tue", "wed", "thu", "fri", "sat", "sun", "weekdays", "weekends"}},
      {"MONTHDAYS", "days of the month: 1,15 or 1-7", IsMonthDayList, {}},
      {"MONTHS",
       "jan,jul or jan-mar",
       IsMonthList,
       {"jan", "feb", "mar", "apr", "may", "jun", "jul", "aug", "sep", "oct", "nov", "dec"}},
      {"ORDINAL",
       "first, second, third, fourth or last",
       IsOrdinal,
       {"first", "second", "third", "fourth", "last"}},
      {"WEEK",
       "1 (days 1 to 6), 2 (7 to 13), 3 (14 to 20), 4 (21 to 27) or 5 (28 to 31)",
       IsWeek,
       {"1", "2", "3", "4", "5"}},
      {"EXPRESSION",
       "five fields of a crontab in quotes: '15 3 * * 1-5', or @daily",
       [](const std::string& word) { return !word.empty(); },
       {}},
  }};
  return All;
}

// Each alternative of a long rule on a line of its own, which begins with `next`.
std::string Folded(const std::string& rule, const std::string& next) {
  if (rule.size() <= LineWidth) {
    return rule;
  }
  std::string text;
  int depth = 0;
  for (const char character : rule) {
    depth += character == '(' ? 1 : character == ')' ? -1 : 0;
    if (character == '|' && depth == 0) {
      text.pop_back();
      text += next;
    }
    text += character;
  }
  return text;
}

}  // namespace

std::span<const Grammar::Rule> PhraseRules() {
  return Rules;
}

std::span<const PhraseTerminal> PhraseTerminals() {
  return Terminals();
}

const PhraseTerminal* FindPhraseTerminal(const std::string& name) {
  const auto found =
      std::find_if(Terminals().begin(), Terminals().end(),
                   [&name](const PhraseTerminal& each) { return name == each.m_Name; });
  return found == Terminals().end() ? nullptr : &*found;
}

const Grammar& ThePhraseGrammar() {
  static const Grammar TheGrammar({Rules.begin(), Rules.end()},
                                  [](const std::string& terminal, const std::string& word) {
                                    const PhraseTerminal* const kind = FindPhraseTerminal(terminal);
                                    return kind != nullptr && kind->m_Recognises(word);
                                  });
  return TheGrammar;
}

std::string PhraseGrammarText(const std::string& indent) {
  std::string text;
  const auto add = [&](const std::string& name, const std::string& meaning) {
    const std::string next = '\n' + indent + std::string(NameWidth, ' ');
    text +=
        indent + name + std::string(NameWidth - name.size(), ' ') + Folded(meaning, next) + '\n';
  };
  for (const Grammar::Rule& rule : Rules) {
    add(rule.m_Name, Grammar::Shown(rule.m_Text));
  }
  for (const PhraseTerminal& terminal : Terminals()) {
    add(terminal.m_Name, terminal.m_Meaning);
  }
  return text;
}

}  // namespace NoxAgent
