#include "XmlReference.h"

#include "Characters.h"
#include "XmlCharacter.h"

#include <cstddef>

namespace BaseSDK {

namespace {

struct Entity {
  std::string_view m_Name;
  std::uint32_t m_Character;
};

constexpr Entity Predefined[] = {
    {"lt", '<'}, {"gt", '>'}, {"amp", '&'}, {"apos", '\''}, {"quot", '"'}};

/// `digits` is what stands behind "#".
std::uint32_t NumberedCharacter(std::string_view digits) {
  const bool isHex = !digits.empty() && digits.front() == 'x';
  const std::uint32_t base = isHex ? 16 : 10;
  std::uint32_t value = 0;
  for (const char c : digits.substr(isHex ? 1 : 0)) {
    const int digit = isHex ? HexValue(c) : IsAsciiDigit(c) ? c - '0' : -1;
    if (digit < 0 || value > 0x10FFFF) {
      return 0;
    }
    value = value * base + static_cast<std::uint32_t>(digit);
  }
  return IsXmlCharacter(value) ? value : 0;
}

}  // namespace

std::uint32_t XmlReferencedCharacter(std::string_view reference) {
  if (reference.starts_with('#')) {
    return NumberedCharacter(reference.substr(1));
  }
  for (const Entity& entity : Predefined) {
    if (entity.m_Name == reference) {
      return entity.m_Character;
    }
  }
  return 0;
}

}  // namespace BaseSDK
