#include "agent/client/AgentApi.h"

#include "agent/client/ExitCode.h"

#include <BaseSDK/AString.h>

#include <algorithm>
#include <set>

namespace NoxAgent {

namespace {

constexpr unsigned HttpOk = 200;
constexpr unsigned HttpUnprocessable = 422;
constexpr const char* BadTaskId = "bad-task-id";
// Requests sent before the first answer is read: all of them fit into a socket's buffer.
constexpr std::size_t AtOnce = 32;
constexpr const char* Scheduler = "/v1/scheduler/INoxTaskScheduler/";
constexpr const char* LatestRunTarget = "/v1/command/INoxCommandHandler/GetRun";

// "message (line 3, column 7)"
std::string DescribeError(const Json& error) {
  std::string text = error.Text("message", "the agent gives no reason");
  if (error.Has("line")) {
    text += " (line " + error.At("line").Dump() + ", column " + error.At("column").Dump() + ")";
  }
  return text;
}

std::optional<CommandError::Place> PlaceOf(const Json& error) {
  return error.Has("line") ? std::optional(CommandError::Place{error.At("line").Long(),
                                                               error.At("column").Long()})
                           : std::nullopt;
}

// The agent's error to a request.
CommandError Refusal(unsigned status, const Json& error) {
  return {status == HttpUnprocessable ? ExitCode::Usage : ExitCode::Failed,
          "the agent refuses: " + DescribeError(error), error.Text("code", ""), PlaceOf(error)};
}

// An object that the text holds; nothing when it holds none.
std::optional<Json> ObjectIn(const std::string& text) {
  try {
    Json value = Json::Parse(text);
    return value.IsObject() ? std::optional<Json>(std::move(value)) : std::nullopt;
  } catch (const JsonError&) {
    return std::nullopt;
  }
}

Json Answer(const HttpResponse& response) {
  if (response.m_Status == HttpOk) {
    return response.m_Body.empty() ? Json::Object{} : Json::Parse(response.m_Body);
  }
  const auto body = ObjectIn(response.m_Body);
  const Json* const error = body ? body->Find("error") : nullptr;
  if (error != nullptr && error->IsObject()) {
    throw Refusal(response.m_Status, *error);
  }
  throw CommandError(ExitCode::Failed, "the agent answers with HTTP status " +
                                           std::to_string(response.m_Status) +
                                           "; see its log for the reason");
}

long ResultOf(const Json& answer) {
  return answer.At("result").Long();
}

std::string OutText(const Json& answer, const char* name) {
  return answer.At("out").At(name).Text();
}

// Texts of the system need not be UTF-8; what is not is shown to the agent as such.
std::string BodyOf(const Json& arguments) {
  return arguments.Dump(0, Json::Charset::Ascii);
}

std::vector<Json> ArgumentsFor(const std::vector<std::string>& ids) {
  std::vector<Json> arguments;
  for (const std::string& id : ids) {
    arguments.push_back({{"taskId", id}});
  }
  return arguments;
}

// Adds what an enumeration has found; false at its end.
bool TakeId(const Json& answer, std::set<std::string>& ids) {
  if (ResultOf(answer) <= 0) {
    return false;
  }
  const std::string id = OutText(answer, "taskId");
  const bool isTask = !id.empty() && id.front() != '.';  // it also returns "." and ".."
  if (isTask) {
    ids.insert(id);
  }
  return true;
}

// Nothing when there is no such task.
std::optional<Json> AnswerForTask(const HttpResponse& response) {
  try {
    Json answer = Answer(response);
    return ResultOf(answer) < 1 ? std::nullopt : std::optional<Json>(std::move(answer));
  } catch (const CommandError& refusal) {
    // The task directory may hold files of other names, and they are enumerated as well.
    if (refusal.Name() == BadTaskId) {
      return std::nullopt;
    }
    throw;
  }
}

std::optional<std::string> TaskXmlIn(const HttpResponse& response) {
  const std::optional<Json> answer = AnswerForTask(response);
  return answer ? std::optional<std::string>(OutText(*answer, "taskXml")) : std::nullopt;
}

AgentApi::Attributes TextsIn(const Json& object) {
  AgentApi::Attributes texts;
  for (const auto& [key, value] : object.Members()) {
    texts[key] = value.Text();
  }
  return texts;
}

std::optional<AgentApi::Attributes> AttributesIn(const HttpResponse& response) {
  const std::optional<Json> answer = AnswerForTask(response);
  return answer ? std::optional(TextsIn(answer->At("out").At("attributes"))) : std::nullopt;
}

// Whatever else it is, it is no run.
std::optional<AgentApi::Attributes> RunIn(const HttpResponse& response) {
  const auto answer = response.m_Status == HttpOk ? ObjectIn(response.m_Body) : std::nullopt;
  if (!answer || answer->Long("result", -1) < 1) {
    return std::nullopt;
  }
  return TextsIn(answer->At("out").At("run"));
}

// Those about the document have a place in it.
std::vector<std::string> JobWarningsIn(const Json& answer) {
  std::vector<std::string> texts;
  for (const Json& warning : answer.Items("warnings")) {
    if (!warning.Has("line")) {
      texts.push_back(warning.Text("message", "") + "; " + warning.Text("effect", "") + "; " +
                      warning.Text("mend", ""));
    }
  }
  return texts;
}

}  // namespace

HttpConnection& AgentApi::Connection() {
  if (m_Connection == nullptr || !m_Connection->IsOpen()) {
    m_Connection = std::make_unique<HttpConnection>(m_SocketPath);
  }
  return *m_Connection;
}

Json AgentApi::Call(const std::string& operation, const Json& arguments, const std::string& query) {
  return Answer(Connection().Post(Scheduler + operation + query, BodyOf(arguments)));
}

std::vector<HttpResponse> AgentApi::CallAll(const std::string& operation,
                                            const std::vector<Json>& arguments) {
  return PostAll(Scheduler + operation, arguments);
}

std::vector<HttpResponse> AgentApi::PostAll(const std::string& target,
                                            const std::vector<Json>& arguments) {
  std::vector<HttpResponse> answers;
  while (answers.size() < arguments.size()) {
    std::vector<std::string> bodies;
    for (std::size_t i = answers.size(); i < arguments.size() && bodies.size() < AtOnce; ++i) {
      bodies.push_back(BodyOf(arguments[i]));
    }
    for (HttpResponse& answer : Connection().PostAll(target, bodies)) {
      answers.push_back(std::move(answer));
    }
  }
  return answers;
}

AgentApi::AddedTask AgentApi::AddTask(const std::string& id, const std::string& xml, bool force) {
  const Json answer = Call("AddTask", {{"taskId", id}, {"taskXml", xml}}, force ? "?force=1" : "");
  if (ResultOf(answer) < 1) {
    throw CommandError(ExitCode::Failed,
                       "the scheduler could not store the task; see that its directory can be "
                       "written and has room");
  }
  return {OutText(answer, "newTaskId"), JobWarningsIn(answer)};
}

std::vector<std::string> AgentApi::TaskIds() {
  std::set<std::string> ids;
  Json answer = Call("FindFirstTask", Json::Object{});
  if (answer.At("out").At("handle").IsWhole()) {
    return {};  // the number 0: nothing was opened
  }
  const std::string handle = OutText(answer, "handle");
  bool more = TakeId(answer, ids);
  while (more) {
    // Asked some times past the end at last, which does no harm.
    for (const HttpResponse& next :
         CallAll("FindNextTask", std::vector<Json>(AtOnce, {{"handle", handle}}))) {
      more = more && TakeId(Answer(next), ids);
    }
  }
  if (!handle.empty()) {
    (void)Call("FindClose", {{"handle", handle}});
  }
  return {ids.begin(), ids.end()};
}

std::optional<std::string> AgentApi::TaskXml(const std::string& id) {
  return TaskXmls({id}).front();
}

std::vector<std::optional<std::string>> AgentApi::TaskXmls(const std::vector<std::string>& ids) {
  std::vector<std::optional<std::string>> documents;
  for (const HttpResponse& response : CallAll("GetTaskXML", ArgumentsFor(ids))) {
    documents.push_back(TaskXmlIn(response));
  }
  return documents;
}

std::optional<AgentApi::Attributes> AgentApi::TaskAttributes(const std::string& id) {
  return TaskAttributes(std::vector<std::string>{id}).front();
}

std::vector<std::optional<AgentApi::Attributes>> AgentApi::TaskAttributes(
    const std::vector<std::string>& ids) {
  std::vector<std::optional<Attributes>> reports;
  for (const HttpResponse& response : CallAll("GetTaskAttributes", ArgumentsFor(ids))) {
    reports.push_back(AttributesIn(response));
  }
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

std::optional<AgentApi::Attributes> AgentApi::LatestRun(const std::string& id) {
  return LatestRuns({id}).front();
}

std::vector<std::optional<AgentApi::Attributes>> AgentApi::LatestRuns(
    const std::vector<std::string>& ids) {
  std::vector<std::optional<Attributes>> runs;
  for (const HttpResponse& response : PostAll(LatestRunTarget, ArgumentsFor(ids))) {
    runs.push_back(RunIn(response));
  }
  return runs;
}

std::vector<std::pair<std::string, std::string>> AgentApi::FilesThatAreNoTasks() {
  const HttpResponse response = Connection().Get("/v1/files");
  const Json answer =
      response.m_Status == HttpOk ? ObjectIn(response.m_Body).value_or(Json()) : Json();
  std::vector<std::pair<std::string, std::string>> files;
  for (const char* const kind : {"strays", "refused"}) {
    for (const Json& file : answer.Items(kind)) {
      files.emplace_back(file.Text("name", ""), file.Text("reason", ""));
    }
  }
  return files;
}

Json AgentApi::Files() {
  return Answer(Connection().Get("/v1/files"));
}

std::string AgentApi::TakeBackFile(const std::string& name) {
  return OutText(Answer(Connection().Post("/v1/files/take-back", BodyOf({{"name", name}}))),
                 "newTaskId");
}

void AgentApi::RemoveFile(const std::string& name, const std::string& from) {
  (void)Answer(Connection().Post("/v1/files/remove", BodyOf({{"name", name}, {"from", from}})));
}

Json AgentApi::Status(bool withTasks) {
  return Answer(Connection().Get(withTasks ? "/v1/status?tasks=1" : "/v1/status"));
}

Json AgentApi::Refresh() {
  return Answer(Connection().Post("/v1/refresh", "{}"));
}

void AgentApi::Notify(long kind, long code, const std::string& text) {
  const Json body = {{"kind", kind}, {"code", code}, {"text", text}};
  (void)Answer(Connection().Post("/v1/notify", BodyOf(body)));
}

void AgentApi::Follow(const std::function<void()>& opened,
                      const std::function<bool(const Json&)>& next) {
  // A stream takes its connection for good; the calls made meanwhile need another.
  HttpConnection stream(m_SocketPath);
  const HttpResponse end = stream.Follow("/v1/notifications", opened, [&](const std::string& line) {
    const auto notification = ObjectIn(line);
    return !notification || next(*notification);
  });
  if (end.m_Status != HttpOk) {
    (void)Answer(end);
  }
}

long AttributeNumber(const AgentApi::Attributes& attributes, const char* key, long absent) {
  const auto found = attributes.find(key);
  return found == attributes.end() ? absent : BaseSDK::AString::FromUtf8(found->second).ToLong(10);
}

}  // namespace NoxAgent
