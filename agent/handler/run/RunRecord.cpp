#include "agent/handler/run/RunRecord.h"

#include <sstream>

using BaseSDK::AString;

namespace NoxHandler {

namespace {

// Tells a whole record from a part of one.
constexpr const char* End = " end\n";

}  // namespace

std::string NamedRunRecord::Encode() const {
  const std::string id = m_TaskId.ToUtf8();
  std::ostringstream text;
  text << m_Record.m_Pid << ' ' << m_Record.m_StartTicks << ' ' << m_Record.m_BootId << ' '
       << m_Record.m_Token << ' ' << id.size() << ' ' << id << End;
  const std::string line = text.str();
  std::string bytes(line.size() <= Bytes ? Bytes : 0, '\0');
  (void)line.copy(bytes.data(), bytes.size());
  return bytes;
}

std::optional<NamedRunRecord> NamedRunRecord::Decode(std::string_view bytes) {
  std::istringstream text{std::string(bytes)};
  NamedRunRecord named;
  std::size_t length = 0;
  text >> named.m_Record.m_Pid >> named.m_Record.m_StartTicks >> named.m_Record.m_BootId >>
      named.m_Record.m_Token >> length;
  if (!text || text.eof() || named.m_Record.m_Pid <= 1 || length > Bytes) {
    return std::nullopt;
  }
  const std::string_view rest = bytes.substr(static_cast<std::size_t>(text.tellg()));
  const std::string id(rest.substr(rest.empty() ? 0 : 1, length));
  if (!rest.starts_with(" " + id + End)) {
    return std::nullopt;
  }
  named.m_TaskId = AString::FromUtf8(id);
  return named;
}

}  // namespace NoxHandler
