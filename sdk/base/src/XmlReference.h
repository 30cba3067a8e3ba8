#pragma once

#include <cstdint>
#include <string_view>

namespace BaseSDK {

/// The character that a reference names, `reference` being what stands between "&" and ";": one of
/// the five predefined entities, "#" and digits, or "#x" and hexadecimal digits. 0, which is no
/// character of XML, when it names none.
std::uint32_t XmlReferencedCharacter(std::string_view reference);

}  // namespace BaseSDK
