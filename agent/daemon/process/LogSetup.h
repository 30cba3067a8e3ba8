#pragma once

#include "agent/daemon/config/Settings.h"

namespace NoxAgent {

/// Puts log settings into force for the process.
struct LogSetup {
  /// Standard error and, when there is one, the file. Once. Throws AgentError when the file cannot
  /// be opened.
  static void Open(const Settings& settings);
  /// Returns when all that was logged before is on standard error, or when its reader has stopped
  /// reading.
  static void Flush();
  /// The levels alone; may be repeated. Without a level for all, plug-ins are heard from "warning"
  /// on, the agent and the command handler from "information" on.
  static void SetLevels(const LogSettings& log);
};

}  // namespace NoxAgent
