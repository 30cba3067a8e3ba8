// Life cycle, configuration and identification.
#include "tests/scheduler/SchedulerFixture.h"
#include "tests/scheduler/SchedulerInside.h"

#include <AgentInterfacesV3/InterfaceIds.h>
#include <BaseSDK/AGuid.h>

#include <cstdint>

namespace {

using namespace Corvane::AgentInterfacesV3;
using BaseSDK::AGuid;
using BaseSDK::ALogger;
using BaseSDK::AString;

class TaskSchedulerObjectTest : public SchedulerFixture {
 protected:
  bool IsMonitorRunning() { return SCHEDULER_INSIDE(*m_Scheduler, m_MonitorThread).IsRunning(); }
};

TEST_F(TaskSchedulerObjectTest, ConstructionStartsNothing) {
  EXPECT_FALSE(IsMonitorRunning());
  EXPECT_EQ(nullptr, m_Scheduler->Storage());
  EXPECT_EQ(0U, m_Host.Subscriptions().size());
  EXPECT_EQ(m_Log.Lines(), Lines());
  EXPECT_FALSE(IsGateOpen());
  EXPECT_FALSE(SCHEDULER_INSIDE(*m_Scheduler, m_Notification302));
  EXPECT_FALSE(SCHEDULER_INSIDE(*m_Scheduler, m_Notification300));
  EXPECT_EQ(0U, SCHEDULER_INSIDE(*m_Scheduler, m_InstallTaskCount));
}

TEST_F(TaskSchedulerObjectTest, InitializeSubscribesToItsTwoNotifications) {
  Start();
  ASSERT_EQ(1U, m_Host.Subscriptions().size());
  EXPECT_EQ(AString(L"Corvane.NoxTaskScheduler"), m_Host.Subscriptions()[0].m_Subscriber);
  EXPECT_EQ((std::vector<long>{300, 302}), m_Host.Subscriptions()[0].m_Codes);
}

TEST_F(TaskSchedulerObjectTest, InitializeMakesTheStorageAndStartsTheMonitor) {
  Start();
  EXPECT_TRUE(IsMonitorRunning());
  ASSERT_NE(nullptr, m_Scheduler->Storage());
  EXPECT_EQ("TaskSchedulerObject_i::Initialize()\n", Traces()[0]);
  EXPECT_EQ("Corvane::Agent::TaskScheduler", m_Log.Lines()[0].m_Channel);
  EXPECT_EQ("TaskSchedulerObject", m_Log.Lines()[0].m_Source);
  EXPECT_FALSE(IsGateOpen());
}

TEST_F(TaskSchedulerObjectTest, InitializeGoesOnWithoutItsSubscription) {
  for (const long refusal : {0L, -1L}) {
    m_Host.AnswerSubscribe(refusal);
    m_Log.Clear();
    m_Scheduler = std::make_unique<TaskSchedulerObject_i>();
    Start();
    EXPECT_EQ(m_Log.Messages(ALogger::Error),
              Texts{"TaskSchedulerObject_i::Initialize(), failed to subscribe to notifications"});
    EXPECT_TRUE(IsMonitorRunning());
    Stop();
  }
}

TEST_F(TaskSchedulerObjectTest, InitializeFailsWithoutEitherConfiguredValue) {
  const struct {
    const char* m_Path;
    const char* m_Extension;
  } rows[] = {{"", ".vsk"}, {"/somewhere", ""}, {"", ""}};
  for (const auto& row : rows) {
    Configure("task_storage_path", row.m_Path);
    Configure("task_file_extension", row.m_Extension);
    EXPECT_EQ(-1, m_Scheduler->Initialize());
    EXPECT_FALSE(IsMonitorRunning());
    EXPECT_EQ(nullptr, m_Scheduler->Storage()) << "the storage's defaults are not for this";
  }
  EXPECT_EQ(3U, m_Host.Subscriptions().size()) << "subscribed all the same";
  EXPECT_EQ(m_Log.Messages(ALogger::Error), Texts());
}

TEST_F(TaskSchedulerObjectTest, InitializeFailsWithoutAnyConfiguration) {
  TestSupport::FakeHost bareHost;
  EXPECT_EQ(-1, m_Scheduler->Initialize());
  EXPECT_FALSE(IsMonitorRunning());
}

TEST_F(TaskSchedulerObjectTest, AMonitorThatDoesNotStartFailsInitialize) {
  Start();
  EXPECT_EQ(-1, m_Scheduler->Initialize()) << "it runs already";
}

TEST_F(TaskSchedulerObjectTest, UninitializeOnPurposeRefusesUnlessForced) {
  Start();
  m_Log.Clear();
  EXPECT_EQ(-1, m_Scheduler->Uninitialize(0));
  EXPECT_EQ(m_Log.Lines(), Lines());
  EXPECT_TRUE(IsMonitorRunning());
  EXPECT_NE(nullptr, m_Scheduler->Storage());
}

TEST_F(TaskSchedulerObjectTest, UninitializeStopsTheMonitorAndLetsTheStorageGo) {
  Start();
  m_Log.Clear();
  EXPECT_EQ(1, m_Scheduler->Uninitialize(1));
  EXPECT_EQ("TaskSchedulerObject_i::Uninitialize()\n", Traces()[0]);
  EXPECT_FALSE(IsMonitorRunning());
  EXPECT_EQ(nullptr, m_Scheduler->Storage());
  EXPECT_EQ(1U, m_Host.Subscriptions().size()) << "not cancelled";
}

TEST_F(TaskSchedulerObjectTest, UninitializeTakesEveryOtherNumberForForced) {
  Start();
  EXPECT_EQ(1, m_Scheduler->Uninitialize(2));
  EXPECT_FALSE(IsMonitorRunning());
}

TEST_F(TaskSchedulerObjectTest, UninitializeWorksWithoutAnythingToEnd) {
  EXPECT_EQ(1, m_Scheduler->Uninitialize(1));
  Configure("task_storage_path", "");
  EXPECT_EQ(-1, m_Scheduler->Initialize());
  EXPECT_EQ(1, m_Scheduler->Uninitialize(1));
  EXPECT_EQ(1, m_Scheduler->Uninitialize(1));
}

TEST_F(TaskSchedulerObjectTest, UninitializeDoesNotTouchTheGate) {
  StartWithOpenGate();
  EXPECT_EQ(1, m_Scheduler->Uninitialize(1));
  EXPECT_TRUE(IsGateOpen());
}

TEST_F(TaskSchedulerObjectTest, UninitializeGoesOnWhenAHandlerHoldsTheMonitor) {
  // The monitor is left running with the storage gone, as the agent insists on. It is in the
  // handler, so it takes neither before the handler comes back.
  Store("T1", Task(AsSoonAsPossible()));
  Start();
  BaseSDK::AEvent release(BaseSDK::AEvent::ManualReset);
  m_Handler.AnswerAlways(TASK_HANDLER_DECLINED, 1);
  m_Handler.Observe([&](const TestSupport::FakeHandler::Call&) {
    release.Wait(1000000, BaseSDK::ClockSkewIgnore);
  });
  OpenGate();
  EXPECT_EQ(1, m_Scheduler->Uninitialize(1));
  EXPECT_TRUE(Logged(ALogger::Information, L"Failed to stop the thread with Param = \"\""));
  EXPECT_TRUE(IsMonitorRunning());
  EXPECT_EQ(nullptr, m_Scheduler->Storage());
  release.Set();
  Clock().Settle();
  EXPECT_FALSE(IsMonitorRunning());
}

TEST_F(TaskSchedulerObjectTest, DestructionIsLogged) {
  m_Scheduler.reset();
  EXPECT_EQ(Traces(), Texts{"TaskSchedulerObject_i destructor.\n"});
  m_Scheduler = std::make_unique<TaskSchedulerObject_i>();
}

TEST_F(TaskSchedulerObjectTest, AcknowledgesTheAgentsLifeInEveryState) {
  const auto expectAnswers = [this] {
    m_Log.Clear();
    EXPECT_EQ(1, m_Scheduler->AgentStart());
    EXPECT_EQ(1, m_Scheduler->AgentStop());
    EXPECT_EQ(1, m_Scheduler->AgentRefresh());
    EXPECT_EQ(1, m_Scheduler->AgentQuery());
    EXPECT_EQ(0, m_Scheduler->AgentQueryUnload());
    EXPECT_EQ(0, m_Scheduler->AgentInstall());
    EXPECT_EQ(0, m_Scheduler->AgentUninstall());
    EXPECT_EQ(0, m_Scheduler->AgentUpgrade());
    EXPECT_EQ(3, m_Scheduler->GetVersion());
    EXPECT_EQ(Traces(), (Texts{"TaskSchedulerObject_i::AgentStart()\n",
                               "TaskSchedulerObject_i::AgentStop()\n",
                               "TaskSchedulerObject_i::AgentRefresh()\n"}));
    EXPECT_EQ(3U, m_Log.Lines().size());
  };
  expectAnswers();
  Start();
  expectAnswers();
  EXPECT_FALSE(IsGateOpen()) << "AgentStart does not open it";
  EXPECT_TRUE(IsMonitorRunning()) << "AgentStop does not stop it";
  Stop();
  expectAnswers();
}

TEST_F(TaskSchedulerObjectTest, TheOneAttributeIsTheAddressOfItsFactory) {
  AString value;
  EXPECT_EQ(1, m_Scheduler->GetAttribute("InterfaceFactory", value));
  const auto address = std::stoull(value.ToUtf8(), nullptr, 16);
  auto* const factory =
      reinterpret_cast<INoxInterfaceFactory*>(static_cast<std::uintptr_t>(address));
  EXPECT_EQ(static_cast<INoxInterfaceFactory*>(m_Scheduler.get()), factory);
  EXPECT_EQ(3, factory->GetVersion());
}

TEST_F(TaskSchedulerObjectTest, OtherAttributesLeaveTheValueAlone) {
  for (const char* name : {"interfacefactory", "INTERFACEFACTORY", "InterfaceFactory ", "", "x"}) {
    AString value(L"before");
    EXPECT_EQ(-1, m_Scheduler->GetAttribute(name, value)) << name;
    EXPECT_EQ(AString(L"before"), value) << name;
  }
}

TEST_F(TaskSchedulerObjectTest, GivesOutItsThreeInterfaces) {
  void* object = nullptr;
  EXPECT_EQ(0, m_Scheduler->QueryInterface(IID_INoxTaskScheduler, object));
  EXPECT_EQ(static_cast<INoxTaskScheduler_impl*>(m_Scheduler.get()), object);
  EXPECT_EQ(0, m_Scheduler->QueryInterface(IID_INoxVeskClientAgent, object));
  EXPECT_EQ(static_cast<INoxVeskClientAgent_impl*>(m_Scheduler.get()), object);
  EXPECT_EQ(0, m_Scheduler->QueryInterface(IID_INoxObject, object));
  EXPECT_EQ(static_cast<INoxObject_impl*>(m_Scheduler.get()), object);
}

TEST_F(TaskSchedulerObjectTest, GivesOutNoOtherInterface) {
  for (const AGuid& id : {AGuid(), IID_INoxScheduledTaskHandler}) {
    void* object = this;
    EXPECT_EQ(-1, m_Scheduler->QueryInterface(id, object)) << id.ToString().ToUtf8();
    EXPECT_EQ(nullptr, object);
  }
}

TEST_F(TaskSchedulerObjectTest, GivesOutNothingByUuidOnPurpose) {
  void* object = this;
  EXPECT_EQ(-1, m_Scheduler->QueryInterface(IID_INoxTaskScheduler.Value(), object));
  EXPECT_EQ(nullptr, object);
}

}  // namespace
