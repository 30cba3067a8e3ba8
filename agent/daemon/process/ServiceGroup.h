#pragma once

#include <BaseSDK/AString.h>

#include <functional>
#include <string>

namespace NoxAgent {

/// The control group (version 2) of the service, which the agent may divide among its runs when the
/// service manager hands it over ("Delegate=" of the unit).
///
/// The system limits the members of a group only while no process is in the group above. So the
/// agent itself moves into a group "agent" there, and runs get groups beside it.
struct ServiceGroup {
  /// What is asked of the system, so that tests can answer.
  struct System {
    std::string m_Mount;      ///< where the groups are mounted
    std::string m_OwnGroups;  ///< what /proc/self/cgroup says
    /// Whether the group with this directory was handed over to its processes.
    std::function<bool(const std::string& directory)> m_IsDelegated;

    static System OfProcess();
  };

  BaseSDK::AString m_Path;  ///< the directory of the group that runs can be put below; else empty
  BaseSDK::AString m_Problem;  ///< why there is none although one was handed over

  /// Finds the group, moves this process, and has memory limited for each group below. When that
  /// cannot be had, all is as it was.
  static ServiceGroup Take(const System& system);
};

}  // namespace NoxAgent
