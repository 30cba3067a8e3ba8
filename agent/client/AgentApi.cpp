#include "agent/client/AgentApi.h"

#include <algorithm>
#include <set>

#include "agent/client/ExitCode.h"

namespace NoxAgent {

using nlohmann::json;

namespace {

constexpr unsigned kHttpOk = 200;
constexpr unsigned kHttpUnprocessable = 422;
constexpr const char* kBadTaskId = "bad-task-id";
// Requests sent before the first answer is read: all of them fit into a socket's buffer.
constexpr std::size_t kAtOnce = 32;
constexpr const char* kScheduler = "/v1/scheduler/INoxTaskScheduler/";

[[noreturn]] void FailUnreadable(const std::string& body) {
  throw CommandError(ExitCode::Failed,
                     "the agent's answer cannot be read: \"" + body.substr(0, 80) +
                         "\"; see that noxctl and noxagentd are of the same version");
}

json Parsed(const std::string& body) {
  json parsed = json::parse(body, nullptr, false);
  if (parsed.is_discarded()) FailUnreadable(body);
  return parsed;
}

// "message (line 3, column 7)"
std::string DescribeError(const json& error) {
  std::string text = error.value("message", "the agent gives no reason");
  if (error.contains("line") && error["line"].is_number())
    text += " (line " + error["line"].dump() + ", column " + error.value("column", json(1)).dump() +
            ")";
  return text;
}

// The agent's error to a request, with its name for programs.
class Refusal : public CommandError {
 public:
  Refusal(unsigned status, const json& error)
      : CommandError(status == kHttpUnprocessable ? ExitCode::Usage : ExitCode::Failed,
                     "the agent refuses: " + DescribeError(error)),
        m_Name(error.value("code", "")) {}

  const std::string& Name() const { return m_Name; }

