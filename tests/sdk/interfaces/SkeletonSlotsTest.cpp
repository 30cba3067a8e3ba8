#include "tests/sdk/interfaces/RawSlots.h"
#include "tests/sdk/interfaces/RecordingObjects.h"
#include "tests/support/Texts.h"

#include <AgentInterfacesV3/AMsgIn.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <new>

namespace {

using namespace Corvane::AgentInterfacesV3;
using BaseSDK::AString;
using RecordingObjects::CommandHandler;
using RecordingObjects::Handler;
using RecordingObjects::Scheduler;
using TestSupport::Texts;

enum Slot : std::size_t {
  CompleteDestructor,
  DeletingDestructor,
  ProcessRequest,
  CallMethod,
  ObjectDebugInfo,
  NotifyObject,
  AgentStart,
  AgentStop,
  AgentRefresh,
  AgentQuery,
  AgentQueryUnload,
  AgentInstall,
  AgentUninstall,
  AgentUpgrade,
  AddTask,
  DeleteTask,
  GetTaskXML,
  FindFirstTask,
  FindNextTask,
  FindClose,
  RefreshTaskList,
  SetRunState,
  GetTaskAttributes,
  EnableTask,
  HandlerRunTasks = AgentStart,
  HandlerRunTasksEx = AgentStop,
  HandlerGetRun = AgentStart,
  HandlerCheckJob = AgentStop,
  HandlerPutJob = AgentRefresh,
  HandlerGetJob = AgentQuery,
  HandlerDeleteJob = AgentQueryUnload,
  HandlerGetOutput = AgentInstall,
  HandlerStopRun = AgentUninstall,
};

static_assert(EnableTask == 23);

class SkeletonSlots : public testing::Test {
 protected:
  template <class Result, class... Arguments>
  Result Call(std::size_t slot, Arguments... arguments) {
    return RawSlots::Call<Result, Arguments...>(m_This, slot, arguments...);
  }

  const std::vector<std::string>& Calls() const { return m_Object.m_Calls.All(); }

