#pragma once

#include <atomic>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace BaseSDK {

/// The kit's string: a value of wide characters, one per Unicode code point. Every task ID,
/// document, path and message is one. Copies are independent; as with any value, one thread writes
/// at a time.
///
/// Text of ASCII characters alone, as nearly all is, takes a byte for each of them. The wide form
/// that c_str() and Str() give is made when it is first asked for, and then kept.
///
/// Narrow text is UTF-8. Bytes that are not valid UTF-8 survive: a byte b becomes the lone
/// surrogate U+DC00+b, which no valid text holds, and ToUtf8 turns it back. So any file name the
/// system hands out finds its file again.
class AString {
 public:
  /// "No such position", and "to the end" for a count.
  static constexpr std::size_t npos = std::wstring::npos;

  AString() = default;
  AString(const AString& other);
  AString(AString&& other) noexcept;
  AString& operator=(const AString& other);
  AString& operator=(AString&& other) noexcept;
  ~AString() { delete m_Wide.load(std::memory_order_relaxed); }
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

  bool IsEmpty() const { return Length() == 0; }
  std::size_t Length() const { return IsWide() ? Wide().size() : m_Ascii.size(); }
  /// Valid until the string is changed or destroyed.
  const wchar_t* c_str() const { return Str().c_str(); }
  const std::wstring& Str() const;
  /// The text without a copy, if it is ASCII alone. Valid until the string is changed or destroyed.
  std::optional<std::string_view> Ascii() const {
    return IsWide() ? std::nullopt : std::optional<std::string_view>(m_Ascii);
  }
  /// `index` is at most Length(); there it yields the ending zero.
  wchar_t operator[](std::size_t index) const {
    return IsWide() ? Wide()[index] : static_cast<wchar_t>(m_Ascii[index]);
  }

  void Clear() {
    m_Ascii.clear();
    SetWide(nullptr);
  }
  AString& operator+=(const AString& other);

  friend AString operator+(const AString& left, const AString& right) {
    AString sum(left);
    return sum += right;
  }
  friend bool operator==(const AString& left, const AString& right) {
    return left.IsWide() == right.IsWide() &&
           (left.IsWide() ? left.Wide() == right.Wide() : left.m_Ascii == right.m_Ascii);
  }
  friend bool operator!=(const AString& left, const AString& right) { return !(left == right); }
  /// Order of code points, the same in every locale.
  friend bool operator<(const AString& left, const AString& right) {
    return left.IsWide() || right.IsWide() ? left.IsBefore(right) : left.m_Ascii < right.m_Ascii;
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
  /// Whether a character is not ASCII.
  bool IsWide() const {
    return m_Ascii.empty() && m_Wide.load(std::memory_order_relaxed) != nullptr;
  }
  /// REQUIRES: IsWide().
  std::wstring& Wide() const { return *m_Wide.load(std::memory_order_relaxed); }
  static AString OfAscii(std::string ascii);
  std::wstring* TakeWide() noexcept;
  void SetWide(std::wstring* wide) noexcept;
  bool IsBefore(const AString& other) const;
  void AppendWide(const AString& other);
  AString Fill(const AString* const* arguments, std::size_t count) const;

  std::string m_Ascii;  ///< empty where a character is not ASCII
  /// A text that is not all ASCII; of any other its wide form, once it was asked for. Owned.
  /// Readers on several threads may be the first to ask.
  mutable std::atomic<std::wstring*> m_Wide{nullptr};
};

}  // namespace BaseSDK
