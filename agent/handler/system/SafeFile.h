#pragma once

#include <BaseSDK/AString.h>

#include <cstddef>
#include <string>

namespace NoxHandler {

/// Keeps a small file that is always written as a whole: at every moment it is the old one or the
/// new one, also after a power cut. Each routine returns 0 or an errno.
struct SafeFile {
  /// Reads it all into `text`; EFBIG when it has `maxBytes` or more.
  static int Read(const BaseSDK::AString& name, std::size_t maxBytes, std::string& text);
  /// Writes NAME.new, and gives it the name. When that fails, the old file stays.
  static int Replace(const BaseSDK::AString& name, const std::string& bytes);
};

}  // namespace NoxHandler
