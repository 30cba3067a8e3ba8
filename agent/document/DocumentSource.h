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

/// A parsed document together with its text, so that messages can name the place of whatever is
/// found in it.
class DocumentSource {
 public:
  /// Parses the text. There is no error: what cannot be parsed is not in Document().
  /// Well-formedness is checked elsewhere, before.
  explicit DocumentSource(std::string utf8);

  const pugi::xml_document& Document() const { return m_Document; }

  /// The place of the byte at that offset of the text.
  TextPlace PlaceAt(std::size_t byteOffset) const;
  /// The place of the opening bracket of an element, a comment or a declaration; of a text, of its
  /// first character.
  TextPlace PlaceOf(const pugi::xml_node& node) const;
  /// The place of the attribute's name. `attribute` belongs to `element`.
  TextPlace PlaceOf(const pugi::xml_node& element, const pugi::xml_attribute& attribute) const;

 private:
  std::size_t CharactersBefore(std::size_t offset) const;

  std::string m_Text;
  std::vector<std::size_t> m_LineStarts;
  std::vector<std::size_t> m_CharactersBeforeBlock;
  pugi::xml_document m_Document;
};

}  // namespace NoxAgent
