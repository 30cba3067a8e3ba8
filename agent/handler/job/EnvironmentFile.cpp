#include "agent/handler/job/EnvironmentFile.h"

#include "agent/handler/job/JobError.h"
#include "agent/handler/job/TrustedFile.h"
#include "agent/handler/job/VariableName.h"

#include <unistd.h>

#include <cerrno>
#include <sstream>

using BaseSDK::AString;

namespace NoxHandler {

namespace {

std::string_view Trimmed(std::string_view text) {
  constexpr std::string_view Blanks = " \t\r";
  const std::size_t begin = text.find_first_not_of(Blanks);
  return begin == std::string_view::npos
             ? std::string_view()
             : text.substr(begin, text.find_last_not_of(Blanks) + 1 - begin);
}

// The reason when the line will not do, else empty.
const char* TakeLine(std::string_view line, EnvironmentFile::Variables& variables) {
  if (line.empty() || line.front() == '#') {
    return "";
  }
  const std::size_t equals = line.find('=');
  const std::string_view name = Trimmed(line.substr(0, equals));
  if (equals == std::string_view::npos || !IsVariableName(name)) {
    return "is neither NAME=value nor a comment";
  }
  if (line.find('\0') != std::string_view::npos) {
    return "has a zero byte";
  }
  variables[std::string(name)] = Trimmed(line.substr(equals + 1));
  return "";
}

}  // namespace

AString EnvironmentFile::Read(const AString& text, EnvironmentFile& file) {
  const bool mayBeMissing = text[0] == L'-';
  const AString name = text.Mid(mayBeMissing ? 1 : 0);
  if (name[0] != L'/') {
    return "is to be an absolute path, with a dash in front if the file may be missing";
  }
  file = {name, mayBeMissing};
  return AString();
}

EnvironmentFile::Variables EnvironmentFile::Load() const {
  if (m_Name.IsEmpty() ||
      (m_MayBeMissing && access(m_Name.ToUtf8().c_str(), F_OK) != 0 && errno == ENOENT)) {
    return {};
  }
  return Parse(TrustedFile::Read("environment file", m_Name));
}

EnvironmentFile::Variables EnvironmentFile::Parse(std::string_view bytes) const {
  Variables variables;
  std::istringstream lines{std::string(bytes)};
  unsigned number = 0;
  for (std::string line; std::getline(lines, line);) {
    ++number;
    if (const AString reason = TakeLine(Trimmed(line), variables); !reason.IsEmpty()) {
      throw JobError(
          AString("%1:%2: the line %3").Arg(m_Name, AString().SetNum(number, 'u'), reason));
    }
  }
  return variables;
}

}  // namespace NoxHandler
