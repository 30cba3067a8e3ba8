#include "AMsgChannel.h"

#include <AgentInterfacesV3/AMsgGroup.h>
#include <BaseSDK/AFileSystem.h>

namespace Corvane::AgentInterfacesV3 {

AMsgGroup::AMsgGroup() : m_Before(AMsgChannel::BeginGroup()) {}

AMsgGroup::~AMsgGroup() {
  End();
}

void AMsgGroup::End() {
  if (!m_Ended) {
    m_Ended = true;
    AMsgChannel::EndGroup(m_Before);
    BaseSDK::AFileSystem::Current().MakeSafe();
  }
}

}  // namespace Corvane::AgentInterfacesV3