  Scheduler m_Object;
  void* const m_This = static_cast<INoxTaskScheduler_impl*>(&m_Object);
  const AString m_A = "a";
  const AString m_B = "b";
  AString m_Out;
};

TEST_F(SkeletonSlots, AllSkeletonsShareOneTable) {
  EXPECT_EQ(static_cast<INoxVeskClientAgent_impl*>(&m_Object), m_This);
  EXPECT_EQ(static_cast<INoxObject_impl*>(&m_Object), m_This);
  EXPECT_NE(static_cast<void*>(static_cast<AMsgQueueServer*>(&m_Object)), m_This);
}

TEST_F(SkeletonSlots, ProcessRequestAndCallMethodFollowTheDestructors) {
  AMsgReply reply;
  const AMsgIn request("INoxTaskScheduler", "RefreshTaskList", reply);
  EXPECT_EQ((Call<long, const AMsgIn*>(ProcessRequest, &request)), 1);
  EXPECT_EQ((Call<long, const AMsgIn*>(CallMethod, &request)), 1);
  // Only ProcessRequest bears this.
  EXPECT_EQ((Call<long, const AMsgIn*>(ProcessRequest, nullptr)), -1);
  EXPECT_EQ(Calls(), (Texts{"RefreshTaskList()", "RefreshTaskList()"}));
}

TEST_F(SkeletonSlots, ObjectOperationsFollow) {
  EXPECT_EQ((Call<int, AString*>(ObjectDebugInfo, &m_Out)), 11);
  EXPECT_EQ(m_Out, "the report");
  EXPECT_EQ((Call<int, long, long, const AString*>(NotifyObject, 1, 2, &m_A)), 12);
  EXPECT_EQ(Calls(), (Texts{"ObjectDebugInfo()", "NotifyObject(1, 2, \"a\")"}));
}

TEST_F(SkeletonSlots, ClientAgentOperationsFollow) {
  for (std::size_t slot = AgentStart; slot <= AgentUpgrade; ++slot) {
    EXPECT_EQ(Call<int>(slot), static_cast<int>(slot - AgentStart) + 21) << "slot " << slot;
  }
  EXPECT_EQ(Calls(),
            (Texts{"AgentStart()", "AgentStop()", "AgentRefresh()", "AgentQuery()",
                   "AgentQueryUnload()", "AgentInstall()", "AgentUninstall()", "AgentUpgrade()"}));
}

TEST_F(SkeletonSlots, TaskOperationsFollow) {
  EXPECT_EQ((Call<long, const AString*, const AString*, AString*>(AddTask, &m_A, &m_B, &m_Out)),
            31);
  EXPECT_EQ(m_Out, "new-a");
  EXPECT_EQ((Call<long, const AString*>(DeleteTask, &m_A)), 32);
  EXPECT_EQ((Call<long, const AString*, AString*>(GetTaskXML, &m_A, &m_Out)), 33);
  EXPECT_EQ(m_Out, "<Task/>");
  EXPECT_EQ(Call<long>(RefreshTaskList), 1);
  EXPECT_EQ((Call<long, const AString*, const AString*>(SetRunState, &m_A, &m_B)), 38);
  EXPECT_EQ((Call<long, const AString*, bool>(EnableTask, &m_A, true)), 40);
  EXPECT_EQ(Calls(),
            (Texts{"AddTask(\"a\", \"b\")", "DeleteTask(\"a\")", "GetTaskXML(\"a\")",
                   "RefreshTaskList()", "SetRunState(\"a\", \"b\")", "EnableTask(\"a\", 1)"}));
}

TEST_F(SkeletonSlots, EnumerationAndAttributesStandBetween) {
  unsigned long handle = 0;
  EXPECT_EQ((Call<long, unsigned long*, AString*>(FindFirstTask, &handle, &m_Out)), -34);
  EXPECT_EQ((Call<long, unsigned long, AString*>(FindNextTask, 5, &m_Out)), 35);
  EXPECT_EQ((Call<long, unsigned long>(FindClose, 6)), 36);
  AStringMap attributes;
  EXPECT_EQ((Call<long, const AString*, AStringMap*, const AStringMap*>(GetTaskAttributes, &m_A,
                                                                        &attributes, nullptr)),
            39);
  EXPECT_EQ(Calls(), (Texts{"FindFirstTask(0)", "FindNextTask(5)", "FindClose(6)",
                            "GetTaskAttributes(\"a\", {}, \"null\")"}));
}

TEST_F(SkeletonSlots, HandlerOperationsFollowThoseOfTheObject) {
  Handler handler;
  void* const self = static_cast<INoxScheduledTaskHandler_impl*>(&handler);
  EXPECT_EQ(static_cast<INoxObject_impl*>(&handler), self);
  EXPECT_EQ((RawSlots::Call<int, AString*>(self, ObjectDebugInfo, &m_Out)), 1);
  EXPECT_EQ((RawSlots::Call<long, const AString*>(self, HandlerRunTasks, &m_A)), -10000);
  EXPECT_EQ((RawSlots::Call<long, const AString*>(self, HandlerRunTasksEx, &m_B)), 52);
  EXPECT_EQ(handler.m_Calls.All(),
            (Texts{"ObjectDebugInfo()", "RunTasks(\"a\")", "RunTasksEx(\"b\")"}));
}

TEST_F(SkeletonSlots, CommandHandlerOperationsFollowThoseOfTheObject) {
  CommandHandler handler;
  void* const self = static_cast<INoxCommandHandler_impl*>(&handler);
  AStringMap run;
  EXPECT_EQ((RawSlots::Call<int, AString*>(self, ObjectDebugInfo, &m_Out)), 2);
  EXPECT_EQ((RawSlots::Call<long, const AString*, AStringMap*>(self, HandlerGetRun, &m_A, &run)),
            61);
  EXPECT_EQ((RawSlots::Call<long, const AString*, AString*>(self, HandlerCheckJob, &m_B, &m_Out)),
            -62);
  EXPECT_EQ(m_Out, "no such job");
  EXPECT_EQ((RawSlots::Call<long, const AString*, const AString*, AString*>(self, HandlerPutJob,
                                                                            &m_A, &m_B, &m_Out)),
            -63);
  AString text;
  EXPECT_EQ((RawSlots::Call<long, const AString*, AString*, AString*>(self, HandlerGetJob, &m_A,
                                                                      &text, &m_Out)),
            64);
  EXPECT_EQ(text, "a job");
  EXPECT_EQ((RawSlots::Call<long, const AString*, AString*>(self, HandlerDeleteJob, &m_B, &m_Out)),
            -65);
  EXPECT_EQ((RawSlots::Call<long, const AString*, const AString*, AString*, AString*>(
                self, HandlerGetOutput, &m_A, &m_B, &text, &m_Out)),
            66);
  EXPECT_EQ(text, "an output");
  EXPECT_EQ(m_Out, "behind it");
  EXPECT_EQ((RawSlots::Call<long, const AString*>(self, HandlerStopRun, &m_B)), 67);
  EXPECT_EQ(
      handler.m_Calls.All(),
      (Texts{"ObjectDebugInfo()", "GetRun(\"a\")", "CheckJob(\"b\")", "PutJob(\"a\", \"b\")",
             "GetJob(\"a\")", "DeleteJob(\"b\")", "GetOutput(\"a\", \"b\")", "StopRun(\"b\")"}));
}

TEST(SkeletonDestructorSlots, TheFirstDestroysAndTheSecondAlsoFrees) {
  unsigned destroyed = 0;
  alignas(Scheduler) std::byte storage[sizeof(Scheduler)];
  auto* const inPlace = new (storage) Scheduler;
  inPlace->m_Destroyed = &destroyed;
  RawSlots::Call<void>(static_cast<INoxTaskScheduler_impl*>(inPlace), CompleteDestructor);
  EXPECT_EQ(destroyed, 1U);

  auto* const onHeap = new Scheduler;
  onHeap->m_Destroyed = &destroyed;
  RawSlots::Call<void>(static_cast<INoxTaskScheduler_impl*>(onHeap), DeletingDestructor);
  EXPECT_EQ(destroyed, 2U);
}

TEST(SkeletonSizes, SkeletonsHaveNoDataOfTheirOwn) {
  // A pointer to their one table, and the virtual base that they share.
  constexpr std::size_t Expected = sizeof(void*) + sizeof(AMsgQueueServer);
  EXPECT_EQ(sizeof(INoxObject_impl), Expected);
  EXPECT_EQ(sizeof(INoxVeskClientAgent_impl), Expected);
  EXPECT_EQ(sizeof(INoxTaskScheduler_impl), Expected);
  EXPECT_EQ(sizeof(INoxScheduledTaskHandler_impl), Expected);
  EXPECT_EQ(sizeof(INoxCommandHandler_impl), Expected);
}

}  // namespace
