#pragma once

#include "agent/daemon/control/Caller.h"
#include "agent/daemon/control/EnumerationHandles.h"
#include "agent/daemon/control/OperationCall.h"
#include "agent/daemon/control/RequestError.h"
#include "agent/daemon/control/TaskBorder.h"
#include "agent/daemon/plugins/NotificationCenter.h"
#include "agent/daemon/plugins/Plugins.h"
#include "agent/daemon/returns/TaskReturns.h"
#include "agent/daemon/store/TaskStore.h"
#include "agent/library/Json.h"

#include <memory>
#include <string>

namespace NoxAgent {

/// The route /v1/PLUGIN/INTERFACE/OPERATION, which reaches every operation of every interface that
/// a plug-in serves. It makes a message of the path and the JSON body, has the border check it
/// (TaskBorder, JobBorder), sends it, and makes JSON of the reply. What a client says of a task
/// takes the place of its return (CancelledReturns).
///
/// Any number of threads may ask at once.
class OperationRoute {
 public:
  OperationRoute(const Plugins& plugins, NotificationCenter& notifications,
                 EnumerationHandles& handles, const TaskStore& store, TaskReturns& returns);

  /// Whether the path has the form above; what it names need not exist.
  static bool IsPath(const std::string& path);

  /// {"result": n, "out": {...}}, with "warnings" when the border has any. Throws RequestError.
  /// REQUIRES: IsPath(path).
  Json Answer(const std::string& path, const std::string& query, const std::string& body,
              const Caller& caller);

  // The same in two steps, for other routes that add tasks.

  /// A request to the scheduler for AddTask that has passed the border; nothing was sent yet.
  /// Throws RequestError. REQUIRES: the agent has a scheduler.
  std::unique_ptr<OperationCall> PrepareAddTask(const Json& arguments, bool force) const;
  /// Sends what was prepared, once, and gives what Answer does. Throws RequestError.
  Json Perform(OperationCall& call);

 private:
  std::unique_ptr<OperationCall> Find(const std::string& path) const;
  void Prepare(OperationCall& call, const Json& arguments, bool force) const;
  BaseSDK::AString TaskFileExtension() const;
  Json SendWithHandle(OperationCall& call);
  Json OpenEnumeration(OperationCall& call);
  Json UseEnumeration(OperationCall& call);
  Json Send(OperationCall& call);
  Json SendAlone(OperationCall& call);

  const Plugins& m_Plugins;
  NotificationCenter& m_Notifications;
  EnumerationHandles& m_Handles;
  const TaskStore& m_Store;
  TaskReturns& m_Returns;
  const TaskBorder m_Border;
};

}  // namespace NoxAgent
