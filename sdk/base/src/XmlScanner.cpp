#include "XmlScanner.h"

#include "XmlCharacter.h"
#include "XmlDeclaration.h"
#include "XmlDocType.h"

#include <cstdint>
#include <string>

namespace BaseSDK {

namespace {

bool IsPredefinedEntity(std::string_view name) {
  return name == "lt" || name == "gt" || name == "amp" || name == "apos" || name == "quot";
}

/// The number of a character reference without "&#" and ";"; 0, no character, when it is none.
std::uint32_t ReferencedCharacter(std::string_view digits) {
  const bool isHex = !digits.empty() && digits.front() == 'x';
  const std::uint32_t base = isHex ? 16 : 10;
  constexpr std::string_view Values = "0123456789abcdef";
  std::uint32_t value = 0;
  for (const char c : digits.substr(isHex ? 1 : 0)) {
    const char lower = c >= 'A' && c <= 'F' ? static_cast<char>(c - 'A' + 'a') : c;
    const std::size_t digit = Values.substr(0, base).find(lower);
    if (digit == std::string_view::npos || value > 0x10FFFF) {
      return 0;
    }
    value = value * base + static_cast<std::uint32_t>(digit);
  }
  return value;
}

/// "xml" in any case: kept from processing instructions.
bool IsReserved(std::string_view target) {
  return target.size() == 3 && (target[0] | 0x20) == 'x' && (target[1] | 0x20) == 'm' &&
         (target[2] | 0x20) == 'l';
}

}  // namespace

bool XmlScanner::Scan() {
  while (!AtEnd()) {
    if (!(LooksAt("<") ? ScanMarkup() : ScanText())) {
      return false;
    }
  }
  if (!m_Open.empty()) {
    return Fail("element " + Quoted(m_Open.back().m_Name) + " is not closed");
  }
  return !m_Elements.empty() || Fail("there is no element");
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
  const std::size_t begin = Offset();
  (void)Take("<");
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
  m_Elements.push_back({begin, Offset()});
  return true;
}

/// attributes = { space name "=" value } [ space ] ( ">" | "/>" )
bool XmlScanner::ScanAttributes(bool& isEmptyElement) {
  std::set<std::string_view> names;
  for (;;) {
    const bool spaced = SkipSpace();
    if (AtEnd()) {
      return Fail("a tag is not closed");
    }
    isEmptyElement = Take("/>");
    if (isEmptyElement || Take(">")) {
      return true;
    }
    if (!spaced) {
      return Fail("white space is missing before an attribute");
    }
    if (!ScanAttribute(names)) {
      return false;
    }
  }
}

bool XmlScanner::ScanAttribute(std::set<std::string_view>& names) {
  const std::size_t begin = Offset();
  std::string_view name;
  if (!ScanName(name, "an attribute name is expected")) {
    return false;
  }
  if (!names.insert(name).second) {
    return Fail(begin, "attribute " + Quoted(name) + " is given twice");
  }
  return ScanEquals(name) && ScanAttributeValue();
}

bool XmlScanner::ScanAttributeValue() {
  const std::size_t begin = Offset();
  const std::string_view quote = TakeQuote();
  if (quote.empty()) {
    return Fail("an attribute value needs quotes");
  }
  for (SkipPlain(); !Take(quote); SkipPlain()) {
    if (AtEnd()) {
      return Fail(begin, "an attribute value is not closed");
    }
    if (LooksAt("<")) {
      return Fail("\"<\" in an attribute value; write \"&lt;\"");
    }
    if (!(LooksAt("&") ? ScanReference() : ScanCharacter())) {
      return false;
    }
  }
  return true;
}

bool XmlScanner::ScanEndTag() {
  const std::size_t begin = Offset();
  (void)Take("</");
  std::string_view name;
  if (!ScanName(name, "a name is missing after \"</\"")) {
    return false;
  }
  (void)SkipSpace();
  if (!Take(">")) {
    return Fail("\">\" is missing after " + Quoted("</" + std::string(name)));
  }
  if (m_Open.empty()) {
    return Fail(begin, "closing tag of " + Quoted(name) + " without an opening one");
  }
  if (m_Open.back().m_Name != name) {
    return Fail(begin, "closing tag of " + Quoted(name) + " where that of " +
                           Quoted(m_Open.back().m_Name) + " is expected");
  }
  m_Elements[m_Open.back().m_Index].m_End = Offset();
  m_Open.pop_back();
  return true;
}

bool XmlScanner::ScanText() {
  if (m_Open.empty()) {
    return SkipSpace() || Fail("text outside the root element");
  }
  for (SkipPlain(); !AtEnd() && !LooksAt("<"); SkipPlain()) {
    if (LooksAt("]]>")) {
      return Fail("\"]]>\" in text; write \"]]&gt;\"");
    }
    if (!(LooksAt("&") ? ScanReference() : ScanCharacter())) {
      return false;
    }
  }
  return true;
}

/// reference = "&" name ";" | "&#" digits ";" | "&#x" digits ";"
bool XmlScanner::ScanReference() {
  const std::size_t begin = Offset();
  (void)Take("&");
  SkipTo(";<&\"' \t\r\n");
  const std::string_view name = TextFrom(begin + 1);
  if (name.empty() || !Take(";")) {
    return Fail(begin, "\"&\" without an entity; write \"&amp;\"");
  }
  const bool isKnown = name.front() == '#' ? IsXmlCharacter(ReferencedCharacter(name.substr(1)))
                                           : IsPredefinedEntity(name);
  return isKnown || Fail(begin, "there is no entity " + Quoted(TextFrom(begin)));
}

bool XmlScanner::ScanComment() {
  (void)Take("<!--");
  return ScanUntil("--", "a comment is not closed") &&
         (Take(">") || Fail(Offset() - 2, "\"--\" in a comment"));
}

bool XmlScanner::ScanCData() {
  if (m_Open.empty()) {
    return Fail("text outside the root element");
  }
  (void)Take("<![CDATA[");
  return ScanUntil("]]>", "a CDATA section is not closed");
}

bool XmlScanner::ScanInstruction() {
  const std::size_t begin = Offset();
  (void)Take("<?");
  std::string_view target;
  if (!ScanName(target, "a name is missing after \"<?\"")) {
    return false;
  }
  if (target == "xml") {
    return begin == 0 ? ScanXmlDeclaration(*this)
                      : Fail(begin, "an XML declaration may stand at the very beginning only");
  }
  if (IsReserved(target)) {
    return Fail(begin, "a processing instruction may not be called " + Quoted(target));
  }
  if (Take("?>")) {
    return true;
  }
  return SkipSpace() ? ScanUntil("?>", "a processing instruction is not closed")
                     : Fail("white space is missing after " + Quoted(target));
}

bool XmlScanner::ScanDocType() {
  if (m_SawDocType || !m_Elements.empty()) {
    return Fail("a document type declaration out of place");
  }
  m_SawDocType = true;
  (void)Take("<!DOCTYPE");
  return ScanXmlDocType(*this);
}

}  // namespace BaseSDK
