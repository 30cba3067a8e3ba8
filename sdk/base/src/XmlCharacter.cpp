#include "XmlCharacter.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace BaseSDK {

namespace {

struct CharacterRange {
  std::uint32_t m_First;
  std::uint32_t m_Last;
};

constexpr CharacterRange Characters[] = {
    {0x9, 0xA}, {0xD, 0xD}, {0x20, 0xD7FF}, {0xE000, 0xFFFD}, {0x10000, 0x10FFFF}};

constexpr CharacterRange NameStarts[] = {
    {':', ':'},       {'A', 'Z'},       {'_', '_'},       {'a', 'z'},
    {0xC0, 0xD6},     {0xD8, 0xF6},     {0xF8, 0x2FF},    {0x370, 0x37D},
    {0x37F, 0x1FFF},  {0x200C, 0x200D}, {0x2070, 0x218F}, {0x2C00, 0x2FEF},
    {0x3001, 0xD7FF}, {0xF900, 0xFDCF}, {0xFDF0, 0xFFFD}, {0x10000, 0xEFFFF}};

/// What a name may hold but not begin with.
constexpr CharacterRange NameRest[] = {
    {'-', '.'}, {'0', '9'}, {0xB7, 0xB7}, {0x300, 0x36F}, {0x203F, 0x2040}};

/// `ranges` are in ascending order.
template <std::size_t Count>
bool IsIn(const CharacterRange (&ranges)[Count], std::uint32_t c) {
  const auto* range = std::find_if(std::begin(ranges), std::end(ranges),
                                   [c](const CharacterRange& r) { return c <= r.m_Last; });
  return range != std::end(ranges) && c >= range->m_First;
}

}  // namespace

bool IsXmlCharacter(std::uint32_t c) {
  return IsIn(Characters, c);
}

bool IsXmlNameStart(std::uint32_t c) {
  return IsIn(NameStarts, c);
}

bool IsXmlNameCharacter(std::uint32_t c) {
  return IsIn(NameStarts, c) || IsIn(NameRest, c);
}

}  // namespace BaseSDK
