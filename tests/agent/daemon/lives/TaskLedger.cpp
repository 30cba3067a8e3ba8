#include "tests/agent/daemon/lives/TaskLedger.h"

#include "tests/support/LocalTimes.h"

#include <optional>

namespace NoxAgent {
namespace {

constexpr const char* Ok = "Ok";
constexpr const char* Started = "Started";

// After which the scheduler reads the files again.
constexpr long CycleSeconds = TestSupport::Hour;

}  // namespace

void TaskLedger::Fail(const std::string& id, const std::string& problem) {
  m_Failure("task " + id + " " + problem);
}

// Requests
// --------

void TaskLedger::AskToAdd(const std::string& id, const TaskPlan& plan) {
  Task& task = m_Tasks[id];
  const bool isNew = task.m_IsThere.Is(false);
  task.m_IsThere.Allow(true);
  task.m_IsEnabled.Allow(true);
  if (isNew) {
    task.m_Plan.Set(plan);
  } else {
    task.m_Plan.Allow(plan);
  }
}

void TaskLedger::Added(const std::string& id, const TaskPlan& plan) {
  Task& task = m_Tasks.at(id);
  task.m_IsThere.Set(true);
  task.m_MayBePart = false;
  task.m_Plan.Set(plan);
  task.m_IsEnabled.Set(true);
  task.m_ToggledUntil = 0;
  task.m_RemembersRun = task.m_IsFinished;
}

void TaskLedger::AskToDelete(const std::string& id) {
  m_Tasks.at(id).m_IsThere.Allow(false);
}

void TaskLedger::Deleted(const std::string& id) {
  m_Tasks.at(id).m_IsThere.Set(false);
}

void TaskLedger::AskToEnable(const std::string& id, bool enable) {
  m_Tasks.at(id).m_IsEnabled.Allow(enable);
}

void TaskLedger::Enabled(const std::string& id, bool enable, long now) {
  Task& task = m_Tasks.at(id);
  task.m_IsEnabled.Set(enable);
  task.m_ToggledUntil = now + CycleSeconds;
  // It may be read while it is disabled, and has no other run then.
  task.m_RemembersRun = task.m_RemembersRun && (enable || task.m_IsFinished);
}

void TaskLedger::AskToReport(const std::string& id, const std::string& state, long now) {
  Task& task = m_Tasks.at(id);
  task.m_State.Allow(state);
  HistoryWritten(task, now);
}

void TaskLedger::Reported(const std::string& id, const std::string& state) {
  Task& task = m_Tasks.at(id);
  task.m_State.Set(state);
  task.m_IsAccepted = false;
  task.m_IsFinished = state == Ok && task.m_RemembersRun && task.m_IsEnabled.Is(true);
}

void TaskLedger::Told() {
  for (auto& [id, task] : m_Tasks) {
    if (task.m_IsAccepted) {
      task.m_IsAccepted = false;
      task.m_State.Set(Ok);
      task.m_IsFinished = true;
    }
  }
}

void TaskLedger::HistoryWritten(Task& task, long now) {
  if (now <= task.m_ToggledUntil) {
    task.m_IsEnabled.Allow(true);
    task.m_IsEnabled.Allow(false);
  }
}

// Runs
// ----

void TaskLedger::Run(const std::string& id, bool isNew, long now) {
  const auto found = m_Tasks.find(id);
  if (found == m_Tasks.end() || found->second.m_IsThere.Is(false)) {
    Fail(id, "runs and is not there");
    return;
  }
  Task& task = found->second;
  const TaskPlan& plan = task.m_Plan.All().front();
  if (task.m_IsEnabled.Is(false)) {
    Fail(id, "runs while it is disabled");
  }
  if (now < plan.m_Begin) {
    Fail(id, "runs before its begin");
  } else if (plan.HasEnded(now)) {
    Fail(id, "runs after its end");
  } else if (task.m_IsFinished && task.m_LastRun >= plan.LatestStart(now)) {
    Fail(id, "runs again");
  }
  if (isNew ? task.m_IsFinished : task.m_LastTold == TaskFacts::NoRun) {
    Fail(id, isNew ? "runs as if it had no finished run" : "runs as if it had run before");
  }
  task.m_LastTold = task.m_LastRun = now;
  task.m_State.Set(Started);
  task.m_RemembersRun = true;
  task.m_IsFinished = false;
  HistoryWritten(task, now);
}

void TaskLedger::Accepted(const std::string& id, long now) {
  Task& task = m_Tasks.at(id);
  task.m_State.Allow(Ok);
  task.m_IsAccepted = true;
  HistoryWritten(task, now);
}

void TaskLedger::CheckRuns(long now) {
  for (const auto& [id, task] : m_Tasks) {
    const TaskPlan& plan = task.m_Plan.All().front();
    const bool isOwed = task.m_IsThere.Is(true) && task.m_IsEnabled.Is(true) &&
                        now >= plan.m_Begin && !plan.HasEnded(now);
    if (isOwed && task.m_LastTold < plan.LatestStart(now)) {
      Fail(id, "is due and does not run");
    }
  }
}

// Lives
// -----

void TaskLedger::Restart(const std::map<std::string, std::string>& files, long now) {
  for (const auto& [id, text] : files) {
    if (!m_Tasks.contains(id) && !m_Parts.contains(id)) {
      AdoptUnnamed(id);
    }
  }
  m_Unnamed.Set(TaskPlan());
  for (auto& [id, task] : m_Tasks) {
    const auto file = files.find(id);
    if (MayHaveEnded(task, now)) {
      task.m_IsThere.Allow(false);
    }
    RestartTask(id, task, file != files.end() ? &file->second : nullptr);
  }
  std::erase_if(m_Tasks, [&](const auto& entry) { return m_Parts.contains(entry.first); });
}

void TaskLedger::AdoptUnnamed(const std::string& id) {
  if (!id.starts_with("corvane_task_")) {
    Fail(id, "has a file that nobody has asked for");
  }
  Task& task = m_Tasks[id];
  task.m_IsThere.Allow(true);
  task.m_Plan = m_Unnamed;
}

bool TaskLedger::MayHaveEnded(const Task& task, long now) {
  const auto& plans = task.m_Plan.All();
  return std::any_of(plans.begin(), plans.end(),
                     [&](const TaskPlan& plan) { return plan.HasEnded(now); });
}

void TaskLedger::RestartTask(const std::string& id, Task& task, const std::string* text) {
  const bool isThere = text != nullptr;
  if (!task.m_IsThere.MayBe(isThere)) {
    Fail(id, isThere ? "is back" : "is lost");
  }
  task.m_IsThere.Set(isThere);
  if (!isThere) {
    return;
  }
  const std::optional<TaskFacts> facts = ReadTaskText(*text);
  if (facts) {
    CheckFacts(id, task, *facts);
    Adopt(task, *facts);
  } else if (task.m_MayBePart) {
    m_Parts.insert(id);
  } else {
    Fail(id, "has a file that is no whole document:\n" + *text);
  }
}

void TaskLedger::CheckFacts(const std::string& id, const Task& task, const TaskFacts& facts) {
  const auto& plans = task.m_Plan.All();
  if (std::none_of(plans.begin(), plans.end(),
                   [&](const TaskPlan& plan) { return plan.m_Number == facts.m_Document; })) {
    Fail(id, "has document " + std::to_string(facts.m_Document));
  }
  if (!task.m_IsEnabled.MayBe(facts.m_IsEnabled)) {
    Fail(id, facts.m_IsEnabled ? "is enabled" : "is disabled");
  }
  if (facts.m_LastRun < task.m_LastRun) {
    Fail(id, "has lost its last run");
  } else if (facts.m_LastRun == task.m_LastRun && !task.m_State.MayBe(facts.m_State)) {
    Fail(id, "has a run that is " + facts.m_State);
  } else if (facts.m_LastRun > task.m_LastRun && facts.m_State != Started) {
    Fail(id, "has a run that nobody heard of and that is " + facts.m_State);
  }
}

void TaskLedger::Adopt(Task& task, const TaskFacts& facts) {
  for (const TaskPlan plan : std::vector(task.m_Plan.All())) {
    if (plan.m_Number == facts.m_Document) {
      task.m_Plan.Set(plan);
    }
  }
  task.m_MayBePart = false;
  task.m_IsEnabled.Set(facts.m_IsEnabled);
  task.m_ToggledUntil = 0;
  task.m_LastRun = facts.m_LastRun;
  task.m_State.Set(facts.m_State);
  task.m_IsAccepted = false;
  task.m_RemembersRun = task.m_IsFinished = facts.m_State == Ok;
}

std::vector<std::string> TaskLedger::Ids(long now) const {
  std::vector<std::string> ids;
  for (const auto& [id, task] : m_Tasks) {
    if (task.m_IsThere.Is(true) && !MayHaveEnded(task, now)) {
      ids.push_back(id);
    }
  }
  return ids;
}

bool TaskLedger::MayHaveEnded(const std::string& id, long now) const {
  return MayHaveEnded(m_Tasks.at(id), now);
}

long TaskLedger::NextStart(const std::string& id, long now) const {
  return m_Tasks.at(id).m_Plan.All().front().NextStart(now);
}

}  // namespace NoxAgent
