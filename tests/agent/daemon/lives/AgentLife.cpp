#include "tests/agent/daemon/lives/AgentLife.h"

#include "Common/PluginBase.h"

#include <AgentInterfacesV3/MakeProxy.h>
#include <BaseSDK/AFile.h>

#include <thread>
#include <utility>

using BaseSDK::AFileSystem;
using BaseSDK::AGuid;
using BaseSDK::AString;
using namespace Corvane::AgentInterfacesV3;

namespace NoxAgent {
namespace {

constexpr int SchedulerQueueNumber = 1;
constexpr int HandlerQueueNumber = 2;

constexpr const char* JournalPath = "/state/journal";
// There is no room for them on the disk: they stay where they are.
constexpr const char* RefusedPath = ".";

constexpr long AgentStarted = 0;
constexpr long UnregistrationStarted = 6;

}  // namespace

class AgentLife::TurnFiles final : public ForwardingFileSystem {
 public:
  TurnFiles(AFileSystem& below, const std::atomic<bool>& isAsking)
      : ForwardingFileSystem(below), m_IsAsking(isAsking) {}

  // Whatever wakes the monitor for, one of these comes first.
  int OpenDirectory(const char* path, unsigned long& handle) override {
    AwaitTurn();
    return ForwardingFileSystem::OpenDirectory(path, handle);
  }
  int ReplaceFile(const char* path, const std::string& bytes) override {
    AwaitTurn();
    return Below().ReplaceFile(path, bytes);
  }
  int Unlink(const char* path) override {
    AwaitTurn();
    return ForwardingFileSystem::Unlink(path);
  }

 private:
  void AwaitTurn() {
    if (std::this_thread::get_id() != m_Controller) {
      m_IsAsking.wait(true);
    }
  }

  const std::atomic<bool>& m_IsAsking;
  const std::thread::id m_Controller = std::this_thread::get_id();
};

class AgentLife::HandlerObject final : public INoxScheduledTaskHandler_impl {
 public:
  explicit HandlerObject(AgentLife::Handler handler) : m_Handler(std::move(handler)) {}

  long RunTasksEx(const AString& batch) override { return m_Handler(batch.ToUtf8()); }
  long RunTasks(const AString& /*batch*/) override { return TASK_HANDLER_DECLINED; }
  int ObjectDebugInfo(AString& /*report*/) override { return 1; }
  int NotifyObject(long /*kind*/, long /*code*/, const AString& /*text*/) override { return 0; }

 private:
  const AgentLife::Handler m_Handler;
};

class AgentLife::Host final : public TestSupport::FakeHost {
 public:
  Host() {
    SetConfig(L"Configuration", L"task_storage_path", Directory);
    SetConfig(L"Configuration", L"task_file_extension", Extension);
  }
  long OpenObject(const AString& /*classId*/, const AGuid& interfaceId, unsigned long /*flags*/,
                  void*& object) override {
    return MakeProxy(HandlerQueueNumber, interfaceId, object);
  }
};

AgentLife::AgentLife(CrashDisk& disk, Handler handler)
    : m_Calls(disk),
      m_Journaled(m_Calls, TaskDirectory(Directory, Extension), JournalPath),
      m_Store(m_Journaled, TaskDirectory(Directory, Extension), RefusedPath),
      m_Files(std::make_unique<TurnFiles>(m_Store, m_IsAsking)),
      m_FilesBefore(AFileSystem::Replace(&m_Calls)),
      m_Host(std::make_unique<Host>()),
      m_HandlerQueue(HandlerQueueNumber),
      m_Handler(std::make_unique<HandlerObject>(std::move(handler))),
      m_Queue(SchedulerQueueNumber) {
  (void)m_Handler->Open(HandlerQueueNumber);
}

AgentLife::~AgentLife() {
  if (!IsDead()) {
    Die();
  }
  StopScheduler();
  m_HandlerQueue.Close();
  (void)AFileSystem::Replace(m_FilesBefore);
}

// In the order of the agent.
void AgentLife::Start(const std::function<void()>& beforeScheduler) {
  unsigned removed = 0;
  (void)BaseSDK::AFile::RemoveLeftovers(Directory, removed);
  m_Journaled.Begin();
  if (IsDead()) {
    return;
  }
  beforeScheduler();
  (void)AFileSystem::Replace(m_Files.get());
  (void)PluginInitialize(SchedulerQueueNumber);
  (void)MakeProxy(SchedulerQueueNumber, Scheduler::GetIID(), m_Client.Slot());
  Clock().Settle();
  Ask([](Scheduler& scheduler) { (void)scheduler.NotifyObject(AgentStarted, 0, {}); });
}

void AgentLife::Ask(const std::function<void(Scheduler&)>& ask) {
  m_IsAsking = true;
  ask(*m_Client.Get());
  m_IsAsking = false;
  m_IsAsking.notify_all();
  Clock().Settle();
}

void AgentLife::Follow() {
  m_Files->MakeSafe();
  m_Journaled.Follow();
}

void AgentLife::End() {
  StopScheduler();
  m_Journaled.End();
}

void AgentLife::StopScheduler() {
  if (!m_Client || !m_Queue.IsOpen()) {
    return;
  }
  Ask([](Scheduler& scheduler) { (void)scheduler.NotifyObject(UnregistrationStarted, 0, {}); });
  m_Queue.Close();
  (void)PluginUninitialize(true);
  (void)AFileSystem::Replace(&m_Calls);
}

}  // namespace NoxAgent
