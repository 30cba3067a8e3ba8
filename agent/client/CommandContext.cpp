#include "agent/client/CommandContext.h"

#include "agent/client/SocketPath.h"

namespace NoxAgent {

AgentApi CommandContext::Agent() const {
  return AgentApi(SocketPath(m_Socket, m_RuntimeDirectory));
}

void CommandContext::PrintJson(const Json& value) const {
  m_Out << value.Dump(2) << '\n';
}

}  // namespace NoxAgent
