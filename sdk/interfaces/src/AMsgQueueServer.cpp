#include "AMsgChannel.h"

#include <AgentInterfacesV3/AMsgQueueServer.h>

namespace Corvane::AgentInterfacesV3 {

AMsgQueueServer::AMsgQueueServer() = default;

AMsgQueueServer::~AMsgQueueServer() {
  if (m_Channel != nullptr) {
    m_Channel->Unbind();
  }
}

int AMsgQueueServer::Open(int queue) {
  if (m_Channel != nullptr) {
    return -1;
  }
  const std::shared_ptr<AMsgChannel> channel = AMsgChannel::Find(queue);
  if (channel == nullptr || !channel->Bind(*this)) {
    return -1;
  }
  m_Channel = channel;
  return 1;
}

}  // namespace Corvane::AgentInterfacesV3
