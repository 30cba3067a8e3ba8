#pragma once

#include "agent/client/ChosenZone.h"
#include "agent/client/LiveTask.h"

namespace NoxAgent {

/// Chooses the time zone for a command about one task: the one given with --zone; without that, for
/// a task of an agent, the agent's; otherwise the zone of the machine. The zone is in force while
/// the object lives, as for ChosenZone.
class ZoneInForce {
 public:
  ZoneInForce(const std::string& option, const std::optional<LiveTask>& task);

  /// A sentence on how the zone differs from the agent's or from the client's own; empty when it
  /// does not.
  const std::string& Note() const { return m_Note; }

 private:
  const std::string m_Note;
  const ChosenZone m_Zone;
};

/// What the zone of this process is called: "Europe/Berlin", or a rule.
std::string ClientsZoneName();

}  // namespace NoxAgent
