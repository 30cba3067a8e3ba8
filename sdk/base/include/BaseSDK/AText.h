#pragma once

#include <BaseSDK/AString.h>

#include <vector>

namespace BaseSDK {

/// Small conversions of text.
struct AText {
  /// True for "true", "yes" and "on" in any case and for a number other than 0.
  static bool StrToBool(const AString& text);

  /// Replaces `parts` by the pieces of `text` between the occurrences of `separator`, empty pieces
  /// included. An empty text has no pieces; with an empty separator the text is one piece.
  static void StrToVector(const AString& text, const AString& separator,
                          std::vector<AString>& parts);
};

}  // namespace BaseSDK
