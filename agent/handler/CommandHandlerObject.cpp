#include "agent/handler/CommandHandlerObject.h"

#include "agent/handler/Log.h"
#include "agent/handler/SettingsReader.h"
#include "agent/handler/job/JobError.h"

#include <AgentInterfacesV3/INoxCommandHandlerTable.h>
#include <AgentInterfacesV3/INoxObject_impl.h>
#include <AgentInterfacesV3/INoxScheduledTaskHandler.h>
#include <AgentInterfacesV3/InterfaceIds.h>

#include <charconv>
#include <cstdint>
#include <cstring>
#include <exception>
#include <string>

using BaseSDK::AGuid;
using BaseSDK::ALogger;
using BaseSDK::AString;
using namespace Corvane::AgentInterfacesV3;

namespace NoxHandler {

namespace {

constexpr int Success = 1;
constexpr int Failure = -1;
constexpr long NoJob = -1;
constexpr long JobOutOfReach = -2;
constexpr int FrameVersion = 3;
constexpr const char* NotRunning = "the handler does not run";

// What is no position is the beginning.
std::uint64_t PositionIn(const AString& text) {
  const std::string digits = text.ToUtf8();
  std::uint64_t position = 0;
  (void)std::from_chars(digits.data(), digits.data() + digits.size(), position);
  return position;
}

}  // namespace

CommandHandlerObject_i::CommandHandlerObject_i() = default;

CommandHandlerObject_i::~CommandHandlerObject_i() = default;

long CommandHandlerObject_i::CallMethod(const AMsgIn* request) {
  return request->Interface() == INoxCommandHandlerTable.m_Name
             ? INoxCommandHandler_impl::CallMethod(request)
             : INoxScheduledTaskHandler_impl::CallMethod(request);
}

int CommandHandlerObject_i::ObjectDebugInfo(AString& report) {
  report = m_Supervisor ? m_Supervisor->Latest().Report() : LatestRuns().Report();
  return Success;
}

// Runs go on through policy refreshes and the comings and goings of other plug-ins.
int CommandHandlerObject_i::NotifyObject(long, long, const AString&) {
  return 0;
}

long CommandHandlerObject_i::RunTasks(const AString& batch) {
  return RunTasksEx(batch);
}

long CommandHandlerObject_i::RunTasksEx(const AString& batch) {
  const TaskBatch tasks = TaskBatch::Parse(batch);
  for (const AString& entry : tasks.m_Invalid) {
    ALOG(HandlerLog(), ALogger::Error, HandlerSource,
         AString("Cannot read the entry \"%1\" of a batch; nothing is run for it").Arg(entry));
  }
  if (m_Supervisor) {
    m_Supervisor->Post(tasks.m_Entries);
  }
  return TASK_HANDLER_DECLINED;
}

long CommandHandlerObject_i::GetRun(const AString& taskId, AStringMap& run) {
  run = m_Supervisor ? m_Supervisor->Latest().Describe(taskId) : AStringMap();
  return run.empty() ? Failure : Success;
}

long CommandHandlerObject_i::CheckJob(const AString& taskId, AString& problem) {
  problem = m_Supervisor ? m_Supervisor->ProblemOfJob(taskId) : AString(NotRunning);
  return problem.IsEmpty() ? Success : Failure;
}

long CommandHandlerObject_i::PutJob(const AString& taskId, const AString& text, AString& problem) {
  const long result = AskJobs(taskId, problem, [&](JobStore& jobs) {
    jobs.Put(taskId, text);
    return true;
  });
  return result == Success ? Success : Failure;
}

long CommandHandlerObject_i::GetJob(const AString& taskId, AString& text, AString& problem) {
  return AskJobs(taskId, problem, [&](const JobStore& jobs) {
    const std::optional<AString> job = jobs.Get(taskId);
    text = job.value_or(AString());
    return job.has_value();
  });
}

long CommandHandlerObject_i::DeleteJob(const AString& taskId, AString& problem) {
  return AskJobs(taskId, problem, [&](const JobStore& jobs) { return jobs.Delete(taskId); });
}

long CommandHandlerObject_i::AskJobs(const AString& taskId, AString& problem,
                                     const std::function<bool(JobStore&)>& ask) {
  problem = AString();
  if (!m_Jobs) {
    problem = NotRunning;
    return JobOutOfReach;
  }
  try {
    if (ask(*m_Jobs)) {
      return Success;
    }
    problem = AString("the task \"%1\" has no job").Arg(taskId);
    return NoJob;
  } catch (const JobError& error) {
    problem = error.Message();
    return JobOutOfReach;
  }
}

long CommandHandlerObject_i::GetOutput(const AString& taskId, const AString& position,
                                       AString& text, AString& next) {
  const auto part =
      m_Supervisor ? m_Supervisor->OutputOf(taskId, PositionIn(position)) : std::nullopt;
  text = part.has_value() ? part->m_Text : AString();
  next = part.has_value() ? AString(std::to_string(part->m_Next).c_str()) : AString();
  return part.has_value() ? Success : Failure;
}

long CommandHandlerObject_i::StopRun(const AString& taskId) {
  return m_Supervisor && m_Supervisor->StopRun(taskId) ? Success : Failure;
}

int CommandHandlerObject_i::QueryInterface(const UUID& interfaceId, void*& object) {
  return QueryInterface(AGuid(interfaceId), object);
}

int CommandHandlerObject_i::QueryInterface(const AGuid& interfaceId, void*& object) {
  object = nullptr;
  if (interfaceId == IID_INoxScheduledTaskHandler) {
    object = static_cast<INoxScheduledTaskHandler_impl*>(this);
  } else if (interfaceId == IID_INoxCommandHandler) {
    object = static_cast<INoxCommandHandler_impl*>(this);
  } else if (interfaceId == IID_INoxObject) {
    object = static_cast<INoxObject_impl*>(this);
  }
  return object != nullptr ? 0 : Failure;
}

int CommandHandlerObject_i::GetVersion() {
  return FrameVersion;
}

int CommandHandlerObject_i::Initialize() {
  try {
    const HandlerSettings settings = ReadHandlerSettings();
    auto jobs = std::make_unique<JobStore>(settings);
    auto supervisor = std::make_unique<Supervisor>(settings);
    supervisor->Start();
    m_Jobs = std::move(jobs);
    m_Supervisor = std::move(supervisor);
    return Success;
  } catch (const std::exception& error) {
    ALOG(HandlerLog(), ALogger::Error, HandlerSource,
         AString("The command handler cannot start: %1").Arg(AString(error.what())));
    return Failure;
  }
}

int CommandHandlerObject_i::Uninitialize(unsigned int forced) {
  if (!m_Supervisor) {
    return Success;
  }
  if (forced == 0 && m_Supervisor->IsBusy()) {
    return Failure;
  }
  if (!m_Supervisor->Stop()) {
    return Failure;
  }
  m_Supervisor.reset();
  m_Jobs.reset();
  return Success;
}

int CommandHandlerObject_i::GetAttribute(const char* name, AString& value) {
  if (strcmp(name, "InterfaceFactory") != 0) {
    return Failure;
  }
  INoxInterfaceFactory* const factory = this;
  value.SetNum(reinterpret_cast<unsigned long>(factory), 'x');
  return Success;
}

}  // namespace NoxHandler
