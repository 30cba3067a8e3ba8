#pragma once

#include <AgentInterfacesV3/INoxObjectTable.h>

namespace Corvane::AgentInterfacesV3 {

/// The operations of INoxScheduledTaskHandler in slot order; INoxScheduledTaskHandler.h tells
/// callers of them.
inline constexpr AInterfaceTable::AOperation INoxScheduledTaskHandlerOperations[] = {
    {"RunTasks",
     "Runs the tasks of `batch`; asked when RunTasksEx gave 0 or less. The result is -10000 when "
     "declined, anything else when accepted.",
     {{"batch", AMsgType::String, AInterfaceTable::ADirection::In, false}}},
    {"RunTasksEx",
     "Runs the tasks of `batch`. The result is above 0 when accepted, -10000 when declined; with "
     "any other RunTasks is asked.",
     {{"batch", AMsgType::String, AInterfaceTable::ADirection::In, false}}},
};

/// The interface INoxScheduledTaskHandler itself, as AInterfaceTable::Find gives it.
inline constexpr AInterfaceTable INoxScheduledTaskHandlerTable = {
    "INoxScheduledTaskHandler", "{5D1F6B0A-94C7-4E0B-8A35-6E2B7F91C004}", &INoxObjectTable,
    INoxScheduledTaskHandlerOperations};

}  // namespace Corvane::AgentInterfacesV3
