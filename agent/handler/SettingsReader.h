#pragma once

#include "agent/handler/HandlerSettings.h"

namespace NoxHandler {

/// The plug-in's settings from the agent's configuration, section "Configuration"; the directories
/// are made when they are missing. Throws std::runtime_error that says what is wrong with which
/// key. docs/command-handler.md lists the keys. [agent thread]
HandlerSettings ReadHandlerSettings();

}  // namespace NoxHandler
