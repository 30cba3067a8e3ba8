#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace BaseSDK {

/// The kit's string: a value of wide characters, one per Unicode code point. Every task ID,
/// document, path and message is one. Copies are independent; as with any value, one thread writes
/// at a time.
///
/// Narrow text is UTF-8. Bytes that are not valid UTF-8 survive: a byte b becomes the lone
/// surrogate U+DC00+b, which no valid text holds, and ToUtf8 turns it back. So any file name the
/// system hands out finds its file again.
class AString {
 public:
  /// "No such position", and "to the end" for a count.
  static constexpr std::size_t npos = std::wstring::npos;

  AString() = default;
  /// A null pointer makes an empty string, as it does below.
  AString(const wchar_t* text);
  AString(const wchar_t* text, std::size_t length);
  explicit AString(std::wstring text);
  /// `narrow` is UTF-8, ended by a zero byte.
  AString(const char* narrow);

  /// The text of these bytes, zero bytes included.
  static AString FromUtf8(std::string_view bytes);
  /// The bytes that FromUtf8 read. Characters that UTF-8 cannot hold (other surrogates, values past
  /// U+10FFFF) become U+FFFD.
  std::string ToUtf8() const;

  bool IsEmpty() const { return m_Text.empty(); }
  std::size_t Length() const { return m_Text.size(); }
  /// Valid until the string is changed or destroyed.
  const wchar_t* c_str() const { return m_Text.c_str(); }
  const std::wstring& Str() const { return m_Text; }
  /// `index` is at most Length(); there it yields the ending zero.
  wchar_t operator[](std::size_t index) const { return m_Text[index]; }

  void Clear() { m_Text.clear(); }
  AString& operator+=(const AString& other);

  friend AString operator+(const AString& left, const AString& right) {
    AString sum(left);
    return sum += right;
  }
  friend bool operator==(const AString& left, const AString& right) {
    return left.m_Text == right.m_Text;
  }
  friend bool operator!=(const AString& left, const AString& right) { return !(left == right); }
  /// Order of code points, the same in every locale.
  friend bool operator<(const AString& left, const AString& right) {
    return left.m_Text < right.m_Text;
  }

  /// Position of the first occurrence at or after `from`; npos when there is none.
  std::size_t Find(const AString& what, std::size_t from = 0) const;
  /// Position of the last occurrence; npos when there is none.
  std::size_t ReverseFind(wchar_t what) const;
  /// At most `count` characters from `pos` on; empty when `pos` lies past the end.
  AString Mid(std::size_t pos, std::size_t count = npos) const;
  AString Left(std::size_t count) const { return Mid(0, count); }
  /// Letters of the ASCII range compare equal in both cases; all else compares exactly.
  bool EqualsNoCase(const AString& other) const;

  /// The whole text as a number: an optional sign and digits of `base` (2 to 36), white space
  /// around it allowed. Anything else is 0. Values outside the signed 32-bit range yield its
  /// nearest end, at both word sizes.
  long ToLong(int base = 10) const;

  /// Replaces the text by the number: 'd' signed decimal, 'u' unsigned decimal, 'x' hexadecimal in
  /// lower case without prefix; any other format reads as 'd'. As in printf, the value's bits are
  /// taken as the format says, at the width of its type. Returns *this.
  AString& SetNum(int value, char format);
  AString& SetNum(unsigned value, char format);
  AString& SetNum(long value, char format);
  AString& SetNum(unsigned long value, char format);

  /// This template with %1 to %4 replaced, all at once: what is inserted is never searched for
  /// placeholders. A placeholder without an argument stays as it is.
  AString Arg(const AString& a1) const;
  AString Arg(const AString& a1, const AString& a2) const;
  AString Arg(const AString& a1, const AString& a2, const AString& a3) const;
  AString Arg(const AString& a1, const AString& a2, const AString& a3, const AString& a4) const;

 private:
  AString Fill(const AString* const* arguments, std::size_t count) const;

  std::wstring m_Text;
};

}  // namespace BaseSDK
