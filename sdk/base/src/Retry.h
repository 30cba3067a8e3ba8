#pragma once

#include <cerrno>

namespace BaseSDK {

/// Calls `call`, which returns 0 or an errno, again for as long as a signal interrupts it.
template <class Call>
int Retry(const Call& call) {
  int error = 0;
  do {
    error = call();
  } while (error == EINTR);
  return error;
}

}  // namespace BaseSDK
