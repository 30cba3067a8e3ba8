#pragma once

#include <AgentInterfacesV3/INoxObjectTable.h>

namespace Corvane::AgentInterfacesV3 {

/// The operations of INoxCommandHandler in slot order; INoxCommandHandler.h tells callers of them.
inline constexpr AInterfaceTable::AOperation INoxCommandHandlerOperations[] = {
    {"GetRun",
     "Tells of a task's latest run since the agent started, or of an earlier one that failed for "
     "good. `run` holds \"state\" (\"running\", \"waiting\", \"ended\" or \"none\"), \"number\", "
     "which run of the task it is since the agent started, \"runs\", how many there were, "
     "\"start\" "
     "and \"end\" in seconds since the epoch, as far as known; while running \"pid\"; when ended "
     "\"result\" (\"Ok\" or \"Failed\") and \"reason\", in words, and \"final\" when it failed and "
     "is not tried again; when a start was left out since the run, \"skipped\", the moment of the "
     "last one, and \"skipReason\"; and \"skips\", how many were left out since the agent started. "
     "The result is 1, or -1 when no run is known.",
     {{"taskId", AMsgType::String, AInterfaceTable::ADirection::In, false},
      {"run", AMsgType::StringMap, AInterfaceTable::ADirection::Out, false}}},
    {"CheckJob",
     "Tries whether a task's job can be read and run. The result is 1, or -1 when not; `problem` "
     "then says why, with file, line and key where there are any.",
     {{"taskId", AMsgType::String, AInterfaceTable::ADirection::In, false},
      {"problem", AMsgType::String, AInterfaceTable::ADirection::Out, false}}},
    {"PutJob",
     "Makes a text the job of a task, or replaces the job that it has; that counts from the task's "
     "next run on. The result is 1, or -1 when not; `problem` then says all that is wrong with the "
     "text, or why it cannot be written.",
     {{"taskId", AMsgType::String, AInterfaceTable::ADirection::In, false},
      {"text", AMsgType::String, AInterfaceTable::ADirection::In, false},
      {"problem", AMsgType::String, AInterfaceTable::ADirection::Out, false}}},
    {"GetJob",
     "Gives the text of a task's job as it stands, whether or not it can be run. The result is 1; "
     "-1 when there is none, or -2 when it cannot be read, and `problem` says so in words.",
     {{"taskId", AMsgType::String, AInterfaceTable::ADirection::In, false},
      {"text", AMsgType::String, AInterfaceTable::ADirection::Out, false},
      {"problem", AMsgType::String, AInterfaceTable::ADirection::Out, false}}},
    {"DeleteJob",
     "Removes a task's job; a run that goes on is not touched. The result is 1; -1 when there is "
     "none, or -2 when it cannot be removed, and `problem` says so in words.",
     {{"taskId", AMsgType::String, AInterfaceTable::ADirection::In, false},
      {"problem", AMsgType::String, AInterfaceTable::ADirection::Out, false}}},
    {"GetOutput",
     "Gives what a task's runs have put out, 64 KiB at most, from `position` on, and in `next` the "
     "position behind it, for the next call; an empty `position` is the beginning of what is kept, "
     "and so is one that is no longer kept. `text` is empty when there is no more yet. The result "
     "is 1, or -1 when no run has put out anything.",
     {{"taskId", AMsgType::String, AInterfaceTable::ADirection::In, false},
      {"position", AMsgType::String, AInterfaceTable::ADirection::In, true},
      {"text", AMsgType::String, AInterfaceTable::ADirection::Out, false},
      {"next", AMsgType::String, AInterfaceTable::ADirection::Out, false}}},
    {"StopRun",
     "Ends a task's run that goes on or waits to be started, with all its attempts, and leaves out "
     "a start that waits for its end. Returns at once; GetRun tells when the run is over. The "
     "result is 1, or -1 when no run is under way.",
     {{"taskId", AMsgType::String, AInterfaceTable::ADirection::In, false}}},
};

/// The interface INoxCommandHandler itself, as AInterfaceTable::Find gives it.
inline constexpr AInterfaceTable INoxCommandHandlerTable = {
    "INoxCommandHandler", "{5D1F6B0A-94C7-4E0B-8A35-6E2B7F91C005}", &INoxObjectTable,
    INoxCommandHandlerOperations};

}  // namespace Corvane::AgentInterfacesV3
