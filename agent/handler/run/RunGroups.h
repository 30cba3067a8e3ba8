#pragma once

#include "agent/handler/job/ProcessLimits.h"
#include "agent/handler/process/ControlGroup.h"

#include <BaseSDK/AString.h>

#include <map>
#include <memory>
#include <string>

namespace NoxHandler {

/// The control groups of runs. They lie below a group that the agent may divide as it likes, for
/// instance the service's own, when its unit delegates it. Without one there are none, and limits
/// are of each process by itself. [one thread at a time]
class RunGroups {
 public:
  /// `path` is the directory of the group that they lie in; empty when there is none. Removes those
  /// that an earlier agent has left, as far as no process is in them.
  explicit RunGroups(const BaseSDK::AString& path);

  /// A group for a run with these limits; null when there is none to be had, which is logged, or
  /// when the run has no limit that a group could keep. `token` tells the run from all others.
  std::shared_ptr<ControlGroup> Make(const BaseSDK::AString& taskId, const std::string& token,
                                     const ProcessLimits& limits);

 private:
  void RemoveThoseOfEarlierAgents() const;
  void RemoveThoseOfEndedRuns();

  const std::string m_Path;
  /// By path. One whose run is over stays here while processes that have made a session of their
  /// own are in it.
  std::map<std::string, std::weak_ptr<ControlGroup>> m_Made;
};

}  // namespace NoxHandler
