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

/// Of the characters of that trait that stand from `place` on. The zero byte behind the text has
/// no trait.
const char* EndOf(Trait trait, const char* place) {
  while (Has(*place, trait)) {
    ++place;
  }
  return place;
}

}  // namespace

char XmlCursor::TakeQuote() {
  const char quote = Character();
  return Take('"') || Take('\'') ? quote : '\0';
}

bool XmlCursor::TakeEndTag(std::string_view name) {
  constexpr std::size_t Brackets = 3;  // "</" and ">"
  const std::size_t size = name.size() + Brackets;
  const bool isThere = size <= static_cast<std::size_t>(m_End - m_Place) && m_Place[0] == '<' &&
                       m_Place[1] == '/' && m_Place[size - 1] == '>' &&
                       std::string_view(m_Place + 2, name.size()) == name;
  m_Place += isThere ? size : 0;
  return isThere;
}

bool XmlCursor::SkipBlanks() {
  const char* const begin = m_Place;
  m_Place = EndOf(Blank, begin);
  return m_Place > begin;
}

void XmlCursor::SkipTo(std::string_view characters) {
  m_Place = std::find_first_of(m_Place, m_End, characters.begin(), characters.end());
}

void XmlCursor::SkipPlainText() {
  m_Place = EndOf(PlainText, m_Place);
}

void XmlCursor::SkipPlainValue() {
  m_Place = EndOf(PlainValue, m_Place);
}

std::size_t XmlCursor::Decode(std::uint32_t& character) const {
  const auto byte = static_cast<unsigned char>(*m_Place);
  if (byte < 0x80) {  // as most are
    character = byte;
    return 1;
  }
  wchar_t wide = 0;
  const std::string_view rest(m_Place, static_cast<std::size_t>(m_End - m_Place));
  const std::size_t length = Utf8Sequence(rest, 0, wide);
  character = static_cast<std::uint32_t>(wide);
  return length;
}

bool XmlCursor::ScanCharacter() {
  std::uint32_t character = 0;
  const std::size_t length = Decode(character);
  if (length == 0 || !IsXmlCharacter(character)) {
    return Fail("a character that XML does not allow");
  }
  m_Place += length;
  return true;
}

bool XmlCursor::ScanUntil(std::string_view end, const char* unended) {
  const std::size_t begin = Offset();
  while (!LooksAt(end)) {
    if (AtEnd()) {
      return Fail(begin, unended);
    }
    if (!ScanCharacter()) {
      return false;
    }
  }
  m_Place += end.size();
  return true;
}

bool XmlCursor::ScanName(std::string_view& name, const char* missing) {
  const char* const begin = m_Place;
  if (Has(*begin, NameStart)) {
    m_Place = EndOf(InName, begin);
    if (IsAscii(*m_Place)) {  // as nearly all are
      name = std::string_view(begin, static_cast<std::size_t>(m_Place - begin));
      return true;
    }
  }
  return ScanWideName(begin, name, missing);
}

/// Goes on with a name that began at `begin`.
bool XmlCursor::ScanWideName(const char* begin, std::string_view& name, const char* missing) {
  while (const std::size_t length = WideNameCharacterLength(m_Place == begin)) {
    m_Place = EndOf(InName, m_Place + length);
  }
  name = std::string_view(begin, static_cast<std::size_t>(m_Place - begin));
  if (IsAscii(*m_Place)) {
    return !name.empty() || Fail(missing);
  }
  // Nothing that may follow a name lies past ASCII.
  const std::size_t end = Offset();
  return ScanCharacter() && Fail(end, name.empty() ? "a character that no name begins with"
                                                   : "a character that no name holds");
}

std::size_t XmlCursor::WideNameCharacterLength(bool isFirst) const {
  if (IsAscii(*m_Place)) {
    return 0;
  }
  std::uint32_t character = 0;
  const std::size_t length = Decode(character);
  return (isFirst ? IsXmlNameStart(character) : IsXmlNameCharacter(character)) ? length : 0;
}

bool XmlCursor::ScanQuoted(std::string_view& value, const char* missing, const char* unended) {
  const char quote = TakeQuote();
  const std::size_t begin = Offset();
  if (quote == '\0') {
    return Fail(missing);
  }
  if (!ScanUntil(std::string_view(&quote, 1), unended)) {
    return false;
  }
  value = TextFrom(begin);
  value.remove_suffix(1);
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
