#pragma once

namespace BaseSDK {

/// Result codes of the file routines: 0 for success, otherwise a code whose two top bits are binary
/// 10 and whose low 16 bits are the errno. The values are the same at both word sizes.
constexpr unsigned long ResultErrnoBase = 0x80050000UL;

/// 0 for 0.
unsigned long ResultFromErrno(int error);

/// The errno in a code of the form above; 0 for every other code, success included.
int ErrnoFromResult(unsigned long result);

}  // namespace BaseSDK
