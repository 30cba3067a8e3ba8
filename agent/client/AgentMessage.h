// What AgentApi says to the agent and what the agent's answers say: JSON in HTTP's bodies.
#pragma once

#include "agent/client/ExitCode.h"
#include "agent/client/HttpConnection.h"
#include "agent/library/Json.h"

#include <optional>
#include <string>

namespace NoxAgent {

constexpr unsigned HttpOk = 200;

/// The body of a request. Texts of the system need not be UTF-8; what is not is shown to the agent
/// as such.
std::string BodyOf(const Json& arguments);

/// "message (line 3, column 7)", of an error of the agent's.
std::string DescribeError(const Json& error);
/// The agent's error to a request that was answered with this HTTP status.
CommandError Refusal(unsigned status, const Json& error);

/// An object that the text holds; nothing when it holds none.
std::optional<Json> ObjectIn(const std::string& text);
/// The error that the answer is; nothing when it is none of the agent's.
std::optional<Json> ErrorIn(const HttpResponse& response);

/// The answer. Throws CommandError when it is an error, JsonError when it is nothing of an agent's.
Json Answer(const HttpResponse& response);
/// The same about a task; nothing when there is no such task, or the ID can be none's.
std::optional<Json> AnswerForTask(const HttpResponse& response);
/// The same about a task's job; nothing when the task has none, or the ID can be no task's.
std::optional<Json> AnswerForJob(const HttpResponse& response);

/// Of an operation's answer: its result, and what it gives under this name.
long ResultOf(const Json& answer);
std::string OutText(const Json& answer, const char* name);

}  // namespace NoxAgent
