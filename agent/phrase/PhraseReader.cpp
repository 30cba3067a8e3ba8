#include "agent/phrase/PhraseReader.h"

#include "agent/phrase/CronWords.h"
#include "agent/phrase/PhraseGrammar.h"
#include "agent/phrase/PhraseHints.h"
#include "agent/phrase/PhraseLists.h"
#include "agent/phrase/PhraseValues.h"
#include "agent/phrase/PhraseWords.h"

#include <map>
#include <optional>

namespace NoxAgent {

namespace {

constexpr std::size_t MostWords = 500;  // the grammar goes deeper with each
constexpr long LastSecondOfDay = LocalCalendar::SecondsPerDay - 1;

// "daily, CLOCK (a time of day: 02:30) or DATE (...)"
std::string Choices(const Grammar::Outcome& outcome) {
  std::string text;
  for (std::size_t i = 0; i < outcome.m_Expected.size(); ++i) {
    const std::string& name = outcome.m_Expected[i];
    const PhraseTerminal* const terminal = FindPhraseTerminal(name);
    const bool isLast = i + 1 == outcome.m_Expected.size();
    text += i == 0 ? "" : isLast ? " or " : ", ";
    text += terminal == nullptr ? name : name + " (" + terminal->m_Meaning + ")";
  }
  return text;
}

[[noreturn]] void Refuse(const PhraseWords& words, const Grammar::Outcome& outcome) {
  const std::size_t at = outcome.m_Understood;
  if (words.Plain().empty()) {
    throw PhraseError("it is not said when; there could stand " + Choices(outcome));
  }
  const std::string hint = PhraseHint(words, outcome);
  const std::string advice = hint.empty() ? "" : "; " + hint;
  if (at == words.Plain().size()) {
    throw PhraseError("the schedule \"" + words.Text() + "\" ends too early; there could follow " +
                      Choices(outcome) + advice);
  }
  throw PhraseError("the schedule \"" + words.Marked(at) + "\" cannot be read at \"" +
                    words.Written(at) + "\"; there could stand " + Choices(outcome) +
                    (outcome.m_CouldEnd ? ", or it could end there" : "") + advice);
}

// Makes rules from what the grammar found, word by word.
class RuleBuilder {
 public:
  RuleBuilder(const PhraseWords& words, const LocalCalendar& calendar, long now)
      : m_Words(words), m_Calendar(calendar), m_Now(now) {}

  Phrase Build(const std::vector<Grammar::Capture>& captures) {
    for (const Grammar::Capture& capture : captures) {
      m_At = capture.m_Word;
      Take(capture.m_Label, m_Words.Plain()[m_At]);
    }
    EndRule();
    return m_Phrase;
  }

 private:
  using Days = PhraseRule::Days;

  void Take(const std::string& label, const std::string& word) {
    using TakeWord = void (RuleBuilder::*)(const std::string&);
    static const std::map<std::string, TakeWord> Actions{
        {"and", &RuleBuilder::TakeAnd},
        {"now", &RuleBuilder::TakeKind},
        {"once", &RuleBuilder::TakeKind},
        {"daily", &RuleBuilder::TakeKind},
        {"day", &RuleBuilder::TakeKind},
        {"days", &RuleBuilder::TakeKind},
        {"weeks", &RuleBuilder::TakeKind},
        {"monthly", &RuleBuilder::TakeKind},
        {"cron", &RuleBuilder::TakeKind},
        {"COUNT", &RuleBuilder::TakeCount},
        {"WEEKDAYS", &RuleBuilder::TakeWeekdays},
        {"MONTHDAYS", &RuleBuilder::TakeMonthDays},
        {"MONTHS", &RuleBuilder::TakeMonths},
        {"ORDINAL", &RuleBuilder::TakeOrdinal},
        {"WEEK", &RuleBuilder::TakeWeek},
        {"lastday", &RuleBuilder::TakeLastDay},
        {"EXPRESSION", &RuleBuilder::TakeExpression},
        {"CLOCKS", &RuleBuilder::TakeClocks},
        {"allday", &RuleBuilder::TakeAllDay},
        {"hourly", &RuleBuilder::TakeHourly},
        {"first", &RuleBuilder::TakeClocks},
        {"lastclock", &RuleBuilder::TakeLastClock},
        {"step", &RuleBuilder::TakeStep},
        {"DURATION", &RuleBuilder::TakeDuration},
        {"CLOCK", &RuleBuilder::TakeLastClock},
        {"stop", &RuleBuilder::TakeStop},
        {"moment", &RuleBuilder::TakeBegin},
        {"momentclock", &RuleBuilder::TakeBeginClock},
        {"nextclock", &RuleBuilder::TakeNextClock},
        {"delay", &RuleBuilder::TakeDelay},
        {"begin", &RuleBuilder::TakeBegin},
        {"beginclock", &RuleBuilder::TakeBeginClock},
        {"end", &RuleBuilder::TakeEnd},
        {"endclock", &RuleBuilder::TakeEndClock},
    };
    const auto action = Actions.find(label);
    if (action != Actions.end()) {
      (this->*action->second)(word);
    }
  }

