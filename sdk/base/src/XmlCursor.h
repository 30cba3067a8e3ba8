#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace BaseSDK {

/// A place in a text, and the small things that the grammar of XML is made of.
///
/// Each Scan... starts at the place, moves it past what it took, and is false after Fail; then the
/// place means nothing any more.
class XmlCursor {
 public:
  /// `text` is UTF-8 and is borrowed for the cursor's life.
  explicit XmlCursor(std::string_view text) : m_Text(text) {}

  std::size_t Offset() const { return m_Pos; }
  bool AtEnd() const { return m_Pos >= m_Text.size(); }
  bool LooksAt(std::string_view what) const { return m_Text.substr(m_Pos, what.size()) == what; }
  /// From `begin` to the place.
  std::string_view TextFrom(std::size_t begin) const { return m_Text.substr(begin, m_Pos - begin); }

  /// Moves past `what`, if it stands here.
  bool Take(std::string_view what) {
    const bool isThere = LooksAt(what);
    m_Pos += isThere ? what.size() : 0;
    return isThere;
  }
  /// Moves past a quotation mark and returns it; empty when none stands here.
  std::string_view TakeQuote();
  /// Whether there was any.
  bool SkipSpace();
  /// To the next of these characters, or to the end.
  void SkipTo(std::string_view characters);

  bool ScanCharacter();
  /// Past the next `end`; every character before it must be allowed.
  bool ScanUntil(std::string_view end, const char* unended);
  bool ScanName(std::string_view& name, const char* missing);
  /// quote value quote
  bool ScanQuoted(std::string_view& value, const char* missing, const char* unended);
  /// [ space ] "=" [ space ], behind `name`
  bool ScanEquals(std::string_view name);

  /// False, for the caller to return.
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
  /// In bytes; 0 when a name cannot go on here.
  std::size_t NameCharacterLength(bool isFirst) const;

  const std::string_view m_Text;
  std::size_t m_Pos = 0;
  std::string m_Message;
  std::size_t m_ErrorOffset = 0;
};

}  // namespace BaseSDK
