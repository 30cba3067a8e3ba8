// The plug-in as the agent loads it, on the real clock: what it shows, and that nothing of it stays
// behind when it is unloaded.
#include "tests/support/PluginLibrary.h"

#include "Common/InterfaceFactory.h"
#include "tests/scheduler/AllocationCount.h"
#include "tests/support/FakeHandler.h"
#include "tests/support/FakeHost.h"
#include "tests/support/TempDir.h"
#include "tests/support/Texts.h"
#include "tests/support/ThreadCount.h"

#include <AgentInterfacesV3/AMsgIn.h>
#include <AgentInterfacesV3/AMsgQueue.h>
#include <AgentInterfacesV3/AMsgReply.h>
#include <BaseSDK/AGuid.h>
#include <BaseSDK/AThreadRest.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <semaphore>
#include <set>
#include <string>

namespace {

using namespace Corvane::AgentInterfacesV3;
using BaseSDK::AString;
using TestSupport::FakeHandler;
using TestSupport::FakeHost;
using TestSupport::PluginLibrary;
using TestSupport::TempDir;
using TestSupport::Texts;

constexpr char Handler[] = "{00000000-0000-0000-0000-00000000000A}";
constexpr int Queue = 5;

std::set<std::string> Entries(const char* directory) {
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(directory)) {
    names.insert(entry.path().filename());
  }
  return names;
}

/// What a process holds, as far as a plug-in could leave it behind.
struct Holdings {
  Holdings()
      : m_Threads(TestSupport::CountThreads()),
        m_Descriptors(Entries("/proc/self/fd").size()),
        m_Allocations(LiveAllocations()) {}

  std::size_t m_Threads;
  std::size_t m_Descriptors;
  long m_Allocations;
};

/// An agent with one directory of tasks and one handler.
struct Agent {
  Agent() {
    m_Host.SetConfig(L"Configuration", L"task_storage_path", m_Directory.Path().c_str());
    m_Host.SetConfig(L"Configuration", L"task_file_extension", L".vsk");
    m_Host.AddHandler(Handler, m_Handler);
    m_Handler.Observe([this](const FakeHandler::Call&) { m_Called.release(); });
  }

  TempDir m_Directory;
  FakeHost m_Host;
  FakeHandler m_Handler;
  std::counting_semaphore<> m_Called{0};
};

/// Loads the plug-in, has it run a task, and unloads it.
void LiveOnce() {
  Agent agent;
  agent.m_Directory.Write("T1.vsk",
                          std::string("<Task><HandlerCLSID>") + Handler +
                              "</HandlerCLSID><Schedule><Trigger Type=\"-1\"/></Schedule></Task>");
  AMsgQueue queue(Queue);
  const PluginLibrary plugin(NOX_PLUGIN);
  ASSERT_EQ(1, plugin.Initialize(Queue));
  AMsgReply reply;
  AMsgIn started("INoxObject", "NotifyObject", reply);
  started.Set("kind", 0L).Set("code", 0L).Set("text", AString());
  ASSERT_EQ(1, queue.Send(started)) << reply.ErrorText().ToUtf8();
  agent.m_Called.acquire();
  EXPECT_EQ(-1, plugin.Uninitialize(false));
  queue.Close();
  EXPECT_TRUE(BaseSDK::AThreadRest::WaitForAll(120000)) << "as the agent does";
  EXPECT_EQ(1, plugin.Uninitialize(true));
}

TEST(PluginLibrary, ShowsItsFourFunctionsAndNothingElse) {
  EXPECT_EQ(PluginLibrary::Exports(NOX_PLUGIN), (Texts{"PluginGetAttributeV3", "PluginInitialize",
                                                       "PluginMain", "PluginUninitialize"}));
}

TEST(PluginLibrary, LeavesNothingBehindAndLoadsAgain) {
  LiveOnce();  // what the libraries beneath keep for good, such as loggers, they keep from here on
  const Holdings before;
  for (int i = 0; i < 3; ++i) {
    LiveOnce();
    EXPECT_FALSE(PluginLibrary::IsMapped(NOX_PLUGIN));
    const Holdings after;
    EXPECT_EQ(before.m_Threads, after.m_Threads);
    EXPECT_EQ(before.m_Descriptors, after.m_Descriptors);
    EXPECT_EQ(before.m_Allocations, after.m_Allocations);
  }
}

TEST(PluginLibrary, IsMappedWhileLoaded) {
  EXPECT_FALSE(PluginLibrary::IsMapped(NOX_PLUGIN));
  const PluginLibrary plugin(NOX_PLUGIN);
  EXPECT_TRUE(PluginLibrary::IsMapped(NOX_PLUGIN));
}

TEST(PluginLibrary, AnswersTheAgentsWayIn) {
  const Agent agent;
  AMsgQueue queue(Queue);
  const PluginLibrary plugin(NOX_PLUGIN);
  AString value;
  EXPECT_EQ(-1, plugin.GetAttribute("InterfaceFactory", value)) << "there is no object yet";
  ASSERT_EQ(1, plugin.Initialize(Queue));
  EXPECT_EQ(1, plugin.Initialize(Queue)) << "the second time";
  INoxInterfaceFactory* const factory = plugin.Factory();
  ASSERT_NE(nullptr, factory);
  EXPECT_EQ(3, factory->GetVersion());
  queue.Close();
  EXPECT_EQ(-1, plugin.Uninitialize(false));
  EXPECT_EQ(1, plugin.Uninitialize(true));
  EXPECT_EQ(1, plugin.Uninitialize(true));
  EXPECT_EQ(-1, plugin.GetAttribute("InterfaceFactory", value));
}

TEST(PluginLibrary, WithoutItsQueueItIsLoadedAndNotInitialised) {
  const Agent agent;
  const PluginLibrary plugin(NOX_PLUGIN);
  EXPECT_LT(plugin.Initialize(Queue), 0);
  EXPECT_TRUE(agent.m_Host.Subscriptions().empty());
  EXPECT_EQ(1, plugin.Uninitialize(true));
}

TEST(PluginLibrary, TheSmallestPluginLoadsAnswersAndUnloads) {
  EXPECT_EQ(
      PluginLibrary::Exports(NOX_MINIMAL_PLUGIN),
      (Texts{"PluginGetAttributeV3", "PluginInitialize", "PluginMain", "PluginUninitialize"}));
  {
    AMsgQueue queue(Queue);
    const PluginLibrary plugin(NOX_MINIMAL_PLUGIN);
    ASSERT_EQ(1, plugin.Initialize(Queue));
    ASSERT_NE(nullptr, plugin.Factory());
    AMsgReply reply;
    AMsgIn started("INoxObject", "NotifyObject", reply);
    started.Set("kind", 2L).Set("code", 0L).Set("text", AString());
    EXPECT_EQ(1, queue.Send(started));
    AMsgReply report;
    EXPECT_EQ(1, queue.Send(AMsgIn("INoxObject", "ObjectDebugInfo", report)));
    EXPECT_EQ(AString(L"Last notification: 2\n"), std::get<AString>(report.Out().begin()->second));
    queue.Close();
    EXPECT_EQ(1, plugin.Uninitialize(false));
  }
  EXPECT_FALSE(PluginLibrary::IsMapped(NOX_MINIMAL_PLUGIN));
}

}  // namespace
