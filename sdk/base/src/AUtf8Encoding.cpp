#include <BaseSDK/AUtf8Encoding.h>

namespace BaseSDK {

std::string AUtf8Encoding::Encode(const AString& text) const {
  return text.ToUtf8();
}

AString AUtf8Encoding::Decode(std::string_view bytes) const {
  return AString::FromUtf8(bytes);
}

}  // namespace BaseSDK
