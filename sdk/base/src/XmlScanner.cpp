#include "XmlScanner.h"

#include <cstdint>

#include "Utf8.h"

namespace BaseSDK {

namespace {

bool IsSpace(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

bool IsNameStart(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == ':' ||
         (static_cast<unsigned char>(c) & 0x80) != 0;
}

bool IsNameChar(char c) {
  return IsNameStart(c) || (c >= '0' && c <= '9') || c == '-' || c == '.';
}

/// Char = #x9 | #xA | #xD | [#x20-#xD7FF] | [#xE000-#xFFFD] | [#x10000-#x10FFFF]
bool IsXmlCharacter(std::uint32_t c) {
  return c == 0x9 || c == 0xA || c == 0xD || (c >= 0x20 && c <= 0xD7FF) ||
         (c >= 0xE000 && c <= 0xFFFD) || (c >= 0x10000 && c <= 0x10FFFF);
}

bool IsPredefinedEntity(std::string_view name) {
  return name == "lt" || name == "gt" || name == "amp" || name == "apos" || name == "quot";
}

/// The number of a character reference without "&#" and ";"; 0, no character, when it is none.
std::uint32_t ReferencedCharacter(std::string_view digits) {
  const bool isHex = !digits.empty() && digits.front() == 'x';
  const std::uint32_t base = isHex ? 16 : 10;
  constexpr std::string_view values = "0123456789abcdef";
  std::uint32_t value = 0;
  for (const char c : digits.substr(isHex ? 1 : 0)) {
    const char lower = c >= 'A' && c <= 'F' ? static_cast<char>(c - 'A' + 'a') : c;
    const std::size_t digit = values.substr(0, base).find(lower);
    if (digit == std::string_view::npos || value > 0x10FFFF) {
      return 0;
    }
    value = value * base + static_cast<std::uint32_t>(digit);
  }
  return value;
}

std::string Quoted(std::string_view text) {
  return '"' + std::string(text) + '"';
}

}  // namespace

bool XmlScanner::Scan() {
  while (!AtEnd()) {
    const bool isMarkup = m_Text[m_Pos] == '<';
    if (!(isMarkup ? ScanMarkup() : ScanText())) {
      return false;
    }
  }
  if (!m_Open.empty()) {
    return Fail(m_Text.size(), "element " + Quoted(m_Open.back().m_Name) + " is not closed");
  }
  return !m_Elements.empty() || Fail(m_Text.size(), "there is no element");
}

bool XmlScanner::ScanMarkup() {
  if (LooksAt("</")) {
    return ScanEndTag();
  }
  if (LooksAt("<!--")) {
    return ScanComment();
  }
  if (LooksAt("<![CDATA[")) {
    return ScanCData();
  }
  if (LooksAt("<!DOCTYPE")) {
    return ScanDocType();
  }
  return LooksAt("<?") ? ScanInstruction() : ScanStartTag();
}

bool XmlScanner::ScanStartTag() {
  const std::size_t begin = m_Pos++;
  if (m_Open.empty() && !m_Elements.empty()) {
    return Fail(begin, "there is more than one root element");
  }
  if (m_Open.size() >= m_MaxDepth) {
    return Fail(begin, "elements are nested too deeply");
  }
  std::string_view name;
  bool isEmptyElement = false;
  if (!ScanName(name, "a name is missing after \"<\"") || !ScanAttributes(isEmptyElement)) {
    return false;
  }
  if (!isEmptyElement) {
    m_Open.push_back({m_Elements.size(), name});
  }
  m_Elements.push_back({begin, m_Pos});
  return true;
}

/// attributes = { space name "=" value } [ space ] ( ">" | "/>" )
bool XmlScanner::ScanAttributes(bool& isEmptyElement) {
  std::set<std::string_view> names;
  for (;;) {
    const bool spaced = SkipSpace();
    if (AtEnd()) {
      return Fail(m_Pos, "a tag is not closed");
    }
    isEmptyElement = LooksAt("/>");
    if (isEmptyElement || LooksAt(">")) {
      m_Pos += isEmptyElement ? 2 : 1;
      return true;
    }
    if (!spaced) {
      return Fail(m_Pos, "white space is missing before an attribute");
    }
    if (!ScanAttribute(names)) {
      return false;
    }
  }
}

bool XmlScanner::ScanAttribute(std::set<std::string_view>& names) {
  const std::size_t begin = m_Pos;
  std::string_view name;
  if (!ScanName(name, "an attribute name is expected")) {
    return false;
  }
  if (!names.insert(name).second) {
    return Fail(begin, "attribute " + Quoted(name) + " is given twice");
  }
  (void)SkipSpace();
  if (!LooksAt("=")) {
    return Fail(m_Pos, "\"=\" is missing after attribute " + Quoted(name));
  }
  ++m_Pos;
  (void)SkipSpace();
  return ScanAttributeValue();
}

bool XmlScanner::ScanAttributeValue() {
  const std::size_t begin = m_Pos;
  if (AtEnd() || (m_Text[begin] != '"' && m_Text[begin] != '\'')) {
    return Fail(begin, "an attribute value needs quotes");
  }
  const char quote = m_Text[m_Pos++];
  while (!AtEnd() && m_Text[m_Pos] != quote) {
    if (m_Text[m_Pos] == '<') {
      return Fail(m_Pos, "\"<\" in an attribute value; write \"&lt;\"");
    }
    if (!(m_Text[m_Pos] == '&' ? ScanReference() : ScanCharacter())) {
      return false;
    }
  }
  if (AtEnd()) {
    return Fail(begin, "an attribute value is not closed");
  }
  ++m_Pos;
  return true;
}

bool XmlScanner::ScanEndTag() {
  const std::size_t begin = m_Pos;
  m_Pos += 2;
  std::string_view name;
  if (!ScanName(name, "a name is missing after \"</\"")) {
    return false;
  }
  (void)SkipSpace();
  if (!LooksAt(">")) {
    return Fail(m_Pos, "\">\" is missing after \"</" + std::string(name) + '"');
  }
  ++m_Pos;
  if (m_Open.empty()) {
    return Fail(begin, "closing tag of " + Quoted(name) + " without an opening one");
  }
  if (m_Open.back().m_Name != name) {
    return Fail(begin, "closing tag of " + Quoted(name) + " where that of " +
                           Quoted(m_Open.back().m_Name) + " is expected");
  }
  m_Elements[m_Open.back().m_Index].m_End = m_Pos;
  m_Open.pop_back();
  return true;
}

bool XmlScanner::ScanText() {
  while (!AtEnd() && m_Text[m_Pos] != '<') {
    if (m_Open.empty() && !IsSpace(m_Text[m_Pos])) {
      return Fail(m_Pos, "text outside the root element");
    }
    if (LooksAt("]]>")) {
      return Fail(m_Pos, "\"]]>\" in text; write \"]]&gt;\"");
    }
    if (!(m_Text[m_Pos] == '&' ? ScanReference() : ScanCharacter())) {
      return false;
    }
  }
  return true;
}

/// reference = "&" name ";" | "&#" digits ";" | "&#x" digits ";"
bool XmlScanner::ScanReference() {
  constexpr std::size_t longest = 64;  // also bounds the search for ";" in a text full of "&"
  const std::string_view rest = m_Text.substr(m_Pos + 1, longest);
  const std::string_view name = rest.substr(0, rest.find_first_of(";<&\"' \t\r\n"));
  if (name.size() == rest.size() || rest[name.size()] != ';' || name.empty()) {
    return Fail(m_Pos, "\"&\" without an entity; write \"&amp;\"");
  }
  if (name.front() == '#' ? !IsXmlCharacter(ReferencedCharacter(name.substr(1)))
                          : !IsPredefinedEntity(name)) {
    return Fail(m_Pos, "there is no entity " + Quoted("&" + std::string(name) + ";"));
  }
  m_Pos += name.size() + 2;
  return true;
}

bool XmlScanner::ScanComment() {
  m_Pos += 4;
  if (!ScanUntil("--", "a comment is not closed")) {
    return false;
  }
  if (!LooksAt(">")) {
    return Fail(m_Pos - 2, "\"--\" in a comment");
  }
  ++m_Pos;
  return true;
}

bool XmlScanner::ScanCData() {
  if (m_Open.empty()) {
    return Fail(m_Pos, "text outside the root element");
  }
  m_Pos += 9;
  return ScanUntil("]]>", "a CDATA section is not closed");
}

bool XmlScanner::ScanInstruction() {
  const std::size_t begin = m_Pos;
  m_Pos += 2;
  std::string_view target;
  if (!ScanName(target, "a name is missing after \"<?\"")) {
    return false;
  }
  const bool isReserved = target.size() == 3 && (target[0] | 0x20) == 'x' &&
                          (target[1] | 0x20) == 'm' && (target[2] | 0x20) == 'l';
  if (isReserved && (begin != 0 || target != "xml")) {
    return Fail(begin, "an XML declaration may stand at the very beginning only");
  }
  if (!LooksAt("?>") && !SkipSpace()) {
    return Fail(m_Pos, "white space is missing after " + Quoted(target));
  }
  return ScanUntil("?>", "a processing instruction is not closed");
}

/// Nothing of it is used; entities could be declared in an internal subset, so that is refused.
bool XmlScanner::ScanDocType() {
  const std::size_t begin = m_Pos;
  if (m_SawDocType || !m_Elements.empty()) {
    return Fail(begin, "a document type declaration out of place");
  }
  m_SawDocType = true;
  m_Pos += 9;
  char quote = 0;
  while (!AtEnd()) {
    const char c = m_Text[m_Pos];
    if (quote == 0 && (c == '[' || c == '<')) {
      return Fail(m_Pos, "declarations within the document are not accepted");
    }
    if (!ScanCharacter()) {
      return false;
    }
    if (quote == 0 && c == '>') {
      return true;
    }
    if (c == '"' || c == '\'') {
      quote = quote == 0 ? c : quote == c ? '\0' : quote;
    }
  }
  return Fail(begin, "a document type declaration is not closed");
}

bool XmlScanner::ScanCharacter() {
  wchar_t character = 0;
  const std::size_t length = Utf8Sequence(m_Text, m_Pos, character);
  if (length == 0 || !IsXmlCharacter(static_cast<std::uint32_t>(character))) {
    return Fail(m_Pos, "a character that XML does not allow");
  }
  m_Pos += length;
  return true;
}

/// Past the next `end`; every character before it must be allowed.
bool XmlScanner::ScanUntil(std::string_view end, const char* unended) {
  const std::size_t begin = m_Pos;
  while (!LooksAt(end)) {
    if (AtEnd()) {
      return Fail(begin, unended);
    }
    if (!ScanCharacter()) {
      return false;
    }
  }
  m_Pos += end.size();
  return true;
}

bool XmlScanner::ScanName(std::string_view& name, const char* missing) {
  const std::size_t begin = m_Pos;
  if (AtEnd() || !IsNameStart(m_Text[begin])) {
    return Fail(begin, missing);
  }
  while (!AtEnd() && IsNameChar(m_Text[m_Pos])) {
    if (!ScanCharacter()) {
      return false;
    }
  }
  name = m_Text.substr(begin, m_Pos - begin);
  return true;
}

bool XmlScanner::SkipSpace() {
  const std::size_t begin = m_Pos;
  while (!AtEnd() && IsSpace(m_Text[m_Pos])) {
    ++m_Pos;
  }
  return m_Pos > begin;
}

bool XmlScanner::Fail(std::size_t offset, std::string message) {
  m_ErrorOffset = offset;
  m_Message = std::move(message);
  return false;
}

}  // namespace BaseSDK
