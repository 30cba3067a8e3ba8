#include "agent/phrase/PhraseParts.h"

#include <algorithm>
#include <cctype>

namespace NoxAgent {

std::vector<std::string> Split(const std::string& text, char separator) {
  std::vector<std::string> parts(1);
  for (const char character : text) {
    if (character == separator) {
      parts.emplace_back();
    } else {
      parts.back() += character;
    }
  }
  return parts;
}

std::optional<long> ReadDigits(const std::string& text, std::size_t most) {
  const bool isDigits = !text.empty() && text.size() <= most &&
                        std::all_of(text.begin(), text.end(), [](unsigned char character) {
                          return std::isdigit(character) != 0;
                        });
  return isDigits ? std::optional(std::stol(text)) : std::nullopt;
}

}  // namespace NoxAgent
