// The server object as binary callers see it: bases, slots and members, each in its order.
#include "scheduler/TaskSchedulerObject.h"
#include "tests/scheduler/SchedulerFixture.h"
#include "tests/scheduler/SchedulerInside.h"
#include "tests/support/RawSlots.h"

#include <AgentInterfacesV3/INoxTaskScheduler_impl.h>
#include <BaseSDK/AGuid.h>

#include <cxxabi.h>

#include <atomic>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <vector>

namespace {

using namespace Corvane::AgentInterfacesV3;
using BaseSDK::AGuid;
using BaseSDK::AString;
using TestSupport::SlotAt;
using TestSupport::SlotOf;

struct Base {
  const std::type_info* m_Type;
  bool m_Virtual;
};

/// The direct bases of a class as the compiler laid them down, in order.
std::vector<Base> BasesOf(const std::type_info& type) {
  std::vector<Base> bases;
  const auto* const info = dynamic_cast<const abi::__vmi_class_type_info*>(&type);
  for (unsigned i = 0; info != nullptr && i < info->__base_count; ++i) {
    const abi::__base_class_type_info& base = info->__base_info[i];
    bases.push_back({base.__base_type, base.__is_virtual_p()});
  }
  return bases;
}

void ExpectBases(const std::type_info& type, const std::vector<Base>& expected) {
  const std::vector<Base> bases = BasesOf(type);
  ASSERT_EQ(expected.size(), bases.size()) << type.name();
  for (std::size_t i = 0; i < bases.size(); ++i) {
    EXPECT_EQ(*expected[i].m_Type, *bases[i].m_Type) << type.name();
    EXPECT_EQ(expected[i].m_Virtual, bases[i].m_Virtual) << type.name();
  }
}

/// Virtual bases are constructed first, depth first in the order in which the bases are named, so
/// this makes AMsgQueueServer the first, then the skeletons of INoxObject and INoxVeskClientAgent,
/// then that of INoxTaskScheduler, and last APluginBase.
TEST(TaskSchedulerObjectLayout, ConstructsItsBasesInTheirOrder) {
  ExpectBases(typeid(TaskSchedulerObject_i),
              {{&typeid(INoxTaskScheduler_impl), false}, {&typeid(APluginBase), false}});
  ExpectBases(typeid(INoxTaskScheduler_impl), {{&typeid(INoxVeskClientAgent_impl), true}});
  ExpectBases(typeid(INoxVeskClientAgent_impl), {{&typeid(INoxObject_impl), true}});
  ExpectBases(typeid(INoxObject_impl), {{&typeid(AMsgQueueServer), true}});
  ExpectBases(typeid(APluginBase),
              {{&typeid(INoxInterfaceFactory), false}, {&typeid(AMsgQueueServer), true}});
}

TEST(TaskSchedulerObjectLayout, HasTheOperationsOfItsInterfacesInTheirSlots) {
  struct Row {
    const char* m_Name;
    std::ptrdiff_t m_Slot;
  };
  using Object = TaskSchedulerObject_i;
  const Row rows[] = {
      {"ProcessRequest", SlotOf(&INoxTaskScheduler_impl::ProcessRequest)},
      {"CallMethod", SlotOf(&INoxTaskScheduler_impl::CallMethod)},
      {"ObjectDebugInfo", SlotOf(&Object::ObjectDebugInfo)},
      {"NotifyObject", SlotOf(&Object::NotifyObject)},
      {"AgentStart", SlotOf(&Object::AgentStart)},
      {"AgentStop", SlotOf(&Object::AgentStop)},
      {"AgentRefresh", SlotOf(&Object::AgentRefresh)},
      {"AgentQuery", SlotOf(&Object::AgentQuery)},
      {"AgentQueryUnload", SlotOf(&Object::AgentQueryUnload)},
      {"AgentInstall", SlotOf(&Object::AgentInstall)},
      {"AgentUninstall", SlotOf(&Object::AgentUninstall)},
      {"AgentUpgrade", SlotOf(&Object::AgentUpgrade)},
      {"AddTask", SlotOf(&Object::AddTask)},
      {"DeleteTask", SlotOf(&Object::DeleteTask)},
      {"GetTaskXML", SlotOf(&Object::GetTaskXML)},
      {"FindFirstTask", SlotOf(&Object::FindFirstTask)},
      {"FindNextTask", SlotOf(&Object::FindNextTask)},
      {"FindClose", SlotOf(&Object::FindClose)},
      {"RefreshTaskList", SlotOf(&Object::RefreshTaskList)},
      {"SetRunState", SlotOf(&Object::SetRunState)},
      {"GetTaskAttributes", SlotOf(&Object::GetTaskAttributes)},
      {"EnableTask", SlotOf(&Object::EnableTask)},
  };
  std::ptrdiff_t slot = 2;  // behind the destructor, complete and deleting
  for (const Row& row : rows) {
    EXPECT_EQ(slot++, row.m_Slot) << row.m_Name;
  }
}

TEST(TaskSchedulerObjectLayout, HasItsMembersInTheirOrder) {
  TaskSchedulerObject_i object;
  const void* const members[] = {
      &SCHEDULER_INSIDE(object, m_Storage),          &SCHEDULER_INSIDE(object, m_StateLock),
      &SCHEDULER_INSIDE(object, m_Notification302),  &SCHEDULER_INSIDE(object, m_Notification300),
      &SCHEDULER_INSIDE(object, m_LastError),        &SCHEDULER_INSIDE(object, m_Tasks),
      &SCHEDULER_INSIDE(object, m_MonitorThread),    &SCHEDULER_INSIDE(object, m_ProcessingEnabled),
      &SCHEDULER_INSIDE(object, m_InstallTaskCount), &SCHEDULER_INSIDE(object, m_CountLock),
  };
  const void* before = &object;
  for (const void* member : members) {
    EXPECT_LT(before, member);
    before = member;
  }
}

/// Read and written without a lock, so they are atomics; no other member is in need of that.
TEST(TaskSchedulerObjectLayout, HasAtomicsWhereNoLockIsTaken) {
  TaskSchedulerObject_i object;
  CMonitorThread& monitor = SCHEDULER_INSIDE(object, m_MonitorThread);
  using AtomicBool = std::atomic<bool>;
  EXPECT_TRUE(
      (std::is_same_v<AtomicBool&, decltype((SCHEDULER_INSIDE(object, m_ProcessingEnabled)))>));
  EXPECT_TRUE((std::is_same_v<AtomicBool&, decltype((THREAD_INSIDE(monitor, m_Stop)))>));
  EXPECT_TRUE((std::is_same_v<AtomicBool&, decltype((THREAD_INSIDE(monitor, m_Refresh)))>));
}

class RawSlotTest : public SchedulerFixture {
 protected:
  void* Skeleton() { return static_cast<INoxTaskScheduler_impl*>(m_Scheduler.get()); }
  void* Frame() { return static_cast<APluginBase*>(m_Scheduler.get()); }
};

TEST_F(RawSlotTest, AnswersCallsThroughTheSlotsOfItsInterfaces) {
  AString report;
  EXPECT_EQ(1, (SlotAt<int (*)(void*, AString&)>(Skeleton(), 4)(Skeleton(), report)));
  EXPECT_EQ(0U, report.Find(L"Currently running tasks:\n"));
  EXPECT_EQ(0, (SlotAt<int (*)(void*, long, long, const AString&)>(Skeleton(), 5)(Skeleton(), 0, 0,
                                                                                  AString())));
  EXPECT_TRUE(IsGateOpen());
  const int results[] = {1, 1, 1, 1, 0, 0, 0, 0};  // AgentStart to AgentUpgrade
  for (std::size_t i = 0; i < std::size(results); ++i) {
    EXPECT_EQ(results[i], SlotAt<int (*)(void*)>(Skeleton(), 6 + i)(Skeleton())) << i;
  }
  EXPECT_EQ(1, SlotAt<long (*)(void*)>(Skeleton(), 20)(Skeleton())) << "RefreshTaskList";
  EXPECT_EQ(1, (SlotAt<long (*)(void*, const AString&, const AString&)>(Skeleton(), 21)(
                   Skeleton(), L"unknown", L"Ok")))
      << "SetRunState";
}

TEST_F(RawSlotTest, AnswersCallsThroughTheSlotsOfItsFrame) {
  void* object = this;
  const UUID uuid{};
  const AGuid guid = AGuid();
  AString value;
  EXPECT_EQ(-1, (SlotAt<int (*)(void*, const UUID&, void*&)>(Frame(), 0)(Frame(), uuid, object)));
  EXPECT_EQ(nullptr, object);
  EXPECT_EQ(-1, (SlotAt<int (*)(void*, const AGuid&, void*&)>(Frame(), 1)(Frame(), guid, object)));
  EXPECT_EQ(3, SlotAt<int (*)(void*)>(Frame(), 2)(Frame()));
  EXPECT_EQ(1, SlotAt<int (*)(void*)>(Frame(), 5)(Frame())) << "Initialize";
  EXPECT_EQ(-1, (SlotAt<int (*)(void*, unsigned)>(Frame(), 6)(Frame(), 0))) << "Uninitialize";
  EXPECT_EQ(1, (SlotAt<int (*)(void*, const char*, AString&)>(Frame(), 7)(
                   Frame(), "InterfaceFactory", value)));
}

TEST_F(RawSlotTest, IsDestroyedThroughTheDeletingSlotOfItsFrame) {
  void* const frame = static_cast<APluginBase*>(new TaskSchedulerObject_i);
  SlotAt<void (*)(void*)>(frame, 4)(frame);
  EXPECT_TRUE(Logged(BaseSDK::ALogger::Trace, L"TaskSchedulerObject_i destructor.\n"));
}

}  // namespace
