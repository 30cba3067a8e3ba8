#include "AMsgChannel.h"

#include <AgentInterfacesV3/AMsgQueue.h>

namespace Corvane::AgentInterfacesV3 {

AMsgQueue::AMsgQueue(int number)
    : m_Number(number),
      m_Channel(std::make_shared<AMsgChannel>()),
      m_Registered(AMsgChannel::Register(number, m_Channel)) {}

AMsgQueue::~AMsgQueue() {
  Close();
  if (m_Registered) {
    AMsgChannel::Unregister(m_Number);
  }
}

bool AMsgQueue::IsOpen() const {
  return m_Registered && !m_Channel->IsClosed();
}

bool AMsgQueue::HasObject() const {
  return m_Channel->HasServer();
}

long AMsgQueue::Send(const AMsgIn& request) {
  return m_Channel->Send(request);
}

bool AMsgQueue::IsAnswering() {
  return AMsgChannel::IsAnswering();
}

void AMsgQueue::Close() {
  (void)m_Channel->Close(std::nullopt);
}

bool AMsgQueue::Close(unsigned long milliseconds) {
  return m_Channel->Close(std::chrono::steady_clock::now() +
                          std::chrono::milliseconds(milliseconds));
}

void AMsgQueue::Reopen() {
  m_Channel->Reopen();
}

}  // namespace Corvane::AgentInterfacesV3
