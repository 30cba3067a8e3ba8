#include "agent/handler/job/Duration.h"

using BaseSDK::AString;

namespace NoxHandler {

std::optional<long> Duration::Parse(const AString& text) {
  long factor = 1;
  AString digits = text;
  if (const wchar_t unit = text.IsEmpty() ? L'\0' : text[text.Length() - 1];
      unit == L's' || unit == L'm' || unit == L'h') {
    factor = unit == L'h' ? 3600 : unit == L'm' ? 60 : 1;
    digits = text.Left(text.Length() - 1);
  }
  const bool isNumber =
      !digits.IsEmpty() && digits.Str().find_first_not_of(L"0123456789") == std::wstring::npos;
  if (!isNumber) {
    return std::nullopt;
  }
  const long number = digits.ToLong();
  return number > MaxSeconds / factor ? MaxSeconds + 1 : number * factor;
}

AString Duration::Read(const AString& text, long least, long most, long& seconds) {
  const auto parsed = Parse(text);
  if (!parsed) {
    return "is to be a number of seconds, or a number with s, m or h after it";
  }
  if (*parsed < least) {
    return AString("is to be at least %1").Arg(Text(least));
  }
  if (*parsed > most) {
    return AString("is to be at most %1").Arg(Text(most));
  }
  seconds = *parsed;
  return AString();
}

AString Duration::Text(long seconds) {
  const bool areHours = seconds != 0 && seconds % 3600 == 0;
  const bool areMinutes = seconds != 0 && seconds % 60 == 0;
  const char* const form = areHours ? "%1h" : areMinutes ? "%1m" : "%1s";
  return AString(form).Arg(AString().SetNum(areHours     ? seconds / 3600
                                            : areMinutes ? seconds / 60
                                                         : seconds,
                                            'd'));
}

}  // namespace NoxHandler
