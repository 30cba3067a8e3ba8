#include <BaseSDK/AText.h>

namespace BaseSDK {

bool AText::StrToBool(const AString& text) {
  if (text.IsEmpty()) {
    return false;
  }
  return text.EqualsNoCase(L"true") || text.EqualsNoCase(L"yes") || text.EqualsNoCase(L"on") ||
         text.ToLong() != 0;
}

void AText::StrToVector(const AString& text, const AString& separator,
                        std::vector<AString>& parts) {
  std::vector<AString> found;
  std::size_t begin = 0;
  std::size_t end = separator.IsEmpty() ? AString::npos : text.Find(separator);
  for (; end != AString::npos; end = text.Find(separator, begin)) {
    found.push_back(text.Mid(begin, end - begin));
    begin = end + separator.Length();
  }
  if (!text.IsEmpty()) {
    found.push_back(text.Mid(begin));
  }
  // Only now: `text` or `separator` may be one of the old parts.
  parts.swap(found);
}

}  // namespace BaseSDK
