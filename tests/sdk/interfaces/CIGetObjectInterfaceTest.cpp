#include "tests/support/FakeHost.h"

#include <AgentInterfacesV3/CIGetObjectInterface.h>
#include <AgentInterfacesV3/INoxScheduledTaskHandler.h>

#include <gtest/gtest.h>

namespace {

using namespace Corvane::AgentInterfacesV3;
using TestSupport::FakeHandler;
using TestSupport::FakeHost;

constexpr const char* ClassId = "{7C0A1D52-3B4E-4F6A-9A51-2D8E6C9B4F10}";

TEST(CIGetObjectInterface, AsksTheHost) {
  FakeHost host;
  FakeHandler handler;
  host.AddHandler(ClassId, handler);

  void* object = nullptr;
  EXPECT_GE(CIGetObjectInterface(ClassId, INoxScheduledTaskHandler::GetIID(), 0, object), 0);
  EXPECT_EQ(static_cast<INoxScheduledTaskHandler*>(object), &handler);

  ASSERT_EQ(host.Openings().size(), 1U);
  EXPECT_EQ(host.Openings()[0].m_ClassId, ClassId);
  EXPECT_EQ(host.Openings()[0].m_InterfaceId, INoxScheduledTaskHandler::GetIID());
  EXPECT_EQ(host.Openings()[0].m_Flags, 0U);
}

TEST(CIGetObjectInterface, AFailureLeavesNoObject) {
  const FakeHost host;
  FakeHandler before;
  void* object = &before;
  EXPECT_LT(CIGetObjectInterface(ClassId, INoxScheduledTaskHandler::GetIID(), 0, object), 0);
  EXPECT_EQ(object, nullptr);
}

TEST(CIGetObjectInterface, FailsWithoutAHost) {
  FakeHandler before;
  void* object = &before;
  EXPECT_LT(CIGetObjectInterface(ClassId, INoxScheduledTaskHandler::GetIID(), 0, object), 0);
  EXPECT_EQ(object, nullptr);
}

}  // namespace
