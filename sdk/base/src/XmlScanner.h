#pragma once

#include "XmlCursor.h"

#include <cstddef>
#include <set>
#include <string_view>
#include <vector>

namespace BaseSDK {

/// Checks that a text is a well-formed XML 1.0 document (fifth edition) and notes where its
/// elements end.
///
/// The library behind AXmlDoc reads much that is not well formed, and does not say how an element
/// was written; both matter to callers. Refused though well formed: declarations within the
/// document, references to entities that would need some, and elements nested too deeply.
class XmlScanner : private XmlCursor {
 public:
  /// `text` is UTF-8 and is borrowed for the scanner's life.
  XmlScanner(std::string_view text, std::size_t maxDepth) : XmlCursor(text), m_MaxDepth(maxDepth) {}

  /// Reads the whole text; false when it is not such a document. Call it once.
  bool Scan();

  /// After a failed Scan: why, and at which byte.
  using XmlCursor::ErrorOffset;
  using XmlCursor::Message;

  struct Element {
    std::size_t m_Begin;  ///< of "<"
    std::size_t m_End;    ///< after ">"
  };
  /// After a successful Scan: all elements, in document order and so ordered by m_Begin.
  const std::vector<Element>& Elements() const { return m_Elements; }

 private:
  struct OpenElement {
    std::size_t m_Index;  ///< in m_Elements
    std::string_view m_Name;
  };

  bool ScanMarkup();
  bool ScanStartTag();
  bool ScanAttributes(bool& isEmptyElement);
  bool ScanAttribute(std::set<std::string_view>& names);
  bool ScanAttributeValue();
  bool ScanEndTag();
  bool ScanText();
  bool ScanReference();
  bool ScanComment();
  bool ScanCData();
  bool ScanInstruction();
  bool ScanDocType();

  const std::size_t m_MaxDepth;
  std::vector<Element> m_Elements;
  std::vector<OpenElement> m_Open;
  bool m_SawDocType = false;
};

}  // namespace BaseSDK
