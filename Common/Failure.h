#pragma once

#include <BaseSDK/AString.h>

#include <exception>

namespace Nox {

/// What went wrong, in words for the log. REQUIRES: an exception is being handled.
inline BaseSDK::AString FailureText() {
  try {
    throw;
  } catch (const std::exception& failure) {
    return BaseSDK::AString(failure.what());
  } catch (...) {
    return BaseSDK::AString(L"unknown exception");
  }
}

}  // namespace Nox