  [[noreturn]] void Fail(const std::string& why) const {
    throw PhraseError("the schedule \"" + m_Words.Marked(m_At) + "\" cannot be read: " + why);
  }

  void TakeAnd(const std::string& /*word*/) {
    EndRule();
    m_Rule = PhraseRule();
    m_Begin.reset();
    m_End.reset();
    m_LastClock.reset();
  }

  void TakeKind(const std::string& word) {
    static const std::map<std::string, Days> Kinds{
        {"now", Days::Now},           {"once", Days::Once},      {"daily", Days::EveryDays},
        {"day", Days::EveryDays},     {"days", Days::EveryDays}, {"weeks", Days::EveryWeeks},
        {"monthly", Days::MonthDays}, {"cron", Days::Cron}};
    m_Rule.m_Days = Kinds.at(word);
  }

  void TakeCount(const std::string& word) { m_Rule.m_Count = *ReadCount(word); }

  void TakeWeekdays(const std::string& word) {
    m_Rule.m_Weekdays = *ReadWeekdayList(word);
    if (m_Rule.m_Days == Days::EveryDays) {
      m_Rule.m_Days = Days::EveryWeeks;
    }
  }

  void TakeMonthDays(const std::string& word) { m_Rule.m_MonthDays = *ReadMonthDayList(word); }
  void TakeMonths(const std::string& word) { m_Rule.m_Months = *ReadMonthList(word); }

  void TakeOrdinal(const std::string& word) {
    m_Rule.m_Days = Days::Ordinal;
    m_Rule.m_Week = *ReadOrdinal(word);
  }

  void TakeLastDay(const std::string& /*word*/) { m_Rule.m_Days = Days::LastDay; }

  void TakeWeek(const std::string& word) {
    m_Rule.m_Days = Days::MonthWeek;
    m_Rule.m_Week = *ReadWeek(word);
  }

  void TakeExpression(const std::string& /*word*/) {
    m_Rule.m_Cron = m_Words.Written(m_At);
    (void)ReadCron(m_Rule.m_Cron);
  }

  void TakeClocks(const std::string& word) {
    m_Rule.m_Clocks = *ReadClockList(word);
    m_Rule.m_IsAllDay = false;
  }

  void TakeHourly(const std::string& /*word*/) { TakeAllDay("1h"); }

  void TakeAllDay(const std::string& word) {
    m_Rule.m_Interval = *ReadLength(word);
    m_Rule.m_IsAllDay = true;
  }

  void TakeStep(const std::string& word) { m_Rule.m_Interval = *ReadLength(word); }
  void TakeDuration(const std::string& word) { m_Rule.m_Duration = *ReadLength(word); }
  void TakeLastClock(const std::string& word) { m_LastClock = *ReadClock(word); }
  void TakeStop(const std::string& /*word*/) { m_Rule.m_Stops = true; }
  void TakeBegin(const std::string& word) { m_Begin = ReadPhraseDate(word); }
  void TakeEnd(const std::string& word) { m_End = ReadPhraseDate(word); }
  void TakeBeginClock(const std::string& word) { TakeClockOf(m_Begin, word); }
  void TakeEndClock(const std::string& word) { TakeClockOf(m_End, word); }

  void TakeClockOf(std::optional<PhraseDate>& date, const std::string& word) const {
    if (date->m_Clock) {
      Fail("the day before it has a time of day already");
    }
    date->m_Clock = *ReadClock(word);
  }

  void TakeNextClock(const std::string& word) {
    const long clock = *ReadClock(word);
    long day = m_Calendar.DayOf(m_Now);
    while (m_Calendar.MomentOf(day, clock) <= m_Now) {
      ++day;
    }
    m_Begin = PhraseDate{day, clock};
  }

