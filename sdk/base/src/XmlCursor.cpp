#include "XmlCursor.h"

#include "Characters.h"
#include "Utf8.h"
#include "XmlCharacter.h"

#include <algorithm>

namespace BaseSDK {

namespace {

bool IsPlain(char c) {
  return IsAsciiLetter(c) || IsAsciiDigit(c) || c == ' ' || c == '\n';
}

}  // namespace

std::string_view XmlCursor::TakeQuote() {
  const std::size_t begin = m_Pos;
  (void)(Take("\"") || Take("'"));
  return TextFrom(begin);
}

bool XmlCursor::SkipSpace() {
  const std::size_t begin = m_Pos;
  m_Pos = std::min(m_Text.find_first_not_of(" \t\r\n", begin), m_Text.size());
  return m_Pos > begin;
}

void XmlCursor::SkipTo(std::string_view characters) {
  m_Pos = std::min(m_Text.find_first_of(characters, m_Pos), m_Text.size());
}

void XmlCursor::SkipPlain() {
  while (!AtEnd() && IsPlain(m_Text[m_Pos])) {
    ++m_Pos;
  }
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
  while (!AtEnd() && IsAsciiLetter(m_Text[m_Pos])) {  // most names are no more than that
    ++m_Pos;
  }
  while (const std::size_t length = NameCharacterLength(m_Pos == begin)) {
    m_Pos += length;
  }
  name = TextFrom(begin);
  const bool isAscii = AtEnd() || (static_cast<unsigned char>(m_Text[m_Pos]) & 0x80) == 0;
  if (isAscii) {
    return !name.empty() || Fail(missing);
  }
  // Nothing that may follow a name lies past ASCII.
  const std::size_t end = m_Pos;
  return ScanCharacter() && Fail(end, name.empty() ? "a character that no name begins with"
                                                   : "a character that no name holds");
}

std::size_t XmlCursor::NameCharacterLength(bool isFirst) const {
  std::uint32_t character = 0;
  const std::size_t length = AtEnd() ? 0 : Decode(character);
  return (isFirst ? IsXmlNameStart(character) : IsXmlNameCharacter(character)) ? length : 0;
}

bool XmlCursor::ScanQuoted(std::string_view& value, const char* missing, const char* unended) {
  const std::string_view quote = TakeQuote();
  const std::size_t begin = m_Pos;
  if (quote.empty()) {
    return Fail(missing);
  }
  if (!ScanUntil(quote, unended)) {
    return false;
  }
  value = m_Text.substr(begin, m_Pos - quote.size() - begin);
  return true;
}

bool XmlCursor::ScanEquals(std::string_view name) {
  (void)SkipSpace();
  if (!Take("=")) {
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
