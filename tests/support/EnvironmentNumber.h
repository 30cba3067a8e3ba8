#pragma once

#include <cstdlib>

namespace TestSupport {

/// The number in an environment variable, by which a long run asks for more than the usual run
/// does; `otherwise` when it is not set.
inline long EnvironmentNumber(const char* variable, long otherwise) {
  const char* const text = std::getenv(variable);
  return text != nullptr ? std::atol(text) : otherwise;
}

}  // namespace TestSupport
