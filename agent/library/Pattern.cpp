#include "agent/library/Pattern.h"

#include <regex.h>

#include <stdexcept>

namespace NoxAgent {
namespace {

class Expression {
 public:
  explicit Expression(const char* pattern) {
    if (regcomp(&m_Compiled, pattern, REG_EXTENDED) != 0) {
      throw std::invalid_argument(std::string("no regular expression: ") + pattern);
    }
  }
  ~Expression() { regfree(&m_Compiled); }
  Expression(const Expression&) = delete;
  Expression& operator=(const Expression&) = delete;

  /// The first and longest match and then that of each group; empty when there is none.
  std::vector<regmatch_t> Match(const std::string& text) const {
    std::vector<regmatch_t> places(m_Compiled.re_nsub + 1);
    if (regexec(&m_Compiled, text.c_str(), places.size(), places.data(), 0) != 0) {
      places.clear();
    }
    return places;
  }

 private:
  regex_t m_Compiled{};
};

bool Covers(const regmatch_t& place, const std::string& text) {
  return place.rm_so == 0 && static_cast<std::size_t>(place.rm_eo) == text.size();
}

}  // namespace

std::vector<std::string> MatchPattern(const char* pattern, const std::string& text) {
  const std::vector<regmatch_t> places = Expression(pattern).Match(text);
  if (places.empty() || !Covers(places.front(), text)) {
    return {};
  }
  std::vector<std::string> parts;
  for (const regmatch_t& place : places) {
    // A group that took no part in the match stands nowhere.
    const bool isMatched = place.rm_so != -1;
    parts.push_back(isMatched ? text.substr(static_cast<std::size_t>(place.rm_so),
                                            static_cast<std::size_t>(place.rm_eo - place.rm_so))
                              : std::string());
  }
  return parts;
}

}  // namespace NoxAgent
