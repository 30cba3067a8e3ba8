#include "agent/client/AgentMessage.h"

namespace NoxAgent {

namespace {

constexpr unsigned HttpUnprocessable = 422;
constexpr const char* BadTaskId = "bad-task-id";
constexpr long NoJob = -1;

std::optional<CommandError::Place> PlaceOf(const Json& error) {
  return error.Has("line") ? std::optional(CommandError::Place{error.At("line").Long(),
                                                               error.At("column").Long()})
                           : std::nullopt;
}

// Nothing when the ID cannot be a task's.
std::optional<Json> AnswerAbout(const HttpResponse& response) {
  try {
    return Answer(response);
  } catch (const CommandError& refusal) {
    if (refusal.Name() == BadTaskId) {
      return std::nullopt;
    }
    throw;
  }
}

}  // namespace

std::string BodyOf(const Json& arguments) {
  return arguments.Dump(0, Json::Charset::Ascii);
}

std::string DescribeError(const Json& error) {
  std::string text = error.Text("message", "the agent gives no reason");
  if (error.Has("line")) {
    text += " (line " + error.At("line").Dump() + ", column " + error.At("column").Dump() + ")";
  }
  return text;
}

CommandError Refusal(unsigned status, const Json& error) {
  return {status == HttpUnprocessable ? ExitCode::Usage : ExitCode::Failed,
          "the agent refuses: " + DescribeError(error), error.Text("code", ""), PlaceOf(error)};
}

std::optional<Json> ObjectIn(const std::string& text) {
  try {
    Json value = Json::Parse(text);
    return value.IsObject() ? std::optional<Json>(std::move(value)) : std::nullopt;
  } catch (const JsonError&) {
    return std::nullopt;
  }
}

std::optional<Json> ErrorIn(const HttpResponse& response) {
  const auto body = ObjectIn(response.m_Body);
  const Json* const error = body ? body->Find("error") : nullptr;
  return error != nullptr && error->IsObject() ? std::optional<Json>(*error) : std::nullopt;
}

Json Answer(const HttpResponse& response) {
  if (response.m_Status == HttpOk) {
    return response.m_Body.empty() ? Json::Object{} : Json::Parse(response.m_Body);
  }
  if (const auto error = ErrorIn(response)) {
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

std::optional<Json> AnswerForTask(const HttpResponse& response) {
  std::optional<Json> answer = AnswerAbout(response);
  return answer && ResultOf(*answer) >= 1 ? std::move(answer) : std::nullopt;
}

std::optional<Json> AnswerForJob(const HttpResponse& response) {
  std::optional<Json> answer = AnswerAbout(response);
  const long result = answer ? ResultOf(*answer) : NoJob;
  if (result < NoJob) {
    throw CommandError(ExitCode::Failed, OutText(*answer, "problem"));
  }
  return result >= 1 ? std::move(answer) : std::nullopt;
}

}  // namespace NoxAgent
