#include "agent/client/CommandContext.h"

#include "agent/client/SocketPath.h"

namespace NoxAgent {

AgentApi CommandContext::Agent() const {
  return AgentApi(SocketPath(m_Socket, m_RuntimeDirectory));
}

void CommandContext::PrintJson(const nlohmann::json& value) const {
  m_Out << value.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
}

}  // namespace NoxAgent
