#include <BaseSDK/AStringTokenizer.h>

namespace BaseSDK {

AStringTokenizer::AStringTokenizer(const AString& text, const AString& delimiters, int keepEmpty,
                                   int maxTokens) {
  const std::wstring& whole = text.Str();
  const std::size_t limit = maxTokens > 0 ? static_cast<std::size_t>(maxTokens) : AString::npos;
  std::size_t begin = 0;
  while (m_Tokens.size() < limit) {
    const std::size_t end = whole.find_first_of(delimiters.Str(), begin);
    const std::size_t length = (end == std::wstring::npos ? whole.size() : end) - begin;
    if (length > 0 || keepEmpty != 0) {
      m_Tokens.push_back(text.Mid(begin, length));
    }
    if (end == std::wstring::npos) {
      return;
    }
    begin = end + 1;
  }
}

AString AStringTokenizer::Token(std::size_t index) const {
  return index < m_Tokens.size() ? m_Tokens[index] : AString();
}

}  // namespace BaseSDK
