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
  /// `text` is UTF-8 and is borrowed for the cursor's life. The zero byte behind it ends every
  /// search, so that none has to look out for the end.
  explicit XmlCursor(const std::string& text)
      : m_Begin(text.c_str()), m_End(m_Begin + text.size()), m_Place(m_Begin) {}

  std::size_t Size() const { return static_cast<std::size_t>(m_End - m_Begin); }
  std::size_t Offset() const { return static_cast<std::size_t>(m_Place - m_Begin); }
  bool AtEnd() const { return m_Place == m_End; }
  /// At the place; 0, which XML does not allow, at the end.
  char Character() const { return *m_Place; }
  /// The one behind it. REQUIRES: not AtEnd().
  char NextCharacter() const { return m_Place[1]; }
  /// REQUIRES: `what` is not empty.
  bool LooksAt(std::string_view what) const {
    return *m_Place == what.front() && what.size() <= static_cast<std::size_t>(m_End - m_Place) &&
           std::string_view(m_Place, what.size()) == what;
  }
  /// REQUIRES: it is not '\0'.
  bool LooksAt(char character) const { return *m_Place == character; }
  /// From `begin` to the place.
  std::string_view TextFrom(std::size_t begin) const {
    return std::string_view(m_Begin + begin, Offset() - begin);
  }

  /// Moves past `what`, if it stands here.
  bool Take(std::string_view what) {
    const bool isThere = LooksAt(what);
    m_Place += isThere ? what.size() : 0;
    return isThere;
  }
  bool Take(char character) {
    const bool isThere = LooksAt(character);
    m_Place += isThere ? 1 : 0;
    return isThere;
  }
  /// Moves past a quotation mark and returns it; '\0' when none stands here.
  char TakeQuote();
  /// Moves past the closing tag of an element of that name, if it stands here as it mostly does:
  /// without a blank.
  bool TakeEndTag(std::string_view name);
  /// Moves past white space; false when there was none.
  bool SkipSpace() { return *m_Place <= ' ' && SkipBlanks(); }
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
  bool Fail(std::string message) { return Fail(Offset(), std::move(message)); }

  /// A piece of the text as messages show it: in quotes, and cut when it is long.
  static std::string Quoted(std::string_view text);

  /// After a failure: why, and at which byte.
  const std::string& Message() const { return m_Message; }
  std::size_t ErrorOffset() const { return m_ErrorOffset; }

 private:
  bool SkipBlanks();
  /// The character at the place, which is not the end, and its length in bytes; 0 when they are not
  /// UTF-8.
  std::size_t Decode(std::uint32_t& character) const;
  bool ScanWideName(const char* begin, std::string_view& name, const char* missing);
  /// In bytes; 0 when no character past ASCII that may go on with a name stands here.
  std::size_t WideNameCharacterLength(bool isFirst) const;

  const char* const m_Begin;
  const char* const m_End;
  const char* m_Place;
  std::string m_Message;
  std::size_t m_ErrorOffset = 0;
};

}  // namespace BaseSDK
