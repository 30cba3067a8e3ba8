// What the agent's programs and the plug-ins that come along know of each other, beside the
// interfaces.
#pragma once

namespace NoxAgent {

/// By which the objects of the plug-ins are opened when no configuration says otherwise.
constexpr const char* SchedulerClassId = "{5E0C8B0E-8A57-4D0B-9A7B-0B6E6F1D2A31}";
constexpr const char* CommandHandlerClassId = "{7C0A1D52-3B4E-4F6A-9A51-2D8E6C9B4F10}";

/// The notifications about a task that the scheduler posts; their text is the task's ID.
constexpr long TaskChanged = 100;  ///< its document was replaced, or its next run has moved
constexpr long TaskDeleted = 101;
constexpr long TaskAdded = 102;

}  // namespace NoxAgent
