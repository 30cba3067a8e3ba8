#pragma once

#include <pugixml.hpp>

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace BaseSDK {

/// The paths that documents are nearly always read by. The XPath engine would compile each of them
/// anew for every value; these are walked.
///
///     path = ( "//" name | "/" name { "/" name } ) [ "/@" name | "/text()" ]
class XmlPath {
 public:
  using Nodes = std::vector<pugi::xpath_node>;

  /// Whether it is text to XPath: a CDATA section is.
  static bool IsText(const pugi::xml_node& node);

  /// Nothing for any other expression, for names of more than ASCII letters and digits, and for
  /// more than MaxNames elements. The path is borrowed.
  static std::optional<XmlPath> Read(std::string_view path);

  /// What the XPath engine selects, in document order: the first `most` of it.
  Nodes Select(const pugi::xml_document& document, std::size_t most) const;

 private:
  static constexpr std::size_t MaxNames = 8;
  enum class Kind { Element, Attribute, Text };

  bool ReadElement(std::string_view step);
  bool ReadLastStep(std::string_view step);
  /// Selects below an element, or the document, that lies `depth` elements deep.
  void SelectBelow(const pugi::xml_node& node, std::size_t depth, std::size_t most,
                   Nodes& selected) const;
  void SelectAt(const pugi::xml_node& element, Nodes& selected) const;
  /// Whether the path goes through an element of that depth, or ends there.
  bool Passes(const pugi::xml_node& element, std::size_t depth) const;
  bool EndsAt(const pugi::xml_node& element, std::size_t depth) const;

  bool m_IsAnywhere = false;
  std::array<std::string_view, MaxNames> m_Elements;  ///< names from the outside
  std::size_t m_Depth = 0;                            ///< how many; one when anywhere
  Kind m_Kind = Kind::Element;
  std::string_view m_Attribute;
};

}  // namespace BaseSDK
