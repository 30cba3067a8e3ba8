#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace BaseSDK {

/// The elements, attributes and texts of a document, in document order. Comments, instructions and
/// the prolog are not here. All pieces borrow from the document's text, which must stay in place.
class XmlTree {
 public:
  /// Of a node.
  using Index = std::uint32_t;
  static constexpr Index None = static_cast<Index>(-1);

  enum class Kind : std::uint8_t { Element, Attribute, Text };

  struct Node {
    Kind m_Kind;
    bool m_IsPlain;           ///< known to say what is written
    Index m_Owner;            ///< the element around it; None for the root
    std::string_view m_Name;  ///< empty for a text
    /// As written: an element's markup, an attribute's value without its quotes, a text with its
    /// CDATA sections.
    std::string_view m_Raw;
  };

  /// An element and all that it holds: from its index up to, but not including, m_End.
  struct Range {
    Index m_Begin = 0;
    Index m_End = 0;
  };

  const std::vector<Node>& Nodes() const { return m_Nodes; }
  /// Of the root.
  Range Whole() const { return {0, static_cast<Index>(m_Nodes.size())}; }
  Range RangeOf(Index element) const;

  /// Makes room for the nodes of a document of that many bytes, as documents usually are.
  void ReserveFor(std::size_t bytes) { m_Nodes.reserve(bytes / UsualBytesPerNode + 1); }
  /// Returns the element's index; its markup is known when it is closed.
  Index AddElement(Index owner, std::string_view name);
  void CloseElement(Index element, std::string_view markup) { m_Nodes[element].m_Raw = markup; }
  /// `isPlain`: it is known to say what is written.
  void AddAttribute(Index owner, std::string_view name, std::string_view value, bool isPlain);
  /// A text and a CDATA section side by side are one text, as they are to XPath.
  void AddText(Index owner, std::string_view text, bool isPlain);
  void Clear() { m_Nodes.clear(); }

  /// The element that is written at `place`; null when none is.
  const Node* ElementAt(const char* place) const;

  /// Whether a node's value is what is written. An element's always is: its value is its markup.
  static bool SaysWhatIsWritten(const Node& node);
  /// The value of an attribute or a text: references resolved, each end of a line one line feed,
  /// and in an attribute all white space blanks.
  static std::string Decode(const Node& node);

 private:
  static constexpr std::size_t UsualBytesPerNode = 16;

  std::vector<Node> m_Nodes;
};

}  // namespace BaseSDK
