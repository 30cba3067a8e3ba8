#include "Utf8.h"

#include <cstdint>
#include <type_traits>

namespace BaseSDK {

namespace {

struct LeadByte {
  std::size_t m_Length;     ///< 0: no character starts so
  std::uint32_t m_Bits;     ///< of the character
  std::uint32_t m_Minimum;  ///< below it the form is overlong
};

LeadByte ReadLead(unsigned char lead) {
  if (lead < 0x80) {
    return {1, lead, 0};
  }
  if ((lead & 0xE0) == 0xC0) {
    return {2, lead & 0x1Fu, 0x80};
  }
  if ((lead & 0xF0) == 0xE0) {
    return {3, lead & 0x0Fu, 0x800};
  }
  if ((lead & 0xF8) == 0xF0) {
    return {4, lead & 0x07u, 0x10000};
  }
  return {0, 0, 0};
}

bool IsSurrogate(std::uint32_t value) {
  return value >= 0xD800 && value <= 0xDFFF;
}

/// What of the text comes before its first character that is not ASCII, with room for the rest: of
/// most texts that is all.
template <typename To, typename From>
To AsciiBegin(const From& text) {
  To begin;
  begin.resize(text.size());
  std::size_t length = 0;
  for (; length < text.size(); ++length) {
    const auto character =
        static_cast<std::make_unsigned_t<typename From::value_type>>(text[length]);
    if (character >= 0x80) {
      break;
    }
    begin[length] = static_cast<typename To::value_type>(character);
  }
  begin.resize(length);
  return begin;
}

}  // namespace

std::size_t Utf8Sequence(std::string_view bytes, std::size_t pos, wchar_t& character) {
  const LeadByte lead = ReadLead(static_cast<unsigned char>(bytes[pos]));
  if (lead.m_Length == 0 || lead.m_Length > bytes.size() - pos) {
    return 0;
  }
  std::uint32_t value = lead.m_Bits;
  for (std::size_t i = 1; i < lead.m_Length; ++i) {
    const auto byte = static_cast<unsigned char>(bytes[pos + i]);
    if ((byte & 0xC0) != 0x80) {
      return 0;
    }
    value = (value << 6) | (byte & 0x3Fu);
  }
  if (value < lead.m_Minimum || value > 0x10FFFF || IsSurrogate(value)) {
    return 0;
  }
  character = static_cast<wchar_t>(value);
  return lead.m_Length;
}

void AppendUtf8(std::uint32_t value, std::string& bytes) {
  const auto put = [&bytes](std::uint32_t byte) { bytes += static_cast<char>(byte); };
  const auto putTail = [&](unsigned shift) { put(0x80u | ((value >> shift) & 0x3Fu)); };
  if (value < 0x80) {
    put(value);
  } else if (value < 0x800) {
    put(0xC0u | (value >> 6));
    putTail(0);
  } else if (value < 0x10000) {
    put(0xE0u | (value >> 12));
    putTail(6);
    putTail(0);
  } else {
    put(0xF0u | (value >> 18));
    putTail(12);
    putTail(6);
    putTail(0);
  }
}

std::wstring Utf8ToWide(std::string_view bytes) {
  std::wstring text = AsciiBegin<std::wstring>(bytes);
  for (std::size_t pos = text.size(); pos < bytes.size();) {
    wchar_t character = 0;
    std::size_t length = Utf8Sequence(bytes, pos, character);
    if (length == 0) {
      character = EscapedByte + static_cast<unsigned char>(bytes[pos]);
      length = 1;
    }
    text += character;
    pos += length;
  }
  return text;
}

std::string WideToUtf8(const std::wstring& text) {
  constexpr std::uint32_t Replacement = 0xFFFD;
  std::string bytes = AsciiBegin<std::string>(text);
  for (const wchar_t character : std::wstring_view(text).substr(bytes.size())) {
    const auto value = static_cast<std::uint32_t>(character);
    if (value >= EscapedByte + 0x80u && value <= EscapedByte + 0xFFu) {
      bytes += static_cast<char>(value - EscapedByte);
    } else {
      AppendUtf8(value > 0x10FFFF || IsSurrogate(value) ? Replacement : value, bytes);
    }
  }
  return bytes;
}

}  // namespace BaseSDK
