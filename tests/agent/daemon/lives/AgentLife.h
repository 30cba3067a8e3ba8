#pragma once

#include "agent/daemon/journal/JournaledFiles.h"
#include "agent/daemon/store/StoreFileSystem.h"
#include "tests/agent/daemon/journal/CrashDisk.h"
#include "tests/support/FailingFileSystem.h"
#include "tests/support/FakeHost.h"

#include <AgentInterfacesV3/AMsgQueue.h>
#include <AgentInterfacesV3/CIClient.h>
#include <AgentInterfacesV3/INoxScheduledTaskHandler_impl.h>
#include <AgentInterfacesV3/INoxTaskScheduler.h>
#include <VirtualTime/VirtualClock.h>

#include <atomic>
#include <functional>
#include <memory>
#include <string>

namespace NoxAgent {

/// One process of an agent, from its start to its end: the real scheduler in its frame, on virtual
/// time, and a handler, which reach each other through message queues; the files as the agent lays
/// them over one another, on a disk that outlives the process.
///
/// The agent's follower, whose thread is none of virtual time, is left out: Follow does its work
/// when told to. So the same calls give the same life each time. There may be one life at a time.
/// It belongs to the clock's controller.
class AgentLife {
 public:
  static constexpr const char* Directory = "/tasks";
  static constexpr const char* Extension = ".vsk";

  using Scheduler = Corvane::AgentInterfacesV3::INoxTaskScheduler;
  /// Runs a batch; the result is that of RunTasksEx. [monitor thread]
  using Handler = std::function<long(const std::string& batch)>;

  /// Begins nothing yet, so that Calls can be told when the process is to die.
  AgentLife(CrashDisk& disk, Handler handler);
  AgentLife(const AgentLife&) = delete;
  AgentLife& operator=(const AgentLife&) = delete;
  /// The process dies, unless it has ended; what its objects still do does not get to the disk.
  ~AgentLife();

  /// Makes up for what an earlier process has left, starts the scheduler and opens its gate, with
  /// `beforeScheduler` called in between. Stops short when the process dies meanwhile.
  void Start(const std::function<void()>& beforeScheduler);
  /// Sends the requests that `ask` makes and has all happen that they lead to. The monitor changes
  /// no file before `ask` has returned. REQUIRES: only the last request has it change one: it waits
  /// with the scheduler's state lock held, which others need.
  void Ask(const std::function<void(Scheduler&)>& ask);
  /// The same, for a handler within its call.
  void AskFromHandler(const std::function<void(Scheduler&)>& ask) { ask(*m_Client.Get()); }
  /// Makes safe what nobody waits for, and puts all in its place.
  void Follow();
  /// Ends in order.
  void End();

  /// What gets to the disk, and when the process dies.
  TestSupport::FailingFileSystem& Calls() { return m_Calls; }
  void Die() { m_Calls.KillAt(m_Calls.Count()); }
  bool IsDead() const { return m_Calls.IsDead(); }

  static VirtualTime::VirtualClock& Clock() { return VirtualTime::VirtualClock::Instance(); }

 private:
  /// What the scheduler sees. A request that wakes the monitor goes on for a while; the monitor's
  /// first call waits for its end, or the two would use the disk in any order.
  class TurnFiles;
  class HandlerObject;
  class Host;

  void StopScheduler();

  TestSupport::FailingFileSystem m_Calls;
  JournaledFiles m_Journaled;
  StoreFileSystem m_Store;
  std::atomic<bool> m_IsAsking{false};
  const std::unique_ptr<TurnFiles> m_Files;
  BaseSDK::AFileSystem* m_FilesBefore = nullptr;
  const std::unique_ptr<Host> m_Host;
  Corvane::AgentInterfacesV3::AMsgQueue m_HandlerQueue;
  const std::unique_ptr<HandlerObject> m_Handler;
  Corvane::AgentInterfacesV3::AMsgQueue m_Queue;
  Corvane::AgentInterfacesV3::CIClient<Scheduler> m_Client;
};

}  // namespace NoxAgent
