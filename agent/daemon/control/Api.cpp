#include "agent/daemon/control/Api.h"

#include "agent/daemon/control/ErrorAnswer.h"
#include "agent/daemon/control/JsonMessage.h"
#include "agent/daemon/control/RequestBody.h"
#include "agent/daemon/process/AgentLog.h"
#include "agent/library/Json.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <vector>

using BaseSDK::AString;
namespace NoxAgent {
namespace {

RequestError UnknownPath(const std::string& path) {
  return RequestError(HttpStatus::NotFound, "unknown-path",
                      AString("there is nothing at %1; an operation is at "
                              "/v1/PLUGIN/INTERFACE/OPERATION")
                          .Arg(AString::FromUtf8(path).Left(200)));
}

constexpr const char* WithTasks = "tasks=1";
constexpr const char* WithAttributes = "attributes=1";
constexpr const char* WithForce = "force=1";
constexpr std::string_view OfTask = "id=";

using Queries = std::vector<std::string_view>;

// One that ends with an equals sign is followed by a value.
bool IsAmong(const Queries& known, std::string_view query) {
  return std::any_of(known.begin(), known.end(), [&](std::string_view one) {
    return one.ends_with('=') ? query.starts_with(one) : query == one;
  });
}

RequestError BadQuery(const Queries& known) {
  std::string list;
  for (const std::string_view one : known) {
    list += (list.empty() ? "" : " and ") + std::string(one) + (one.ends_with('=') ? "..." : "");
  }
  return RequestError(HttpStatus::BadRequest, "bad-query",
                      list.empty() ? AString("this path takes no query")
                                   : AString("this path knows the query %1; there are no others")
                                         .Arg(AString::FromUtf8(list)));
}

// What the agent itself tells plug-ins; they would take any other number for something else.
void CheckKind(long kind) {
  constexpr long Known[] = {0, 1, 2, 4, 5, 6, 7, NotificationCenter::Subscribed};
  if (std::find(std::begin(Known), std::end(Known), kind) == std::end(Known)) {
    throw RequestError(HttpStatus::BadRequest, "unknown-kind",
                       AString("there is no notification of the kind %1; there are 0, 1, 2, 4, 5, "
                               "6, 7 and 10")
                           .Arg(AString().SetNum(kind, 'd')));
  }
}

ApiResponse Ok(const Json& answer) {
  return {HttpStatus::Ok, JsonMessage::Dump(answer)};
}

// The status is with the client already when a part fails.
BodyParts EndingWithErrors(BodyParts parts, const std::string& target) {
  return [parts = std::move(parts), target, hasFailed = false]() mutable -> std::string {
    try {
      return hasFailed ? std::string() : parts();
    } catch (const std::exception&) {
      hasFailed = true;
      return Api::ErrorResponse(CaughtError(AString::FromUtf8(target))).m_Body + "\n";
    }
  };
}

ApiResponse WrongMethod(const char* allowed) {
  ApiResponse response =
      Api::ErrorResponse(RequestError(HttpStatus::MethodNotAllowed, "method-not-allowed",
                                      AString("this path takes the method %1").Arg(allowed)));
  response.m_Allow = allowed;
  return response;
}

}  // namespace

struct Api::Target {
  explicit Target(const std::string& text)
      : m_Path(text.substr(0, text.find('?'))),
        m_Query(m_Path.size() < text.size() ? text.substr(m_Path.size() + 1) : std::string()) {}

