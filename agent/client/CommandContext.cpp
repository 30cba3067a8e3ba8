#include "agent/client/CommandContext.h"

#include "agent/client/SocketPath.h"

#include <algorithm>

namespace NoxAgent {

namespace {

// Errors are one line each, so that they can be searched for and mailed.
std::string OneLine(std::string text) {
  while (!text.empty() && text.back() == '\n') {
    text.pop_back();
  }
  std::replace(text.begin(), text.end(), '\n', ' ');
  return text;
}

}  // namespace

AgentApi CommandContext::Agent() const {
  return AgentApi(SocketPath(m_Socket, m_RuntimeDirectory));
}

void CommandContext::PrintJson(const Json& value) const {
  m_Out << value.Dump(2) << '\n';
}

void CommandContext::PrintError(const CommandError& error, const std::string& id) const {
  if (!m_Json) {
    m_Err << "noxctl: " << OneLine(error.what()) << '\n';
    return;
  }
  Json members = {{"code", error.Name()}, {"message", OneLine(error.what())}};
  if (const auto& place = error.InDocument()) {
    members["line"] = place->m_Line;
    members["column"] = place->m_Column;
  }
  if (!id.empty()) {
    members["id"] = id;
  }
  m_Err << Json{{"error", members}} << '\n';
}

void CommandContext::PrintWarning(const Json& warning) const {
  if (m_Json) {
    m_Err << Json{{"warning", warning}} << '\n';
  } else {
    m_Err << "noxctl: warning: " << OneLine(warning.At("message").Text()) << '\n';
  }
}

}  // namespace NoxAgent
