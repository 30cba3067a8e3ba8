#pragma once

#include <functional>
#include <string>

namespace NoxAgent {

/// The body of an answer too long to be held as a whole: each call gives the next part, and an
/// empty one at the end. [any thread, one at a time]
using BodyParts = std::function<std::string()>;

}  // namespace NoxAgent
