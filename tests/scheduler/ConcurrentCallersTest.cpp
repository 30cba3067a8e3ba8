// Everything at once, on real threads and the real clock: callers of every operation, the monitor
// that runs tasks, a handler that answers, and the end of it all in the midst.
#include "Common/PluginBase.h"
#include "tests/scheduler/StressDocument.h"
#include "tests/support/FakeHandler.h"
#include "tests/support/FakeHost.h"
#include "tests/support/TaskXml.h"
#include "tests/support/TempDir.h"
#include "tests/support/ThreadCount.h"

#include <AgentInterfacesV3/AMsgQueue.h>
#include <AgentInterfacesV3/CIClient.h>
#include <AgentInterfacesV3/INoxTaskScheduler.h>
#include <AgentInterfacesV3/MakeProxy.h>
#include <BaseSDK/AThreadRest.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <iterator>
#include <latch>
#include <memory>
#include <set>
#include <shared_mutex>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace Corvane::AgentInterfacesV3;
using BaseSDK::AString;
using StressDocument::Kind;
using StressDocument::Rounds;
using StressDocument::Writers;
using TestSupport::FakeHandler;
using TestSupport::FakeHost;
using TestSupport::TempDir;

constexpr int Queue = 7;
// What all callers fight over. Nobody deletes the first three.
const char* const KeptTasks[] = {"kept0", "kept1", "kept2"};
const char* const DeletedTasks[] = {"gone0", "gone1"};

std::size_t CountEntries(const char* directory) {
  namespace fs = std::filesystem;
  return static_cast<std::size_t>(
      std::distance(fs::directory_iterator(directory), fs::directory_iterator()));
}

/// An agent that serves the scheduler to any number of callers.
class Agent {
 public:
  Agent() {
    m_Host.SetConfig(L"Configuration", L"task_storage_path", m_Directory.Path().c_str());
    m_Host.SetConfig(L"Configuration", L"task_file_extension", L".vsk");
    m_Host.AddHandler(TestSupport::TaskXml::HandlerId, m_Handler);
  }

  /// Kept as agents keep it: no caller is in the midst of an enumeration, whose handle only the
  /// scheduler could close, and requests under way are waited for, as is the monitor where it is in
  /// the midst of its work: it is given three seconds then and no more.
  int ShutDown() {
    {
      const std::unique_lock noEnumeration(m_Enumerations);
      m_Queue.Close();
    }
    EXPECT_TRUE(BaseSDK::AThreadRest::WaitForAll(120000));
    return PluginUninitialize(true);
  }

  TempDir m_Directory;
  FakeHost m_Host;
  FakeHandler m_Handler;
  AMsgQueue m_Queue{Queue};
  std::shared_mutex m_Enumerations;
};

/// One caller: every operation in each round, on tasks that the others are busy with too.
class Caller {
 public:
  Caller(Agent& agent, int number) : m_Agent(agent), m_Number(number) {
    EXPECT_EQ(1, MakeProxy(Queue, INoxTaskScheduler::GetIID(), m_Scheduler.Slot()));
  }

  /// Goes on to its last round or until requests are no longer delivered.
  void Run(std::latch& halfway) {
    for (m_Round = 0; m_Round < Rounds; ++m_Round) {
      if (m_Round == Rounds / 2) {
        halfway.count_down();
      }
      if (m_Agent.m_Queue.IsOpen()) {
        CallEverything();
      }
    }
  }

  /// Tasks with an ID of the scheduler's own that were added and not deleted.
  const std::set<std::string>& InventedTasks() const { return m_Invented; }

 private:
  void CallEverything() {
    const std::string kept = KeptTasks[m_Round % 3];
    const std::string gone = DeletedTasks[m_Round % 2];
    Replace(kept, m_Round % 4 == 0 ? Kind::EverySecond : Kind::AsSoonAsPossible);
    Replace(gone, m_Round % 5 == 0 ? Kind::Expired : Kind::AsSoonAsPossible);
    Invent();
    Look(kept);
    Look(gone);
    Enumerate();
    (void)m_Scheduler->SetRunState(AString::FromUtf8(kept), Word());
    (void)m_Scheduler->EnableTask(AString::FromUtf8(kept + ":" + gone), m_Round % 2 == 0);
    (void)m_Scheduler->RefreshTaskList();
    Notify();
    (void)m_Scheduler->DeleteTask(AString::FromUtf8(gone));
    if (m_Round % 4 == 3) {
      DeleteAnInventedTask();
    }
  }

  AString Document(Kind kind) const {
    return AString::FromUtf8(StressDocument::Text(kind, m_Number, m_Round));
  }
  AString Word() const { return AString::FromUtf8(StressDocument::RunState(m_Round)); }

  void Replace(const std::string& taskID, Kind kind) {
    AString newID;
    const long result = m_Scheduler->AddTask(AString::FromUtf8(taskID), Document(kind), newID);
    if (result >= 1) {
      EXPECT_EQ(taskID, newID.ToUtf8());
    }
  }

  void Invent() {
    AString newID;
    if (m_Scheduler->AddTask(L"", Document(Kind::AsSoonAsPossible), newID) >= 1) {
      EXPECT_TRUE(m_Invented.insert(newID.ToUtf8()).second) << newID.ToUtf8();
    }
  }

