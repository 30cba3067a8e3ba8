#include "tests/sdk/interfaces/RecordingObjects.h"
#include "tests/support/LogCapture.h"
#include "tests/support/Texts.h"

#include <AgentInterfacesV3/AMsgQueue.h>
#include <AgentInterfacesV3/CIClient.h>
#include <AgentInterfacesV3/INoxCommandHandler.h>
#include <AgentInterfacesV3/INoxScheduledTaskHandler.h>
#include <AgentInterfacesV3/INoxTaskScheduler.h>
#include <AgentInterfacesV3/INoxVeskClientAgent.h>
#include <AgentInterfacesV3/InterfaceIds.h>
#include <AgentInterfacesV3/MakeProxy.h>

#include <gtest/gtest.h>

#include <limits>
#include <memory>

namespace {

using namespace Corvane::AgentInterfacesV3;
using BaseSDK::AString;
using TestSupport::Texts;

constexpr int Number = 7;

template <class Interface>
void Open(CIClient<Interface>& client) {
  ASSERT_EQ(MakeProxy(Number, Interface::GetIID(), client.Slot()), 1);
  ASSERT_TRUE(client);
}

class MakeProxyTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(m_Object.Open(Number), 1); }
  /// As a host does before the object goes.
  void TearDown() override { m_Queue->Close(); }

  const Texts& Calls() const { return m_Object.m_Calls.All(); }

  std::unique_ptr<AMsgQueue> m_Queue = std::make_unique<AMsgQueue>(Number);
  RecordingObjects::Scheduler m_Object;
};

TEST_F(MakeProxyTest, TaskOperationsArriveWithTheirArgumentsAndGiveTheirsBack) {
  CIClient<INoxTaskScheduler> scheduler;
  Open(scheduler);

  AString out;
  EXPECT_EQ(scheduler->AddTask("a", "<Task/>", out), 31);
  EXPECT_EQ(out, "new-a");
  EXPECT_EQ(scheduler->DeleteTask("a"), 32);
  EXPECT_EQ(scheduler->GetTaskXML("a", out), 33);
  EXPECT_EQ(out, "<Task/>");
  EXPECT_EQ(scheduler->RefreshTaskList(), 1);
  EXPECT_EQ(scheduler->SetRunState("a", "Ok"), 38);
  EXPECT_EQ(scheduler->EnableTask("a:b", true), 40);
  EXPECT_EQ(Calls(),
            (Texts{"AddTask(\"a\", \"<Task/>\")", "DeleteTask(\"a\")", "GetTaskXML(\"a\")",
                   "RefreshTaskList()", "SetRunState(\"a\", \"Ok\")", "EnableTask(\"a:b\", 1)"}));
}

TEST_F(MakeProxyTest, AnEnumerationPassesItsHandle) {
  CIClient<INoxTaskScheduler> scheduler;
  Open(scheduler);

  unsigned long handle = 3;
  AString id;
  EXPECT_EQ(scheduler->FindFirstTask(handle, id), -34);
  EXPECT_EQ(handle, ~0UL);
  EXPECT_EQ(id, "first");
  EXPECT_EQ(scheduler->FindNextTask(4, id), 35);
  EXPECT_EQ(id, "next");
  EXPECT_EQ(scheduler->FindClose(5), 36);
  EXPECT_EQ(Calls(), (Texts{"FindFirstTask(3)", "FindNextTask(4)", "FindClose(5)"}));
}

TEST_F(MakeProxyTest, AttributesKeepWhatTheyHeld) {
  CIClient<INoxTaskScheduler> scheduler;
  Open(scheduler);

  AStringMap attributes{{"mine", "1"}};
  EXPECT_EQ(scheduler->GetTaskAttributes("a", attributes, nullptr), 39);
  EXPECT_EQ(attributes, (AStringMap{{"mine", "1"}, {"t0", "a"}}));
  const AStringMap input{{"in", "2"}};
  EXPECT_EQ(scheduler->GetTaskAttributes("b", attributes, &input), 39);
  EXPECT_EQ(Calls(), (Texts{"GetTaskAttributes(\"a\", {mine=1;}, \"null\")",
                            "GetTaskAttributes(\"b\", {mine=1;t0=a;}, \"{in=2;}\")"}));
}

TEST_F(MakeProxyTest, ClientAgentOperationsArrive) {
  CIClient<INoxVeskClientAgent> agent;
  Open(agent);
  EXPECT_EQ(agent->AgentStart(), 21);
  EXPECT_EQ(agent->AgentStop(), 22);
  EXPECT_EQ(agent->AgentRefresh(), 23);
  EXPECT_EQ(agent->AgentQuery(), 24);
  EXPECT_EQ(agent->AgentQueryUnload(), 25);
  EXPECT_EQ(agent->AgentInstall(), 26);
  EXPECT_EQ(agent->AgentUninstall(), 27);
  EXPECT_EQ(agent->AgentUpgrade(), 28);
  EXPECT_EQ(Calls().size(), 8U);
}

TEST_F(MakeProxyTest, ObjectOperationsArriveThroughEachInterface) {
  CIClient<INoxObject> object;
  Open(object);
  CIClient<INoxTaskScheduler> scheduler;
  Open(scheduler);

  AString report;
  EXPECT_EQ(object->ObjectDebugInfo(report), 11);
  EXPECT_EQ(report, "the report");
  EXPECT_EQ(scheduler->NotifyObject(10, 300, "data"), 12);
  EXPECT_EQ(Calls(), (Texts{"ObjectDebugInfo()", "NotifyObject(10, 300, \"data\")"}));
}

