#pragma once

#include <BaseSDK/AString.h>

#include <stdexcept>

namespace NoxHandler {

/// Why a job cannot be run: a sentence that names the file and, where there is one, the line.
class JobError : public std::runtime_error {
 public:
  explicit JobError(const BaseSDK::AString& message) : std::runtime_error(message.ToUtf8()) {}

  BaseSDK::AString Message() const { return BaseSDK::AString(what()); }
};

}  // namespace NoxHandler
