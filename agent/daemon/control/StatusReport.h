#pragma once

#include "agent/daemon/config/Settings.h"
#include "agent/daemon/control/ControlServer.h"
#include "agent/daemon/control/EnumerationHandles.h"
#include "agent/daemon/plugins/NotificationCenter.h"
#include "agent/daemon/plugins/Plugins.h"
#include "agent/daemon/store/TaskStore.h"
#include "agent/library/Json.h"

namespace NoxAgent {

/// Gathers what GET /v1/status answers; docs/http.md lists the members. The references are
/// borrowed.
struct StatusReport {
  const Settings& m_Settings;
  const Plugins& m_Plugins;
  const NotificationCenter& m_Notifications;
  const EnumerationHandles& m_Handles;
  const TaskStore& m_Store;
  long m_StartTime;  ///< seconds since the epoch

  /// Asks every plug-in for its report. With `withTasks` the IDs of all tasks are in it; there may
  /// be tens of thousands. [any thread]
  Json Make(const ControlServer::Counters& counters, bool withTasks) const;
};

}  // namespace NoxAgent
