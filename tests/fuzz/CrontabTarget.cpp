// A crontab, with and without a column of users: each line is accounted for, a task runs when its
// line says so, and its job runs what its line says.
#include "agent/crontab/CronMinutes.h"
#include "agent/crontab/CronRules.h"
#include "agent/crontab/CrontabFile.h"
#include "agent/crontab/CrontabJob.h"
#include "agent/crontab/CrontabWords.h"
#include "agent/crontab/TaskNames.h"
#include "agent/document/TaskId.h"
#include "agent/handler/job/Job.h"
#include "agent/schedule/RunDifferences.h"
#include "agent/schedule/StartTriggers.h"
#include "tests/fuzz/FuzzTarget.h"

#include <string>

using namespace NoxAgent;

using BaseSDK::AString;
using Fuzz::Require;
using NoxHandler::Job;

namespace {

// The clocks of UTC are never set; the rules are to be right with cuts in the day as well.
constexpr long SomeCuts = 1 << 2 | 1 << 3;
constexpr long LastMoment = Fuzz::StartTime + 10 * LocalCalendar::SecondsPerDay;

const LocalCalendar& Calendar() {
  static const LocalCalendar calendar(Fuzz::StartTime - LocalCalendar::SecondsPerDay);
  return calendar;
}

void RequireRuns(const CronExpression& expression, const std::vector<StartRule>& rules) {
  std::vector<SchedulerTrigger> triggers;
  for (const TriggerRule& trigger : StartTriggers(rules, Calendar(), Fuzz::StartTime)) {
    triggers.emplace_back(trigger, Calendar());
  }
  SchedulerRuns::Setting setting;
  setting.m_From = setting.m_Reading = Fuzz::StartTime;
  setting.m_Until = LastMoment;
  SchedulerRuns runs(Calendar(), triggers, setting);
  CronMinutes minutes(expression, Calendar(), Fuzz::StartTime, LastMoment);
  Require(FindRunDifferences([&] { return minutes.Next(); }, runs, Calendar(), 1).IsNone(),
          "a task runs in the minutes of its line");
}

std::vector<std::string> Words(std::string_view text) {
  std::vector<std::string> words;
  CrontabWords rest(text);
  for (CrontabWord word = rest.Next(); !word.m_Text.empty(); word = rest.Next()) {
    words.emplace_back(word.m_Text);
  }
  return words;
}

void RequireJob(const CrontabTask& task, const std::string& text) {
  std::vector<AString> problems;
  const Job job = Job::Parse("x.job", AString::FromUtf8(text), problems);
  Require(problems.empty(), "a job is one that the handler reads");
  std::vector<std::string> words = job.m_Arguments;
  const bool isForShell = words == std::vector<std::string>{"-c", task.m_Command};
  words.insert(words.begin(), job.m_Command);
  Require(isForShell || words == Words(task.m_Command), "a job runs the command of its line");
  Require(job.m_User == task.m_User, "a job has the user of its line");
  Require(job.m_Environment == task.m_Environment, "a job has the settings of its line");
}

void RequireTask(CrontabTask task, TaskNames& names) {
  const AString name = AString::FromUtf8(names.NameFor(task.m_Command));
  Require(FaultOfTaskId(name, ".vsk").IsEmpty(), "a name is one that a task may have");
  for (const long cuts : {0L, SomeCuts}) {
    const auto rules = MakeCronRules(task.m_Expression, cuts);
    if (const auto* const made = std::get_if<std::vector<StartRule>>(&rules)) {
      RequireRuns(task.m_Expression, *made);
    }
  }
  task.m_Input.reset();
  const auto job = MakeCrontabJob(task);
  if (const auto* const text = std::get_if<std::string>(&job)) {
    RequireJob(task, *text);
  }
}

void ReadAs(const CrontabOrigin& origin, const std::string& text) {
  TaskNames names;
  std::string joined;
  for (const CrontabEntry& entry : ReadCrontab(text, origin)) {
    joined += entry.m_Text + "\n";
    if (const auto* const task = std::get_if<CrontabTask>(&entry.m_Content)) {
      RequireTask(*task, names);
    } else if (const auto* const refusal = std::get_if<CronRefusal>(&entry.m_Content)) {
      Require(!refusal->m_Reason.empty(), "a refusal has a reason");
    }
  }
  Require(joined == text || joined == text + "\n", "each line is accounted for");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  ReadAs({false, "ada", "UTC"}, text);
  ReadAs({true, {}, "UTC"}, text);
  return 0;
}
