#include "agent/client/CrontabImport.h"

#include "agent/Protocol.h"
#include "agent/crontab/CronMinutes.h"
#include "agent/crontab/CronRules.h"
#include "agent/crontab/CrontabJob.h"
#include "agent/crontab/HourCuts.h"
#include "agent/crontab/TaskNames.h"
#include "agent/document/TaskWriter.h"
#include "agent/phrase/PhraseSearch.h"
#include "agent/phrase/PhraseText.h"
#include "agent/schedule/StartTriggers.h"

#include <algorithm>

namespace NoxAgent {

namespace {

using Content = decltype(ImportedLine::m_Content);

class Importer {
 public:
  Importer(const ImportPlan& plan, const LocalCalendar& calendar, long now)
      : m_Plan(plan), m_Calendar(calendar), m_Now(now), m_Cuts(FindHourCuts(calendar, now)) {}

  Content Take(const CrontabEntry& entry) {
    if (const auto* const task = std::get_if<CrontabTask>(&entry.m_Content)) {
      return Make(*task);
    }
    if (const auto* const setting = std::get_if<CrontabSetting>(&entry.m_Content)) {
      return *setting;
    }
    if (const auto* const refusal = std::get_if<CronRefusal>(&entry.m_Content)) {
      return *refusal;
    }
    return CrontabComment();
  }

 private:
  Content Make(const CrontabTask& task) {
    const auto made = MakeCronRules(task.m_Expression, m_Cuts);
    if (const auto* const refusal = std::get_if<CronRefusal>(&made)) {
      return *refusal;
    }
    const auto job = MakeCrontabJob(task);
    if (const auto* const refusal = std::get_if<CronRefusal>(&job)) {
      return *refusal;
    }
    const auto triggers =
        StartTriggers(std::get<std::vector<StartRule>>(made), m_Calendar, m_Now + 1);
    ImportedTask imported;
    imported.m_Words = WordsOf(triggers, task);
    imported.m_Differences = Prove(triggers, task.m_Expression);
    imported.m_Task = {"", DocumentOf(triggers, task), std::get<std::string>(job)};
    Name(task, imported);
    return imported;
  }

  std::string WordsOf(const std::vector<TriggerRule>& triggers, const CrontabTask& task) const {
    const PhraseFinding finding = FindPhrase(triggers, m_Calendar, m_Now);
    return finding.m_Unsaid.empty() ? PhraseText(finding.m_Phrase, m_Calendar)
                                    : "cron '" + task.m_Times + "'";
  }

  // A new task, as the scheduler's model has it, against the minutes that the line names.
  RunDifferences Prove(const std::vector<TriggerRule>& triggers,
                       const CronExpression& expression) const {
    const long until = std::min(m_Now + ImportPlan::ProofDays * LocalCalendar::SecondsPerDay,
                                LocalCalendar::End());
    std::vector<SchedulerTrigger> models;
    for (const TriggerRule& trigger : triggers) {
      models.emplace_back(trigger, m_Calendar);
    }
    SchedulerRuns runs(m_Calendar, models, {m_Now, until, NoTime, m_Now});
    CronMinutes minutes(expression, m_Calendar, m_Now + 1, until);
    return FindRunDifferences([&minutes] { return minutes.Next(); }, runs, m_Calendar,
                              ImportPlan::MostDays);
  }

  std::string DocumentOf(const std::vector<TriggerRule>& triggers, const CrontabTask& task) const {
    NewTaskDocument document;
    document.m_Triggers = triggers;
    document.m_HandlerClassId = CommandHandlerClassId;
    document.m_Description = "crontab: " + task.m_Times;
    document.m_Enabled = m_Plan.m_Enable;
    return WriteTaskDocument(document);
  }

  // A task of that name with the same job is this line's, from an earlier import.
  void Name(const CrontabTask& task, ImportedTask& imported) {
    do {
      imported.m_Task.m_Id = m_Names.NameFor(task.m_Command);
      imported.m_IsThere = m_Plan.m_Taken.contains(imported.m_Task.m_Id) &&
                           m_Plan.m_JobOf(imported.m_Task.m_Id) == imported.m_Task.m_Job;
    } while (!imported.m_IsThere && m_Plan.m_Taken.contains(imported.m_Task.m_Id));
  }

  const ImportPlan& m_Plan;
  const LocalCalendar& m_Calendar;
  const long m_Now;
  const long m_Cuts;
  TaskNames m_Names;
};

}  // namespace

std::vector<ImportedLine> ImportCrontab(const std::string& text, const ImportPlan& plan,
                                        const LocalCalendar& calendar, long now) {
  Importer importer(plan, calendar, now);
  std::vector<ImportedLine> lines;
  for (const CrontabEntry& entry : ReadCrontab(text, plan.m_Origin)) {
    lines.push_back({entry.m_Line, entry.m_Text, importer.Take(entry)});
  }
  return lines;
}

}  // namespace NoxAgent