TEST_F(MakeProxyTest, ResultsAreKeptInTheSigned32BitRange) {
  CIClient<INoxTaskScheduler> scheduler;
  Open(scheduler);
  m_Object.m_RefreshResult = std::numeric_limits<long>::max();
  EXPECT_EQ(scheduler->RefreshTaskList(), 2147483647L);
  m_Object.m_RefreshResult = std::numeric_limits<long>::min();
  EXPECT_EQ(scheduler->RefreshTaskList(), -2147483647L - 1);
}

TEST_F(MakeProxyTest, ABatchThatReachesNobodyIsDeclinedAndLogged) {
  const TestSupport::LogCapture log;
  CIClient<INoxScheduledTaskHandler> handler;
  Open(handler);
  EXPECT_EQ(handler->RunTasksEx("a:0:1:0;"), TASK_HANDLER_DECLINED);
  EXPECT_EQ(Calls(), Texts());
  EXPECT_TRUE(log.Has(BaseSDK::ALogger::Warning,
                      "Call of INoxScheduledTaskHandler::RunTasksEx was not delivered: The object "
                      "does not serve the interface \"INoxScheduledTaskHandler\"."));
}

TEST_F(MakeProxyTest, ACallAfterTheQueueIsNotDeliveredAndLeavesItsArgumentsAlone) {
  const TestSupport::LogCapture log;
  CIClient<INoxTaskScheduler> scheduler;
  Open(scheduler);
  m_Queue.reset();
  AString id = "before";
  EXPECT_EQ(scheduler->AddTask("a", "<Task/>", id), CALL_NOT_DELIVERED);
  EXPECT_EQ(id, "before");
  EXPECT_EQ(Calls(), Texts());

  // Also when another queue has the number now: that is another object.
  m_Queue = std::make_unique<AMsgQueue>(Number);
  EXPECT_EQ(scheduler->DeleteTask("a"), CALL_NOT_DELIVERED);
  EXPECT_EQ(log.CountContaining("was not delivered"), 2U);
}

TEST_F(MakeProxyTest, AnExceptionOfTheObjectStaysThere) {
  const TestSupport::LogCapture log;
  CIClient<INoxTaskScheduler> scheduler;
  Open(scheduler);
  m_Object.m_Calls.m_Hook = [] { throw std::runtime_error("no more"); };
  EXPECT_EQ(scheduler->RefreshTaskList(), CALL_NOT_DELIVERED);
  EXPECT_EQ(log.CountContaining("no more"), 1U);
}

TEST_F(MakeProxyTest, FailsWithoutAQueueOrForAnUnknownInterface) {
  int something = 0;
  void* object = &something;
  EXPECT_LT(MakeProxy(Number + 1, IID_INoxObject, object), 0);
  EXPECT_EQ(object, nullptr);
  object = &something;
  EXPECT_LT(MakeProxy(Number, BaseSDK::AGuid(), object), 0);
  EXPECT_EQ(object, nullptr);
}

TEST(CallNotDelivered, IsNegativeAndNotAHandlersRefusal) {
  EXPECT_LT(CALL_NOT_DELIVERED, 0);
  EXPECT_NE(CALL_NOT_DELIVERED, TASK_HANDLER_DECLINED);
  EXPECT_EQ(TASK_HANDLER_DECLINED, -10000);
}

TEST(MakeProxyOfHandlers, TheSchedulersCallsReachTheHandler) {
  AMsgQueue queue(Number);
  RecordingObjects::Handler handler;
  ASSERT_EQ(handler.Open(Number), 1);
  {
    CIClient<INoxScheduledTaskHandler> client;
    Open(client);
    EXPECT_EQ(client->RunTasksEx("a:0:1:0;"), 52);
    EXPECT_EQ(client->RunTasks("b:1:0:0;"), TASK_HANDLER_DECLINED);
  }
  EXPECT_EQ(handler.m_Calls.All(), (Texts{"RunTasksEx(\"a:0:1:0;\")", "RunTasks(\"b:1:0:0;\")"}));
  queue.Close();
}

TEST(MakeProxyOfHandlers, QuestionsAboutRunsAndJobsReachTheHandler) {
  AMsgQueue queue(Number);
  RecordingObjects::CommandHandler handler;
  ASSERT_EQ(handler.Open(Number), 1);
  {
    CIClient<INoxCommandHandler> client;
    Open(client);
    AStringMap run{{"state", "of before"}, {"old", "1"}};
    EXPECT_EQ(client->GetRun("a", run), 61);
    EXPECT_EQ(run, (AStringMap{{"state", "running"}}));
    AString problem;
    EXPECT_EQ(client->CheckJob("b", problem), -62);
    EXPECT_EQ(problem, "no such job");
    EXPECT_EQ(client->PutJob("c", "[Job]", problem), -63);
    EXPECT_EQ(problem, "a bad job");
    AString text;
    EXPECT_EQ(client->GetJob("d", text, problem), 64);
    EXPECT_EQ(text, "a job");
    EXPECT_EQ(problem, "none with it");
    EXPECT_EQ(client->DeleteJob("e", problem), -65);
    EXPECT_EQ(problem, "it stays");
    AString next;
    EXPECT_EQ(client->GetOutput("f", "7", text, next), 66);
    EXPECT_EQ(text, "an output");
    EXPECT_EQ(next, "behind it");
    EXPECT_EQ(client->StopRun("g"), 67);
    queue.Close();
    EXPECT_EQ(client->GetRun("a", run), CALL_NOT_DELIVERED);
    EXPECT_EQ(run, (AStringMap{{"state", "running"}}));
  }
  EXPECT_EQ(handler.m_Calls.All(),
            (Texts{"GetRun(\"a\")", "CheckJob(\"b\")", "PutJob(\"c\", \"[Job]\")", "GetJob(\"d\")",
                   "DeleteJob(\"e\")", "GetOutput(\"f\", \"7\")", "StopRun(\"g\")"}));
}

}  // namespace
