#pragma once

#include <string_view>

namespace BaseSDK {

/// Without the white space at both ends: blanks and the control characters that isspace counts.
std::string_view Trimmed(std::string_view text);

constexpr bool IsAsciiLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
constexpr bool IsAsciiDigit(char c) {
  return c >= '0' && c <= '9';
}

/// The value of a hexadecimal digit; -1 for any other character.
int HexValue(char c);

}  // namespace BaseSDK
