#include "agent/handler/job/FileMode.h"

namespace NoxHandler {

namespace {

constexpr long MostMode = 0777;
constexpr std::size_t MostDigits = 4;

}  // namespace

std::optional<mode_t> ParseFileMode(const BaseSDK::AString& text) {
  const bool isOctal = !text.IsEmpty() && text.Length() <= MostDigits &&
                       text.Str().find_first_not_of(L"01234567") == std::wstring::npos;
  const long mode = text.ToLong(8);
  return isOctal && mode <= MostMode ? std::optional(static_cast<mode_t>(mode)) : std::nullopt;
}

}  // namespace NoxHandler
