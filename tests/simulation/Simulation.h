#pragma once

#include "scheduler/TaskSchedulerObject.h"
#include "tests/simulation/Disk.h"
#include "tests/simulation/Host.h"
#include "tests/simulation/Ledger.h"
#include "tests/simulation/Random.h"
#include "tests/simulation/Verdict.h"

#include <VirtualTime/VirtualClock.h>
#include <VirtualTime/Zone.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Simulation {

struct Options {
  std::uint64_t m_Seed = 1;
  long m_Tasks = 100;
  long m_Days = 60;
  /// Called after every month of virtual time with the days that are over; may be empty.
  std::function<void(long days)> m_OnMonth;
};

/// The real scheduler on a simulated machine, for a span of virtual time full of trouble: random
/// calls of every operation, gate closings, clock steps, sleeps of the machine, handlers that do
/// not do as they should, restarts, deaths at any file operation, disks that fail. All of it comes
/// from the seed, so the same options give the same story.
class Simulation : private Host::Observer {
 public:
  Simulation(const Options& options, Verdict& verdict);
  ~Simulation() override;

  /// Ends early at the first violation.
  void Run();
  /// Of the recorded run starts.
  long Runs() const { return m_Ledger.Runs(); }

 private:
  using Clock = VirtualTime::VirtualClock;
  using AttributeMap = TaskSchedulerObject_i::AttributeMap;

  void Live();

  // The machine
  void Boot();
  void ShutDown();
  void Restart();
  void Crash();
  void CrashIfDead();
  void WaitForHandlers();
  void Notify(long kind, long code = 0);
  void Check();

  // What may happen in a step
  void Step();
  void PassTime();
  void Act();
  void CallOperation();
  void ChangeTask();
  void AddTask();
  void ReplaceTask();
  void AddDocument(const std::string& taskId, std::shared_ptr<const Document> document);
  void DeleteTask();
  void EnableTasks();
  void SetRunState();
  void AskTask();
  void ListTasks();
  void AskReport();
  void SendNotification();
  void ChangeClock();
  void ChangeHandler();
  void ChangeDisk();
  void DropStray();

  std::string DrawTask();
  std::string DrawNewId();
  std::shared_ptr<const Document> DrawDocument();
  long NextNumber() { return ++m_LastNumber; }

  // Host::Observer
  bool IsDead() const override { return m_Disk.IsDead(); }
  void OnPosted(long code, const std::string& taskId) override;
  void OnMissing(const std::string& handlerId) override;
  void OnBatch(const std::string& handlerId, const std::string& batch, Manner manner) override;

  static Clock& TheClock() { return Clock::Instance(); }

  const Options m_Options;
  Random m_Random;
  Verdict& m_Verdict;
  const std::string m_ZoneRule;
  const VirtualTime::Zone m_Zone;
  Ledger m_Ledger;
  Disk m_Disk;
  Host m_Host;
  std::unique_ptr<TaskSchedulerObject_i> m_Scheduler;
  bool m_IsGateOpen = false;
  std::uint32_t m_Registrations = 0;  ///< plug-ins coming and going, as the gate counts them
  int m_LastNumber = 0;
};

}  // namespace Simulation
