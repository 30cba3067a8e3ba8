#pragma once

#include <BaseSDK/AString.h>

#include <stdexcept>

/// Why a job cannot be run: a sentence that names the file and, where there is one, the line.
class CJobError : public std::runtime_error {
 public:
  explicit CJobError(const BaseSDK::AString& message) : std::runtime_error(message.ToUtf8()) {}

  BaseSDK::AString Message() const { return BaseSDK::AString(what()); }
};
