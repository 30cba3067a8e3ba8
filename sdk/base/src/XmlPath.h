#pragma once

#include "XmlTree.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace BaseSDK {

/// The paths that documents are nearly always read by. They are answered from the document's tree;
/// all others need the XPath engine.
///
///     path = ( "//" name | "/" name { "/" name } ) [ "/@" name | "/text()" ]
class XmlPath {
 public:
  /// Nothing for any other expression, for names of more than ASCII letters and digits, and for
  /// more than MaxNames elements. The path is borrowed.
  static std::optional<XmlPath> Read(std::string_view path);

  /// The same, remembered for each thread: documents are asked the same few things over and over.
  /// Valid until the thread's next call. The path need not outlive the call.
  static const std::optional<XmlPath>& Known(std::string_view path);

  /// What the XPath engine selects in a document of these nodes: the first such node at or after
  /// `from`; None when there is none.
  XmlTree::Index Next(const XmlTree& tree, XmlTree::Range nodes, XmlTree::Index from) const;

 private:
  static constexpr std::size_t MaxNames = 8;

  bool ReadElement(std::string_view name);
  bool ReadLastStep(std::string_view& path);
  /// Whether the path leads to the element; `outside` is what the root belongs to.
  bool EndsAt(const XmlTree& tree, XmlTree::Index outside, XmlTree::Index element) const;

  bool m_IsAnywhere = false;
  std::array<std::string_view, MaxNames> m_Elements;  ///< names from the outside
  std::size_t m_Depth = 0;                            ///< how many; one when anywhere
  XmlTree::Kind m_Kind = XmlTree::Kind::Element;
  std::string_view m_Attribute;
};

}  // namespace BaseSDK
