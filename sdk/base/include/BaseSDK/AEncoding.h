#pragma once

#include <BaseSDK/AString.h>

#include <string>
#include <string_view>

namespace BaseSDK {

/// How the bytes of a file and its text relate; AFile reads and writes through one. Implementations
/// have no state that calls change, so one object may serve several threads.
class AEncoding {
 public:
  virtual ~AEncoding() = default;

  /// The bytes to write for `text`.
  virtual std::string Encode(const AString& text) const = 0;
  /// The text that the bytes of a whole file stand for. There is no error: bytes that make no text
  /// become a substitute, or something that Encode turns back into them.
  virtual AString Decode(std::string_view bytes) const = 0;
};

}  // namespace BaseSDK
