#include <BaseSDK/AStringTokenizer.h>

#include <algorithm>
#include <string_view>

namespace BaseSDK {

namespace {

constexpr std::size_t UsualTokens = 4;

/// Where the token ends that begins there.
std::size_t EndOfToken(const AString& text, std::size_t begin, const AString& delimiters) {
  if (text.Ascii() && delimiters.Ascii()) {
    const std::string_view wanted = *delimiters.Ascii();
    const std::size_t end = wanted.size() == 1 ? text.Ascii()->find(wanted.front(), begin)
                                               : text.Ascii()->find_first_of(wanted, begin);
    return std::min(end, text.Length());
  }
  const auto isDelimiter = [&](wchar_t character) {
    std::size_t i = 0;
    while (i < delimiters.Length() && delimiters[i] != character) {
      ++i;
    }
    return i < delimiters.Length();
  };
  while (begin < text.Length() && !isDelimiter(text[begin])) {
    ++begin;
  }
  return begin;
}

}  // namespace

AStringTokenizer::AStringTokenizer(const AString& text, const AString& delimiters, int keepEmpty,
                                   int maxTokens) {
  const std::size_t limit = maxTokens > 0 ? static_cast<std::size_t>(maxTokens) : AString::npos;
  std::size_t begin = 0;
  m_Tokens.reserve(std::min(limit, UsualTokens));
  while (m_Tokens.size() < limit) {
    const std::size_t end = EndOfToken(text, begin, delimiters);
    const std::size_t length = end - begin;
    if (length > 0 || keepEmpty != 0) {
      m_Tokens.push_back(text.Mid(begin, length));
    }
    if (end == text.Length()) {
      return;
    }
    begin = end + 1;
  }
}

AString AStringTokenizer::Token(std::size_t index) const {
  return index < m_Tokens.size() ? m_Tokens[index] : AString();
}

}  // namespace BaseSDK
