#pragma once

#include <functional>

namespace NoxAgent {

/// Looks every tenth of a second, until it is so. What `isSo` throws ends it.
void Await(const std::function<bool()>& isSo);

}  // namespace NoxAgent
