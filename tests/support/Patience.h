#pragma once

namespace TestSupport {

/// How long a test waits for what has to come: far more than a slow machine takes.
inline constexpr int PatienceMilliseconds = 120000;

}  // namespace TestSupport