  std::string m_Path;
  std::string m_Query;
};

Api::Api(OperationRoute& operations, FilesRoute& files, TasksRoute& tasks, DisableRoute& disable,
         NotificationCenter& notifications, Actions actions)
    : m_Operations(operations),
      m_Files(files),
      m_Tasks(tasks),
      m_Disable(disable),
      m_Notifications(notifications),
      m_Actions(std::move(actions)) {}

ApiResponse Api::Handle(const ApiRequest& request) {
  const ApiResponse response = Answer(request);
  ALOG(AgentLog(), BaseSDK::ALogger::Debug, "Api",
       AString("%1 %2: %3")
           .Arg(AString::FromUtf8(request.m_Method), AString::FromUtf8(request.m_Target).Left(200),
                AString().SetNum(response.m_Status, 'u')));
  return response;
}

ApiResponse Api::Answer(const ApiRequest& request) {
  try {
    return Route(request);
  } catch (const std::exception&) {
    return ErrorResponse(CaughtError(AString::FromUtf8(request.m_Target)));
  }
}

ApiResponse Api::ErrorResponse(const RequestError& error) {
  return {error.Status(), JsonMessage::Dump({{"error", ErrorJson(error)}})};
}

ApiResponse Api::Route(const ApiRequest& request) {
  const Target target(request.m_Target);
  if (!OperationRoute::IsPath(target.m_Path)) {
    return Fixed(request, target);
  }
  if (request.m_Method != "POST") {
    return WrongMethod("POST");
  }
  return Ok(m_Operations.Answer(target.m_Path, target.m_Query, request.m_Body, request.m_Caller));
}

ApiResponse Api::Fixed(const ApiRequest& request, const Target& target) {
  struct Entry {
    const char* m_Path;
    const char* m_Method;
    Queries m_Queries;  ///< those that it knows
    std::function<ApiResponse()> m_Answer;
  };
  const Entry entries[] = {
      {"/v1/status",
       "GET",
       {WithTasks},
       [&] { return Ok(m_Actions.m_Status(target.m_Query == WithTasks)); }},
      {"/v1/notifications",
       "GET",
       {},
       [] {
         return ApiResponse{HttpStatus::Ok, {}, {}, true};
       }},
      {"/v1/tasks",
       "GET",
       {WithAttributes, OfTask},
       [&] {
         BodyParts parts = target.m_Query.starts_with(OfTask)
                               ? m_Tasks.One(target.m_Query.substr(OfTask.size()))
                               : m_Tasks.List(target.m_Query == WithAttributes);
         return ApiResponse{
             HttpStatus::Ok, {}, {}, false, EndingWithErrors(std::move(parts), request.m_Target)};
       }},
      {"/v1/tasks/add",
       "POST",
       {WithForce},
       [&] { return Ok(m_Tasks.Add(request.m_Body, target.m_Query == WithForce)); }},
      {"/v1/tasks/disable", "POST", {}, [&] { return Ok(m_Disable.Answer(request.m_Body)); }},
      {"/v1/refresh", "POST", {}, [&] { return Refresh(); }},
      {"/v1/notify", "POST", {}, [&] { return Notify(request.m_Body); }},
      {"/v1/files", "GET", {}, [&] { return Ok(m_Files.List()); }},
      {"/v1/files/take-back", "POST", {}, [&] { return Ok(m_Files.TakeBack(request.m_Body)); }},
      {"/v1/files/remove", "POST", {}, [&] { return Ok(m_Files.Remove(request.m_Body)); }},
  };
  for (const Entry& entry : entries) {
    if (target.m_Path != entry.m_Path) {
      continue;
    }
    if (request.m_Method != entry.m_Method) {
      return WrongMethod(entry.m_Method);
    }
    if (!target.m_Query.empty() && !IsAmong(entry.m_Queries, target.m_Query)) {
      throw BadQuery(entry.m_Queries);
    }
    return entry.m_Answer();
  }
  throw UnknownPath(target.m_Path);
}

ApiResponse Api::Refresh() {
  Json changes = Json::List{};
  for (const SettingChange& change : m_Actions.m_Refresh()) {
    changes.Append({{"setting", change.m_Name.ToUtf8()},
                    {"old", change.m_Old.ToUtf8()},
                    {"new", change.m_New.ToUtf8()}});
  }
  return Ok({{"result", 1}, {"notInEffect", changes}});
}

ApiResponse Api::Notify(const std::string& body) {
  const RequestBody arguments(body, {"kind", "code", "text"});
  const long kind = arguments.Number("kind");
  CheckKind(kind);
  const bool isSubscribed = kind == NotificationCenter::Subscribed;
  const long code = isSubscribed ? arguments.Number("code") : arguments.Number("code", 0);
  const AString text = arguments.Text("text", AString());
  if (isSubscribed) {
    if (!m_Notifications.Post(code, text)) {
      throw RequestError(HttpStatus::Unavailable, "too-many-notifications",
                         "too many notifications are waiting; try again later");
    }
  } else {
    m_Notifications.Tell(static_cast<NotificationCenter::Kind>(kind), text);
  }
  return Ok({{"result", 1}});
}

}  // namespace NoxAgent
