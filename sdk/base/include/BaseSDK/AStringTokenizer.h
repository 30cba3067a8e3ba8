#pragma once

#include <BaseSDK/AString.h>

#include <cstddef>
#include <vector>

namespace BaseSDK {

/// Splits a text at single characters, once, at construction.
class AStringTokenizer {
 public:
  /// Every character of `delimiters` separates tokens. With `keepEmpty` other than 0 empty tokens
  /// count too, so that n delimiters give n + 1 tokens. With `maxTokens` above 0 only the first so
  /// many tokens are kept; the rest of the text is dropped.
  AStringTokenizer(const AString& text, const AString& delimiters, int keepEmpty = 0,
                   int maxTokens = 0);

  std::size_t Count() const { return m_Tokens.size(); }
  /// Empty when there is no such token.
  AString Token(std::size_t index) const;

 private:
  std::vector<AString> m_Tokens;
};

}  // namespace BaseSDK
