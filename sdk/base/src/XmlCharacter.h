#pragma once

#include <cstdint>

namespace BaseSDK {

// The classes of characters of XML 1.0, fifth edition, by code point.
bool IsXmlCharacter(std::uint32_t c);
bool IsXmlNameStart(std::uint32_t c);
bool IsXmlNameCharacter(std::uint32_t c);

}  // namespace BaseSDK
