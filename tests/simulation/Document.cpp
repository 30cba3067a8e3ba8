#include "tests/simulation/Document.h"

#include "tests/support/LocalTimes.h"

#include <BaseSDK/ADateTime.h>

#include <algorithm>
#include <ctime>

namespace Simulation {

using PlainSchedule::Civil;
using PlainSchedule::Rule;

namespace {

using TestSupport::Day;
constexpr long AllMonths = 4095;

Civil LocalFields(long moment) {
  const std::time_t time = moment;
  std::tm fields{};
  (void)localtime_r(&time, &fields);
  return {fields.tm_year + 1900, fields.tm_mon + 1, fields.tm_mday,
          fields.tm_hour,        fields.tm_min,     fields.tm_sec};
}

Civil DrawTime(Random& random, long now, long daysBefore, long daysAfter) {
  Civil civil = LocalFields(now + random.Between(-daysBefore, daysAfter) * Day);
  civil.hour = static_cast<int>(random.Between(0, 23));
  civil.minute = static_cast<int>(random.Between(0, 59));
  civil.second = random.Percent(80) ? 0 : static_cast<int>(random.Between(0, 59));
  return civil;
}

void AddRepetition(Random& random, Rule& rule) {
  rule.interval = random.Between(1, 120);
  rule.intervalUnit = random.OneOf<const char*>({"", "HOUR", "minute"});
  rule.durationMinutes = random.Between(0, 600);
}

Rule DrawRule(Random& random, long now) {
  Rule rule;
  rule.type = random.OneOf<long>({0, 0, 1, 1, 1, 2, 2, 3, 4, -1, -2, 6, 7});
  rule.hasBegin = rule.type != -1;
  rule.begin = DrawTime(random, now, 30, 30);
  rule.hasEnd = random.Percent(20);
  rule.end = DrawTime(random, now, 5, 60);
  rule.daysInterval = random.Between(0, 4);
  rule.weeksInterval = random.Between(0, 3);
  rule.week = random.Between(0, 6);
  rule.daysOfWeek = random.Between(0, 127);
  rule.daysOfMonth = random.Between(0, 0x7fffffff);
  rule.monthsOfYear = random.Percent(70) ? AllMonths : random.Between(0, AllMonths);
  rule.killAtEnd = random.Percent(20);
  rule.disabledByDocument = random.Percent(4);
  if (random.Percent(20)) {
    AddRepetition(random, rule);
  }
  return rule;
}

std::string HistoryMarkup(const RunEntry& entry) {
  return "<TaskHistory>\n\t\t<RunTime>" + entry.m_Time + ' ' + entry.m_State +
         "</RunTime>\n\t</TaskHistory>";
}

/// Takes `part` off the front of `text`; false when it is not there.
bool Skip(std::string& text, const std::string& part) {
  if (text.compare(0, part.size(), part) != 0) {
    return false;
  }
  text.erase(0, part.size());
  return true;
}

}  // namespace

const std::vector<std::string>& HandlerIds() {
  static const std::vector<std::string> ids = {"{00000000-0000-0000-0000-0000000000A1}",
                                               "{00000000-0000-0000-0000-0000000000A2}",
                                               "{00000000-0000-0000-0000-0000000000A3}"};
  return ids;
}

long RunEntry::LastRun() const {
  const long time = BaseSDK::ADateTime(BaseSDK::AString::FromUtf8(m_Time)).GetTime();
  return IsFinished() && time != 0 ? time : -1;
}

std::optional<RunEntry> ParseEntry(const std::string& text) {
  constexpr std::size_t TimeLength = 19;
  if (text.size() < TimeLength + 1 || text[10] != ' ' || text[TimeLength] != ' ') {
    return std::nullopt;
  }
  return RunEntry{text.substr(0, TimeLength), text.substr(TimeLength + 1)};
}

Document::Document(Random& random, int number, long now) : m_Number(number) {
  m_Handler = random.OneOf(HandlerIds());
  const long count = random.OneOf<long>({1, 1, 1, 1, 2, 3});
  for (long i = 0; i < count; ++i) {
    m_Rules.push_back(DrawRule(random, now));
  }
  Compose(random);
  if (random.Percent(5)) {
    Break(random);
  }
  MakeTriggers();
}

Document Document::Canary(int number, long now, const std::string& handler) {
  Document document(number);
  Rule rule;
  rule.type = 1;
  rule.begin = LocalFields(now);
  rule.begin.hour = 12;
  rule.begin.minute = rule.begin.second = 0;
  document.m_Handler = handler;
  document.m_Rules = {rule};
  Random random(0);
  document.Compose(random);
  document.MakeTriggers();
  return document;
}

void Document::Compose(Random& random) {
  m_HandlerMarkup = "<HandlerCLSID>" + m_Handler + "</HandlerCLSID>";
  m_ScheduleMarkup = "<Schedule>\n\t\t<!-- " + std::to_string(m_Number) + " -->";
  for (const Rule& rule : m_Rules) {
    m_ScheduleMarkup += "\n\t\t" + rule.ToXml();
  }
  m_ScheduleMarkup += "\n\t</Schedule>";
  m_Text = random.Percent(10) ? "<?xml version=\"1.0\"?>\n<Task" : "<Task";
  if (random.Percent(40)) {
    m_Enabled = random.Percent(85);
    m_Text += m_Enabled ? " Enabled=\"7\"" : " Enabled=\"0\"";
  }
  m_Text += ">\n<Note>dropped by a rewrite</Note>" + m_HandlerMarkup + "\n" + m_ScheduleMarkup;
  if (random.Percent(3)) {
    m_Entry = RunEntry{"2004-02-29 10:20:30", random.OneOf<const char*>({"Ok", "Failed"})};
    m_Text += HistoryMarkup(*m_Entry);
  }
  m_Text += "</Task>\n";
}

void Document::Break(Random& random) {
  // Cut off, not XML at all, or an element that is never closed: nothing can be read from it.
  m_Text = random.OneOf<std::string>({m_Text.substr(0, m_Text.size() / 2),
                                      "no document " + std::to_string(m_Number),
                                      "<Task><Number" + std::to_string(m_Number) + "></Task>"});
  m_Rules.clear();
  m_Handler.clear();
  m_HandlerMarkup.clear();
  m_ScheduleMarkup.clear();
  m_Enabled = true;
  m_Entry.reset();
}

void Document::MakeTriggers() {
  for (const Rule& rule : m_Rules) {
    m_Triggers.emplace_back(rule);
  }
}

bool Document::IsSimple() const {
  return std::all_of(m_Rules.begin(), m_Rules.end(),
                     [](const Rule& rule) { return rule.durationMinutes == 0; });
}

std::optional<FileState> Document::Match(const std::string& fileText) const {
  if (fileText == m_Text) {
    return FileState{m_Enabled, m_Entry};
  }
  std::string rest = fileText;
  FileState state;
  state.m_Enabled = Skip(rest, "<Task Enabled=\"1\">");
  if (!state.m_Enabled && !Skip(rest, "<Task Enabled=\"0\">")) {
    return std::nullopt;
  }
  if (!Skip(rest, "\n\t" + m_HandlerMarkup + "\n\t" + m_ScheduleMarkup + "\n\t")) {
    return std::nullopt;
  }
  if (rest == "\n</Task>") {
    return state;
  }
  const std::string end = "</RunTime>\n\t</TaskHistory>\n</Task>";
  if (!Skip(rest, "<TaskHistory>\n\t\t<RunTime>") || rest.size() < end.size() ||
      rest.substr(rest.size() - end.size()) != end) {
    return std::nullopt;
  }
  state.m_Entry = ParseEntry(rest.substr(0, rest.size() - end.size()));
  return state.m_Entry ? std::optional(state) : std::nullopt;
}

bool Document::IsCutShort(const std::string& fileText) const {
  return m_Text.compare(0, fileText.size(), fileText) == 0;
}

PlainSchedule::TaskAnswer Document::Evaluate(long lastRun, long now) const {
  return PlainSchedule::EvaluateTask(m_Triggers, lastRun, now, Day);
}

}  // namespace Simulation
