#pragma once

#include "tests/simulation/Disk.h"
#include "tests/simulation/Document.h"
#include "tests/simulation/Random.h"
#include "tests/simulation/Verdict.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <thread>

namespace Simulation {

/// What the scheduler owes its callers, task by task, and whether it pays: every change of a task
/// file, every batch and every answer is held against what was promised before.
///
/// It sees events on the monitor's thread only while the controller is parked, and the other way
/// round, so it needs no lock.
class Ledger : public Disk::Observer {
 public:
  enum class Operation { None, Add, Delete, Enable, SetState };

  explicit Ledger(Verdict& verdict) : m_Verdict(verdict) {}
  /// Where to look; once, before anything else.
  void Attach(const Disk& disk) { m_Disk = &disk; }

  // What the controller is about to do, and what came of it. `taskId` is empty for an invented one.

  void Begin(Operation operation, const std::string& taskId,
             std::shared_ptr<const Document> document = nullptr);
  void EndAdd(long result, const std::string& newId);
  void EndDelete(long result);
  void End();

  // What happens around.

  void SetGate(bool open);
  void DiskFellIll() { m_InDoubt = true; }
  /// The clock was set, the gate moved, the process is new: starts may come late for a while.
  void Disturb();
  /// The process died and nothing of it is left but the disk.
  void Reconcile();
  /// A file that is no task, or one that nobody was promised anything about.
  void AddStray(const std::string& name) { m_Strays[name] = m_Disk->Text(TaskIdOf(name)); }

  // What the scheduler does.

  void OnReplaced(const std::string& taskId, const std::string& text) override;
  void OnDeleted(const std::string& taskId) override;
  void OnListed() override;
  void OnPosted(long code, const std::string& taskId);
  void OnMissingHandler(const std::string& handlerId);
  /// `accepts`: the handler is going to take it, and lives on.
  void OnBatch(const std::string& handlerId, const std::string& batch, bool accepts);

  // At a moment when all is parked. `busy`: a handler is inside a call.

  void CheckFiles();
  void CheckRuns(Random& random, bool busy, bool clockChanges);

  /// IDs with a file, in order.
  std::vector<std::string> Existing() const;
  /// The text that GetTaskXML has to give, while the disk is healthy.
  std::string ExpectedText(const std::string& taskId) const;
  long Runs() const { return m_Runs; }

 private:
  struct Dispatch {
    PlainSchedule::TaskAnswer m_Answer;
    std::string m_HandlerId;
  };
  struct Task {
    /// Every document that may be on the disk or in memory, by number.
    std::map<int, std::shared_ptr<const Document>> m_Candidates;
    bool m_IsPromised = false;
    bool m_Exists = false;
    bool m_MayBeCut = false;    ///< its creation was never confirmed
    bool m_WasToggled = false;  ///< enabled or disabled since the last load
    std::string m_Text;
    FileState m_State;
    std::shared_ptr<const Document> m_Document;  ///< the one that m_Text is; null when it was cut
    long m_LastRun = -1;                         ///< as the scheduler has it in memory
    std::optional<Dispatch> m_Awaited;           ///< registered and not yet handed to its handler
    bool m_IsAccepted = false;  ///< its handler took it: its state has to become Ok
  };
  struct Call {
    Operation m_Operation = Operation::None;
    std::string m_TaskId;
    std::shared_ptr<const Document> m_Document;
    bool m_WasDeletedMeanwhile = false;
  };

  bool IsByCaller() const { return std::this_thread::get_id() == m_Controller; }
  bool IsCallOn(Operation operation, const std::string& taskId) const;
  Task* Find(const std::string& taskId);
  Task* FindOrAdopt(const std::string& taskId);
  /// Reads a file's new text into the task; false, and a violation, when it fits no candidate.
  bool Recognise(const std::string& taskId, Task& task, const std::string& text);
  void CheckRegistration(const std::string& taskId, Task& task);
  void CheckDeletion(const std::string& taskId, const Task& task);
  /// The task that the entry names, if it has to be known; null otherwise.
  Task* CheckBatchEntry(const std::string& handlerId, const std::string& entry,
                        std::string& previousId);
  void CheckNames();
  void CheckDispatches();
  void CheckRunOf(const std::string& taskId, const Task& task, bool clockChanges);
  void ReconcileTask(const std::string& taskId, Task& task);
  void AddCandidate(Task& task, const std::shared_ptr<const Document>& document);
  void Violation(const std::string& taskId, const std::string& what);

  Verdict& m_Verdict;
  const Disk* m_Disk = nullptr;
  const std::thread::id m_Controller = std::this_thread::get_id();
  std::map<std::string, Task> m_Tasks;
  std::map<std::string, std::string> m_Strays;
  Call m_Call;
  bool m_IsGateOpen = false;
  /// What is in memory may differ from what is on the disk: the disk was ill since the last load.
  bool m_InDoubt = false;
  bool m_MayLeaveTemporaries = false;
  long m_LastDisturbance = 0;
  long m_Runs = 0;
};

}  // namespace Simulation
