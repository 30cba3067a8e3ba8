#pragma once

#include <BaseSDK/ALogger.h>
#include <BaseSDK/AString.h>

namespace NoxHandler {

/// The plug-in's one logger, channel "Corvane::Agent::CommandHandler".
BaseSDK::ALogger& HandlerLog();

/// The source name in its log lines.
constexpr const char* HandlerSource = "CommandHandler";

/// A number in decimal, for the placeholders of messages.
BaseSDK::AString DecimalText(long number);

}  // namespace NoxHandler
