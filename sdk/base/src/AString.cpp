#include "Characters.h"
#include "Utf8.h"

#include <BaseSDK/ALong32.h>
#include <BaseSDK/AString.h>

#include <array>
#include <charconv>
#include <cstdint>
#include <type_traits>

namespace BaseSDK {

namespace {

wchar_t LowerAscii(wchar_t c) {
  return c >= L'A' && c <= L'Z' ? c - L'A' + L'a' : c;
}

/// The value of a digit in bases up to 36; -1 for all else.
int DigitValue(wchar_t c) {
  if (c >= L'0' && c <= L'9') {
    return static_cast<int>(c - L'0');
  }
  const wchar_t lower = LowerAscii(c);
  return lower >= L'a' && lower <= L'z' ? static_cast<int>(lower - L'a') + 10 : -1;
}

/// Digits of `base` and nothing else; -1 otherwise. Stays above the 32-bit range once it is there.
std::int64_t ReadDigits(std::wstring_view digits, int base) {
  constexpr std::int64_t Beyond = std::int64_t{Long32Max} + 2;
  std::int64_t value = digits.empty() ? -1 : 0;
  for (const wchar_t c : digits) {
    const int digit = DigitValue(c);
    if (digit < 0 || digit >= base) {
      return -1;
    }
    value = value * base + digit;
    value = value < Beyond ? value : Beyond;
  }
  return value;
}

template <class Number>
std::wstring FormatNumber(Number value, char format) {
  std::array<char, 24> digits{};
  char* const end = digits.data() + digits.size();
  std::to_chars_result result{};
  if (format == 'u' || format == 'x') {
    const auto bits = static_cast<std::make_unsigned_t<Number>>(value);
    result = std::to_chars(digits.data(), end, bits, format == 'x' ? 16 : 10);
  } else {
    result = std::to_chars(digits.data(), end, static_cast<std::make_signed_t<Number>>(value));
  }
  return std::wstring(digits.data(), result.ptr);
}

}  // namespace

AString::AString(const wchar_t* text) : m_Text(text != nullptr ? text : L"") {}

AString::AString(const wchar_t* text, std::size_t length)
    : m_Text(text != nullptr ? std::wstring(text, length) : std::wstring()) {}

AString::AString(std::wstring text) : m_Text(std::move(text)) {}

AString::AString(const char* narrow)
    : m_Text(narrow != nullptr ? Utf8ToWide(narrow) : std::wstring()) {}

AString AString::FromUtf8(std::string_view bytes) {
  return AString(Utf8ToWide(bytes));
}

std::string AString::ToUtf8() const {
  return WideToUtf8(m_Text);
}

AString& AString::operator+=(const AString& other) {
  m_Text += other.m_Text;
  return *this;
}

std::size_t AString::Find(const AString& what, std::size_t from) const {
  return m_Text.find(what.m_Text, from);
}

std::size_t AString::ReverseFind(wchar_t what) const {
  return m_Text.rfind(what);
}

AString AString::Mid(std::size_t pos, std::size_t count) const {
  return pos < m_Text.size() ? AString(m_Text.substr(pos, count)) : AString();
}

bool AString::EqualsNoCase(const AString& other) const {
  if (m_Text.size() != other.m_Text.size()) {
    return false;
  }
  for (std::size_t i = 0; i < m_Text.size(); ++i) {
    if (LowerAscii(m_Text[i]) != LowerAscii(other.m_Text[i])) {
      return false;
    }
  }
  return true;
}

long AString::ToLong(int base) const {
  std::wstring_view digits = Trimmed(m_Text);
  const bool negative = !digits.empty() && digits.front() == L'-';
  if (negative || (!digits.empty() && digits.front() == L'+')) {
    digits.remove_prefix(1);
  }
  const std::int64_t value = ReadDigits(digits, base);
  return value < 0 ? 0 : Clamp32(negative ? -value : value);
}

AString& AString::SetNum(int value, char format) {
  m_Text = FormatNumber(value, format);
  return *this;
}

AString& AString::SetNum(unsigned value, char format) {
  m_Text = FormatNumber(value, format);
  return *this;
}

AString& AString::SetNum(long value, char format) {
  m_Text = FormatNumber(value, format);
  return *this;
}

AString& AString::SetNum(unsigned long value, char format) {
  m_Text = FormatNumber(value, format);
  return *this;
}

AString AString::Fill(const AString* const* arguments, std::size_t count) const {
  std::wstring filled;
  for (std::size_t i = 0; i < m_Text.size(); ++i) {
    const bool mayBegin = m_Text[i] == L'%' && i + 1 < m_Text.size() && m_Text[i + 1] >= L'1';
    const auto index = mayBegin ? static_cast<std::size_t>(m_Text[i + 1] - L'1') : count;
    if (index < count) {
      filled += arguments[index]->m_Text;
      ++i;
    } else {
      filled += m_Text[i];
    }
  }
  return AString(std::move(filled));
}

AString AString::Arg(const AString& a1) const {
  const AString* const arguments[] = {&a1};
  return Fill(arguments, 1);
}

AString AString::Arg(const AString& a1, const AString& a2) const {
  const AString* const arguments[] = {&a1, &a2};
  return Fill(arguments, 2);
}

AString AString::Arg(const AString& a1, const AString& a2, const AString& a3) const {
  const AString* const arguments[] = {&a1, &a2, &a3};
  return Fill(arguments, 3);
}

AString AString::Arg(const AString& a1, const AString& a2, const AString& a3,
                     const AString& a4) const {
  const AString* const arguments[] = {&a1, &a2, &a3, &a4};
  return Fill(arguments, 4);
}

}  // namespace BaseSDK
