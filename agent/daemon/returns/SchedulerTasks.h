// What the agent itself asks the scheduler about tasks that are disabled for a while or replaced.
#pragma once

#include "agent/daemon/plugins/Plugin.h"
#include "agent/daemon/store/StoreFileSystem.h"

#include <BaseSDK/AString.h>

#include <optional>

namespace NoxAgent {

// All of them throw RequestError when the scheduler fails. [any thread]

/// Whether the scheduler has the task in memory.
bool HoldsTask(Plugin& scheduler, const BaseSDK::AString& taskId);
/// The task's document as it lies on the disk; nothing when there is no such task.
std::optional<BaseSDK::AString> DocumentOnDisk(Plugin& scheduler, const BaseSDK::AString& taskId);
/// Whether that says that it is enabled.
std::optional<bool> IsEnabledOnDisk(Plugin& scheduler, const BaseSDK::AString& taskId);
/// Enables or disables the task, if it is not so already; one that the scheduler does not hold
/// stays as it is. Throws RequestError also when the task's file cannot be written.
void SwitchTask(Plugin& scheduler, const StoreFileSystem& files, const BaseSDK::AString& taskId,
                bool enable);

}  // namespace NoxAgent
