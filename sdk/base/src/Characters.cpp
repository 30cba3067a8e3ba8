#include "Characters.h"

#include <algorithm>

namespace BaseSDK {

std::string_view Trimmed(std::string_view text) {
  if (!text.empty() && text.front() > ' ' && text.back() > ' ') {  // as nearly all are
    return text;
  }
  constexpr std::string_view Blanks = " \t\n\v\f\r";
  text.remove_prefix(std::min(text.find_first_not_of(Blanks), text.size()));
  return text.substr(0, text.find_last_not_of(Blanks) + 1);  // npos + 1 is 0
}

int HexValue(char c) {
  if (IsAsciiDigit(c)) {
    return c - '0';
  }
  const char lower = static_cast<char>(c | 0x20);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

}  // namespace BaseSDK
