#pragma once

#include <BaseSDK/AEncoding.h>

namespace BaseSDK {

/// UTF-8 without a byte order mark. Decode keeps invalid bytes (see AString), so that Encode gives
/// back what was read.
class AUtf8Encoding : public AEncoding {
 public:
  std::string Encode(const AString& text) const override;
  AString Decode(std::string_view bytes) const override;
};

}  // namespace BaseSDK
