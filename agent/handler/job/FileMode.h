#pragma once

#include <BaseSDK/AString.h>

#include <sys/types.h>

#include <optional>

namespace NoxHandler {

/// Permission bits in octal, "027" or "0027"; nothing for any other text.
std::optional<mode_t> ParseFileMode(const BaseSDK::AString& text);

}  // namespace NoxHandler
