#include "agent/client/TaskWithJob.h"

namespace NoxAgent {

namespace {

void PutBack(AgentApi& agent, const std::string& id, const std::optional<std::string>& job) {
  if (job) {
    agent.PutJob(id, *job);
  } else {
    (void)agent.DeleteJob(id);
  }
}

[[noreturn]] void FailWithJobPutBack(AgentApi& agent, const TaskWithJob& task,
                                     const std::optional<std::string>& before,
                                     const CommandError& error) {
  try {
    PutBack(agent, task.m_Id, before);
  } catch (const CommandError& second) {
    throw CommandError(
        error.Code(),
        error.what() + std::string("; its job is there all the same: ") + second.what());
  }
  throw error;
}

}  // namespace

std::vector<std::string> AddWithJob(AgentApi& agent, const TaskWithJob& task) {
  const auto before = task.m_Job ? agent.JobText(task.m_Id) : std::nullopt;
  if (task.m_Job) {
    agent.PutJob(task.m_Id, *task.m_Job);
  }
  std::vector<std::string> warnings;
  std::optional<CommandError> failure;
  try {
    agent.AddTasks({{task.m_Id, task.m_Document, task.m_Replaces}}, false,
                   [&](std::size_t, const AgentApi::AddedTask& added) {
                     warnings = added.m_JobWarnings;
                     failure = added.m_Error;
                   });
  } catch (const CommandError& error) {
    failure = error;
  }
  if (failure && !task.m_Job) {
    throw *failure;
  }
  if (failure) {
    FailWithJobPutBack(agent, task, before, *failure);
  }
  return warnings;
}

}  // namespace NoxAgent
