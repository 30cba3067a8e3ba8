#pragma once

#include "agent/client/ChosenZone.h"
#include "agent/client/LiveTask.h"

namespace NoxAgent {

/// The time zone that a command about one task works in: the one given with --zone; else, for a
/// task of an agent's, the agent's; else that of the machine. In force as ChosenZone is.
class ZoneInForce {
 public:
  ZoneInForce(const std::string& option, const std::optional<LiveTask>& task);

  /// A sentence on how it differs from the agent's zone or from the client's; empty when neither.
  const std::string& Note() const { return m_Note; }

 private:
  const std::string m_Note;
  const ChosenZone m_Zone;
};

}  // namespace NoxAgent
