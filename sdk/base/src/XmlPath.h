#pragma once

#include <pugixml.hpp>

#include <cstddef>
#include <optional>
#include <string>
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

  /// Nothing for any other expression, and for names of more than ASCII letters and digits.
  static std::optional<XmlPath> Read(std::string_view path);

  /// What the XPath engine selects, in document order.
  Nodes Select(const pugi::xml_document& document) const;

 private:
  enum class Kind { Element, Attribute, Text };

  bool ReadLastStep(std::string_view step);
  /// Selects below an element, or the document, that lies `depth` elements deep.
  void SelectBelow(const pugi::xml_node& node, std::size_t depth, Nodes& selected) const;
  void SelectAt(const pugi::xml_node& element, Nodes& selected) const;
  /// Whether the path goes through an element of that depth, or ends there.
  bool Passes(const pugi::xml_node& element, std::size_t depth) const;
  bool EndsAt(const pugi::xml_node& element, std::size_t depth) const;

  bool m_IsAnywhere = false;
  std::vector<std::string> m_Elements;  ///< names from the outside; a single one when anywhere
  Kind m_Kind = Kind::Element;
  std::string m_Attribute;
};

}  // namespace BaseSDK
