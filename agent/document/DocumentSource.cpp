#include "agent/document/DocumentSource.h"

#include <algorithm>
#include <utility>

namespace NoxAgent {

namespace {

constexpr std::size_t BlockBytes = 256;

constexpr const char* Blanks = " \t\r\n";

bool IsFirstByteOfCharacter(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
}

// From the beginning of one attribute's name to the beginning of the next one's.
std::size_t SkipAttribute(const std::string& text, std::size_t nameOffset) {
  const std::size_t opening = text.find_first_of("\"'", nameOffset);
  if (opening == std::string::npos) {
    return text.size();
  }
  const std::size_t closing = text.find(text[opening], opening + 1);
  if (closing == std::string::npos) {
    return text.size();
  }
  return std::min(text.find_first_not_of(Blanks, closing + 1), text.size());
}

// How far before the place that the parser remembers a node's markup begins.
std::size_t MarkupBeforeOffset(pugi::xml_node_type type) {
  switch (type) {
    case pugi::node_element:
      return 1;  // <
    case pugi::node_comment:
      return 4;  // <!--
    case pugi::node_declaration:
    case pugi::node_pi:
      return 2;  // <?
    case pugi::node_cdata:
    case pugi::node_doctype:
      return 9;  // <![CDATA[ and <!DOCTYPE
    default:
      return 0;
  }
}

}  // namespace

DocumentSource::DocumentSource(std::string utf8) : m_Text(std::move(utf8)), m_LineStarts{0} {
  std::size_t characters = 0;
  for (std::size_t offset = 0; offset < m_Text.size(); ++offset) {
    if (offset % BlockBytes == 0) {
      m_CharactersBeforeBlock.push_back(characters);
    }
    if (IsFirstByteOfCharacter(m_Text[offset])) {
      ++characters;
    }
    if (m_Text[offset] == '\n') {
      m_LineStarts.push_back(offset + 1);
    }
  }
  m_CharactersBeforeBlock.push_back(characters);
  // Another parser has decided before whether the text is well formed, so errors are ignored here.
  (void)m_Document.load_buffer(m_Text.data(), m_Text.size(),
                               pugi::parse_default | pugi::parse_comments | pugi::parse_pi |
                                   pugi::parse_declaration | pugi::parse_doctype,
                               pugi::encoding_utf8);
}

TextPlace DocumentSource::PlaceAt(std::size_t byteOffset) const {
  const std::size_t offset = std::min(byteOffset, m_Text.size());
  const auto after = std::upper_bound(m_LineStarts.begin(), m_LineStarts.end(), offset);
  const std::size_t characters = CharactersBefore(offset) - CharactersBefore(*(after - 1));
  return {static_cast<unsigned>(after - m_LineStarts.begin()),
          static_cast<unsigned>(characters) + 1};
}

// A whole document may stand on one line, so counting goes by blocks.
std::size_t DocumentSource::CharactersBefore(std::size_t offset) const {
  const std::size_t block = offset / BlockBytes;
  const auto begin = m_Text.begin() + static_cast<std::ptrdiff_t>(block * BlockBytes);
  const auto end = m_Text.begin() + static_cast<std::ptrdiff_t>(offset);
  return m_CharactersBeforeBlock[block] +
         static_cast<std::size_t>(std::count_if(begin, end, IsFirstByteOfCharacter));
}

TextPlace DocumentSource::PlaceOf(const pugi::xml_node& node) const {
  const std::ptrdiff_t offset = node.offset_debug();
  if (offset < 0) {
    return {};
  }
  const std::size_t before = MarkupBeforeOffset(node.type());
  const auto place = static_cast<std::size_t>(offset);
  return PlaceAt(place - std::min(place, before));
}

TextPlace DocumentSource::PlaceOf(const pugi::xml_node& element,
                                  const pugi::xml_attribute& attribute) const {
  const std::ptrdiff_t nameOffset = element.offset_debug();
  if (nameOffset < 0) {
    return {};
  }
  std::size_t offset = m_Text.find_first_of(Blanks, static_cast<std::size_t>(nameOffset));
  offset = std::min(m_Text.find_first_not_of(Blanks, offset), m_Text.size());
  for (pugi::xml_attribute a = element.first_attribute(); a && a != attribute;
       a = a.next_attribute()) {
    offset = SkipAttribute(m_Text, offset);
  }
  return PlaceAt(offset);
}

}  // namespace NoxAgent
