#include "Characters.h"

#include <BaseSDK/AUrl.h>

#include <string>

namespace BaseSDK {

namespace {

bool IsUnreserved(char c) {
  return IsAsciiLetter(c) || IsAsciiDigit(c) || c == '-' || c == '.' || c == '_' || c == '~';
}

/// The byte that the three characters at `pos` encode; -1 when they do not.
int EncodedByte(const std::string& text, std::size_t pos) {
  if (text[pos] != '%' || text.size() - pos < 3) {
    return -1;
  }
  const int high = HexValue(text[pos + 1]);
  const int low = HexValue(text[pos + 2]);
  return high < 0 || low < 0 ? -1 : high * 16 + low;
}

}  // namespace

AString AUrl::Encode(const AString& text) {
  constexpr char Digits[] = "0123456789ABCDEF";
  std::string encoded;
  for (const char c : text.ToUtf8()) {
    if (IsUnreserved(c)) {
      encoded += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      encoded += '%';
      encoded += Digits[byte >> 4];
      encoded += Digits[byte & 15];
    }
  }
  return AString::FromUtf8(encoded);
}

AString AUrl::Decode(const AString& text) {
  const std::string encoded = text.ToUtf8();
  std::string decoded;
  for (std::size_t pos = 0; pos < encoded.size(); ++pos) {
    const int byte = EncodedByte(encoded, pos);
    decoded += byte < 0 ? encoded[pos] : static_cast<char>(byte);
    pos += byte < 0 ? 0 : 2;
  }
  return AString::FromUtf8(decoded);
}

}  // namespace BaseSDK
