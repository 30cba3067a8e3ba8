#include "agent/daemon/control/TasksRoute.h"

#include "agent/daemon/control/ErrorAnswer.h"
#include "agent/daemon/control/RequestBody.h"
#include "agent/daemon/control/RequestError.h"
#include "agent/daemon/control/TaskIdCheck.h"
#include "agent/daemon/control/WrittenCheck.h"

#include <AgentInterfacesV3/AMsgGroup.h>

#include <map>
#include <optional>
#include <vector>

using BaseSDK::AString;
using Corvane::AgentInterfacesV3::AMsgGroup;

namespace NoxAgent {
namespace {

constexpr const char* Replaces = "replaces";

// The arguments of AddTask for an item of the list. The operation needs an ID, if an empty one.
Json ArgumentsIn(const Json& item) {
  if (!item.IsObject()) {
    throw RequestError(HttpStatus::BadRequest, "mistyped-argument",
                       "\"tasks\" is to be a list of objects");
  }
  Json arguments = {{"taskId", ""}};
  for (const auto& [name, value] : item.Members()) {
    if (name != Replaces) {
      arguments[name] = value;
    }
  }
  return arguments;
}

// The document that the item is to take the place of; nothing when it does not say.
std::optional<AString> ReplacedIn(const Json& item) {
  const Json* const document = item.Find(Replaces);
  if (document == nullptr) {
    return std::nullopt;
  }
  if (!document->IsText()) {
    throw RequestError(HttpStatus::BadRequest, "mistyped-argument",
                       "\"replaces\" is to be a string");
  }
  if (!item.Has("taskId")) {
    throw RequestError(HttpStatus::BadRequest, "missing-argument",
                       "\"replaces\" is about a task: \"taskId\" is missing");
  }
  return AString::FromUtf8(document->Text());
}

// As far as it is one, and cut: it comes from outside.
std::string IdIn(const Json& item) {
  const Json* const id = item.Find("taskId");
  return id != nullptr && id->IsText() ? AString::FromUtf8(id->Text()).Left(250).ToUtf8()
                                       : std::string();
}

// The tasks of a request, from the body to what became of each.
class TaskAddition {
 public:
  TaskAddition(OperationRoute& operations, const StoreFileSystem& store, bool force)
      : m_Operations(operations), m_Store(store), m_Force(force) {}

  // Throws RequestError when the item is no task to be added.
  void Prepare(const Json& item) {
    const RequestError::Task task{m_Tasks.size(), IdIn(item)};
    try {
      m_Tasks.push_back({task.m_Id, m_Operations.PrepareAddTask(ArgumentsIn(item), m_Force)});
      m_Tasks.back().m_Call->m_Replaces = ReplacedIn(item);
      RefuseSecond(task);
    } catch (const RequestError& error) {
      throw error.OfTask(task);
    }
  }

  // One that cannot be added does not keep the others back. All files are flushed together.
  Json Perform() {
    Json::List outcomes;
    AMsgGroup group;
    for (const Task& task : m_Tasks) {
      try {
        outcomes.push_back(Add(task));
      } catch (const std::exception&) {
        const RequestError error = CaughtError("/v1/tasks/add");
        outcomes.push_back({{"taskId", task.m_Id}, {"error", ErrorJson(error)}});
      }
    }
    const WriteFailures failures;
    group.End();
    for (const auto& [name, error] : failures.All()) {
      TellNotWritten(name, error, outcomes);
    }
    return {{"tasks", std::move(outcomes)}};
  }

 private:
  struct Task {
    std::string m_Id;
    std::unique_ptr<OperationCall> m_Call;
  };

  void RefuseSecond(const RequestError::Task& task) {
    if (task.m_Id.empty()) {
      return;
    }
    const auto [first, isFirst] = m_Indices.emplace(task.m_Id, task.m_Index);
    if (!isFirst) {
      throw RequestError(
          HttpStatus::Unprocessable, "duplicate-task-id",
          AString("the task ID \"%1\" is that of another task of the request, the "
                  "one with the index %2")
              .Arg(AString::FromUtf8(task.m_Id), AString().SetNum(first->second, 'u')));
    }
  }

  Json Add(const Task& task) {
    const Json answer = m_Operations.Perform(*task.m_Call);
    if (answer.At("result").Long() < 1) {
      throw RequestError(HttpStatus::Internal, "operation-failed",
                         "the scheduler could not store the task; see that its directory can be "
                         "written and has room");
    }
    return {{"taskId", answer.At("out").At("newTaskId")}, {"warnings", answer.Items("warnings")}};
  }

  void TellNotWritten(const std::string& name, int error, Json::List& outcomes) const {
    for (Json& outcome : outcomes) {
      if (outcome.At("taskId").Text() + m_Store.Directory().Extension() == name) {
        outcome["error"] = ErrorJson(NotWrittenError({{name, error}}, m_Store));
      }
    }
  }

  OperationRoute& m_Operations;
  const StoreFileSystem& m_Store;
  const bool m_Force;
  std::vector<Task> m_Tasks;
  std::map<std::string, std::size_t> m_Indices;
};

}  // namespace

TasksRoute::TasksRoute(const Plugins& plugins, const TaskStore& store, OperationRoute& operations,
                       const TaskReturns& returns)
    : m_Plugins(plugins), m_Store(store), m_Operations(operations), m_Returns(returns) {}

std::shared_ptr<Plugin> TasksRoute::Scheduler() const {
  std::shared_ptr<Plugin> scheduler = m_Plugins.Find(m_Store.Scheduler());
  if (m_Store.Files() == nullptr || scheduler == nullptr) {
    throw RequestError(HttpStatus::NotFound, "no-scheduler", "the agent has no task scheduler");
  }
  return scheduler;
}

TaskLines::Parts TasksRoute::Parts() {
  return {m_Plugins, Scheduler(), *m_Store.Files(), m_Glances, m_Returns};
}

BodyParts TasksRoute::List(bool withAttributes) {
  const auto lines = std::make_shared<TaskLines>(Parts(), withAttributes);
  return [lines] { return lines->Next(); };
}

BodyParts TasksRoute::One(const std::string& taskId) {
  const TaskLines::Parts parts = Parts();
  const AString id = AString::FromUtf8(taskId);
  CheckTaskId(id, AString::FromUtf8(m_Store.Files()->Directory().Extension()));
  const auto line = std::make_shared<TaskLines>(parts, id);
  return [line] { return line->Next(); };
}

Json TasksRoute::Add(const std::string& body, bool force) {
  (void)Scheduler();
  const RequestBody arguments(body, {"tasks"});
  TaskAddition addition(m_Operations, *m_Store.Files(), force);
  for (const Json& item : arguments.Items("tasks")) {
    addition.Prepare(item);
  }
  return addition.Perform();
}

}  // namespace NoxAgent
