#pragma once

#include "tests/agent/daemon/journal/CrashDisk.h"
#include "tests/agent/daemon/lives/AgentLife.h"
#include "tests/agent/daemon/lives/TaskLedger.h"

#include <VirtualTime/Zone.h>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace NoxAgent {

/// A random run: several lives of an agent, whose clients add, delete, enable and disable tasks,
/// whose handler runs them, and which ends by kills and power cuts, at any call to the disk. A seed
/// gives the same run each time.
class LivesRun {
 public:
  explicit LivesRun(std::uint64_t seed);
  /// Returns the first thing that must not be, with all that was done before; empty when there was
  /// none.
  std::string Perform();
  /// What was done, in the order in which it was done.
  const std::vector<std::string>& Story() const { return m_Story; }

 private:
  using Scheduler = AgentLife::Scheduler;

  /// From 0 to `bound` - 1.
  template <class Number>
  Number Draw(Number bound) {
    return static_cast<Number>(m_Random() % static_cast<std::uint64_t>(bound));
  }
  bool Throw(int percent) { return Draw(100) < percent; }
  std::string DrawTask();
  TaskPlan DrawPlan();

  void Note(const std::string& words);
  void Fail(const std::string& problem);
  static long Now() { return AgentLife::Clock().Now(); }
  bool GoesOn() const { return m_Problem.empty() && !m_Life->IsDead(); }

  std::optional<unsigned> DrawLastCall();
  void Begin(std::optional<unsigned> lastCall);
  void Live();
  void End();
  void RestForADay();
  void CutPower();
  std::map<std::string, std::string> ReadFiles();

  void Step();
  void PassTime();
  void Add(const std::string& id);
  void AddUnnamed();
  void AddMany();
  void Delete(const std::string& id);
  void Enable(const std::string& id, bool enable);
  void ReportOne();
  void Report(Scheduler& scheduler, const std::string& id);

  // On the monitor thread, while the controller waits.
  long OnBatch(const std::string& batch);
  long Answer(const std::vector<std::string>& ids);

  std::mt19937_64 m_Random;
  const VirtualTime::Zone m_Zone{"UTC0"};
  std::vector<std::string> m_Story;
  std::string m_Problem;
  CrashDisk m_Disk;
  TaskLedger m_Ledger;
  std::unique_ptr<AgentLife> m_Life;
  std::set<std::string> m_UnderWay;  ///< runs whose end the handler is yet to report
  int m_LastNumber = 0;
};

}  // namespace NoxAgent
