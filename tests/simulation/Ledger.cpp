#include "tests/simulation/Ledger.h"

#include <BaseSDK/ADateTime.h>
#include <BaseSDK/AString.h>
#include <BaseSDK/AUrl.h>

#include <algorithm>
#include <ctime>
#include <iterator>
#include <utility>

namespace Simulation {

namespace {

long Now() {
  return std::time(nullptr);
}

std::string ShownNow() {
  return BaseSDK::ADateTime::Now().ToString(L"%Y-%m-%d %H:%M:%S").ToUtf8();
}

/// Tasks that are not reached by the end of a cycle are reached by the next one, at most this
/// later.
constexpr long CycleAndSlack = 3700;

}  // namespace

void Ledger::Violation(const std::string& taskId, const std::string& what) {
  m_Verdict.Violation("task '" + taskId + "': " + what);
}

bool Ledger::IsCallOn(Operation operation, const std::string& taskId) const {
  return m_Call.m_Operation == operation && (m_Call.m_TaskId == taskId || m_Call.m_TaskId.empty());
}

Ledger::Task* Ledger::Find(const std::string& taskId) {
  const auto found = m_Tasks.find(taskId);
  return found != m_Tasks.end() ? &found->second : nullptr;
}

Ledger::Task* Ledger::FindOrAdopt(const std::string& taskId) {
  if (IsCallOn(Operation::Add, taskId) && (IsByCaller() || Find(taskId) != nullptr)) {
    m_Call.m_TaskId = taskId;  // an invented ID is known from here on
    Task& task = m_Tasks[taskId];
    AddCandidate(task, m_Call.m_Document);
    return &task;
  }
  return Find(taskId);
}

void Ledger::AddCandidate(Task& task, const std::shared_ptr<const Document>& document) {
  task.m_Candidates[document->Number()] = document;
}

// Calls -------------------------------------------------------------------------------------------

void Ledger::Begin(Operation operation, const std::string& taskId,
                   std::shared_ptr<const Document> document) {
  m_Call = {operation, taskId, std::move(document), false};
}

void Ledger::EndAdd(long result, const std::string& newId) {
  const Call call = std::exchange(m_Call, {});
  const std::string taskId = newId.empty() ? call.m_TaskId : newId;
  const bool certain = m_Disk->IsHealthy() && !m_Disk->IsDead();
  if (certain && result != 1) {
    Violation(taskId, "was refused by a healthy disk");
  }
  if (taskId.empty()) {
    return;
  }
  Task& task = m_Tasks[taskId];
  if (certain) {
    task.m_Candidates.clear();
    task.m_MayBeCut = false;
  }
  if (!call.m_WasDeletedMeanwhile) {
    AddCandidate(task, call.m_Document);
  }
  if (result == 1 && !m_Disk->IsDead()) {
    task.m_IsPromised = !call.m_WasDeletedMeanwhile;
  } else if (!task.m_IsPromised) {
    task.m_MayBeCut = true;
    task.m_Exists = m_Disk->Has(taskId);
    task.m_Text = m_Disk->Text(taskId);
  }
}

void Ledger::EndDelete(long result) {
  const Call call = std::exchange(m_Call, {});
  Task* const task = Find(call.m_TaskId);
  const bool certain = m_Disk->IsHealthy() && !m_Disk->IsDead();
  if (task == nullptr) {
    return;
  }
  if (certain && result != 1 && m_Disk->Has(call.m_TaskId)) {
    Violation(call.m_TaskId, "could not be deleted from a healthy disk");
  }
  if (result == 1 && !m_Disk->IsDead() && m_Disk->Has(call.m_TaskId)) {
    Violation(call.m_TaskId, "is there after it was deleted");
  }
  task->m_IsPromised = false;
  if (certain) {
    task->m_Candidates.clear();
  }
}

void Ledger::End() {
  m_Call = {};
}

// Surroundings ------------------------------------------------------------------------------------

void Ledger::SetGate(bool open) {
  m_IsGateOpen = open;
  Disturb();
}

void Ledger::Disturb() {
  m_LastDisturbance = Now();
}

void Ledger::Reconcile() {
  m_MayLeaveTemporaries = false;
  for (auto& [taskId, task] : m_Tasks) {
    ReconcileTask(taskId, task);
  }
  CheckFiles();
}

void Ledger::ReconcileTask(const std::string& taskId, Task& task) {
  task.m_Awaited.reset();
  task.m_IsAccepted = false;
  task.m_Exists = m_Disk->Has(taskId);
  if (task.m_IsPromised && !task.m_Exists) {
    Violation(taskId, "is lost after the process died");
  }
  if (task.m_Exists && Recognise(taskId, task, m_Disk->Text(taskId))) {
    task.m_IsPromised = true;
  }
}

// Files -------------------------------------------------------------------------------------------

bool Ledger::Recognise(const std::string& taskId, Task& task, const std::string& text) {
  task.m_Text = text;
  task.m_Document = nullptr;
  for (const auto& [number, document] : task.m_Candidates) {
    if (const std::optional<FileState> state = document->Match(text)) {
      task.m_State = *state;
      task.m_Document = document;
      return true;
    }
    if (task.m_MayBeCut && document->IsCutShort(text)) {
      return false;
    }
  }
  Violation(taskId, "its file is neither the old nor the new document:\n" + text);
  return false;
}

void Ledger::OnReplaced(const std::string& taskId, const std::string& text) {
  Task* const task = FindOrAdopt(taskId);
  if (task == nullptr || task->m_Candidates.empty()) {
    Violation(taskId, "a file of that name appeared:\n" + text);
    return;
  }
  task->m_Exists = true;
  if (!Recognise(taskId, *task, text)) {
    return;
  }
  const std::optional<RunEntry>& entry = task->m_State.m_Entry;
  if (!IsByCaller() && entry && entry->m_State == "Started") {
    CheckRegistration(taskId, *task);
  } else if (IsByCaller() && IsCallOn(Operation::Add, taskId)) {
    task->m_LastRun = entry ? entry->LastRun() : -1;  // the task in memory is built anew
    task->m_WasToggled = false;
  } else if (IsByCaller() && m_Call.m_Operation == Operation::Enable) {
    task->m_WasToggled = true;
  }
}

void Ledger::OnDeleted(const std::string& taskId) {
  Task* const task = FindOrAdopt(taskId);
  if (task == nullptr) {
    if (m_Strays.erase(taskId + Disk::Extension) == 0 && !IsByCaller()) {
      Violation(taskId, "a file that nobody knows was deleted");
    }
    return;
  }
  if (!IsByCaller()) {
    CheckDeletion(taskId, *task);
    task->m_IsPromised = false;
    m_Call.m_WasDeletedMeanwhile = m_Call.m_WasDeletedMeanwhile || m_Call.m_TaskId == taskId;
  }
  task->m_Exists = false;
  task->m_State = {};
  task->m_Text.clear();
  if (!IsByCaller() && !m_InDoubt) {
    task->m_Candidates.clear();
  }
}

void Ledger::CheckDeletion(const std::string& taskId, const Task& task) {
  const bool expired =
      std::any_of(task.m_Candidates.begin(), task.m_Candidates.end(), [](const auto& candidate) {
        const PlainSchedule::TaskAnswer answer = candidate.second->Evaluate(-1, Now());
        return answer.allExpired && answer.deleteTask;
      });
  if (!expired && !task.m_MayBeCut) {
    Violation(taskId, "was deleted without being expired");
  }
}

void Ledger::OnListed() {
  if (IsByCaller() || !m_Disk->IsHealthy()) {
    return;
  }
  // A load: from here on memory is what the disk says.
  m_InDoubt = false;
  for (auto& [taskId, task] : m_Tasks) {
    const std::optional<RunEntry>& entry = task.m_State.m_Entry;
    task.m_LastRun = task.m_Exists && entry ? entry->LastRun() : -1;
    task.m_WasToggled = false;
    task.m_IsAccepted = false;  // what an ill disk did not take is not owed any more
    if (task.m_Exists && task.m_Document != nullptr) {
      task.m_Candidates = {{task.m_Document->Number(), task.m_Document}};
    }
  }
}

void Ledger::OnPosted(long code, const std::string& taskId) {
  constexpr long TaskAdded = 102;
  // Announced also when the file could not be given its name.
  if (code == TaskAdded && IsByCaller() && m_Disk->Has(taskId)) {
    OnReplaced(taskId, m_Disk->Text(taskId));  // written in place, with nothing to be seen
  }
}

// Runs --------------------------------------------------------------------------------------------

void Ledger::CheckRegistration(const std::string& taskId, Task& task) {
  ++m_Runs;
  if (task.m_State.m_Entry->m_Time != ShownNow()) {
    Violation(taskId, "a run was recorded for " + task.m_State.m_Entry->m_Time);
  }
  if (!m_IsGateOpen) {
    Violation(taskId, "ran while the gate was closed");
  }
  if (!m_InDoubt && !task.m_WasToggled && !task.m_State.m_Enabled) {
    Violation(taskId, "ran while disabled");
  }
  const PlainSchedule::TaskAnswer answer = task.m_Document->Evaluate(task.m_LastRun, Now());
  if (!m_InDoubt && !answer.due) {
    Violation(taskId, "ran without being due; its last run was at " +
                          BaseSDK::ADateTime(task.m_LastRun).ToString(L"%c").ToUtf8());
  }
  task.m_IsAccepted = false;
  task.m_Awaited = Dispatch{answer, task.m_Document->Handler()};
  task.m_LastRun = Now();
}

void Ledger::OnMissingHandler(const std::string& handlerId) {
  for (auto& [taskId, task] : m_Tasks) {
    if (task.m_Awaited && task.m_Awaited->m_HandlerId == handlerId) {
      task.m_Awaited.reset();
    }
  }
}

void Ledger::OnBatch(const std::string& handlerId, const std::string& batch, bool accepts) {
  std::string previousId;
  std::size_t begin = 0;
  while (begin < batch.size()) {
    const std::size_t end = batch.find(';', begin);
    if (end == std::string::npos) {
      m_Verdict.Violation("a batch does not end in ';': " + batch);
      return;
    }
    Task* const task = CheckBatchEntry(handlerId, batch.substr(begin, end - begin), previousId);
    if (task != nullptr) {
      task->m_IsAccepted = accepts;
    }
    begin = end + 1;
  }
}

Ledger::Task* Ledger::CheckBatchEntry(const std::string& handlerId, const std::string& entry,
                                      std::string& previousId) {
  const std::string encodedId = entry.substr(0, entry.find(':'));
  const std::string taskId = BaseSDK::AUrl::Decode(BaseSDK::AString::FromUtf8(encodedId)).ToUtf8();
  if (!previousId.empty() && taskId <= previousId) {
    Violation(taskId, "stands behind '" + previousId + "' in a batch");
  }
  previousId = taskId;
  Task* const task = Find(taskId);
  if (m_InDoubt) {
    if (task != nullptr) {
      task->m_Awaited.reset();
    }
    return nullptr;
  }
  if (task == nullptr || !task->m_Awaited) {
    Violation(taskId, "was handed to " + handlerId + " without a record of its start");
    return nullptr;
  }
  const PlainSchedule::TaskAnswer& answer = task->m_Awaited->m_Answer;
  const std::string flags = std::string(answer.late ? ":1" : ":0") +
                            (answer.neverRun ? ":1" : ":0") + (answer.killAtEnd ? ":1" : ":0");
  if (entry != encodedId + flags || handlerId != task->m_Awaited->m_HandlerId) {
    Violation(taskId, "was handed to " + handlerId + " as '" + entry + "', not as " + flags +
                          " to " + task->m_Awaited->m_HandlerId);
  }
  task->m_Awaited.reset();
  // Where encoding changes the ID the run state is not recorded: the batch's piece names no task.
  return encodedId == taskId ? task : nullptr;
}

// Looking round -----------------------------------------------------------------------------------

void Ledger::CheckFiles() {
  for (const auto& [taskId, task] : m_Tasks) {
    if (task.m_Exists != m_Disk->Has(taskId)) {
      Violation(taskId, task.m_Exists ? "its file is gone" : "a file of that name is there");
    } else if (task.m_Exists && task.m_Text != m_Disk->Text(taskId)) {
      Violation(taskId, "its file changed without being replaced:\n" + m_Disk->Text(taskId));
    } else if (task.m_IsPromised && !task.m_Exists) {
      Violation(taskId, "is lost");
    }
  }
  CheckNames();
  if (m_Disk->OpenHandles() != 0) {
    m_Verdict.Violation(std::to_string(m_Disk->OpenHandles()) + " files are left open");
  }
}

void Ledger::CheckNames() {
  m_MayLeaveTemporaries = m_MayLeaveTemporaries || !m_Disk->IsHealthy() || m_Disk->IsDead();
  for (const std::string& name : m_Disk->Names()) {
    const bool isTask = Find(TaskIdOf(name)) != nullptr || m_Strays.count(name) > 0;
    // What was being made when a disk failed or the process died, and could not be removed.
    const bool isUnfinished = name.compare(0, 13, "corvane_task_") == 0 && TaskIdOf(name).empty();
    if (!isTask && !isUnfinished && !(name.front() == '.' && m_MayLeaveTemporaries)) {
      m_Verdict.Violation("an unknown file was left behind: " + name);
    }
  }
}

void Ledger::CheckRuns(Random& random, bool busy, bool clockChanges) {
  if (busy || m_InDoubt || !m_Disk->IsHealthy()) {
    return;
  }
  CheckDispatches();
  constexpr int Samples = 20;
  for (int i = 0; m_IsGateOpen && i < Samples && !m_Tasks.empty(); ++i) {
    const auto drawn =
        std::next(m_Tasks.begin(), static_cast<std::ptrdiff_t>(random.Below(m_Tasks.size())));
    CheckRunOf(drawn->first, drawn->second, clockChanges);
  }
}

void Ledger::CheckDispatches() {
  for (const auto& [taskId, task] : m_Tasks) {
    if (task.m_Awaited) {
      Violation(taskId, "was recorded as started and never handed to its handler");
    }
    const std::optional<RunEntry>& entry = task.m_State.m_Entry;
    if (task.m_IsAccepted && task.m_Exists && entry && entry->m_State == "Started") {
      Violation(taskId, "was taken by its handler and is still 'Started'");
    }
  }
}

void Ledger::CheckRunOf(const std::string& taskId, const Task& task, bool clockChanges) {
  const bool isClear = task.m_Exists && task.m_IsPromised && task.m_Document != nullptr &&
                       task.m_Document->IsSimple() && task.m_State.m_Enabled && !task.m_WasToggled;
  if (!isClear || !task.m_Document->Evaluate(task.m_LastRun, Now()).due) {
    return;
  }
  // Around a change of the clocks the monitor may look late, never by more than a cycle; the same
  // where the first run is due on a begin that the day rule does not select.
  const bool isLongDue = Now() - CycleAndSlack > m_LastDisturbance &&
                         task.m_Document->Evaluate(task.m_LastRun, Now() - CycleAndSlack).due;
  const bool mayBeLate = clockChanges || task.m_LastRun == -1;
  if (!mayBeLate || isLongDue) {
    Violation(taskId, "is due, and nobody runs it:\n" + task.m_Text);
  }
}

std::vector<std::string> Ledger::Existing() const {
  std::vector<std::string> taskIds;
  for (const auto& [taskId, task] : m_Tasks) {
    if (task.m_Exists) {
      taskIds.push_back(taskId);
    }
  }
  return taskIds;
}

std::string Ledger::ExpectedText(const std::string& taskId) const {
  const auto found = m_Tasks.find(taskId);
  return found != m_Tasks.end() ? found->second.m_Text : std::string();
}

}  // namespace Simulation
