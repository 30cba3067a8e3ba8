#pragma once

#include <string>
#include <vector>

namespace NoxAgent {

/// Matches the whole text against an extended regular expression, as regcomp takes it. Returns the
/// text itself and then what each group matches; nothing when the text does not match. Throws
/// std::invalid_argument when the pattern is none.
std::vector<std::string> MatchPattern(const char* pattern, const std::string& text);

}  // namespace NoxAgent
