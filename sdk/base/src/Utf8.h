#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace BaseSDK {

/// Where the kit keeps bytes that are not UTF-8: byte b as the lone surrogate EscapedByte + b.
constexpr wchar_t EscapedByte = 0xDC00;

/// Length in bytes of the well-formed character at `pos`; 0 when the bytes there form none.
/// Overlong forms, surrogates and values past U+10FFFF are not well formed (RFC 3629).
std::size_t Utf8Sequence(std::string_view bytes, std::size_t pos, wchar_t& character);

/// `character` is at most U+10FFFF and no surrogate.
void AppendUtf8(std::uint32_t character, std::string& bytes);

/// These two do the work of AString::FromUtf8 and ToUtf8, which the class describes.
std::wstring Utf8ToWide(std::string_view bytes);
std::string WideToUtf8(const std::wstring& text);

}  // namespace BaseSDK
