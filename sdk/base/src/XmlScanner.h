#pragma once

#include "XmlCursor.h"
#include "XmlNames.h"
#include "XmlTree.h"

#include <cstddef>
#include <string_view>
#include <vector>

namespace BaseSDK {

/// Reads a well-formed XML 1.0 document (fifth edition) into a tree, and says of any other text
/// where and why it is none.
///
/// The library that answers XPath reads much that is not well formed, and does not say how an
/// element was written; both matter to callers. Refused though well formed: declarations within the
/// document, references to entities that would need some, and elements nested too deeply.
class XmlScanner : private XmlCursor {
 public:
  /// `text` is UTF-8. Text and tree are borrowed for the scanner's life.
  XmlScanner(const std::string& text, std::size_t maxDepth, XmlTree& tree)
      : XmlCursor(text), m_MaxDepth(maxDepth), m_Tree(tree) {}

  /// Reads the whole text; false when it is not such a document, and the tree then means nothing.
  /// Call it once.
  bool Scan();

  /// After a failed Scan: why, and at which byte.
  using XmlCursor::ErrorOffset;
  using XmlCursor::Message;

 private:
  struct OpenElement {
    XmlTree::Index m_Index;
    std::size_t m_Begin;  ///< of "<"
    std::string_view m_Name;
  };

  XmlTree::Index Innermost() const {
    return m_Open.empty() ? XmlTree::None : m_Open.back().m_Index;
  }

  bool ScanMarkup();
  bool ScanDeclaration();
  bool ScanStartTag();
  bool ScanAttributes(XmlTree::Index element, bool& isEmptyElement);
  bool ScanAttribute(XmlTree::Index element);
  bool ScanAttributeValue(std::string_view& value, bool& isPlain);
  bool ScanEndTag();
  void CloseInnermost();
  bool ScanText();
  bool ScanReference();
  bool ScanComment();
  bool ScanCData();
  bool ScanInstruction();
  bool ScanDocType();

  const std::size_t m_MaxDepth;
  XmlTree& m_Tree;
  std::vector<OpenElement> m_Open;
  XmlNames m_AttributeNames;  ///< of the tag that is being read
  bool m_SawDocType = false;
};

}  // namespace BaseSDK
