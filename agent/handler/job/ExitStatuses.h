#pragma once

#include <BaseSDK/AString.h>

#include <set>

namespace NoxHandler {

/// The exit statuses that count as success.
using ExitStatuses = std::set<int>;

/// Reads statuses from 0 to 255 with commas between them into `statuses`. The reason when the text
/// is something else, else empty; `statuses` is untouched then.
BaseSDK::AString ReadExitStatuses(const BaseSDK::AString& text, ExitStatuses& statuses);

}  // namespace NoxHandler
