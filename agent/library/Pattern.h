#pragma once

#include <string>
#include <vector>

namespace NoxAgent {

/// Matches the whole text against a regular expression of the ECMAScript grammar. Returns the text
/// itself and then what each group matches; nothing when the text does not match. A library does
/// the work, in one source file.
std::vector<std::string> MatchPattern(const char* pattern, const std::string& text);

}  // namespace NoxAgent
