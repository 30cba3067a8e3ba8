#pragma once

#include <string_view>

namespace NoxHandler {

/// Whether an environment variable may be called so: letters of ASCII, digits and "_", and no digit
/// in front.
inline bool IsVariableName(std::string_view name) {
  constexpr std::string_view Characters =
      "0123456789_ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
  constexpr std::string_view Digits = Characters.substr(0, 10);
  return !name.empty() && name.find_first_not_of(Characters) == std::string_view::npos &&
         Digits.find(name.front()) == std::string_view::npos;
}

}  // namespace NoxHandler
