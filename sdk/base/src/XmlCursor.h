#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace BaseSDK {

/// A place in a text, and the small things that the grammar of XML is made of.
///
/// Each Scan... starts at the place and moves the place past what it took. It returns false after
/// an error; Message() and ErrorOffset() then say which, and the place means nothing any more. The
/// arguments `missing` and `unended` are the messages for what is not there and what has no end.
class XmlCursor {
 public:
  /// `text` is UTF-8 and is borrowed for the cursor's life.
  explicit XmlCursor(std::string_view text) : m_Text(text) {}

  std::size_t Size() const { return m_Text.size(); }
  std::size_t Offset() const { return m_Pos; }
  bool AtEnd() const { return m_Pos >= m_Text.size(); }
  /// So many bytes past the place; 0, which XML does not allow, behind the end.
  char CharacterAt(std::size_t distance) const {
    return distance < m_Text.size() - m_Pos ? m_Text[m_Pos + distance] : '\0';
  }
  /// REQUIRES: `what` is not empty.
  bool LooksAt(std::string_view what) const {
    return !AtEnd() && m_Text[m_Pos] == what.front() &&
           m_Text.compare(m_Pos, what.size(), what) == 0;
  }
  /// REQUIRES: it is not '\0'.
  bool LooksAt(char character) const { return CharacterAt(0) == character; }
  /// From `begin` to the place.
  std::string_view TextFrom(std::size_t begin) const { return m_Text.substr(begin, m_Pos - begin); }

  /// Moves past `what`, if it stands here.
  bool Take(std::string_view what) {
    const bool isThere = LooksAt(what);
    m_Pos += isThere ? what.size() : 0;
    return isThere;
  }
  bool Take(char character) {
    const bool isThere = LooksAt(character);
    m_Pos += isThere ? 1 : 0;
    return isThere;
  }
  /// Moves past a quotation mark and returns it; '\0' when none stands here.
  char TakeQuote();
  /// Moves past the closing tag of an element of that name, if it stands here as it mostly does:
  /// without a blank.
  bool TakeEndTag(std::string_view name);
  /// Moves past white space; false when there was none.
  bool SkipSpace();
  /// Moves to the next of these characters, or to the end.
  void SkipTo(std::string_view characters);

  /// Moves past ASCII characters that say in a text what is written; the second, in a value.
  void SkipPlainText();
  void SkipPlainValue();

  /// Takes one character that XML allows. REQUIRES: not AtEnd().
  bool ScanCharacter();
  /// Moves past the next `end`. Every character before it must be one that XML allows.
  bool ScanUntil(std::string_view end, const char* unended);
  /// Takes a name; `name` borrows from the text.
  bool ScanName(std::string_view& name, const char* missing);
  /// Takes quote, value, quote; `value` borrows from the text.
  bool ScanQuoted(std::string_view& value, const char* missing, const char* unended);
  /// Takes "=" and white space around it; `name` is what stands before it, for the message.
  bool ScanEquals(std::string_view name);

  /// Notes the error and returns false, for the caller to return.
  bool Fail(std::size_t offset, std::string message);
  bool Fail(std::string message) { return Fail(m_Pos, std::move(message)); }

  /// A piece of the text as messages show it: in quotes, and cut when it is long.
  static std::string Quoted(std::string_view text);

  /// After a failure: why, and at which byte.
  const std::string& Message() const { return m_Message; }
  std::size_t ErrorOffset() const { return m_ErrorOffset; }

 private:
  /// The character at the place, which is not the end, and its length in bytes; 0 when they are not
  /// UTF-8.
  std::size_t Decode(std::uint32_t& character) const;
  /// In bytes; 0 when no character past ASCII that may go on with a name stands here.
  std::size_t WideNameCharacterLength(bool isFirst) const;

  const std::string_view m_Text;
  std::size_t m_Pos = 0;
  std::string m_Message;
  std::size_t m_ErrorOffset = 0;
};

}  // namespace BaseSDK
