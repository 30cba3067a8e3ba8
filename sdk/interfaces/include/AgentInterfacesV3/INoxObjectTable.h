#pragma once

#include <AgentInterfacesV3/AInterfaceTable.h>

namespace Corvane::AgentInterfacesV3 {

/// The operations of INoxObject in slot order; INoxObject.h tells callers of them.
inline constexpr AInterfaceTable::AOperation INoxObjectOperations[] = {
    {"ObjectDebugInfo",
     "Gives a short report of the object's state, for people. The result is 1.",
     {{"report", AMsgType::String, AInterfaceTable::ADirection::Out, false}}},
    {"NotifyObject",
     "Tells the object of an event in the agent's life; `code` and `text` depend on `kind`. The "
     "result is 0.",
     {{"kind", AMsgType::Long, AInterfaceTable::ADirection::In, false},
      {"code", AMsgType::Long, AInterfaceTable::ADirection::In, false},
      {"text", AMsgType::String, AInterfaceTable::ADirection::In, false}}},
};

/// The interface INoxObject itself, as AInterfaceTable::Find gives it.
inline constexpr AInterfaceTable INoxObjectTable = {
    "INoxObject", "{5D1F6B0A-94C7-4E0B-8A35-6E2B7F91C001}", nullptr, INoxObjectOperations};

}  // namespace Corvane::AgentInterfacesV3
