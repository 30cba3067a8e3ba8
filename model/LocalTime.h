#pragma once

namespace Nox {

/// What time() says, kept inside the signed 32-bit range.
long Now();

}  // namespace Nox
