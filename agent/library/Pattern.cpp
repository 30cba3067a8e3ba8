#include "agent/library/Pattern.h"

#include <regex>

namespace NoxAgent {

std::vector<std::string> MatchPattern(const char* pattern, const std::string& text) {
  std::smatch groups;
  if (!std::regex_match(text, groups, std::regex(pattern))) {
    return {};
  }
  return {groups.begin(), groups.end()};
}

}  // namespace NoxAgent
