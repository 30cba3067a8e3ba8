#include "agent/client/Explanation.h"

#include "agent/client/LocalTime.h"

#include <BaseSDK/ADateTime.h>

#include <algorithm>

namespace NoxAgent {

namespace {

// A run this long after its time is late.
constexpr long LateSeconds = 59;

std::string Distance(long seconds) {
  return DurationText(std::chrono::seconds(seconds));
}

std::string DayName(long moment) {
  return BaseSDK::ADateTime(moment).ToString("%Y-%m-%d, a %A,").ToUtf8();
}

std::string Listed(const std::vector<std::string>& reasons) {
  std::string text;
  for (const std::string& reason : reasons) {
    text += (text.empty() ? "" : "; ") + reason;
  }
  return text;
}

bool IsFinished(const RunEntry& run) {
  return run.m_State.empty() || run.m_State == "Ok";
}

const char* NameOf(Explanation::Gate gate) {
  return gate == Explanation::Gate::Open     ? "open"
         : gate == Explanation::Gate::Closed ? "closed"
                                             : "assumed";
}

}  // namespace

Explanation::Explanation(const SimulationRequest::Document& task, const TaskFacts& facts, Gate gate,
                         const std::optional<LiveTask>& live)
    : m_Id(task.m_Id),
      m_Facts(facts),
      m_Gate(gate),
      m_Live(live),
      m_LastRun(ReadRunEntry(task.m_Xml)),
      m_Triggers(ReadTriggers(task.m_Xml)) {}

void Explanation::Print(std::ostream& out) const {
  out << "Task " << m_Id << " at " << LocalTimeText(m_Facts.m_At) << '\n';
  for (const std::string& line : Lines()) {
    out << line << '\n';
  }
  out << Verdict() << '\n';
}

Json Explanation::ToJson() const {
  Json triggers = Json::List{};
  for (std::size_t i = 0; i < m_Triggers.size(); ++i) {
    const RuleWords& words = m_Triggers[i];
    Json trigger = {{"rule", words.Rule()}, {"words", TriggerLines(i)}};
    if (words.IsDated()) {
      trigger["againstDay"] = words.ReasonsAgainst(m_Facts.m_At);
    }
    if (i < m_Facts.m_Triggers.size()) {
      trigger["due"] = m_Facts.m_Triggers[i].m_Due;
      trigger["nextRun"] = m_Facts.m_Triggers[i].m_Next;
    }
    triggers.Append(trigger);
  }
  return {{"task", m_Id},
          {"seconds", m_Facts.m_At},
          {"time", LocalTimeText(m_Facts.m_At)},
          {"gate", NameOf(m_Gate)},
          {"enabled", m_Facts.m_Enabled},
          {"returns", ReturnJson(m_Live)},
          {"lastRun", m_LastRun ? Json(m_LastRun->m_Start) : Json()},
          {"state", m_LastRun ? Json(TrueState(*m_LastRun, LatestRun())) : Json()},
          {"triggers", triggers},
          {"due", m_Facts.m_Run.has_value() || m_Facts.m_NoHandler},
          {"run", m_Facts.m_Run ? NoxAgent::ToJson(*m_Facts.m_Run) : Json()},
          {"deleted", m_Facts.m_Deleted},
          {"goneSince", m_Facts.m_GoneSince},
          {"dueByReading", m_Facts.m_DueByReading},
          {"loaded", m_Live ? Json(m_Live->m_Memory.has_value()) : Json()},
          {"latestRun", NoxAgent::ToJson(LatestRun())},
          {"nextRun", NextRun()},
          {"verdict", Verdict()}};
}

std::vector<std::string> Explanation::Lines() const {
  std::vector<std::string> lines = {GateLine()};
  if (m_Live && !m_Live->m_Memory) {
    lines.push_back("The scheduler has not read the task's file yet; it does " +
                    m_Live->ReadingText() + ", and this is what it makes of it then.");
  }
  if (!m_Facts.m_GoneSince) {
    lines.push_back(EnabledLine());
  }
  for (const std::string& line : LastRunLines()) {
    lines.push_back(line);
  }
  if (m_Triggers.empty()) {
    lines.emplace_back("It has no trigger.");
  }
  for (std::size_t i = 0; i < m_Triggers.size(); ++i) {
    for (const std::string& line : TriggerLines(i)) {
      lines.push_back(line);
    }
  }
  return lines;
}

std::optional<HandlerRun> Explanation::LatestRun() const {
  return m_Live ? m_Live->m_Run : std::nullopt;
}

std::string Explanation::GateLine() const {
  switch (m_Gate) {
    case Gate::Open:
      return "The gate is open: the agent lets tasks run.";
    case Gate::Closed:
      return "The gate is closed: the agent lets no task run, because it starts, refreshes its "
             "policy, or changes its plug-ins.";
    default:
      return "The gate is assumed to be open: only a running agent can tell.";
  }
}

// " until ..." when the task comes back by itself.
std::string Explanation::UntilReturn() const {
  const auto moment = m_Live ? m_Live->Return() : std::nullopt;
  return moment ? " until " + LocalTimeText(*moment) : std::string();
}

std::string Explanation::EnabledLine() const {
  const std::string until = UntilReturn();
  if (!m_Facts.m_Enabled) {
    return "The task is disabled" + until + ".";
  }
  return until.empty()
             ? "The task is enabled."
             : "The task is disabled" + until + "; at the moment asked about it is enabled.";
}

// Whether the facts come from what the scheduler has in memory. For a moment that has passed they
// do not.
bool Explanation::IsFromMemory() const {
  return m_Live && m_Live->m_Memory && m_Live->m_AskedAt <= m_Facts.m_At;
}

std::vector<std::string> Explanation::LastRunLines() const {
  std::vector<std::string> lines = {LastRunLine()};
  if (!m_Live) {
    return lines;
  }
  if (m_Live->m_Run) {
    for (const std::string& sentence : m_Live->m_Run->Sentences()) {
      lines.push_back(sentence);
    }
  }
  if (IsFromMemory() && m_Facts.m_LastRun > m_Live->m_AskedAt) {
    lines.push_back("Until the moment asked about it runs as planned, the last time at " +
                    LocalTimeText(m_Facts.m_LastRun) + ".");
  }
  return lines;
}

std::string Explanation::LastRunLine() const {
  if (m_Live && m_Live->m_Memory && IsUnrecorded(m_Live->m_Memory->m_LastRun, m_LastRun)) {
    return "Its last run began at " + LocalTimeText(m_Live->m_Memory->m_LastRun) +
           ", but that could not be written into its file, and its state is unknown; from the next "
           "reading of the task files on, " +
           m_Live->ReadingText() + ", the scheduler knows only what the file says.";
  }
  if (!m_LastRun) {
    return "It has never run.";
  }
  const std::string run = "Its last run began at " + m_LastRun->m_Start;
  if (!IsFinished(*m_LastRun)) {
    return UnfinishedLine(run);
  }
  if (m_LastRun->m_Seconds == -1) {
    return run + ", which cannot be read: it counts as never run.";
  }
  const std::string finished = run + " and is finished.";
  if (m_LastRun->m_Seconds < m_Facts.m_At) {
    return finished;
  }
  if (RanAtThisMoment()) {
    return finished + " That is this moment: the task did run.";
  }
  return finished +
         " That is after the moment asked about, and earlier runs are not kept: what follows is "
         "what the scheduler would make of the moment, knowing of that run.";
}

std::string Explanation::UnfinishedLine(const std::string& run) const {
  const std::string state = run + "; its state is \"" + m_LastRun->m_State + "\", not \"Ok\": ";
  if (!IsFromMemory()) {
    return state +
           "unless that changes, the task counts as never run from the next hourly reading of the "
           "task files on, and is judged so here.";
  }
  if (m_Live->m_Memory->m_LastRun == -1) {
    return state + "the task counts as never run.";
  }
  const std::string later =
      "unless that changes, the task counts as never run from the next "
      "reading of the task files on, " +
      m_Live->ReadingText();
  return state + later +
         (m_Live->IsRunning() ? ". It is taken to end with \"Ok\" before." : ", and not before.");
}

bool Explanation::RanAtThisMoment() const {
  return m_LastRun && IsFinished(*m_LastRun) && m_LastRun->m_Seconds >= m_Facts.m_At &&
         m_LastRun->m_Seconds - m_Facts.m_At <= LateSeconds;
}

std::vector<std::string> Explanation::TriggerLines(std::size_t index) const {
  const RuleWords& words = m_Triggers[index];
  std::vector<std::string> lines = {"Trigger " + std::to_string(index + 1) + ": " + words.Rule() +
                                    "."};
  const bool due = index < m_Facts.m_Triggers.size() && m_Facts.m_Triggers[index].m_Due;
  if (words.IsDated()) {
    lines.push_back("  " + words.Span());
    lines.push_back("  " + DayLine(words));
    const std::string start = StartLine(words, due);
    if (!start.empty()) {
      lines.push_back("  " + start);
    }
  }
  if (words.CanFire()) {
    lines.push_back("  " + NextLine(index));
  }
  return lines;
}

std::string Explanation::DayLine(const RuleWords& words) const {
  const auto reasons = words.ReasonsAgainst(m_Facts.m_At);
  const std::string day = DayName(m_Facts.m_At);
  return reasons.empty() ? day + " is one of its days."
                         : day + " is none of its days: " + Listed(reasons) + ".";
}

std::string Explanation::StartLine(const RuleWords& words, bool due) const {
  if (due || !words.ReasonsAgainst(m_Facts.m_At).empty()) {
    return "";
  }
  const long start = words.StartOnDayOf(m_Facts.m_At);
  const std::string name = "Its start that day, " + LocalTimeText(start) + ", ";
  if (start > m_Facts.m_At) {
    return name + "is still to come.";
  }
  if (m_Facts.m_LastRun >= start) {
    return name + "has had its run.";
  }
  return "";
}

std::string Explanation::NextLine(std::size_t index) const {
  if (index >= m_Facts.m_Triggers.size()) {
    return "";
  }
  const auto [due, next] = m_Facts.m_Triggers[index];
  const std::string now = due ? "It is due at the moment asked about. " : "It is not due then. ";
  if (next <= m_Facts.m_At) {
    return now + "It has no next run.";
  }
  return now + "Its next run is at " + LocalTimeText(next) + ", " + Distance(next - m_Facts.m_At) +
         " later.";
}

long Explanation::NextRun() const {
  long earliest = 0;
  for (const TaskFacts::Trigger& trigger : m_Facts.m_Triggers) {
    if (trigger.m_Next > m_Facts.m_At && (earliest == 0 || trigger.m_Next < earliest)) {
      earliest = trigger.m_Next;
    }
  }
  return m_Facts.m_DueByReading && (earliest == 0 || *m_Facts.m_DueByReading < earliest)
             ? *m_Facts.m_DueByReading
             : earliest;
}

std::string Explanation::Verdict() const {
  if (m_Facts.m_GoneSince) {
    return "The task does not run: the scheduler deletes it at " +
           LocalTimeText(*m_Facts.m_GoneSince) + ", for no trigger will fire again.";
  }
  if (!m_Facts.m_Enabled) {
    return "The task does not run: it is disabled" + UntilReturn() + ".";
  }
  const std::string deleted =
      m_Facts.m_Deleted ? " The scheduler then deletes it, for no trigger will fire again." : "";
  if (!m_Facts.m_Run && !m_Facts.m_NoHandler) {
    return (RanAtThisMoment() ? "The task ran. Otherwise " : "The task does not run: ") + WhyNot() +
           deleted;
  }
  if (m_Gate == Gate::Closed) {
    return "The task is due, but does not run while the gate is closed; it will when it opens.";
  }
  if (m_Facts.m_NoHandler) {
    return "The task is due and is recorded as started, but there is no handler to run it." +
           deleted;
  }
  return "The task runs: " + RunWords() + deleted;
}

std::string Explanation::RunWords() const {
  const SimulationEvent& run = *m_Facts.m_Run;
  std::string words = "a trigger is due";
  if (run.m_NeverRun) {
    words += ", and with no finished run to its name it is due from its begin on, on any day";
  }
  words += run.m_Late ? ". It is late: its time passed more than 59 seconds before." : ".";
  if (run.m_KillAtEnd) {
    words += " The run is to be ended with its active period.";
  }
  return words;
}

std::string Explanation::WhyNot() const {
  const bool canFire = std::any_of(m_Triggers.begin(), m_Triggers.end(),
                                   [](const RuleWords& words) { return words.CanFire(); });
  if (!canFire) {
    return "it has no trigger that can fire.";
  }
  const long next = NextRun();
  if (next == 0) {
    const std::string reasons = WhyNever(m_Triggers, m_Facts.m_At);
    return "nothing is due, and nothing will be" + (reasons.empty() ? "" : ": " + reasons) + ".";
  }
  if (m_Facts.m_DueByReading == next) {
    return "nothing is due; when the scheduler reads its task files next, " +
           (m_Live ? m_Live->ReadingText() : "within the hour") +
           ", the task counts as never run, and is due at once.";
  }
  return "nothing is due; the next run is at " + LocalTimeText(next) + ", " +
         Distance(next - m_Facts.m_At) + " later.";
}

}  // namespace NoxAgent
