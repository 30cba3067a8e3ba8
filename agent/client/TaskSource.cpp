#include "agent/client/TaskSource.h"

#include "agent/client/DocumentFile.h"
#include "agent/document/TaskDocumentCheck.h"

#include <unistd.h>

#include <ctime>
#include <filesystem>

namespace NoxAgent {

using BaseSDK::AString;

namespace {

constexpr const char* Unreserved =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~";

std::string IdOf(const std::string& file) {
  if (file == "-") {
    return "task";
  }
  const std::string id = std::filesystem::path(file).stem().string();
  if (id.empty() || id.front() == '.' || id.find_first_not_of(Unreserved) != std::string::npos) {
    throw CommandError(ExitCode::Usage,
                       file + ": its name gives no task ID; name it with letters, digits and -._~");
  }
  return id;
}

// Refuses a text that cannot be a task at all. With any other one the user wants to see what the
// scheduler makes of it.
void RefuseErrors(const std::string& file, const AString& xml) {
  for (const TaskDocumentProblem& problem : CheckTaskDocument(xml, std::time(nullptr))) {
    if (problem.m_Severity == TaskDocumentSeverity::Error) {
      throw CommandError(ExitCode::Usage,
                         file + ": " + DescribeTaskDocumentProblem(problem).ToUtf8());
    }
  }
}

bool IsFile(const std::string& name) {
  return name == "-" || name.find('/') != std::string::npos || ::access(name.c_str(), F_OK) == 0;
}

// The agent's task `id`; nothing when it has none of that ID.
std::optional<TaskSource> AskAgent(const std::string& id, const CommandContext& context) {
  try {
    AgentApi agent = context.Agent();
    // The document is asked for last, so it is no older than the rest.
    LiveTask live = ReadLiveTask(agent, id);
    auto xml = agent.TaskXml(id);
    return xml ? std::optional(TaskSource{{id, *std::move(xml)}, std::move(live)}) : std::nullopt;
  } catch (const CommandError& error) {
    if (error.Code() != ExitCode::Unreachable) {
      throw;
    }
    throw CommandError(error.Code(), "there is no file " + id + ", and noxctl " + error.what());
  }
}

}  // namespace

SimulationRequest::Document ReadTaskFile(const std::string& file, const CommandContext& context) {
  const AString xml = ReadDocument(file, context.m_In);
  RefuseErrors(file, xml);
  return {IdOf(file), xml.ToUtf8()};
}

TaskSource FindTask(const std::string& name, const CommandContext& context) {
  if (IsFile(name)) {
    return {ReadTaskFile(name, context), std::nullopt};
  }
  auto source = AskAgent(name, context);
  if (!source) {
    throw CommandError(ExitCode::Failed,
                       "the agent has no task " + name + ", and there is no file of that name");
  }
  return *std::move(source);
}

}  // namespace NoxAgent
