#pragma once

#include <AgentInterfacesV3/INoxObjectTable.h>

namespace Corvane::AgentInterfacesV3 {

/// The operations of INoxVeskClientAgent in slot order; INoxVeskClientAgent.h tells callers of
/// them.
inline constexpr AInterfaceTable::AOperation INoxVeskClientAgentOperations[] = {
    {"AgentStart", "The agent has started. The result is 1.", {}},
    {"AgentStop", "The agent is about to stop. The result is 1.", {}},
    {"AgentRefresh", "The agent's policy has been refreshed. The result is 1.", {}},
    {"AgentQuery", "Asks whether the object works. The result is 1 when it does.", {}},
    {"AgentQueryUnload",
     "Asks whether the object would consent to being unloaded. The result is 0 when it would not.",
     {}},
    {"AgentInstall", "The agent has been installed. The result is 0.", {}},
    {"AgentUninstall", "The agent is about to be removed. The result is 0.", {}},
    {"AgentUpgrade", "The agent has been upgraded. The result is 0.", {}},
};

/// The interface INoxVeskClientAgent itself, as AInterfaceTable::Find gives it.
inline constexpr AInterfaceTable INoxVeskClientAgentTable = {
    "INoxVeskClientAgent", "{5D1F6B0A-94C7-4E0B-8A35-6E2B7F91C002}", &INoxObjectTable,
    INoxVeskClientAgentOperations};

}  // namespace Corvane::AgentInterfacesV3
