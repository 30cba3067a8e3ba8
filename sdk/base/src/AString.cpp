#include "Characters.h"
#include "Utf8.h"

#include <BaseSDK/ALong32.h>
#include <BaseSDK/AString.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <iterator>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

namespace BaseSDK {

namespace {

/// Whether all are ASCII.
bool IsAscii(std::wstring_view text) {
  std::make_unsigned_t<wchar_t> bits = 0;
  for (const wchar_t c : text) {
    bits |= static_cast<std::make_unsigned_t<wchar_t>>(c);
  }
  return bits < 0x80;
}

/// Eight at a time: whole documents come by here.
bool IsAscii(std::string_view text) {
  std::uint64_t bits = 0;
  for (; text.size() >= sizeof(bits); text.remove_prefix(sizeof(bits))) {
    std::uint64_t eight = 0;
    std::memcpy(&eight, text.data(), sizeof(eight));
    bits |= eight;
  }
  for (const char c : text) {
    bits |= static_cast<unsigned char>(c);
  }
  return (bits & 0x8080808080808080U) == 0;
}

std::wstring Widened(const std::string& ascii) {
  return std::wstring(ascii.begin(), ascii.end());
}

char LowerAscii(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// The value of a digit in bases up to 36; -1 for all else.
int DigitValue(char c) {
  if (IsAsciiDigit(c)) {
    return c - '0';
  }
  return IsAsciiLetter(c) ? LowerAscii(c) - 'a' + 10 : -1;
}

/// Digits of `base` and nothing else; -1 otherwise. Stays above the 32-bit range once it is there.
std::int64_t ReadDigits(std::string_view digits, int base) {
  constexpr std::int64_t Beyond = std::int64_t{Long32Max} + 2;
  std::int64_t value = digits.empty() ? -1 : 0;
  for (const char c : digits) {
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
std::string FormatNumber(Number value, char format) {
  std::array<char, 24> digits{};
  char* const end = digits.data() + digits.size();
  std::to_chars_result result{};
  if (format == 'u' || format == 'x') {
    const auto bits = static_cast<std::make_unsigned_t<Number>>(value);
    result = std::to_chars(digits.data(), end, bits, format == 'x' ? 16 : 10);
  } else {
    result = std::to_chars(digits.data(), end, static_cast<std::make_signed_t<Number>>(value));
  }
  return std::string(digits.data(), result.ptr);
}

/// `text` with %1, %2, ... replaced by the arguments that there are.
template <class String>
String FillPlaceholders(const String& text, const std::vector<const String*>& arguments) {
  String filled;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool mayBegin = text[i] == '%' && i + 1 < text.size() && text[i + 1] >= '1';
    const auto index = mayBegin ? static_cast<std::size_t>(text[i + 1] - '1') : arguments.size();
    if (index < arguments.size()) {
      filled += *arguments[index];
      ++i;
    } else {
      filled += text[i];
    }
  }
  return filled;
}

}  // namespace

AString::AString(const AString& other)
    : m_Ascii(other.m_Ascii), m_Wide(other.IsWide() ? new std::wstring(other.Wide()) : nullptr) {}

AString::AString(AString&& other) noexcept
    : m_Ascii(std::move(other.m_Ascii)), m_Wide(other.TakeWide()) {
  other.m_Ascii.clear();
}

AString& AString::operator=(const AString& other) {
  return *this = AString(other);
}

AString& AString::operator=(AString&& other) noexcept {
  AString taken(std::move(other));
  m_Ascii = std::move(taken.m_Ascii);
  SetWide(taken.TakeWide());
  return *this;
}

AString::AString(const wchar_t* text) : AString(text, text != nullptr ? std::wcslen(text) : 0) {}

AString::AString(const wchar_t* text, std::size_t length) {
  if (text == nullptr) {
    return;
  }
  if (IsAscii(std::wstring_view(text, length))) {
    m_Ascii = std::string(text, text + length);
  } else {
    SetWide(new std::wstring(text, length));
  }
}

AString::AString(std::wstring text) : AString(text.data(), text.size()) {}

AString::AString(const char* narrow)
    : AString(FromUtf8(narrow != nullptr ? std::string_view(narrow) : std::string_view())) {}

AString AString::FromUtf8(std::string_view bytes) {
  return IsAscii(bytes) ? OfAscii(std::string(bytes)) : AString(Utf8ToWide(bytes));
}

AString AString::OfAscii(std::string ascii) {
  AString text;
  text.m_Ascii = std::move(ascii);
  return text;
}

std::string AString::ToUtf8() const {
  return IsWide() ? WideToUtf8(Wide()) : m_Ascii;
}

const std::wstring& AString::Str() const {
  static const std::wstring Empty;
  if (IsEmpty()) {
    return Empty;
  }
  std::wstring* wide = m_Wide.load(std::memory_order_acquire);
  if (wide == nullptr) {
    auto made = std::make_unique<std::wstring>(Widened(m_Ascii));
    if (m_Wide.compare_exchange_strong(wide, made.get(), std::memory_order_acq_rel)) {
      wide = made.release();
    }
  }
  return *wide;
}

std::wstring* AString::TakeWide() noexcept {
  std::wstring* const wide = m_Wide.load(std::memory_order_relaxed);
  m_Wide.store(nullptr, std::memory_order_relaxed);
  return wide;
}

void AString::SetWide(std::wstring* wide) noexcept {
  delete m_Wide.load(std::memory_order_relaxed);
  m_Wide.store(wide, std::memory_order_relaxed);
}

AString& AString::operator+=(const AString& other) {
  if (IsWide() || other.IsWide()) {
    AppendWide(other);
  } else if (!other.IsEmpty()) {
    m_Ascii += other.m_Ascii;
    SetWide(nullptr);
  }
  return *this;
}

void AString::AppendWide(const AString& other) {
  if (!IsWide()) {
    auto sum = std::make_unique<std::wstring>(Widened(m_Ascii) + other.Wide());
    Clear();
    SetWide(sum.release());
  } else if (other.IsWide()) {
    Wide() += other.Wide();
  } else {
    Wide().append(other.m_Ascii.begin(), other.m_Ascii.end());
  }
}

bool AString::IsBefore(const AString& other) const {
  const std::size_t both = std::min(Length(), other.Length());
  for (std::size_t i = 0; i < both; ++i) {
    if ((*this)[i] != other[i]) {
      return (*this)[i] < other[i];
    }
  }
  return Length() < other.Length();
}

std::size_t AString::Find(const AString& what, std::size_t from) const {
  if (!IsWide()) {
    return what.IsWide() ? npos : m_Ascii.find(what.m_Ascii, from);
  }
  return Wide().find(what.IsWide() ? what.Wide() : Widened(what.m_Ascii), from);
}

std::size_t AString::ReverseFind(wchar_t what) const {
  if (IsWide()) {
    return Wide().rfind(what);
  }
  return what >= 0 && what < 0x80 ? m_Ascii.rfind(static_cast<char>(what)) : npos;
}

AString AString::Mid(std::size_t pos, std::size_t count) const {
  if (pos >= Length()) {
    return AString();
  }
  return IsWide() ? AString(Wide().substr(pos, count)) : OfAscii(m_Ascii.substr(pos, count));
}

bool AString::EqualsNoCase(const AString& other) const {
  if (IsWide() != other.IsWide() || Length() != other.Length()) {
    return false;
  }
  const auto lower = [](wchar_t c) { return c >= L'A' && c <= L'Z' ? c - L'A' + L'a' : c; };
  for (std::size_t i = 0; i < Length(); ++i) {
    if (lower((*this)[i]) != lower(other[i])) {
      return false;
    }
  }
  return true;
}

long AString::ToLong(int base) const {
  std::string_view digits = Trimmed(m_Ascii);
  const bool negative = digits.starts_with('-');
  if (negative || digits.starts_with('+')) {
    digits.remove_prefix(1);
  }
  const std::int64_t value = ReadDigits(digits, base);
  return value < 0 ? 0 : Clamp32(negative ? -value : value);
}

AString& AString::SetNum(int value, char format) {
  return *this = OfAscii(FormatNumber(value, format));
}

AString& AString::SetNum(unsigned value, char format) {
  return *this = OfAscii(FormatNumber(value, format));
}

AString& AString::SetNum(long value, char format) {
  return *this = OfAscii(FormatNumber(value, format));
}

AString& AString::SetNum(unsigned long value, char format) {
  return *this = OfAscii(FormatNumber(value, format));
}

AString AString::Fill(const AString* const* arguments, std::size_t count) const {
  const auto isWide = [](const AString* text) { return text->IsWide(); };
  if (IsWide() || std::any_of(arguments, arguments + count, isWide)) {
    std::vector<const std::wstring*> wide;
    std::transform(arguments, arguments + count, std::back_inserter(wide),
                   [](const AString* text) { return &text->Str(); });
    return AString(FillPlaceholders(Str(), wide));
  }
  std::vector<const std::string*> narrow;
  std::transform(arguments, arguments + count, std::back_inserter(narrow),
                 [](const AString* text) { return &text->m_Ascii; });
  return OfAscii(FillPlaceholders(m_Ascii, narrow));
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
