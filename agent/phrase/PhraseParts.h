// What the kinds of words in a schedule are made of.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace NoxAgent {

constexpr const char* DecimalDigits = "0123456789";

/// The parts between the separators; one more than there are separators.
std::vector<std::string> Split(const std::string& text, char separator);

/// Digits alone, at most so many of them; nothing for another text.
std::optional<long> ReadDigits(const std::string& text, std::size_t most = 4);

}  // namespace NoxAgent