 private:
  std::string m_Name;
};

json Answer(const HttpResponse& response) {
  if (response.m_Status == kHttpOk)
    return response.m_Body.empty() ? json::object() : Parsed(response.m_Body);
  const json parsed = json::parse(response.m_Body, nullptr, false);
  if (parsed.is_object() && parsed.contains("error") && parsed["error"].is_object())
    throw Refusal(response.m_Status, parsed["error"]);
  throw CommandError(ExitCode::Failed, "the agent answers with HTTP status " +
                                           std::to_string(response.m_Status) +
                                           "; see its log for the reason");
}

long ResultOf(const json& answer) {
  if (!answer.contains("result") || !answer["result"].is_number_integer())
    FailUnreadable(answer.dump());
  return answer["result"].get<long>();
}

std::string OutText(const json& answer, const char* name) {
  const json out = answer.value("out", json::object());
  if (!out.contains(name) || !out[name].is_string()) FailUnreadable(answer.dump());
  return out[name].get<std::string>();
}

// Texts of the system need not be UTF-8; what is not is shown to the agent as such.
std::string BodyOf(const json& arguments) {
  return arguments.dump(-1, ' ', true, json::error_handler_t::replace);
}

std::vector<json> ArgumentsFor(const std::vector<std::string>& ids) {
  std::vector<json> arguments;
  for (const std::string& id : ids) arguments.push_back({{"taskId", id}});
  return arguments;
}

// Adds what an enumeration has found; false at its end.
bool TakeId(const json& answer, std::set<std::string>& ids) {
  if (ResultOf(answer) <= 0) return false;
  const std::string id = OutText(answer, "taskId");
  const bool isTask = !id.empty() && id.front() != '.';  // it also returns "." and ".."
  if (isTask) ids.insert(id);
  return true;
}

// Nothing when there is no such task.
std::optional<json> AnswerForTask(const HttpResponse& response) {
  try {
    json answer = Answer(response);
    return ResultOf(answer) < 1 ? std::nullopt : std::optional<json>(std::move(answer));
  } catch (const Refusal& refusal) {
    // The task directory may hold files of other names, and they are enumerated as well.
    if (refusal.Name() == kBadTaskId) return std::nullopt;
    throw;
  }
}

std::optional<std::string> TaskXmlIn(const HttpResponse& response) {
  const std::optional<json> answer = AnswerForTask(response);
  return answer ? std::optional<std::string>(OutText(*answer, "taskXml")) : std::nullopt;
}

std::optional<AgentApi::Attributes> AttributesIn(const HttpResponse& response) {
  const std::optional<json> answer = AnswerForTask(response);
  if (!answer) return std::nullopt;
  const json map = answer->value("out", json::object()).value("attributes", json());
  if (!map.is_object()) FailUnreadable(answer->dump());
  AgentApi::Attributes attributes;
  for (const auto& [key, value] : map.items())
    attributes[key] = value.is_string() ? value.get<std::string>() : value.dump();
  return attributes;
}

}  // namespace

HttpConnection& AgentApi::Connection() {
  if (m_Connection == nullptr || !m_Connection->IsOpen())
    m_Connection = std::make_unique<HttpConnection>(m_SocketPath);
  return *m_Connection;
}

json AgentApi::Call(const std::string& operation, const json& arguments, const std::string& query) {
  return Answer(Connection().Post(kScheduler + operation + query, BodyOf(arguments)));
}

std::vector<HttpResponse> AgentApi::CallAll(const std::string& operation,
                                            const std::vector<json>& arguments) {
  std::vector<HttpResponse> answers;
  while (answers.size() < arguments.size()) {
    std::vector<std::string> bodies;
    for (std::size_t i = answers.size(); i < arguments.size() && bodies.size() < kAtOnce; ++i)
      bodies.push_back(BodyOf(arguments[i]));
    for (HttpResponse& answer : Connection().PostAll(kScheduler + operation, bodies))
      answers.push_back(std::move(answer));
  }
  return answers;
}

std::string AgentApi::AddTask(const std::string& id, const std::string& xml, bool force) {
  const json answer = Call("AddTask", {{"taskId", id}, {"taskXml", xml}}, force ? "?force=1" : "");
  if (ResultOf(answer) < 1)
    throw CommandError(ExitCode::Failed,
                       "the scheduler could not store the task; see that its directory can be "
                       "written and has room");
  return OutText(answer, "newTaskId");
}

std::vector<std::string> AgentApi::TaskIds() {
  std::set<std::string> ids;
  json answer = Call("FindFirstTask", json::object());
  const std::string handle = OutText(answer, "handle");
  bool more = TakeId(answer, ids);
  while (more) {
    // Asked some times past the end at last, which does no harm.
    for (const HttpResponse& next :
         CallAll("FindNextTask", std::vector<json>(kAtOnce, {{"handle", handle}})))
      more = more && TakeId(Answer(next), ids);
  }
  if (!handle.empty()) (void)Call("FindClose", {{"handle", handle}});
  return {ids.begin(), ids.end()};
}

std::optional<std::string> AgentApi::TaskXml(const std::string& id) {
  return TaskXmls({id}).front();
}

std::vector<std::optional<std::string>> AgentApi::TaskXmls(const std::vector<std::string>& ids) {
  std::vector<std::optional<std::string>> documents;
  for (const HttpResponse& response : CallAll("GetTaskXML", ArgumentsFor(ids)))
    documents.push_back(TaskXmlIn(response));
  return documents;
}

std::optional<AgentApi::Attributes> AgentApi::TaskAttributes(const std::string& id) {
  return TaskAttributes(std::vector<std::string>{id}).front();
}

std::vector<std::optional<AgentApi::Attributes>> AgentApi::TaskAttributes(
    const std::vector<std::string>& ids) {
  std::vector<std::optional<Attributes>> reports;
  for (const HttpResponse& response : CallAll("GetTaskAttributes", ArgumentsFor(ids)))
    reports.push_back(AttributesIn(response));
  return reports;
}

bool AgentApi::DeleteTask(const std::string& id) {
  return ResultOf(Call("DeleteTask", {{"taskId", id}})) > 0;
}

bool AgentApi::EnableTask(const std::string& id, bool enable) {
  return ResultOf(Call("EnableTask", {{"taskIds", id}, {"enable", enable}})) > 0;
}

bool AgentApi::SetRunState(const std::string& id, const std::string& state) {
  // Kept on purpose: this operation alone answers 0 for done and 1 for an unknown task.
  return ResultOf(Call("SetRunState", {{"taskId", id}, {"runState", state}})) == 0;
}

json AgentApi::Status() {
  return Answer(Connection().Get("/v1/status"));
}

void AgentApi::Refresh() {
  (void)Answer(Connection().Post("/v1/refresh", "{}"));
}

void AgentApi::Notify(long kind, long code, const std::string& text) {
  const json body = {{"kind", kind}, {"code", code}, {"text", text}};
  (void)Answer(Connection().Post("/v1/notify", BodyOf(body)));
}

void AgentApi::Follow(const std::function<void()>& opened,
                      const std::function<bool(const json&)>& next) {
  // A stream takes its connection for good; the calls made meanwhile need another.
  HttpConnection stream(m_SocketPath);
  const HttpResponse end = stream.Follow("/v1/notifications", opened, [&](const std::string& line) {
    const json notification = json::parse(line, nullptr, false);
    return !notification.is_object() || next(notification);
  });
  if (end.m_Status != kHttpOk) (void)Answer(end);
}

}  // namespace NoxAgent
