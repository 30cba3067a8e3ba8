#pragma once

#include "agent/simulation/SimulationLog.h"

#include <AgentInterfacesV3/INoxScheduledTaskHandler.h>
#include <AgentSDK/AHost.h>

namespace NoxAgent {

/// The agent as the simulated scheduler sees it. It says where the tasks are, opens one handler for
/// all of them, and logs the notifications.
///
/// It is the host of the process while it lives. [any thread]
class SimulatedHost final : public AgentSDK::AHost {
 public:
  /// Where the scheduler keeps its tasks: a directory of the simulation's own files.
  static constexpr const char* TaskDirectory = "/tasks";
  static constexpr const char* Extension = ".vsk";

  /// Both arguments are borrowed and outlive the host.
  SimulatedHost(SimulationLog& log, Corvane::AgentInterfacesV3::INoxScheduledTaskHandler& handler);
  ~SimulatedHost() override;

  long Subscribe(const BaseSDK::AString&, const long*, unsigned) override { return 1; }
  long PostNotification(long code, const BaseSDK::AString& text) override;
  BaseSDK::AString GetConfigString(const BaseSDK::AString& section, const BaseSDK::AString& key,
                                   const BaseSDK::AString& fallback) override;
  /// Opens the handler for every text that is a class identifier.
  long OpenObject(const BaseSDK::AString& classId, const BaseSDK::AGuid& interfaceId,
                  unsigned long flags, void*& object) override;

 private:
  SimulationLog& m_Log;
  Corvane::AgentInterfacesV3::INoxScheduledTaskHandler& m_Handler;
  AgentSDK::AHost* const m_Before;
};

}  // namespace NoxAgent
