#include <AgentInterfacesV3/AMsgIn.h>

#include <utility>

namespace Corvane::AgentInterfacesV3 {

AMsgIn::AMsgIn(std::string_view interfaceName, std::string_view operation, AMsgReply& reply)
    : m_Interface(interfaceName), m_Operation(operation), m_Reply(reply) {}

AMsgIn& AMsgIn::Set(std::string_view name, AMsgValue value) {
  m_Arguments.insert_or_assign(std::string(name), std::move(value));
  return *this;
}

const AMsgValue* AMsgIn::Find(std::string_view name) const {
  const auto found = m_Arguments.find(name);
  return found == m_Arguments.end() ? nullptr : &found->second;
}

}  // namespace Corvane::AgentInterfacesV3
