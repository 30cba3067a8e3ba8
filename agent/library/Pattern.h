#pragma once

#include <string>
#include <vector>

namespace NoxAgent {

/// Holds a whole text against a regular expression (the ECMAScript grammar). What its groups match,
/// the text itself first; nothing when the text does not match. A library does the work, in one
/// source file.
std::vector<std::string> MatchPattern(const char* pattern, const std::string& text);

}  // namespace NoxAgent
