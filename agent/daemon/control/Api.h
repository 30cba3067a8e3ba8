#pragma once

#include "agent/daemon/config/SettingChange.h"
#include "agent/daemon/control/BodyParts.h"
#include "agent/daemon/control/Caller.h"
#include "agent/daemon/control/DisableRoute.h"
#include "agent/daemon/control/FilesRoute.h"
#include "agent/daemon/control/OperationRoute.h"
#include "agent/daemon/control/RequestError.h"
#include "agent/daemon/control/TasksRoute.h"
#include "agent/daemon/plugins/NotificationCenter.h"
#include "agent/library/Json.h"

#include <functional>
#include <string>

namespace NoxAgent {

/// One HTTP request, as far as the routes look at it.
struct ApiRequest {
  std::string m_Method;
  std::string m_Target;  ///< path and query, as sent
  std::string m_Body;
  Caller m_Caller{};
};

/// The answer to one request.
struct ApiResponse {
  unsigned m_Status = HttpStatus::Ok;
  std::string m_Body;  ///< JSON
  /// With MethodNotAllowed: the method that is allowed.
  std::string m_Allow = {};
  bool m_IsStream = false;  ///< the answer is the stream of notifications instead of the body
  /// When set, the body is what these give instead: JSON, a value a line. They never throw: a
  /// failure becomes the last line, an error.
  BodyParts m_Parts = {};
};

/// The routes of the control socket: what a request asks for, and its answer. docs/http.md
/// describes them.
///
/// Any number of threads may ask at once.
class Api {
 public:
  /// What the agent itself does for two of the routes. Both may throw, AgentError for what a user
  /// can mend. [any thread]
  struct Actions {
    std::function<Json(bool withTasks)> m_Status;
    std::function<SettingChanges()> m_Refresh;  ///< gives what is not in force yet
  };

  Api(OperationRoute& operations, FilesRoute& files, TasksRoute& tasks, DisableRoute& disable,
      NotificationCenter& notifications, Actions actions);

  /// Answers the request. Never throws: a failure becomes an answer with an error.
  ApiResponse Handle(const ApiRequest& request);

  /// The answer with this error.
  static ApiResponse ErrorResponse(const RequestError& error);

 private:
  struct Target;

  ApiResponse Answer(const ApiRequest& request);
  ApiResponse Route(const ApiRequest& request);
  ApiResponse Fixed(const ApiRequest& request, const Target& target);
  ApiResponse Notify(const std::string& body);
  ApiResponse Refresh();

  OperationRoute& m_Operations;
  FilesRoute& m_Files;
  TasksRoute& m_Tasks;
  DisableRoute& m_Disable;
  NotificationCenter& m_Notifications;
  const Actions m_Actions;
};

}  // namespace NoxAgent
