#pragma once

#include <AgentInterfacesV3/INoxVeskClientAgentTable.h>

namespace Corvane::AgentInterfacesV3 {

/// The operations of INoxTaskScheduler in slot order; INoxTaskScheduler.h tells callers of them.
inline constexpr AInterfaceTable::AOperation INoxTaskSchedulerOperations[] = {
    {"AddTask",
     "Adds a task, or replaces the document of an existing one and keeps its history. An empty "
     "`taskId` has an ID invented; `newTaskId` is the ID in use. The result is 1, or below 1 on "
     "failure.",
     {{"taskId", AMsgType::String, AInterfaceTable::ADirection::In, false},
      {"taskXml", AMsgType::String, AInterfaceTable::ADirection::In, false},
      {"newTaskId", AMsgType::String, AInterfaceTable::ADirection::Out, false}}},
    {"DeleteTask",
     "Deletes a task. The result is 1, or below 1 when it has no file.",
     {{"taskId", AMsgType::String, AInterfaceTable::ADirection::In, false}}},
    {"GetTaskXML",
     "Reads a task's document. The result is 1, or negative when there is no such task.",
     {{"taskId", AMsgType::String, AInterfaceTable::ADirection::In, false},
      {"taskXml", AMsgType::String, AInterfaceTable::ADirection::Out, false}}},
    {"FindFirstTask",
     "Starts to enumerate the stored tasks and gives the first ID; `handle` is 0 and becomes the "
     "enumeration's. The result is 1, or below 1 when there is no task or no reading the "
     "directory. A handle that is not 0 is to be closed in either case.",
     {{"handle", AMsgType::ULong, AInterfaceTable::ADirection::InOut, true},
      {"taskId", AMsgType::String, AInterfaceTable::ADirection::Out, false}}},
    {"FindNextTask",
     "Gives the enumeration's next ID, which can also be `.` or `..`: skip those. The result is 1, "
     "or below 1 when there are no more.",
     {{"handle", AMsgType::ULong, AInterfaceTable::ADirection::In, false},
      {"taskId", AMsgType::String, AInterfaceTable::ADirection::Out, false}}},
    {"FindClose",
     "Ends an enumeration. The result carries no information.",
     {{"handle", AMsgType::ULong, AInterfaceTable::ADirection::In, false}}},
    {"RefreshTaskList", "Has the scheduler evaluate its tasks now. The result is 1.", {}},
    {"SetRunState",
     "Records how the last run of a task went, in one word. The result is 0 when recorded and 1 "
     "when there is no such task.",
     {{"taskId", AMsgType::String, AInterfaceTable::ADirection::In, false},
      {"runState", AMsgType::String, AInterfaceTable::ADirection::In, false}}},
    {"GetTaskAttributes",
     "Adds a task's scheduling attributes to `attributes`; keys that it holds already keep their "
     "values. `inputAttributes` is accepted and not read. The result is 1, or -1 when there is no "
     "such task.",
     {{"taskId", AMsgType::String, AInterfaceTable::ADirection::In, false},
      {"attributes", AMsgType::StringMap, AInterfaceTable::ADirection::InOut, true},
      {"inputAttributes", AMsgType::StringMap, AInterfaceTable::ADirection::In, true}}},
    {"EnableTask",
     "Enables or disables tasks; `taskIds` joins their IDs by `:`. The result is 1 when at least "
     "one accepted the change, else -1.",
     {{"taskIds", AMsgType::String, AInterfaceTable::ADirection::In, false},
      {"enable", AMsgType::Bool, AInterfaceTable::ADirection::In, false}}},
};

/// The interface INoxTaskScheduler itself, as AInterfaceTable::Find gives it.
inline constexpr AInterfaceTable INoxTaskSchedulerTable = {
    "INoxTaskScheduler", "{5D1F6B0A-94C7-4E0B-8A35-6E2B7F91C003}", &INoxVeskClientAgentTable,
    INoxTaskSchedulerOperations};

}  // namespace Corvane::AgentInterfacesV3
