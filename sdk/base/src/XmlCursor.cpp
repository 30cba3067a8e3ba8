#include "XmlCursor.h"

#include "Characters.h"
#include "Utf8.h"
#include "XmlCharacter.h"

#include <algorithm>
#include <array>

namespace BaseSDK {

namespace {

/// What is known of an ASCII character without a look at those around it.
enum Trait : std::uint8_t {
  PlainText = 1,   ///< in a text it stands for itself
  NameStart = 2,   ///< a name may begin with it
  InName = 4,      ///< a name may hold it
  Blank = 8,       ///< white space
  PlainValue = 16  ///< in a value it stands for itself
};

constexpr std::uint8_t TraitsOf(char c) {
  const bool isBlank = c == ' ' || c == '\t' || c == '\r' || c == '\n';
  const bool isInText = c > ' ' && c != '<' && c != '&' && c != ']';
  const bool isInValue = c >= ' ' && c != '<' && c != '&' && c != '"' && c != '\'';
  const bool isNameStart = IsAsciiLetter(c) || c == '_' || c == ':';
  const bool isInName = isNameStart || IsAsciiDigit(c) || c == '-' || c == '.';
  return static_cast<std::uint8_t>((isInText || (isBlank && c != '\r') ? PlainText : 0) |
                                   (isInValue ? PlainValue : 0) | (isBlank ? Blank : 0) |
                                   (isNameStart ? NameStart : 0) | (isInName ? InName : 0));
}

/// By byte; those that are not ASCII have none.
constexpr std::array<std::uint8_t, 256> Traits = [] {
  std::array<std::uint8_t, 256> traits{};
  for (std::size_t c = 0; c < 0x80; ++c) {
    traits[c] = TraitsOf(static_cast<char>(c));
  }
  return traits;
}();

bool Has(char c, Trait trait) {
  return (Traits[static_cast<unsigned char>(c)] & trait) != 0;
}

bool IsAscii(char c) {
  return (static_cast<unsigned char>(c) & 0x80) == 0;
}

/// Of the characters of that trait that stand from `begin` on.
std::size_t EndOf(Trait trait, std::string_view text, std::size_t begin) {
  const char* const end = text.data() + text.size();
  const char* place = text.data() + begin;
  while (place != end && Has(*place, trait)) {
    ++place;
  }
  return static_cast<std::size_t>(place - text.data());
}

}  // namespace

char XmlCursor::TakeQuote() {
  const char quote = CharacterAt(0);
  return Take('"') || Take('\'') ? quote : '\0';
}

bool XmlCursor::TakeEndTag(std::string_view name) {
  constexpr std::string_view Begin = "</";
  const std::size_t end = m_Pos + Begin.size() + name.size();
  const bool isThere = end < m_Text.size() && m_Text[end] == '>' &&
                       m_Text.substr(m_Pos, Begin.size()) == Begin &&
                       m_Text.substr(m_Pos + Begin.size(), name.size()) == name;
  m_Pos = isThere ? end + 1 : m_Pos;
  return isThere;
}

bool XmlCursor::SkipSpace() {
  const std::size_t begin = m_Pos;
  m_Pos = EndOf(Blank, m_Text, begin);
  return m_Pos > begin;
}

void XmlCursor::SkipTo(std::string_view characters) {
  m_Pos = std::min(m_Text.find_first_of(characters, m_Pos), m_Text.size());
}

void XmlCursor::SkipPlainText() {
  m_Pos = EndOf(PlainText, m_Text, m_Pos);
}

void XmlCursor::SkipPlainValue() {
  m_Pos = EndOf(PlainValue, m_Text, m_Pos);
}

std::size_t XmlCursor::Decode(std::uint32_t& character) const {
  const auto byte = static_cast<unsigned char>(m_Text[m_Pos]);
  if (byte < 0x80) {  // as most are
    character = byte;
    return 1;
  }
  wchar_t wide = 0;
  const std::size_t length = Utf8Sequence(m_Text, m_Pos, wide);
  character = static_cast<std::uint32_t>(wide);
  return length;
}

bool XmlCursor::ScanCharacter() {
  std::uint32_t character = 0;
  const std::size_t length = Decode(character);
  if (length == 0 || !IsXmlCharacter(character)) {
    return Fail("a character that XML does not allow");
  }
  m_Pos += length;
  return true;
}

bool XmlCursor::ScanUntil(std::string_view end, const char* unended) {
  const std::size_t begin = m_Pos;
  while (!LooksAt(end)) {
    if (AtEnd()) {
      return Fail(begin, unended);
    }
    if (!ScanCharacter()) {
      return false;
    }
  }
  m_Pos += end.size();
  return true;
}

bool XmlCursor::ScanName(std::string_view& name, const char* missing) {
  const std::size_t begin = m_Pos;
  if (!AtEnd() && Has(m_Text[begin], NameStart)) {
    m_Pos = EndOf(InName, m_Text, begin);
  }
  while (const std::size_t length = WideNameCharacterLength(m_Pos == begin)) {
    m_Pos = EndOf(InName, m_Text, m_Pos + length);
  }
  name = TextFrom(begin);
  if (AtEnd() || IsAscii(m_Text[m_Pos])) {
    return !name.empty() || Fail(missing);
  }
  // Nothing that may follow a name lies past ASCII.
  const std::size_t end = m_Pos;
  return ScanCharacter() && Fail(end, name.empty() ? "a character that no name begins with"
                                                   : "a character that no name holds");
}

std::size_t XmlCursor::WideNameCharacterLength(bool isFirst) const {
  if (AtEnd() || IsAscii(m_Text[m_Pos])) {
    return 0;
  }
  std::uint32_t character = 0;
  const std::size_t length = Decode(character);
  return (isFirst ? IsXmlNameStart(character) : IsXmlNameCharacter(character)) ? length : 0;
}

bool XmlCursor::ScanQuoted(std::string_view& value, const char* missing, const char* unended) {
  const char quote = TakeQuote();
  const std::size_t begin = m_Pos;
  if (quote == '\0') {
    return Fail(missing);
  }
  if (!ScanUntil(std::string_view(&quote, 1), unended)) {
    return false;
  }
  value = m_Text.substr(begin, m_Pos - 1 - begin);
  return true;
}

bool XmlCursor::ScanEquals(std::string_view name) {
  (void)SkipSpace();
  if (!Take('=')) {
    return Fail("\"=\" is missing after " + Quoted(name));
  }
  (void)SkipSpace();
  return true;
}

bool XmlCursor::Fail(std::size_t offset, std::string message) {
  m_ErrorOffset = offset;
  m_Message = std::move(message);
  return false;
}

std::string XmlCursor::Quoted(std::string_view text) {
  constexpr std::size_t Longest = 64;
  if (text.size() <= Longest) {
    return '"' + std::string(text) + '"';
  }
  std::size_t end = Longest;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) {
    --end;
  }
  return '"' + std::string(text.substr(0, end)) + "...\"";
}

}  // namespace BaseSDK
