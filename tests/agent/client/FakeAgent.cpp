#include "tests/agent/client/FakeAgent.h"

#include "agent/document/TaskGlance.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace NoxAgentTest {

namespace {

void SendAll(int connection, const std::string& bytes) {
  std::size_t sent = 0;
  while (sent < bytes.size()) {
    const ssize_t n = send(connection, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
    if (n <= 0) {
      return;
    }
    sent += static_cast<std::size_t>(n);
  }
}

bool ReceiveMore(int connection, std::string& buffer) {
  char bytes[4096];
  const ssize_t n = recv(connection, bytes, sizeof bytes, 0);
  if (n <= 0) {
    return false;
  }
  buffer.append(bytes, static_cast<std::size_t>(n));
  return true;
}

std::size_t BodyLength(const std::string& head) {
  constexpr const char* Field = "Content-Length: ";
  const std::size_t at = head.find(Field);
  return at == std::string::npos ? 0 : std::stoul(head.substr(at + std::strlen(Field)));
}

std::string Response(unsigned status, const std::string& body) {
  return "HTTP/1.1 " + std::to_string(status) +
         " Fake\r\nContent-Type: application/json\r\nContent-Length: " +
         std::to_string(body.size()) + "\r\n\r\n" + body;
}

std::string Chunk(const std::string& data) {
  char size[16];
  (void)std::snprintf(size, sizeof size, "%zx", data.size());
  return size + ("\r\n" + data) + "\r\n";
}

long NumberIn(const std::map<std::string, std::string>& attributes, const char* key) {
  const auto found = attributes.find(key);
  return found == attributes.end() ? 0 : std::stol(found->second);
}

Json Result(long result, Json out = Json::Object{}) {
  return {{"result", result}, {"out", std::move(out)}};
}

}  // namespace

FakeAgent::FakeAgent(const std::string& socketPath) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (socketPath.size() >= sizeof address.sun_path) {
    throw std::runtime_error("path too long");
  }
  std::memcpy(address.sun_path, socketPath.c_str(), socketPath.size() + 1);
  m_Listener = socket(AF_UNIX, SOCK_STREAM, 0);
  if (bind(m_Listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
      listen(m_Listener, 8) != 0) {
    throw std::runtime_error("cannot listen on " + socketPath);
  }
  m_Acceptor = std::thread([this] { Accept(); });
}

FakeAgent::~FakeAgent() {
  {
    const std::lock_guard guard(m_Lock);
    m_Ending = true;
    for (const int connection : m_Connections) {
      (void)shutdown(connection, SHUT_RDWR);
    }
  }
  m_Read.notify_all();
  (void)shutdown(m_Listener, SHUT_RDWR);
  m_Acceptor.join();
  for (std::thread& server : m_Servers) {
    server.join();
  }
  for (const int connection : m_Connections) {
    (void)close(connection);
  }
  (void)close(m_Listener);
}

void FakeAgent::SetTask(const std::string& id, FakeTask task) {
  const std::lock_guard guard(m_Lock);
  m_Tasks[id] = std::move(task);
}

void FakeAgent::RemoveTask(const std::string& id) {
  const std::lock_guard guard(m_Lock);
  m_Tasks.erase(id);
}

std::optional<std::string> FakeAgent::Job(const std::string& id) const {
  const std::lock_guard guard(m_Lock);
  const auto job = m_Jobs.find(id);
  return job == m_Jobs.end() ? std::nullopt : std::optional(job->second);
}

void FakeAgent::SetJob(const std::string& id, const std::string& text) {
  const std::lock_guard guard(m_Lock);
  m_Jobs[id] = text;
}

std::string FakeAgent::Document(const std::string& id) const {
  const std::lock_guard guard(m_Lock);
  return m_Tasks.at(id).m_Xml;
}

void FakeAgent::AnswerAlways(unsigned status, const std::string& body) {
  m_FixedStatus = status;
  m_FixedBody = body;
}

void FakeAgent::AnswerRaw(const std::string& bytes) {
  m_Raw = bytes;
}

std::vector<FakeRequest> FakeAgent::Requests() const {
  const std::lock_guard guard(m_Lock);
  return m_Requests;
}

void FakeAgent::Accept() {
  for (int connection; (connection = accept(m_Listener, nullptr, nullptr)) >= 0;) {
    const std::lock_guard guard(m_Lock);
    m_Connections.push_back(connection);
    if (m_Ending) {
      (void)shutdown(connection, SHUT_RDWR);
    }
    m_Servers.emplace_back([this, connection] { Serve(connection); });
  }
}

std::size_t FakeAgent::Connections() const {
  const std::lock_guard guard(m_Lock);
  return m_Connections.size();
}

void FakeAgent::Serve(int connection) {
  std::string input;
  unsigned left = m_RequestsPerConnection;
  while (left > 0 && ServeRequest(connection, --left == 0, input)) {
  }
  (void)shutdown(connection, SHUT_RDWR);
}

bool FakeAgent::ServeRequest(int connection, bool isLast, std::string& input) {
  std::size_t headEnd;
  while ((headEnd = input.find("\r\n\r\n")) == std::string::npos) {
    if (!ReceiveMore(connection, input)) {
      return false;
    }
  }
  const std::string head = input.substr(0, headEnd);
  const std::size_t end = headEnd + 4 + BodyLength(head);
  while (input.size() < end) {
    if (!ReceiveMore(connection, input)) {
      return false;
    }
  }

  FakeRequest request;
  const std::size_t methodEnd = head.find(' ');
  request.m_Method = head.substr(0, methodEnd);
  request.m_Target = head.substr(methodEnd + 1, head.find(' ', methodEnd + 1) - methodEnd - 1);
  if (end > headEnd + 4) {
    request.m_Body = Json::Parse(input.substr(headEnd + 4, end - headEnd - 4));
  }
  input.erase(0, end);
  if (HasEnded()) {
    return false;
  }
  if (m_Raw) {
    SendAll(connection, *m_Raw);
    return false;
  }
  if (request.m_Target == "/v1/notifications" && m_FixedStatus == 0) {
    Stream(connection);
    return false;
  }
  std::string answer = Answer(request);
  ChangeAfter(request);
  if (isLast) {
    answer.insert(answer.find("\r\n") + 2, "Connection: close\r\n");
  }
  SendAll(connection, answer);
  return true;
}

void FakeAgent::ChangeAfter(const FakeRequest& request) {
  std::function<void(FakeAgent&)> change;
  if (request.m_Target == "/v1/command/INoxCommandHandler/GetJob") {
    const std::lock_guard guard(m_Lock);
    change = std::exchange(m_AfterJobRead, nullptr);
  }
  if (change) {
    change(*this);
  }
}

bool FakeAgent::HasEnded() const {
  const std::lock_guard guard(m_Lock);
  return m_HasEnded;
}

std::string FakeAgent::Answer(const FakeRequest& request) {
  const std::lock_guard guard(m_Lock);
  m_HasEnded = m_HasEnded || (request.m_Target == m_LastTarget && --m_RequestsToLast == 0);
  m_Requests.push_back(request);
  if (m_FixedStatus != 0) {
    return Response(m_FixedStatus, m_FixedBody);
  }
  const Json& body = request.m_Body;
  if (body.IsObject() && request.m_Target != "/v1/tasks/disable" &&
      body.Text("taskId", body.Text("taskIds", "")).find(' ') != std::string::npos) {
    return Response(422, R"({"error":{"code":"bad-task-id","message":"a blank"}})");
  }
  constexpr const char* Operations = "/v1/scheduler/INoxTaskScheduler/";
  if (request.m_Target.rfind(Operations, 0) == 0) {
    const std::string name = request.m_Target.substr(std::strlen(Operations));
    return Response(200, Operation(name.substr(0, name.find('?')), request.m_Body).Dump());
  }
  if (request.m_Target.rfind("/v1/tasks/add", 0) == 0) {
    return AddTasks(request.m_Body);
  }
  if (request.m_Target == "/v1/tasks/disable") {
    return DisableTasks(request.m_Body);
  }
  if (request.m_Target == "/v1/tasks") {
    m_Reads += static_cast<unsigned>(m_Tasks.size());
    m_Read.notify_all();
    return Response(200, TaskLines());
  }
  constexpr const char* OneTask = "/v1/tasks?id=";
  if (request.m_Target.rfind(OneTask, 0) == 0) {
    const auto task = m_Tasks.find(request.m_Target.substr(std::strlen(OneTask)));
    return Response(200, task == m_Tasks.end() ? "" : TaskLine(task->first, task->second));
  }
  if (request.m_Target == "/v1/status") {
    return Response(200, Status().Dump());
  }
  if (request.m_Target == "/v1/command/INoxCommandHandler/GetRun") {
    ++m_Reads;
    m_Read.notify_all();
    return Response(200, LatestRun(request.m_Body.Text("taskId", "")).Dump());
  }
  if (request.m_Target == "/v1/command/INoxCommandHandler/StopRun") {
    return Response(200, StopRun(request.m_Body.Text("taskId", "")).Dump());
  }
  if (request.m_Target == "/v1/command/INoxCommandHandler/GetOutput") {
    return Response(200, Output(request.m_Body).Dump());
  }
  if (request.m_Target == "/v1/command/INoxScheduledTaskHandler/RunTasksEx") {
    const std::string batch = body.Text("batch", "");
    m_Tasks[batch.substr(0, batch.find(':'))].m_Run = m_RunByHand;
    return Response(200, Result(-10000).Dump());
  }
  for (const char* const operation : {"PutJob", "GetJob", "DeleteJob"}) {
    if (request.m_Target == std::string("/v1/command/INoxCommandHandler/") + operation) {
      return JobAnswer(operation, request.m_Body);
    }
  }
  return Response(200, request.m_Target == "/v1/files" ? m_Files.Dump() : "{}");
}

std::string FakeAgent::JobAnswer(const std::string& operation, const Json& in) {
  if (m_KeepsJobs) {
    return Response(403, R"({"error":{"code":"not-allowed","message":"jobs are for root"}})");
  }
  const std::string id = in.Text("taskId", "");
  if (operation == "PutJob") {
    m_Jobs[id] = in.Text("text", "");
    return Response(200, Result(1, {{"problem", ""}}).Dump());
  }
  const auto job = m_Jobs.find(id);
  const bool isThere = job != m_Jobs.end();
  const std::string text = isThere ? job->second : "";
  if (operation == "DeleteJob") {
    m_Jobs.erase(id);
  }
  return Response(200, Result(isThere ? 1 : -1, {{"text", text}, {"problem", ""}}).Dump());
}

Json FakeAgent::Status() const {
  Json scheduler = {{"name", "scheduler"}};
  if (!m_Report.empty()) {
    scheduler["report"] = m_Report;
  }
  Json status = {{"version", "0.1.0"}, {"plugins", Json::List{scheduler}}};
  for (const auto& [name, value] : m_MoreStatus) {
    status[name] = value;
  }
  return status;
}

Json FakeAgent::StopRun(const std::string& id) {
  const auto task = m_Tasks.find(id);
  const bool isUnderWay = task != m_Tasks.end() && task->second.m_Run.contains("pid");
  if (isUnderWay) {
    m_Stopped[id] = m_LooksUntilEnd;
  }
  return Result(isUnderWay ? 1 : -1);
}

Json FakeAgent::LatestRun(const std::string& id) {
  const auto task = m_Tasks.find(id);
  if (const auto stopped = m_Stopped.find(id); stopped != m_Stopped.end()) {
    if (stopped->second-- == 0) {
      task->second.m_Run["state"] = "ended";
      if (!m_RunAfterStop.empty()) {
        task->second.m_Run = m_RunAfterStop;
      }
      m_Stopped.erase(stopped);
    }
  }
  return task == m_Tasks.end() || task->second.m_Run.empty()
             ? Result(-1, {{"run", Json::Object{}}})
             : Result(1, {{"run", task->second.m_Run}});
}

// A position is the number of a part.
Json FakeAgent::Output(const Json& in) const {
  const auto task = m_Tasks.find(in.At("taskId").Text());
  if (task == m_Tasks.end() || task->second.m_Output.empty()) {
    return Result(-1, {{"text", ""}, {"next", ""}});
  }
  const std::vector<std::string>& parts = task->second.m_Output;
  const std::string& position = in.At("position").Text();
  const std::size_t part = position.empty() ? 0 : std::stoul(position);
  const bool isThere = part < parts.size();
  return Result(1, {{"text", isThere ? parts[part] : ""},
                    {"next", std::to_string(isThere ? part + 1 : part)}});
}

Json FakeAgent::Operation(const std::string& name, const Json& in) {
  const std::string id = in.Text("taskId", in.Text("taskIds", ""));
  if (!id.empty() && id == m_Unanswered) {
    return Json::Object{};
  }
  const auto task = m_Tasks.find(id);
  const bool isKnown = task != m_Tasks.end();
  if (name == "DeleteTask") {
    return Result(m_Tasks.erase(id) != 0 ? 1 : -1);
  }
  if (name == "GetTaskXML") {
    ++m_Reads;
    m_Read.notify_all();
    return isKnown ? Result(1, {{"taskXml", task->second.m_Xml}}) : Result(-1, {{"taskXml", ""}});
  }
  if (name == "GetTaskAttributes") {
    return isKnown && task->second.m_Loaded ? Result(1, {{"attributes", task->second.m_Attributes}})
                                            : Result(-1, {{"attributes", Json::Object{}}});
  }
  if (name == "SetRunState") {
    return Result(isKnown ? 0 : 1);
  }
  if (name == "EnableTask") {
    if (!isKnown || !task->second.m_Loaded) {
      return Result(-1);
    }
    std::string& enabled = task->second.m_Attributes["t5"];
    const std::string wanted = in.At("enable").Bool() ? "1" : "0";
    return Result(std::exchange(enabled, wanted) == wanted ? -1 : 1);
  }
  return Result(-1);
}

std::string FakeAgent::DisableTasks(const Json& in) {
  Json outcomes = Json::List{};
  for (const Json& id : in.At("taskIds").Items()) {
    Json outcome = {{"taskId", id}};
    const auto task = m_Tasks.find(id.Text());
    if (id.Text() == m_NotWritten) {
      outcome["error"] = {{"code", "not-written"}, {"message", "the disk is full"}};
    } else if (task == m_Tasks.end() || !task->second.m_Loaded) {
      outcome["error"] = {{"code", "unknown-task"}, {"message", "there is none"}};
    } else {
      task->second.m_Attributes["t5"] = "0";
      task->second.m_Returns = in.At("until").Long();
    }
    outcomes.Append(outcome);
  }
  return Response(200, Json{{"tasks", outcomes}}.Dump());
}

std::string FakeAgent::AddTasks(const Json& in) {
  const Json::List& tasks = in.At("tasks").Items();
  for (std::size_t index = 0; index < tasks.size(); ++index) {
    const std::string& id = tasks[index].At("taskId").Text();
    if (!id.empty() && id == m_Refused) {
      return Response(422, Json{{"error",
                                 {{"code", "never-runs"},
                                  {"message", "no such handler"},
                                  {"line", 1},
                                  {"column", 7},
                                  {"index", index},
                                  {"taskId", id}}}}
                               .Dump());
    }
  }
  Json outcomes = Json::List{};
  for (const Json& task : tasks) {
    outcomes.Append(AddTask(task));
  }
  return Response(200, Json{{"tasks", outcomes}}.Dump());
}

Json FakeAgent::AddTask(const Json& task) {
  const std::string& id = task.At("taskId").Text();
  if (!id.empty() && id == m_NotWritten) {
    return {{"taskId", id}, {"error", {{"code", "not-written"}, {"message", "the disk is full"}}}};
  }
  const std::string newId = id.empty() ? "corvane_task_" + std::to_string(m_Tasks.size() + 1) : id;
  const Json* const replaced = task.Find("replaces");
  if (replaced != nullptr && !(*replaced == Json(m_Tasks[newId].m_Xml))) {
    return {{"taskId", id}, {"error", {{"code", "task-changed"}, {"message", "it has changed"}}}};
  }
  m_Tasks[newId].m_Xml = task.At("taskXml").Text();
  return {{"taskId", newId}, {"warnings", Json::List{}}};
}

std::string FakeAgent::TaskLine(const std::string& id, const FakeTask& task) {
  const NoxAgent::TaskGlance document = NoxAgent::GlanceAt(BaseSDK::AString::FromUtf8(task.m_Xml));
  Json line = {
      {"id", id}, {"enabled", document.m_Enabled}, {"runTime", document.m_RunTime.ToUtf8()}};
  line["loaded"] = task.m_Loaded;
  if (task.m_Loaded) {
    line["lastRun"] = NumberIn(task.m_Attributes, "t3");
    line["nextRun"] = NumberIn(task.m_Attributes, "t6");
    line["late"] = NumberIn(task.m_Attributes, "t2") != 0;
  }
  if (!task.m_Run.empty()) {
    line["run"] = task.m_Run;
  }
  if (task.m_Returns > 0) {
    line["returns"] = task.m_Returns;
  }
  return line.Dump() + "\n";
}

std::string FakeAgent::TaskLines() const {
  std::string lines;
  for (const auto& [id, task] : m_Tasks) {
    lines += TaskLine(id, task);
  }
  return m_LastLine.empty() ? lines : lines + m_LastLine + "\n";
}

void FakeAgent::Stream(int connection) {
  std::unique_lock guard(m_Lock);
  // A watching client first reads every task, from the moment that it has the head on.
  std::size_t readsWanted = m_Reads + m_Tasks.size();
  guard.unlock();
  SendAll(connection, "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n");
  guard.lock();
  for (const Step& step : m_Steps) {
    m_Read.wait(guard, [&] { return m_Ending || m_Reads >= readsWanted; });
    guard.unlock();
    if (step.m_Before) {
      step.m_Before(*this);
    }
    guard.lock();
    readsWanted = m_Reads + step.m_Reads;  // likewise before the line that makes it read
    guard.unlock();
    // In two pieces, as a slow sender would.
    const std::string line = step.m_Line + "\n";
    SendAll(connection, Chunk(line.substr(0, line.size() / 2)));
    SendAll(connection, Chunk(line.substr(line.size() / 2)));
    guard.lock();
  }
  m_Read.wait(guard, [&] { return m_Ending || m_Reads >= readsWanted; });
  guard.unlock();
  SendAll(connection, "0\r\n\r\n");
}

}  // namespace NoxAgentTest
