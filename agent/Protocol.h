// What the agent's programs and its own plug-ins have agreed on, besides the interfaces.
#pragma once

namespace NoxAgent {

/// The class identifiers by which the objects of the agent's own plug-ins are opened, unless the
/// configuration gives them others.
constexpr const char* SchedulerClassId = "{5E0C8B0E-8A57-4D0B-9A7B-0B6E6F1D2A31}";
constexpr const char* CommandHandlerClassId = "{7C0A1D52-3B4E-4F6A-9A51-2D8E6C9B4F10}";

/// The scheduler posts these notifications about a task; their text is the task's ID.
constexpr long TaskChanged = 100;  ///< its document was replaced, or its next run has moved
constexpr long TaskDeleted = 101;
constexpr long TaskAdded = 102;

}  // namespace NoxAgent
