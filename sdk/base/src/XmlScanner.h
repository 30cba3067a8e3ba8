#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace BaseSDK {

/// Checks that a text is a well-formed XML 1.0 document and notes where its elements end.
///
/// The library behind AXmlDoc reads much that is not well formed, and does not say how an element
/// was written; both matter to callers. Left out of the full rules: which characters past ASCII a
/// name may hold (all are taken), what an XML declaration says, and document type declarations with
/// an internal subset, which are refused.
class XmlScanner {
 public:
  /// `text` is UTF-8 and is borrowed for the scanner's life.
  XmlScanner(std::string_view text, std::size_t maxDepth) : m_Text(text), m_MaxDepth(maxDepth) {}

  bool Scan();

  /// After a failed Scan: why, and at which byte.
  const std::string& Message() const { return m_Message; }
  std::size_t ErrorOffset() const { return m_ErrorOffset; }

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

  // Each Scan... starts at m_Pos, moves it past what it took, and is false after Fail.
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
  bool ScanCharacter();
  bool ScanUntil(std::string_view end, const char* unended);
  bool ScanName(std::string_view& name, const char* missing);

  bool Fail(std::size_t offset, std::string message);
  bool AtEnd() const { return m_Pos >= m_Text.size(); }
  bool LooksAt(std::string_view what) const { return m_Text.substr(m_Pos, what.size()) == what; }
  bool SkipSpace();

  const std::string_view m_Text;
  const std::size_t m_MaxDepth;
  std::size_t m_Pos = 0;
  std::vector<Element> m_Elements;
  std::vector<OpenElement> m_Open;
  bool m_SawDocType = false;
  std::string m_Message;
  std::size_t m_ErrorOffset = 0;
};

}  // namespace BaseSDK
