#include "agent/client/AgentApi.h"

#include "agent/client/AddRequest.h"
#include "agent/client/AgentMessage.h"
#include "agent/document/TaskId.h"

#include <BaseSDK/AString.h>

#include <span>

namespace NoxAgent {

namespace {

constexpr const char* UnknownTask = "unknown-task";
constexpr const char* Scheduler = "/v1/scheduler/INoxTaskScheduler/";
constexpr const char* AddTarget = "/v1/tasks/add";
constexpr const char* DisableTarget = "/v1/tasks/disable";
constexpr const char* JobHandler = "/v1/command/INoxCommandHandler/";

AgentApi::Attributes TextsIn(const Json& object) {
  AgentApi::Attributes texts;
  for (const auto& [key, value] : object.Members()) {
    texts[key] = value.Text();
  }
  return texts;
}

// A line of the list of tasks. The last one is an error when the list breaks off.
AgentApi::ListedTask TaskIn(const Json& line) {
  if (const Json* const error = line.Find("error")) {
    throw CommandError(ExitCode::Failed, "the agent breaks off: " + DescribeError(*error),
                       error->Text("code", ""));
  }
  AgentApi::ListedTask task;
  task.m_Id = line.At("id").Text();
  task.m_Document = {line.At("enabled").Bool(),
                     BaseSDK::AString::FromUtf8(line.Text("runTime", ""))};
  if (line.At("loaded").Bool()) {
    task.m_Report = {line.Long("lastRun", 0), line.Long("nextRun", 0), line.At("late").Bool()};
  }
  if (const Json* const run = line.Find("run")) {
    task.m_Run = TextsIn(*run);
  }
  task.m_Returns = line.Long("returns", 0);
  return task;
}

// Whatever else it is, it is no run.
std::optional<AgentApi::Attributes> RunIn(const HttpResponse& response) {
  const auto answer = response.m_Status == HttpOk ? ObjectIn(response.m_Body) : std::nullopt;
  if (!answer || answer->Long("result", -1) < 1) {
    return std::nullopt;
  }
  return TextsIn(answer->At("out").At("run"));
}

}  // namespace

HttpConnection& AgentApi::Connection() {
  if (m_Connection == nullptr || !m_Connection->IsOpen()) {
    m_Connection = std::make_unique<HttpConnection>(m_SocketPath);
  }
  return *m_Connection;
}

Json AgentApi::Call(const std::string& operation, const Json& arguments) {
  return Answer(Connection().Post(Scheduler + operation, BodyOf(arguments)));
}

HttpResponse AgentApi::PostAbout(const std::string& target, const std::string& taskId) {
  return Connection().Post(target, BodyOf({{"taskId", taskId}}));
}

void AgentApi::AddTasks(const std::vector<NewTask>& tasks, bool force, const TakeAddedTask& take) {
  const std::string target = AddTarget + std::string(force ? "?force=1" : "");
  for (std::size_t first = 0; first < tasks.size();) {
    const AddBody body = BodyToAdd(std::span(tasks).subspan(first));
    const HttpResponse response = Connection().Post(target, body.m_Text);
    ThrowIfTaskRefused(response, first, body.m_Tasks);
    const Json answer = Answer(response);
    for (std::size_t index = 0; index < body.m_Tasks; ++index) {
      take(first + index, AddedTaskIn(answer.At("tasks").At(index)));
    }
    first += body.m_Tasks;
  }
}

std::vector<std::string> AgentApi::TaskIds() {
  std::vector<std::string> ids;
  ForEachTask([&](const ListedTask& task) { ids.push_back(task.m_Id); });
  return ids;
}

std::optional<std::string> AgentApi::TaskXml(const std::string& id) {
  const auto answer = AnswerForTask(PostAbout(Scheduler + std::string("GetTaskXML"), id));
  return answer ? std::optional<std::string>(OutText(*answer, "taskXml")) : std::nullopt;
}

std::optional<AgentApi::Attributes> AgentApi::TaskAttributes(const std::string& id) {
  const auto answer = AnswerForTask(PostAbout(Scheduler + std::string("GetTaskAttributes"), id));
  return answer ? std::optional(TextsIn(answer->At("out").At("attributes"))) : std::nullopt;
}

void AgentApi::ForEachTask(const std::function<void(const ListedTask&)>& take) {
  const HttpResponse end = Connection().GetLines(
      "/v1/tasks", [&](const std::string& line) { take(TaskIn(Json::Parse(line))); });
  if (end.m_Status != HttpOk) {
    (void)Answer(end);
  }
}

long AgentApi::ReturnOf(const std::string& id) {
  // Nothing else may stand in a request's first line.
  if (!FaultOfTaskId(BaseSDK::AString::FromUtf8(id), BaseSDK::AString()).IsEmpty()) {
    return 0;
  }
  long moment = 0;
  (void)Connection().GetLines("/v1/tasks?id=" + id, [&](const std::string& line) {
    moment = TaskIn(Json::Parse(line)).m_Returns;
  });
  return moment;
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

bool AgentApi::DisableTaskUntil(const std::string& id, long until) {
  const Json answer = Answer(
      Connection().Post(DisableTarget, BodyOf({{"taskIds", Json::List{id}}, {"until", until}})));
  const Json* const error = answer.At("tasks").At(0).Find("error");
  if (error != nullptr && error->Text("code", "") != UnknownTask) {
    throw Refusal(HttpOk, *error);
  }
  return error == nullptr;
}

std::optional<AgentApi::Attributes> AgentApi::LatestRun(const std::string& id) {
  return RunIn(PostAbout(JobHandler + std::string("GetRun"), id));
}

void AgentApi::RunTask(const std::string& id) {
  // Neither late, nor never run, nor to be ended with a period. The handler declines each batch:
  // it reports by itself.
  (void)Answer(Connection().Post("/v1/command/INoxScheduledTaskHandler/RunTasksEx",
                                 BodyOf({{"batch", id + ":0:0:0;"}})));
}

bool AgentApi::StopRun(const std::string& id) {
  return AnswerForTask(PostAbout(JobHandler + std::string("StopRun"), id)).has_value();
}

void AgentApi::PutJob(const std::string& id, const std::string& text) {
  const Json answer = Answer(Connection().Post(JobHandler + std::string("PutJob"),
                                               BodyOf({{"taskId", id}, {"text", text}})));
  if (ResultOf(answer) < 1) {
    throw CommandError(ExitCode::Usage, OutText(answer, "problem"));
  }
}

std::optional<std::string> AgentApi::JobText(const std::string& id) {
  const auto answer = AnswerForJob(PostAbout(JobHandler + std::string("GetJob"), id));
  return answer ? std::optional<std::string>(OutText(*answer, "text")) : std::nullopt;
}

bool AgentApi::DeleteJob(const std::string& id) {
  return AnswerForJob(PostAbout(JobHandler + std::string("DeleteJob"), id)).has_value();
}

std::optional<AgentApi::OutputPart> AgentApi::Output(const std::string& id,
                                                     const std::string& position) {
  const auto answer = AnswerForTask(Connection().Post(
      JobHandler + std::string("GetOutput"), BodyOf({{"taskId", id}, {"position", position}})));
  return answer ? std::optional<OutputPart>({OutText(*answer, "text"), OutText(*answer, "next")})
                : std::nullopt;
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