  void DeleteAnInventedTask() {
    if (m_Invented.empty()) {
      return;
    }
    const std::string taskID = *m_Invented.begin();
    if (m_Scheduler->DeleteTask(AString::FromUtf8(taskID)) == CALL_NOT_DELIVERED) {
      return;
    }
    m_Invented.erase(taskID);
  }

  void Look(const std::string& name) {
    const AString taskID = AString::FromUtf8(name);
    AString text;
    if (m_Scheduler->GetTaskXML(taskID, text) == 1) {
      EXPECT_EQ("", StressDocument::Fault(text.ToUtf8()));
    }
    AStringMap attributes;
    if (m_Scheduler->GetTaskAttributes(taskID, attributes, nullptr) == 1) {
      EXPECT_EQ(name, attributes[L"t0"].ToUtf8());
    }
    AString report;
    (void)m_Scheduler->ObjectDebugInfo(report);
  }

  void Enumerate() {
    const std::shared_lock enumeration(m_Agent.m_Enumerations);
    unsigned long handle = 0;
    AString taskID;
    long found = m_Scheduler->FindFirstTask(handle, taskID);
    while (found == 1) {
      found = m_Scheduler->FindNextTask(handle, taskID);
    }
    if (handle != 0) {
      (void)m_Scheduler->FindClose(handle);
    }
  }

  /// Gate, counts and events; the gate is open at the end of each round.
  void Notify() {
    for (const long kind : {1L, 4L, 5L, 6L, 7L, 2L}) {
      (void)m_Scheduler->NotifyObject(kind, 0, L"plugin");
    }
    (void)m_Scheduler->NotifyObject(10, m_Round % 2 == 0 ? 300 : 302, L"event");
  }

  Agent& m_Agent;
  const int m_Number;
  int m_Round = 0;
  CIClient<INoxTaskScheduler> m_Scheduler;
  std::set<std::string> m_Invented;
};

void ExpectWhole(const TempDir& directory, const std::string& taskID) {
  const std::string name = taskID + ".vsk";
  ASSERT_TRUE(directory.Has(name)) << name;
  EXPECT_EQ("", StressDocument::Fault(directory.Read(name))) << name;
}

void ExpectAcceptedTasksWhole(const Agent& agent,
                              const std::vector<std::unique_ptr<Caller>>& callers) {
  for (const char* taskID : KeptTasks) {
    ExpectWhole(agent.m_Directory, taskID);
  }
  for (const auto& caller : callers) {
    for (const std::string& taskID : caller->InventedTasks()) {
      ExpectWhole(agent.m_Directory, taskID);
    }
  }
  // A deleted task may be there again: the monitor has just then recorded a run of it.
  for (const std::string& name : agent.m_Directory.Names()) {
    ASSERT_THAT(name, ::testing::EndsWith(".vsk")) << "not a task";
    ExpectWhole(agent.m_Directory, name.substr(0, name.size() - 4));
  }
}

void CallFromManyThreadsAndShutDownInTheMidst() {
  Agent agent;
  ASSERT_EQ(1, PluginInitialize(Queue));
  std::vector<std::unique_ptr<Caller>> callers;
  for (int number = 0; number < Writers; ++number) {
    callers.push_back(std::make_unique<Caller>(agent, number));
  }
  std::latch halfway(Writers);
  {
    std::vector<std::jthread> threads;
    for (const auto& caller : callers) {
      threads.emplace_back([&halfway, &caller] { caller->Run(halfway); });
    }
    halfway.wait();
    EXPECT_EQ(1, agent.ShutDown());
  }
  EXPECT_FALSE(agent.m_Handler.Calls().empty());
  EXPECT_EQ(agent.m_Host.Openings().size(), agent.m_Handler.Releases());
  ExpectAcceptedTasksWhole(agent, callers);
}

TEST(ConcurrentCallers, TellAMixOfTwoDocumentsFromAWhole) {
  const std::string first = StressDocument::Text(Kind::AsSoonAsPossible, 0, 1);
  const std::string second = StressDocument::Text(Kind::AsSoonAsPossible, 0, 2);
  EXPECT_EQ("", StressDocument::Fault(first));
  EXPECT_NE("", StressDocument::Fault(first.substr(0, 3000) + second.substr(3000)));
  EXPECT_NE("", StressDocument::Fault(first.substr(0, 3000)));
  EXPECT_NE("", StressDocument::Fault(""));
}

TEST(ConcurrentCallers, LeaveOnlyWholeTasksAndNothingElseBehind) {
  ASSERT_EQ(0, setenv("TZ", "EST5EDT,M3.2.0,M11.1.0", 1));
  tzset();
  CallFromManyThreadsAndShutDownInTheMidst();  // some libraries keep something from here on
  const std::size_t descriptors = CountEntries("/proc/self/fd");
  const std::size_t threads = TestSupport::CountThreads();
  CallFromManyThreadsAndShutDownInTheMidst();
  EXPECT_EQ(descriptors, CountEntries("/proc/self/fd"));
  EXPECT_EQ(threads, TestSupport::CountThreads());
}

}  // namespace
