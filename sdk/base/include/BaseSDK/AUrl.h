#pragma once

#include <BaseSDK/AString.h>

namespace BaseSDK {

/// Percent-encoding of RFC 3986, over the text's UTF-8 bytes.
struct AUrl {
  /// Letters, digits and "-._~" stay; every other byte becomes % and two upper-case digits.
  static AString Encode(const AString& text);
  /// Undoes Encode. A % that two hexadecimal digits do not follow stays as it is, and so does "+".
  static AString Decode(const AString& text);
};

}  // namespace BaseSDK