  void TakeDelay(const std::string& word) {
    const long moment = m_Now + *ReadLength(word);
    if (m_Calendar.IsShownAgain(moment)) {
      Fail("the clocks show " + ClockWords(m_Calendar.ClockAt(moment)) +
           " twice on that day, and a document means the first time; say another time");
    }
    m_Begin = PhraseDate{m_Calendar.DayOf(moment), m_Calendar.ClockAt(moment)};
  }

  long MomentOf(const PhraseDate& date, long otherwise) const {
    return m_Calendar.MomentOf(date.m_Day, date.m_Clock.value_or(otherwise));
  }

  void EndRule() {
    if (m_Begin) {
      m_Rule.m_From = MomentOf(*m_Begin, 0);
    }
    if (m_End) {
      m_Rule.m_Until = MomentOf(*m_End, LastSecondOfDay);
    }
    if (m_Rule.m_Days == Days::Once) {
      EndOnce();
    }
    if (m_LastClock) {
      EndRepetition();
    }
    m_Phrase.push_back(m_Rule);
  }

  void EndOnce() {
    if (!m_Begin->m_Clock) {
      Fail("it lacks a time of day, as in once " + DateWords(m_Begin->m_Day) + " 09:00");
    }
    const long clock = *m_Begin->m_Clock;
    if (m_Calendar.ClockAt(m_Rule.m_From) != clock) {
      Fail("the clocks leave out " + ClockWords(clock) + " on " + DateWords(m_Begin->m_Day) +
           "; the nearest time of day is " + ClockWords(m_Calendar.ClockAt(m_Rule.m_From)));
    }
    m_Rule.m_Clocks = {clock};
  }

  void EndRepetition() {
    if (m_Rule.m_Clocks.size() > 1) {
      Fail("several times of day repeat for a length of time, as in for 2 h, not until a time");
    }
    const long first = m_Rule.m_Clocks.front();
    m_Rule.m_Duration =
        *m_LastClock - first + (*m_LastClock > first ? 0 : LocalCalendar::SecondsPerDay);
  }

  const PhraseWords& m_Words;
  const LocalCalendar& m_Calendar;
  const long m_Now;
  std::size_t m_At = 0;
  PhraseRule m_Rule;
  std::optional<PhraseDate> m_Begin, m_End;
  std::optional<long> m_LastClock;
  Phrase m_Phrase;
};

}  // namespace

Phrase ReadPhrase(const std::vector<std::string>& words, const LocalCalendar& calendar, long now) {
  const PhraseWords phrase(words);
  if (phrase.Plain().size() > MostWords) {
    throw PhraseError("the schedule has more than " + std::to_string(MostWords) +
                      " words; say it as several tasks");
  }
  const Grammar::Outcome outcome = ThePhraseGrammar().Match(phrase.Plain());
  if (!outcome.m_IsWhole) {
    Refuse(phrase, outcome);
  }
  return RuleBuilder(phrase, calendar, now).Build(outcome.m_Captures);
}

long ReadPhraseMoment(const std::string& option, const std::string& text,
                      const LocalCalendar& calendar, bool isEnd) {
  const std::vector<std::string> words = PhraseWords({text}).Plain();
  auto date = words.empty() || words.size() > 2 ? std::nullopt : ReadPhraseDate(words.front());
  const auto clock = words.size() == 2 ? ReadClock(words.back()) : std::nullopt;
  if (!date || (words.size() == 2 && (!clock || date->m_Clock))) {
    const std::string fault = words.empty() ? "" : FaultOfDate(words.front());
    throw PhraseError(option + " \"" + text + "\" cannot be read" +
                      (fault.empty() ? "" : ": " + fault) +
                      "; write it like 2030-12-31 or \"2030-12-31 08:00\"");
  }
  date->m_Clock = words.size() == 2 ? clock : date->m_Clock;
  return calendar.MomentOf(date->m_Day, date->m_Clock.value_or(isEnd ? LastSecondOfDay : 0));
}

std::vector<std::string> ExpectedBehind(const std::vector<std::string>& words) {
  const PhraseWords phrase(words);
  // A word that nothing recognises: the grammar tells what could stand in its place.
  std::vector<std::string> plain = phrase.Plain();
  if (plain.size() >= MostWords) {
    return {};
  }
  plain.emplace_back();
  const Grammar::Outcome outcome = ThePhraseGrammar().Match(plain);
  return outcome.m_Understood + 1 == plain.size() ? outcome.m_Expected : std::vector<std::string>();
}

}  // namespace NoxAgent
