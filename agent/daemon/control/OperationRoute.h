#pragma once

#include "agent/daemon/control/EnumerationHandles.h"
#include "agent/daemon/control/RequestError.h"
#include "agent/daemon/control/TaskBorder.h"
#include "agent/daemon/plugins/NotificationCenter.h"
#include "agent/daemon/plugins/Plugins.h"
#include "agent/daemon/store/TaskStore.h"
#include "agent/library/Json.h"

#include <string>

namespace NoxAgent {

/// The route /v1/PLUGIN/INTERFACE/OPERATION, which reaches every operation of every interface that
/// a plug-in serves. It makes a message of the path and the JSON body, has the border check it
/// (TaskBorder), sends it, and makes JSON of the reply.
///
/// Any number of threads may ask at once.
class OperationRoute {
 public:
  OperationRoute(const Plugins& plugins, NotificationCenter& notifications,
                 EnumerationHandles& handles, const TaskStore& store);

  /// Whether the path has the form above; what it names need not exist.
  static bool IsPath(const std::string& path);

  /// `client` is the process that asks, 0 when that is not known. {"result": n, "out": {...}}, with
  /// "warnings" when the border has any. Throws RequestError. REQUIRES: IsPath(path).
  Json Answer(const std::string& path, const std::string& query, const std::string& body,
              long client = 0);

 private:
  struct Call;

  Call Find(const std::string& path) const;
  Json Perform(Call& call);
  Json OpenEnumeration(Call& call);
  Json UseEnumeration(Call& call);
  Json Send(Call& call);

  const Plugins& m_Plugins;
  NotificationCenter& m_Notifications;
  EnumerationHandles& m_Handles;
  const TaskStore& m_Store;
  const TaskBorder m_Border;
};

}  // namespace NoxAgent
