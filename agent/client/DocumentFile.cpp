#include "agent/client/DocumentFile.h"

#include "agent/client/ExitCode.h"
#include "agent/document/TaskDocumentCheck.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>

namespace NoxAgent {

namespace {

[[noreturn]] void FailToRead(const std::string& name) {
  const char* const reason = std::strerror(errno);
  throw CommandError(ExitCode::Usage, "cannot read " + name + ": " + reason +
                                          "; name a readable file, or - for standard input");
}

// In pieces: room for the largest document would cost more than reading most of them does.
std::string ReadBounded(std::istream& in) {
  constexpr std::size_t MaxBytes = MaxTaskDocumentBytes + 1;
  std::array<char, 8192> piece;
  std::string text;
  while (in && text.size() < MaxBytes) {
    in.read(piece.data(),
            static_cast<std::streamsize>(std::min(piece.size(), MaxBytes - text.size())));
    text.append(piece.data(), static_cast<std::size_t>(in.gcount()));
  }
  return text;
}

}  // namespace

BaseSDK::AString ReadDocument(const std::string& name, std::istream& standardInput) {
  if (name == "-") {
    return BaseSDK::AString::FromUtf8(ReadBounded(standardInput));
  }
  errno = 0;
  std::ifstream file(name, std::ios::binary);
  if (!file) {
    FailToRead(name);
  }
  const std::string text = ReadBounded(file);
  if (file.bad()) {
    FailToRead(name);
  }
  return BaseSDK::AString::FromUtf8(text);
}

}  // namespace NoxAgent
