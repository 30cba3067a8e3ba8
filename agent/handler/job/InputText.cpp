#include "agent/handler/job/InputText.h"

using BaseSDK::AString;

namespace NoxHandler {

namespace {

constexpr std::size_t MaxInputBytes = 32 * 1024;

// What the letter behind a backslash stands for; '\0' for none that is known.
char Unescape(char letter) {
  switch (letter) {
    case 'n':
      return '\n';
    case 't':
      return '\t';
    case '\\':
      return '\\';
    default:
      return '\0';
  }
}

}  // namespace

AString ReadInputText(const AString& text, std::string& input) {
  const std::string bytes = text.ToUtf8();
  std::string read;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (bytes[i] != '\\') {
      read += bytes[i];
      continue;
    }
    ++i;
    const char character = i < bytes.size() ? Unescape(bytes[i]) : '\0';
    if (character == '\0') {
      return "a backslash is to be followed by n, t or another backslash";
    }
    read += character;
  }
  if (read.size() > MaxInputBytes) {
    return "is to be 32 KiB at most";
  }
  input = std::move(read);
  return AString();
}

}  // namespace NoxHandler
