#pragma once

#include <BaseSDK/AString.h>

#include <string>
#include <string_view>

namespace BaseSDK {

/// How a file's bytes and a text relate. Implementations have no state that calls change, so one
/// object may serve several threads.
class AEncoding {
 public:
  virtual ~AEncoding() = default;

  virtual std::string Encode(const AString& text) const = 0;
  virtual AString Decode(std::string_view bytes) const = 0;
};

}  // namespace BaseSDK
