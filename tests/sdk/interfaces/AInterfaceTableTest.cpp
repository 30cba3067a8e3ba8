#include "tests/support/Texts.h"

#include <AgentInterfacesV3/AInterfaceTable.h>
#include <AgentInterfacesV3/INoxCommandHandler.h>
#include <AgentInterfacesV3/INoxObject.h>
#include <AgentInterfacesV3/INoxScheduledTaskHandler.h>
#include <AgentInterfacesV3/INoxTaskScheduler.h>
#include <AgentInterfacesV3/INoxVeskClientAgent.h>
#include <AgentInterfacesV3/InterfaceIds.h>

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace {

using namespace Corvane::AgentInterfacesV3;
using BaseSDK::AGuid;
using TestSupport::Texts;

Texts OperationsOf(const char* interfaceName) {
  std::vector<std::string> names;
  for (const auto& operation : AInterfaceTable::Find(interfaceName)->m_Operations) {
    names.emplace_back(operation.m_Name);
  }
  return names;
}

TEST(AInterfaceTable, OperationsStandInSlotOrder) {
  EXPECT_EQ(OperationsOf("INoxObject"), (Texts{"ObjectDebugInfo", "NotifyObject"}));
  EXPECT_EQ(OperationsOf("INoxVeskClientAgent"),
            (Texts{"AgentStart", "AgentStop", "AgentRefresh", "AgentQuery", "AgentQueryUnload",
                   "AgentInstall", "AgentUninstall", "AgentUpgrade"}));
  EXPECT_EQ(
      OperationsOf("INoxTaskScheduler"),
      (Texts{"AddTask", "DeleteTask", "GetTaskXML", "FindFirstTask", "FindNextTask", "FindClose",
             "RefreshTaskList", "SetRunState", "GetTaskAttributes", "EnableTask"}));
  EXPECT_EQ(OperationsOf("INoxScheduledTaskHandler"), (Texts{"RunTasks", "RunTasksEx"}));
  EXPECT_EQ(OperationsOf("INoxCommandHandler"),
            (Texts{"GetRun", "CheckJob", "PutJob", "GetJob", "DeleteJob", "GetOutput", "StopRun"}));
}

TEST(AInterfaceTable, ParentsComeFirst) {
  std::set<const AInterfaceTable*> seen;
  for (const AInterfaceTable* table : AInterfaceTable::All()) {
    EXPECT_TRUE(table->m_Parent == nullptr || seen.count(table->m_Parent) == 1) << table->m_Name;
    seen.insert(table);
  }
  EXPECT_EQ(seen.size(), 5U);
}

TEST(AInterfaceTable, IdentifiersAreValidAndDistinct) {
  std::set<std::string> identifiers;
  for (const AInterfaceTable* table : AInterfaceTable::All()) {
    const AGuid identifier(table->m_Identifier);
    EXPECT_TRUE(identifier.IsValid()) << table->m_Name;
    EXPECT_EQ(identifier.ToString(), table->m_Identifier) << table->m_Name;
    EXPECT_TRUE(identifiers.insert(table->m_Identifier).second) << table->m_Name;
  }
}

TEST(AInterfaceTable, IdentifiersAreThoseOfTheClientInterfaces) {
  const auto identifierOf = [](const char* name) {
    return AGuid(AInterfaceTable::Find(name)->m_Identifier);
  };
  EXPECT_EQ(identifierOf("INoxObject"), IID_INoxObject);
  EXPECT_EQ(identifierOf("INoxVeskClientAgent"), IID_INoxVeskClientAgent);
  EXPECT_EQ(identifierOf("INoxTaskScheduler"), IID_INoxTaskScheduler);
  EXPECT_EQ(identifierOf("INoxScheduledTaskHandler"), IID_INoxScheduledTaskHandler);
  EXPECT_EQ(identifierOf("INoxCommandHandler"), IID_INoxCommandHandler);
  EXPECT_EQ(INoxObject::GetIID(), IID_INoxObject);
  EXPECT_EQ(INoxVeskClientAgent::GetIID(), IID_INoxVeskClientAgent);
  EXPECT_EQ(INoxTaskScheduler::GetIID(), IID_INoxTaskScheduler);
  EXPECT_EQ(INoxScheduledTaskHandler::GetIID(), IID_INoxScheduledTaskHandler);
  EXPECT_EQ(INoxCommandHandler::GetIID(), IID_INoxCommandHandler);
}

TEST(AInterfaceTable, FindsByNameExactly) {
  EXPECT_EQ(AInterfaceTable::Find("inoxobject"), nullptr);
  EXPECT_EQ(AInterfaceTable::Find(""), nullptr);
  const AInterfaceTable& table = *AInterfaceTable::Find("INoxTaskScheduler");
  EXPECT_EQ(table.FindOperation("addtask"), nullptr);
  ASSERT_NE(table.FindOperation("AddTask"), nullptr);
  EXPECT_EQ(table.FindOperation("AddTask")->Find("nobody"), nullptr);
  ASSERT_NE(table.FindOperation("AddTask")->Find("newTaskId"), nullptr);
  EXPECT_TRUE(table.FindOperation("AddTask")->Find("newTaskId")->IsOut());
}

TEST(AInterfaceTable, OutArgumentsAreNeverOptional) {
  for (const AInterfaceTable* table : AInterfaceTable::All()) {
    for (const auto& operation : table->m_Operations) {
      for (const auto& argument : operation.Arguments()) {
        EXPECT_TRUE(argument.IsIn() || !argument.m_Optional)
            << operation.m_Name << " " << argument.m_Name;
      }
    }
  }
}

}  // namespace
