#include "agent/client/ImportReport.h"

#include "agent/client/LocalTime.h"
#include "agent/client/TextTable.h"

#include <algorithm>

namespace NoxAgent {

namespace {

constexpr const char* DifferencesFromCron =
    "Other than with cron: what was missed is made up for (max_late), a task does not run beside\n"
    "itself (overlap), and nothing is mailed. What fails is tried again by neither (retry = "
    "never).\n";

// "2027-03-14 02:30:00 -0500 does not come", "... (6 runs, to 02:50:00) comes in addition"
std::string DifferenceText(const RunDifference& difference) {
  const bool isMissing = difference.m_Kind == RunDifference::Kind::Missing;
  const std::string more = difference.m_Count == 1
                               ? ""
                               : " (" + std::to_string(difference.m_Count) + " runs, to " +
                                     LocalTimeText(difference.m_Last).substr(11, 8) + ")";
  return LocalTimeText(difference.m_First) + more +
         (isMissing ? " does not come" : " comes in addition");
}

Json DifferenceJson(const RunDifference& difference) {
  const bool isMissing = difference.m_Kind == RunDifference::Kind::Missing;
  return {{"kind", isMissing ? "missing" : "extra"},
          {"first", difference.m_First},
          {"last", difference.m_Last},
          {"count", difference.m_Count}};
}

Json TaskJson(unsigned line, const ImportedTask& task) {
  Json differences = Json::List{};
  for (const RunDifference& each : task.m_Differences.m_Days) {
    differences.Append(DifferenceJson(each));
  }
  return {{"line", line},
          {"id", task.m_Task.m_Id},
          {"words", task.m_Words},
          {"isThere", task.m_IsThere},
          {"runs", task.m_Differences.m_Expected},
          {"missing", task.m_Differences.m_Missing},
          {"extra", task.m_Differences.m_Extra},
          {"differences", differences},
          {"document", task.m_Task.m_Document},
          {"job", *task.m_Task.m_Job}};
}

}  // namespace

void ImportReport::Print(std::ostream& out) const {
  if (CountOf<ImportedTask>() > 0) {
    PrintTasks(out);
  }
  PrintRefusalsAndNotes(out);
  PrintProof(out);
  PrintSummary(out);
}

std::string ImportReport::StateOf(const ImportedTask& task) const {
  if (task.m_IsThere) {
    return "is there already";
  }
  return m_WasDry ? "not added" : m_IsEnabled ? "added" : "added, disabled";
}

void ImportReport::PrintTasks(std::ostream& out) const {
  TextTable table({"LINE", "TASK", "STATE", "RUNS"});
  for (const ImportedLine& line : m_Lines) {
    if (const auto* const task = std::get_if<ImportedTask>(&line.m_Content)) {
      table.AddRow({std::to_string(line.m_Line), task->m_Task.m_Id, StateOf(*task), task->m_Words});
    }
  }
  table.Print(out);
}

void ImportReport::PrintRefusalsAndNotes(std::ostream& out) const {
  for (const ImportedLine& line : m_Lines) {
    const std::string name = "line " + std::to_string(line.m_Line);
    if (const auto* const refusal = std::get_if<CronRefusal>(&line.m_Content)) {
      out << name << " is refused: " << refusal->m_Reason
          << (refusal->m_Advice.empty() ? "" : "; " + refusal->m_Advice) << "\n    " << line.m_Text
          << '\n';
    }
    const auto* const setting = std::get_if<CrontabSetting>(&line.m_Content);
    if (setting != nullptr && !setting->m_Note.empty()) {
      out << name << ": " << setting->m_Note << '\n';
    }
  }
}

void ImportReport::PrintProof(std::ostream& out) const {
  for (const ImportedLine& line : m_Lines) {
    const auto* const task = std::get_if<ImportedTask>(&line.m_Content);
    if (task == nullptr) {
      continue;
    }
    const RunDifferences& found = task->m_Differences;
    out << task->m_Task.m_Id << ": the line names " << found.m_Expected
        << " runs in two years, and so does the task" << (found.IsNone() ? "" : ", but for these:")
        << '\n';
    for (const RunDifference& difference : found.m_Days) {
      out << "    " << DifferenceText(difference) << '\n';
    }
  }
}

void ImportReport::PrintSummary(std::ostream& out) const {
  const std::size_t tasks = CountOf<ImportedTask>();
  out << m_Lines.size() << " lines: " << tasks << " tasks, " << CountOf<CronRefusal>()
      << " refused, " << CountOf<CrontabSetting>() << " settings, " << CountOf<CrontabComment>()
      << " comments and blank lines.\n";
  if (tasks > 0) {
    out << DifferencesFromCron;
  }
  if (tasks > 0 && !m_WasDry && !m_IsEnabled) {
    out << "The tasks are disabled, lest both schedulers run them: noxctl enable when cron has let "
           "go.\n";
  }
}

Json ImportReport::ToJson() const {
  Json tasks = Json::List{}, refused = Json::List{}, notes = Json::List{};
  for (const ImportedLine& line : m_Lines) {
    if (const auto* const task = std::get_if<ImportedTask>(&line.m_Content)) {
      tasks.Append(TaskJson(line.m_Line, *task));
    }
    if (const auto* const refusal = std::get_if<CronRefusal>(&line.m_Content)) {
      refused.Append({{"line", line.m_Line},
                      {"text", line.m_Text},
                      {"reason", refusal->m_Reason},
                      {"advice", refusal->m_Advice}});
    }
    const auto* const setting = std::get_if<CrontabSetting>(&line.m_Content);
    if (setting != nullptr && !setting->m_Note.empty()) {
      notes.Append({{"line", line.m_Line}, {"note", setting->m_Note}});
    }
  }
  return {{"tasks", tasks},
          {"refused", refused},
          {"notes", notes},
          {"settings", CountOf<CrontabSetting>()},
          {"comments", CountOf<CrontabComment>()}};
}

}  // namespace NoxAgent
