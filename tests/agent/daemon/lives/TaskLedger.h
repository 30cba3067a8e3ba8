#pragma once

#include "tests/agent/daemon/lives/TaskText.h"

#include <algorithm>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace NoxAgent {

/// A value of which several may be true.
template <class Value>
class Possible {
 public:
  explicit Possible(Value value) : m_Values{std::move(value)} {}
  void Set(Value value) { m_Values = {std::move(value)}; }
  void Allow(Value value) { m_Values.push_back(std::move(value)); }
  const std::vector<Value>& All() const { return m_Values; }

  bool MayBe(const Value& value) const {
    return std::find(m_Values.begin(), m_Values.end(), value) != m_Values.end();
  }
  /// Whether it is this and nothing else.
  bool Is(const Value& value) const {
    return std::all_of(m_Values.begin(), m_Values.end(),
                       [&](const Value& possible) { return possible == value; });
  }

 private:
  std::vector<Value> m_Values;
};

/// What an agent owes its clients and its handler after what it has told them, over all its lives,
/// and whether it pays. What was asked and not answered may have come about or not; what was
/// answered lasts. An answer that comes after the agent's death is none.
///
/// The tasks are those of MakeTaskText, and nobody but the agent changes their files. Moments are
/// seconds since the epoch.
class TaskLedger {
 public:
  /// Hears of each thing that must not be.
  using Failure = std::function<void(const std::string& problem)>;
  explicit TaskLedger(Failure failure) : m_Failure(std::move(failure)) {}

  // Requests: what is asked, and that it was answered with success.

  /// Adds a task, or replaces it by another one.
  void AskToAdd(const std::string& id, const TaskPlan& plan);
  void Added(const std::string& id, const TaskPlan& plan);
  /// A task was asked for without an ID, and nobody was told which one it got.
  void LeftUnnamed(const TaskPlan& plan) { m_Unnamed.Allow(plan); }
  void AskToDelete(const std::string& id);
  void Deleted(const std::string& id);
  void AskToEnable(const std::string& id, bool enable);
  void Enabled(const std::string& id, bool enable, long now);
  /// The state of the last run.
  void AskToReport(const std::string& id, const std::string& state, long now);
  void Reported(const std::string& id, const std::string& state);
  /// Somebody was told something; so all that the monitor had recorded by then is safe.
  void Told();

  // Runs

  /// The handler is told to run the task; `isNew` says that it has no finished run.
  void Run(const std::string& id, bool isNew, long now);
  /// The handler has taken the run: the monitor is about to record its end.
  void Accepted(const std::string& id, long now);
  /// The monitor is at rest: whatever was due has run.
  void CheckRuns(long now);

  /// A new life is about to read these files, by the IDs of their tasks. They are the truth then.
  void Restart(const std::map<std::string, std::string>& files, long now);

  /// The tasks that are there and have not ended.
  std::vector<std::string> Ids(long now) const;
  /// Whether the scheduler may have deleted the task, because it does not run any more.
  bool MayHaveEnded(const std::string& id, long now) const;
  /// When the task starts next, after `now`.
  long NextStart(const std::string& id, long now) const;

 private:
  struct Task {
    Possible<bool> m_IsThere{false};
    bool m_MayBePart = true;  ///< its making was never answered
    Possible<TaskPlan> m_Plan{TaskPlan()};
    Possible<bool> m_IsEnabled{true};
    /// Until the next reading the task in memory has its old document. When it records a run, the
    /// file has the old state again.
    long m_ToggledUntil = 0;
    long m_LastTold = TaskFacts::NoRun;  ///< the start of the last run that the handler heard of
    long m_LastRun = TaskFacts::NoRun;   ///< the start of the last run that the file tells of
    Possible<std::string> m_State{std::string()};  ///< of that run
    bool m_IsAccepted = false;  ///< that run was, and nobody has been told anything since
    /// The task in memory knows of that run. One that was read while the run went on does not.
    bool m_RemembersRun = false;
    bool m_IsFinished = false;  ///< it knows that the run has ended well
  };

  void Fail(const std::string& id, const std::string& problem);
  static void HistoryWritten(Task& task, long now);
  void AdoptUnnamed(const std::string& id);
  static bool MayHaveEnded(const Task& task, long now);
  void RestartTask(const std::string& id, Task& task, const std::string* text);
  void CheckFacts(const std::string& id, const Task& task, const TaskFacts& facts);
  static void Adopt(Task& task, const TaskFacts& facts);

  const Failure m_Failure;
  std::map<std::string, Task> m_Tasks;
  Possible<TaskPlan> m_Unnamed{TaskPlan()};  ///< since the last start
  std::set<std::string> m_Parts;             ///< IDs whose files are parts, which stay
};

}  // namespace NoxAgent
