#include <AgentInterfacesV3/AInterfaceTable.h>
#include <AgentInterfacesV3/INoxCommandHandlerTable.h>
#include <AgentInterfacesV3/INoxObjectTable.h>
#include <AgentInterfacesV3/INoxScheduledTaskHandlerTable.h>
#include <AgentInterfacesV3/INoxTaskSchedulerTable.h>
#include <AgentInterfacesV3/INoxVeskClientAgentTable.h>

namespace Corvane::AgentInterfacesV3 {

std::span<const AInterfaceTable* const> AInterfaceTable::All() {
  static constexpr const AInterfaceTable* Tables[] = {
      &INoxObjectTable, &INoxVeskClientAgentTable, &INoxTaskSchedulerTable,
      &INoxScheduledTaskHandlerTable, &INoxCommandHandlerTable};
  return Tables;
}

const AInterfaceTable* AInterfaceTable::Find(std::string_view interfaceName) {
  for (const AInterfaceTable* table : All()) {
    if (table->m_Name == interfaceName) {
      return table;
    }
  }
  return nullptr;
}

}  // namespace Corvane::AgentInterfacesV3
