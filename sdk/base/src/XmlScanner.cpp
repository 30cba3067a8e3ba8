#include "XmlScanner.h"

#include "XmlDeclaration.h"
#include "XmlDocType.h"
#include "XmlReference.h"

#include <string>

namespace BaseSDK {

namespace {

constexpr std::size_t UsualDepth = 8;

/// "xml" in any case: kept from processing instructions.
bool IsReserved(std::string_view target) {
  return target.size() == 3 && (target[0] | 0x20) == 'x' && (target[1] | 0x20) == 'm' &&
         (target[2] | 0x20) == 'l';
}

}  // namespace

bool XmlScanner::Scan() {
  m_Tree.ReserveFor(Size());
  m_Open.reserve(UsualDepth);
  while (!AtEnd()) {
    if (!(LooksAt('<') ? ScanMarkup() : ScanText())) {
      return false;
    }
  }
  if (!m_Open.empty()) {
    return Fail("element " + Quoted(m_Open.back().m_Name) + " is not closed");
  }
  return !m_Tree.Nodes().empty() || Fail("there is no element");
}

bool XmlScanner::ScanMarkup() {
  switch (NextCharacter()) {
    case '/':
      return ScanEndTag();
    case '?':
      return ScanInstruction();
    case '!':
      return ScanDeclaration();
    default:
      return ScanStartTag();
  }
}

bool XmlScanner::ScanDeclaration() {
  if (LooksAt("<!--")) {
    return ScanComment();
  }
  if (LooksAt("<![CDATA[")) {
    return ScanCData();
  }
  return LooksAt("<!DOCTYPE") ? ScanDocType() : ScanStartTag();
}

bool XmlScanner::ScanStartTag() {
  const std::size_t begin = Offset();
  (void)Take('<');
  if (m_Open.empty() && !m_Tree.Nodes().empty()) {
    return Fail(begin, "there is more than one root element");
  }
  if (m_Open.size() >= m_MaxDepth) {
    return Fail(begin, "elements are nested too deeply");
  }
  std::string_view name;
  bool isEmptyElement = false;
  if (!ScanName(name, "a name is missing after \"<\"")) {
    return false;
  }
  const XmlTree::Index element = m_Tree.AddElement(Innermost(), name);
  if (!ScanAttributes(element, isEmptyElement)) {
    return false;
  }
  if (isEmptyElement) {
    m_Tree.CloseElement(element, TextFrom(begin));
  } else {
    m_Open.push_back({element, begin, name});
  }
  return true;
}

/// attributes = { space name "=" value } [ space ] ( ">" | "/>" )
bool XmlScanner::ScanAttributes(XmlTree::Index element, bool& isEmptyElement) {
  m_AttributeNames.Clear();
  for (;;) {
    const bool spaced = SkipSpace();
    if (AtEnd()) {
      return Fail("a tag is not closed");
    }
    isEmptyElement = Take("/>");
    if (isEmptyElement || Take('>')) {
      return true;
    }
    if (!spaced) {
      return Fail("white space is missing before an attribute");
    }
    if (!ScanAttribute(element)) {
      return false;
    }
  }
}

bool XmlScanner::ScanAttribute(XmlTree::Index element) {
  const std::size_t begin = Offset();
  std::string_view name;
  if (!ScanName(name, "an attribute name is expected")) {
    return false;
  }
  if (!m_AttributeNames.Insert(name)) {
    return Fail(begin, "attribute " + Quoted(name) + " is given twice");
  }
  std::string_view value;
  bool isPlain = false;
  if (!ScanEquals(name) || !ScanAttributeValue(value, isPlain)) {
    return false;
  }
  m_Tree.AddAttribute(element, name, value, isPlain);
  return true;
}

bool XmlScanner::ScanAttributeValue(std::string_view& value, bool& isPlain) {
  const std::size_t begin = Offset();
  const char quote = TakeQuote();
  if (quote == '\0') {
    return Fail("an attribute value needs quotes");
  }
  SkipPlainValue();
  isPlain = LooksAt(quote);
  for (; !Take(quote); SkipPlainValue()) {
    if (AtEnd()) {
      return Fail(begin, "an attribute value is not closed");
    }
    if (LooksAt('<')) {
      return Fail("\"<\" in an attribute value; write \"&lt;\"");
    }
    if (!(LooksAt('&') ? ScanReference() : ScanCharacter())) {
      return false;
    }
  }
  value = TextFrom(begin);
  value = value.substr(1, value.size() - 2);
  return true;
}

bool XmlScanner::ScanEndTag() {
  const std::size_t begin = Offset();
  if (!m_Open.empty() && TakeEndTag(m_Open.back().m_Name)) {
    CloseInnermost();
    return true;
  }
  (void)Take("</");
  std::string_view name;
  if (!ScanName(name, "a name is missing after \"</\"")) {
    return false;
  }
  (void)SkipSpace();
  if (!Take('>')) {
    return Fail("\">\" is missing after " + Quoted("</" + std::string(name)));
  }
  if (m_Open.empty()) {
    return Fail(begin, "closing tag of " + Quoted(name) + " without an opening one");
  }
  if (m_Open.back().m_Name != name) {
    return Fail(begin, "closing tag of " + Quoted(name) + " where that of " +
                           Quoted(m_Open.back().m_Name) + " is expected");
  }
  CloseInnermost();
  return true;
}

void XmlScanner::CloseInnermost() {
  m_Tree.CloseElement(m_Open.back().m_Index, TextFrom(m_Open.back().m_Begin));
  m_Open.pop_back();
}

bool XmlScanner::ScanText() {
  if (m_Open.empty()) {
    return SkipSpace() || Fail("text outside the root element");
  }
  const std::size_t begin = Offset();
  SkipPlainText();
  const bool isPlain = LooksAt('<');
  for (; !AtEnd() && !LooksAt('<'); SkipPlainText()) {
    if (LooksAt("]]>")) {
      return Fail("\"]]>\" in text; write \"]]&gt;\"");
    }
    if (!(LooksAt('&') ? ScanReference() : ScanCharacter())) {
      return false;
    }
  }
  m_Tree.AddText(Innermost(), TextFrom(begin), isPlain);
  return true;
}

/// reference = "&" name ";" | "&#" digits ";" | "&#x" digits ";"
bool XmlScanner::ScanReference() {
  const std::size_t begin = Offset();
  (void)Take('&');
  SkipTo(";<&\"' \t\r\n");
  const std::string_view name = TextFrom(begin + 1);
  if (name.empty() || !Take(';')) {
    return Fail(begin, "\"&\" without an entity; write \"&amp;\"");
  }
  return XmlReferencedCharacter(name) != 0 ||
         Fail(begin, "there is no entity " + Quoted(TextFrom(begin)));
}

bool XmlScanner::ScanComment() {
  (void)Take("<!--");
  return ScanUntil("--", "a comment is not closed") &&
         (Take('>') || Fail(Offset() - 2, "\"--\" in a comment"));
}

bool XmlScanner::ScanCData() {
  if (m_Open.empty()) {
    return Fail("text outside the root element");
  }
  const std::size_t begin = Offset();
  (void)Take("<![CDATA[");
  if (!ScanUntil("]]>", "a CDATA section is not closed")) {
    return false;
  }
  m_Tree.AddText(Innermost(), TextFrom(begin), false);
  return true;
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
  if (m_SawDocType || !m_Tree.Nodes().empty()) {
    return Fail("a document type declaration out of place");
  }
  m_SawDocType = true;
  (void)Take("<!DOCTYPE");
  return ScanXmlDocType(*this);
}

}  // namespace BaseSDK
