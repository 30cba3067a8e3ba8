#pragma once

#include <BaseSDK/AString.h>

#include <string_view>

namespace NoxAgent {

/// Why the scheduler ends the task with this document: which of its triggers ended when, or that it
/// has none. Local times. [any thread]
BaseSDK::AString WhyTaskEnds(std::string_view bytes);

}  // namespace NoxAgent
