#pragma once

#include <BaseSDK/AString.h>

#include <optional>

namespace NoxHandler {

/// A decimal number from `least` to `most` as it is usually written: no plus sign, no leading
/// zeros, no blanks. Nothing for any other text.
inline std::optional<long> ParseWhole(const BaseSDK::AString& text, long least, long most) {
  const long number = text.ToLong();
  const bool isWhole = BaseSDK::AString().SetNum(number, 'd') == text;
  return isWhole && number >= least && number <= most ? std::optional(number) : std::nullopt;
}

}  // namespace NoxHandler
