#include "Characters.h"

#include <BaseSDK/AGuid.h>

#include <array>
#include <cstdio>
#include <string>
#include <tuple>

namespace BaseSDK {

namespace {

constexpr std::size_t BareLength = 36;

bool IsHyphenPlace(std::size_t index) {
  return index == 8 || index == 13 || index == 18 || index == 23;
}

/// The 16 bytes of "XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX" in written order; false for other texts.
bool ReadBytes(const std::string& text, std::array<std::uint8_t, 16>& bytes) {
  if (text.size() != BareLength) {
    return false;
  }
  std::size_t digits = 0;
  for (std::size_t i = 0; i < BareLength; ++i) {
    if (IsHyphenPlace(i)) {
      if (text[i] != '-') {
        return false;
      }
      continue;
    }
    const int value = HexValue(text[i]);
    if (value < 0) {
      return false;
    }
    std::uint8_t& byte = bytes[digits++ / 2];
    byte = static_cast<std::uint8_t>((byte << 4) | value);
  }
  return true;
}

std::string WithoutBraces(std::string text) {
  if (text.size() == BareLength + 2 && text.front() == '{' && text.back() == '}') {
    return text.substr(1, BareLength);
  }
  return text;
}

UUID Parse(const std::string& text) {
  std::array<std::uint8_t, 16> bytes{};
  UUID uuid{};
  if (!ReadBytes(WithoutBraces(text), bytes)) {
    return uuid;
  }
  const auto number = [&bytes](std::size_t at, std::size_t count) {
    std::uint32_t value = 0;
    for (std::size_t i = at; i < at + count; ++i) {
      value = (value << 8) | bytes[i];
    }
    return value;
  };
  uuid.Data1 = number(0, 4);
  uuid.Data2 = static_cast<std::uint16_t>(number(4, 2));
  uuid.Data3 = static_cast<std::uint16_t>(number(6, 2));
  for (std::size_t i = 0; i < 8; ++i) {
    uuid.Data4[i] = bytes[8 + i];
  }
  return uuid;
}

}  // namespace

AGuid::AGuid(const char* text) : m_Uuid(Parse(text != nullptr ? text : "")) {}

AGuid::AGuid(const AString& text) : m_Uuid(Parse(text.ToUtf8())) {}

int AGuid::Compare(const AGuid& other) const {
  const UUID& a = m_Uuid;
  const UUID& b = other.m_Uuid;
  const auto left = std::tie(a.Data1, a.Data2, a.Data3);
  const auto right = std::tie(b.Data1, b.Data2, b.Data3);
  if (left != right) {
    return left < right ? -1 : 1;
  }
  for (std::size_t i = 0; i < 8; ++i) {
    if (a.Data4[i] != b.Data4[i]) {
      return a.Data4[i] < b.Data4[i] ? -1 : 1;
    }
  }
  return 0;
}

AString AGuid::ToString() const {
  const UUID& u = m_Uuid;
  std::array<char, BareLength + 3> text{};
  (void)std::snprintf(
      text.data(), text.size(), "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}",
      unsigned{u.Data1}, unsigned{u.Data2}, unsigned{u.Data3}, unsigned{u.Data4[0]},
      unsigned{u.Data4[1]}, unsigned{u.Data4[2]}, unsigned{u.Data4[3]}, unsigned{u.Data4[4]},
      unsigned{u.Data4[5]}, unsigned{u.Data4[6]}, unsigned{u.Data4[7]});
  return AString(text.data());
}

bool AGuid::IsValid() const {
  return Compare(AGuid()) != 0;
}

}  // namespace BaseSDK
