#include "agent/daemon/config/IniFile.h"

#include <BaseSDK/AFile.h>
#include <BaseSDK/AResult.h>
#include <BaseSDK/AUtf8Encoding.h>

#include <cstring>

using BaseSDK::AString;

namespace NoxAgent {
namespace {

AgentError UsageError(const BaseSDK::AIniError& error) {
  return AgentError(AgentError::Kind::Usage, AString(error.what()));
}

}  // namespace

IniFile IniFile::Load(const AString& fileName) {
  AString text;
  const unsigned long result = BaseSDK::AFile::Read(fileName, text, BaseSDK::AUtf8Encoding());
  if (result != 0) {
    throw AgentError(AgentError::Kind::Usage,
                     AString("cannot read the configuration file %1: %2")
                         .Arg(fileName, std::strerror(BaseSDK::ErrnoFromResult(result))));
  }
  return Parse(fileName, text);
}

IniFile IniFile::Parse(const AString& fileName, const AString& text) {
  try {
    return IniFile(BaseSDK::AIniText(fileName, text));
  } catch (const BaseSDK::AIniError& error) {
    throw UsageError(error);
  }
}

AgentError IniFile::ErrorAt(unsigned line, const AString& message) const {
  return UsageError(m_Text.ErrorAt(line, message));
}

}  // namespace NoxAgent
