#include "agent/daemon/control/OperationRoute.h"

#include "agent/daemon/control/JobBorder.h"
#include "agent/daemon/control/JsonMessage.h"
#include "agent/daemon/control/ReplyError.h"
#include "agent/daemon/control/ReplyValue.h"
#include "agent/daemon/control/WrittenCheck.h"
#include "agent/daemon/returns/CancelledReturns.h"
#include "agent/daemon/returns/SchedulerTasks.h"
#include "agent/document/SameTask.h"
#include "agent/library/Json.h"

#include <array>
#include <optional>
#include <vector>

using BaseSDK::AString;
using Corvane::AgentInterfacesV3::AInterfaceTable;
namespace NoxAgent {
namespace {

constexpr const char* Prefix = "/v1/";
constexpr std::size_t PrefixLength = 4;

// Names in messages are cut: they come from outside.
AString Shown(const std::string& name) {
  return AString::FromUtf8(name).Left(100);
}

// What stands between the slashes after the prefix; nothing when there are not just three parts.
std::optional<std::array<std::string, 3>> Split(const std::string& path) {
  const std::size_t first = path.find('/', PrefixLength);
  const std::size_t second = first == std::string::npos ? first : path.find('/', first + 1);
  if (path.compare(0, PrefixLength, Prefix) != 0 || second == std::string::npos ||
      path.find('/', second + 1) != std::string::npos) {
    return std::nullopt;
  }
  return std::array{path.substr(PrefixLength, first - PrefixLength),
                    path.substr(first + 1, second - first - 1), path.substr(second + 1)};
}

// The argument of the operation that is an enumeration's handle; null when it has none.
const JsonMessage::Argument* HandleOf(const OperationCall& call) {
  const JsonMessage::Argument* const handle = call.m_Operation.Find("handle");
  return handle != nullptr && JsonMessage::IsHandle(*handle) ? handle : nullptr;
}

// Another client may still change the task between this and what is sent.
void ThrowIfChanged(OperationCall& call) {
  if (!call.m_Replaces.has_value()) {
    return;
  }
  const AString& id = std::get<AString>(*call.m_Request.Find("taskId"));
  const std::optional<AString> document = DocumentOnDisk(*call.m_Plugin, id);
  if (!document.has_value() || !IsSameTask(*document, *call.m_Replaces)) {
    throw RequestError(HttpStatus::Conflict, "task-changed",
                       AString(document.has_value() ? "the task %1 has changed since it was read; "
                                                      "nothing was replaced"
                                                    : "the task %1 is gone; nothing was added")
                           .Arg(id));
  }
}

Json Describe(const std::vector<TaskDocumentProblem>& problems, const AString& jobProblem) {
  Json list = Json::List{};
  for (const TaskDocumentProblem& problem : problems) {
    list.Append({{"line", problem.m_Line},
                 {"column", problem.m_Column},
                 {"message", problem.m_Message.ToUtf8()},
                 {"effect", problem.m_Effect.ToUtf8()},
                 {"mend", problem.m_Mend.ToUtf8()}});
  }
  if (!jobProblem.IsEmpty()) {
    list.Append({{"message", "the task's job cannot be run: " + jobProblem.ToUtf8()},
                 {"effect", "the task's runs fail"},
                 {"mend", "mend the job before the task is due"}});
  }
  return list;
}

}  // namespace

OperationRoute::OperationRoute(const Plugins& plugins, NotificationCenter& notifications,
                               EnumerationHandles& handles, const TaskStore& store,
                               TaskReturns& returns)
    : m_Plugins(plugins),
      m_Notifications(notifications),
      m_Handles(handles),
      m_Store(store),
      m_Returns(returns),
      m_Border(plugins) {}

bool OperationRoute::IsPath(const std::string& path) {
  return Split(path).has_value();
}

Json OperationRoute::Answer(const std::string& path, const std::string& query,
                            const std::string& body, const Caller& caller) {
  const std::unique_ptr<OperationCall> call = Find(path);
  call->m_Caller = caller;
  const bool force = query == "force=1" && call->m_Operation.m_Name == "AddTask";
  if (!query.empty() && !force) {
    throw RequestError(HttpStatus::BadRequest, "bad-query",
                       "of all operations only AddTask takes a query, force=1");
  }
  Prepare(*call, JsonMessage::ParseObject(body), force);
  return Perform(*call);
}

std::unique_ptr<OperationCall> OperationRoute::PrepareAddTask(const Json& arguments,
                                                              bool force) const {
  std::unique_ptr<OperationCall> call =
      Find(Prefix + m_Store.Scheduler().ToUtf8() + "/INoxTaskScheduler/AddTask");
  Prepare(*call, arguments, force);
  return call;
}

void OperationRoute::Prepare(OperationCall& call, const Json& arguments, bool force) const {
  JsonMessage::Decode(arguments, call.m_Operation, call.m_Request);
  if (HandleOf(call) != nullptr) {
    call.m_Token = JsonMessage::DecodeToken(arguments, "handle");
  }
  JobBorder::Check(call.m_Caller, call.m_Request, TaskFileExtension());
  call.m_Problems = m_Border.Check(*call.m_Plugin, call.m_Request, force);
}

// Empty without a scheduler.
AString OperationRoute::TaskFileExtension() const {
  return m_Store.Files() != nullptr ? AString::FromUtf8(m_Store.Files()->Directory().Extension())
                                    : AString();
}

Json OperationRoute::Perform(OperationCall& call) {
  Json answer = SendWithHandle(call);
  Json warnings = Describe(call.m_Problems, m_Border.ProblemOfJob(call.m_Request, call.m_Reply));
  if (!warnings.Items().empty()) {
    answer["warnings"] = std::move(warnings);
  }
  return answer;
}

std::unique_ptr<OperationCall> OperationRoute::Find(const std::string& path) const {
  const auto [pluginName, interfaceName, operationName] = *Split(path);
  std::shared_ptr<Plugin> plugin = m_Plugins.Find(AString::FromUtf8(pluginName));
  if (plugin == nullptr) {
    throw RequestError(
        HttpStatus::NotFound, "unknown-plugin",
        AString("no plug-in is called \"%1\"; GET /v1/status lists them").Arg(Shown(pluginName)));
  }
  const AInterfaceTable* const table = AInterfaceTable::Find(interfaceName);
  if (table == nullptr || !plugin->Serves(table->m_Name)) {
    throw RequestError(HttpStatus::NotFound, "unknown-interface",
                       AString("the plug-in %1 has no interface \"%2\"")
                           .Arg(plugin->Name(), Shown(interfaceName)));
  }
  const AInterfaceTable::AOperation* const operation = table->FindOperation(operationName);
  if (operation == nullptr) {
    throw RequestError(HttpStatus::NotFound, "unknown-operation",
                       AString("the interface %1 has no operation \"%2\"")
                           .Arg(Shown(interfaceName), Shown(operationName)));
  }
  return std::make_unique<OperationCall>(std::move(plugin), *table, *operation);
}

Json OperationRoute::SendWithHandle(OperationCall& call) {
  const JsonMessage::Argument* const handle = HandleOf(call);
  if (handle == nullptr) {
    return Send(call);
  }
  return handle->IsOut() ? OpenEnumeration(call) : UseEnumeration(call);
}

Json OperationRoute::OpenEnumeration(OperationCall& call) {
  if (!call.m_Token.empty()) {
    throw RequestError(HttpStatus::BadRequest, "handle-not-empty",
                       "an enumeration begins without a handle: leave it out");
  }
  EnumerationHandles::Reservation reservation(m_Handles, call.m_Caller.m_Process);
  Json answer = Send(call);
  const auto handle = Out<unsigned long>(call.m_Reply, "handle");
  if (handle == 0) {
    answer["out"]["handle"] = 0;
  } else {
    answer["out"]["handle"] =
        reservation.Fill(call.m_Plugin, handle, EnumerationHandles::Clock::now());
  }
  return answer;
}

Json OperationRoute::UseEnumeration(OperationCall& call) {
  EnumerationHandles::Use use(m_Handles, *call.m_Plugin, call.m_Token,
                              EnumerationHandles::Clock::now());
  call.m_Request.Set("handle", use.Handle());
  if (call.m_Operation.m_Name == "FindClose") {
    use.Forget();
  }
  return Send(call);
}

// The lock is for the few requests that are about a task with a return or under a condition; all
// others go side by side.
Json OperationRoute::Send(OperationCall& call) {
  CancelledReturns cancelled(call, m_Returns, m_Store.Scheduler());
  if (cancelled.IsEmpty() && !call.m_Replaces.has_value()) {
    return SendAlone(call);
  }
  BaseSDK::AMutexGuard guard(m_Returns.ChangeLock());
  ThrowIfChanged(call);
  Json answer = SendAlone(call);
  cancelled.Cancel();
  return answer;
}

Json OperationRoute::SendAlone(OperationCall& call) {
  const WriteFailures failures;
  // A plug-in gets the agent's notifications on the agent thread only, also those that clients ask
  // for.
  if (call.m_Operation.m_Name == "NotifyObject") {
    m_Notifications.SendOnAgentThread(*call.m_Plugin, call.m_Request);
  } else {
    call.m_Plugin->Send(call.m_Request);
  }
  ThrowIfError(call.m_Reply);
  if (m_Store.Files() != nullptr) {
    ThrowIfNotWritten(call.m_Request, call.m_Reply.Result(), failures, *m_Store.Files());
  }
  return JsonMessage::Encode(call.m_Operation, call.m_Reply);
}

}  // namespace NoxAgent
