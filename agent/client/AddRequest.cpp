#include "agent/client/AddRequest.h"

#include "agent/client/AgentMessage.h"

#include <algorithm>

namespace NoxAgent {

namespace {

// In bytes; the agent takes half as much again.
constexpr std::size_t MaxAddBody = 1024 * 1024;
// So that the answer comes within the time that an answer may take, on a slow disk as well.
constexpr std::size_t MaxAddedAtOnce = 200;

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

Json ItemOf(const AgentApi::NewTask& task) {
  Json item = {{"taskId", task.m_Id}, {"taskXml", task.m_Xml}};
  if (task.m_Replaces) {
    item["replaces"] = *task.m_Replaces;
  }
  return item;
}

}  // namespace

AddBody BodyToAdd(std::span<const AgentApi::NewTask> tasks) {
  AddBody body{"{\"tasks\":["};
  for (const AgentApi::NewTask& task : tasks.first(std::min(tasks.size(), MaxAddedAtOnce))) {
    const std::string text = BodyOf(ItemOf(task));
    if (body.m_Tasks > 0 && body.m_Text.size() + text.size() + 3 >= MaxAddBody) {
      break;
    }
    body.m_Text += (body.m_Tasks > 0 ? "," : "") + text;
    ++body.m_Tasks;
  }
  body.m_Text += "]}";
  return body;
}

void ThrowIfTaskRefused(const HttpResponse& response, std::size_t first, std::size_t tasks) {
  const auto error = response.m_Status == HttpOk ? std::nullopt : ErrorIn(response);
  const long index = error ? error->Long("index", -1) : -1;
  if (index >= 0 && static_cast<std::size_t>(index) < tasks) {
    throw TaskRefusal(Refusal(response.m_Status, *error), first + static_cast<std::size_t>(index));
  }
}

AgentApi::AddedTask AddedTaskIn(const Json& outcome) {
  AgentApi::AddedTask task;
  if (const Json* const error = outcome.Find("error")) {
    task.m_Error = Refusal(HttpOk, *error);
  } else {
    task.m_Id = outcome.At("taskId").Text();
    task.m_JobWarnings = JobWarningsIn(outcome);
  }
  return task;
}

}  // namespace NoxAgent
