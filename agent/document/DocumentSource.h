#pragma once

#include <pugixml.hpp>

#include <cstddef>
#include <string>
#include <vector>

namespace NoxAgent {

/// A place in a text, counted in characters from 1.
struct TextPlace {
  unsigned m_Line = 1;
  unsigned m_Column = 1;
};

/// A parsed document together with its text, so that whatever is found in it can be pointed at.
class DocumentSource {
 public:
  explicit DocumentSource(std::string utf8);

  const pugi::xml_document& Document() const { return m_Document; }

  TextPlace PlaceAt(std::size_t byteOffset) const;
  /// The opening bracket of an element, a comment or a declaration; the first character of a text.
  TextPlace PlaceOf(const pugi::xml_node& node) const;
  /// The first character of the attribute's name. `attribute` is one of `element`'s.
  TextPlace PlaceOf(const pugi::xml_node& element, const pugi::xml_attribute& attribute) const;

 private:
  std::size_t CharactersBefore(std::size_t offset) const;

  std::string m_Text;
  std::vector<std::size_t> m_LineStarts;
  std::vector<std::size_t> m_CharactersBeforeBlock;
  pugi::xml_document m_Document;
};

}  // namespace NoxAgent
