#include "Characters.h"

#include <BaseSDK/ADateTime.h>
#include <BaseSDK/ALong32.h>

#include <algorithm>
#include <clocale>
#include <ctime>
#include <string>
#include <string_view>

namespace BaseSDK {

namespace {

constexpr long Unreadable = 0;
constexpr std::size_t UsualTextBytes = 64;

constexpr bool IsLeapYear(int year) {
  return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

/// `month` counts from 0.
constexpr int DaysInMonth(int year, int month) {
  constexpr int Days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month == 1 && IsLeapYear(year) ? 29 : Days[month];
}

/// A leap second, 60, is not one of these: no local time that mktime gives has it.
bool InRange(const std::tm& local) {
  return local.tm_mon >= 0 && local.tm_mon <= 11 && local.tm_mday >= 1 &&
         local.tm_mday <= DaysInMonth(local.tm_year + 1900, local.tm_mon) && local.tm_hour >= 0 &&
         local.tm_hour <= 23 && local.tm_min >= 0 && local.tm_min <= 59 && local.tm_sec >= 0 &&
         local.tm_sec <= 59;
}

long ToMoment(std::tm local) {
  if (!InRange(local)) {
    return Unreadable;
  }
  local.tm_isdst = -1;
  const long moment = MakeTime32(local);
  return moment == -1 ? Unreadable : moment;
}

/// Takes exactly `count` digits off the front; false when they are not there.
bool TakeDigits(std::string_view& text, std::size_t count, int& value) {
  if (text.size() < count) {
    return false;
  }
  value = 0;
  for (const char c : text.substr(0, count)) {
    if (!IsAsciiDigit(c)) {
      return false;
    }
    value = value * 10 + (c - '0');
  }
  text.remove_prefix(count);
  return true;
}

bool TakeChar(std::string_view& text, char wanted) {
  if (text.empty() || text.front() != wanted) {
    return false;
  }
  text.remove_prefix(1);
  return true;
}

/// date = year separator month separator day; both separators the same, "-" or "/"
bool TakeDate(std::string_view& text, std::tm& local) {
  if (!TakeDigits(text, 4, local.tm_year)) {
    return false;
  }
  const char separator = !text.empty() && text.front() == '/' ? '/' : '-';
  const bool taken = TakeChar(text, separator) && TakeDigits(text, 2, local.tm_mon) &&
                     TakeChar(text, separator) && TakeDigits(text, 2, local.tm_mday);
  local.tm_year -= 1900;
  local.tm_mon -= 1;
  return taken;
}

/// time = hour ":" minute ":" second
bool TakeTime(std::string_view& text, std::tm& local) {
  return TakeDigits(text, 2, local.tm_hour) && TakeChar(text, ':') &&
         TakeDigits(text, 2, local.tm_min) && TakeChar(text, ':') &&
         TakeDigits(text, 2, local.tm_sec);
}

long ReadDefault(std::string_view text) {
  std::tm local{};
  if (!TakeDate(text, local)) {
    return Unreadable;
  }
  if (text.empty()) {
    return ToMoment(local);
  }
  const bool timed = (TakeChar(text, ' ') || TakeChar(text, 'T')) && TakeTime(text, local);
  return timed && text.empty() ? ToMoment(local) : Unreadable;
}

long ReadFormat(std::string_view text, const AString& format) {
  // A zero byte would end the text for strptime and hide what follows.
  if (text.find('\0') != std::string_view::npos) {
    return Unreadable;
  }
  std::tm local{};
  local.tm_year = 70;
  local.tm_mday = 1;
  const std::string bytes(text);
  const char* const rest = strptime(bytes.c_str(), format.ToUtf8().c_str(), &local);
  return rest != nullptr && *rest == '\0' ? ToMoment(local) : Unreadable;
}

}  // namespace

ADateTime::ADateTime(const AString& text)
    : m_Time(text.Ascii() ? ReadDefault(Trimmed(*text.Ascii())) : Unreadable) {}

ADateTime::ADateTime(const AString& text, const AString& format, int mode)
    : m_Time(mode == 0 ? ReadFormat(Trimmed(text.ToUtf8()), format) : Unreadable) {}

ADateTime ADateTime::Now() {
  return ADateTime(Clamp32(::time(nullptr)));
}

AString ADateTime::ToString(const AString& format) const {
  const std::time_t moment = m_Time;
  std::tm local{};
  if (localtime_r(&moment, &local) == nullptr) {
    return AString();
  }
  // Whatever locale the process has chosen.
  static const locale_t Classic = ::newlocale(LC_ALL_MASK, "C", nullptr);
  // With a character in front of it even an empty text has a length: 0 says that it does not fit.
  const std::string marked = "." + format.ToUtf8();
  std::string text(UsualTextBytes, '\0');
  std::size_t length = 0;
  while ((length = ::strftime_l(text.data(), text.size(), marked.c_str(), &local, Classic)) == 0) {
    text.resize(2 * text.size());
  }
  return AString::FromUtf8(std::string_view(text).substr(1, length - 1));
}

}  // namespace BaseSDK
