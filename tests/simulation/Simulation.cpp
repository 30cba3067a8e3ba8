#include "tests/simulation/Simulation.h"

#include "tests/support/LocalTimes.h"

#include <BaseSDK/ADateTime.h>
#include <BaseSDK/AFile.h>

#include <algorithm>
#include <ctime>

namespace Simulation {

using BaseSDK::AString;

namespace {

using TestSupport::Day;
using TestSupport::Hour;
constexpr const char* FixedZone = "UTC0";

/// Zones without and with changes of the clock: at night, at midnight, by half an hour, backwards.
std::string DrawZone(Random& random) {
  return random.OneOf<const char*>({FixedZone, FixedZone, "EST5EDT,M3.2.0,M11.1.0",
                                    "CET-1CEST,M3.5.0,M10.5.0/3", "<-03>3<-02>,M10.3.0/0,M2.3.0/0",
                                    "<+1030>-10:30<+11>-11,M10.1.0,M4.1.0",
                                    "IST-1GMT0,M10.5.0,M3.5.0/1"});
}

AString Wide(const std::string& text) {
  return AString::FromUtf8(text);
}

}  // namespace

Simulation::Simulation(const Options& options, Verdict& verdict)
    : m_Options(options),
      m_Random(options.m_Seed),
      m_Verdict(verdict),
      m_ZoneRule(DrawZone(m_Random)),
      m_Zone(m_ZoneRule.c_str()),
      m_Ledger(verdict),
      m_Disk(m_Ledger),
      m_Host(*this) {
  TheClock().Start(m_Random.Between(1104537600, 1893456000));  // 2005 to 2030
  m_Ledger.Attach(m_Disk);
  m_Verdict.Note("zone " + m_ZoneRule);
  for (const std::string& handlerId : HandlerIds()) {
    m_Host.SetManner(handlerId, Manner::Accepts);
  }
}

Simulation::~Simulation() {
  if (m_Scheduler != nullptr) {
    ShutDown();
  }
}

void Simulation::Run() {
  Boot();
  for (long i = 0; i < m_Options.m_Tasks && !m_Verdict.IsViolated(); ++i) {
    const bool isCanary = i < 5;
    const std::string taskId = isCanary ? "canary" + std::to_string(i) : DrawNewId();
    AddDocument(taskId, isCanary ? std::make_shared<Document>(Document::Canary(
                                       ++m_LastNumber, TheClock().Now(), HandlerIds()[0]))
                                 : DrawDocument());
  }
  Live();
  m_Disk.Heal();
  Restart();
  TheClock().RunFor(2 * Hour * 1000);
  Check();
  ShutDown();
}

void Simulation::Live() {
  constexpr long Month = 30;
  const std::int64_t begin = TheClock().NowMilliseconds();
  long months = 0;
  for (long days = 0; days < m_Options.m_Days && !m_Verdict.IsViolated();) {
    Step();
    days = static_cast<long>((TheClock().NowMilliseconds() - begin) / (Day * 1000LL));
    if (days / Month > months && m_Options.m_OnMonth) {
      m_Options.m_OnMonth(days);
    }
    months = days / Month;
  }
}

// The machine -------------------------------------------------------------------------------------

void Simulation::Boot() {
  // As the agent does it: what a death left half-written goes before anybody reads.
  unsigned removed = 0;
  (void)BaseSDK::AFile::RemoveLeftovers(Disk::Directory, removed);
  m_Ledger.Reconcile();
  m_IsGateOpen = false;
  m_Registrations = 0;
  m_Ledger.SetGate(false);
  m_Scheduler = std::make_unique<TaskSchedulerObject_i>();
  if (m_Scheduler->Initialize() < 1) {
    m_Verdict.Violation("the scheduler does not start");
  }
  TheClock().Settle();
  Notify(0);
}

void Simulation::ShutDown() {
  // As the agent does it: a scheduler that dispatched on would never let its slow handlers rest.
  Notify(6);
  WaitForHandlers();
  if (m_Scheduler->Uninitialize(1) < 1 || TheClock().ParkedThreads() > 0) {
    m_Verdict.Violation("the scheduler does not stop");
  }
  m_Scheduler = nullptr;
}

void Simulation::Restart() {
  m_Verdict.Note("restart");
  ShutDown();
  CrashIfDead();
  if (m_Scheduler == nullptr) {
    Boot();
  }
}

void Simulation::Crash() {
  m_Verdict.Note("the process died");
  if (m_Scheduler != nullptr) {
    ShutDown();
  }
  m_Disk.Revive();
  Boot();
}

void Simulation::CrashIfDead() {
  while (m_Disk.IsDead() && !m_Verdict.IsViolated()) {
    Crash();
  }
}

void Simulation::WaitForHandlers() {
  while (m_Host.IsBusy()) {
    TheClock().RunFor(Hour * 1000);
  }
}

void Simulation::Notify(long kind, long code) {
  switch (kind) {
    case 0:
    case 2:
      m_IsGateOpen = true;
      break;
    case 1:
      m_IsGateOpen = false;
      break;
    case 4:
    case 6:
      ++m_Registrations;
      m_IsGateOpen = false;
      break;
    case 5:
    case 7:
      m_IsGateOpen = --m_Registrations == 0 || m_IsGateOpen;
      break;
    default:
      break;
  }
  m_Ledger.SetGate(m_IsGateOpen);
  (void)m_Scheduler->NotifyObject(kind, code, L"plug-in");
  TheClock().Settle();
}

void Simulation::Check() {
  CrashIfDead();
  m_Ledger.CheckFiles();
  m_Ledger.CheckRuns(m_Random, m_Host.IsBusy(), m_ZoneRule != FixedZone);
}

// A step ------------------------------------------------------------------------------------------

void Simulation::Step() {
  PassTime();
  Check();
  const long actions = m_Random.Between(1, 3);
  for (long i = 0; i < actions && !m_Verdict.IsViolated(); ++i) {
    Act();
    Check();
  }
}

void Simulation::PassTime() {
  const long now = TheClock().Now();
  // Often to the very second at which things happen, or one beside it.
  const long until = m_Random.Percent(30)
                         ? (now / Hour + m_Random.Between(1, 6)) * Hour + m_Random.Between(-1, 1)
                         : now + m_Random.Between(0, 8 * Hour);
  TheClock().RunUntil(std::max(now, until));
}

void Simulation::Act() {
  const long draw = m_Random.Between(1, 100);
  if (draw <= 70) {
    CallOperation();
  } else if (draw <= 82) {
    SendNotification();
  } else if (draw <= 88) {
    ChangeHandler();
  } else if (draw <= 92) {
    ChangeDisk();
  } else if (draw <= 94) {
    ChangeClock();
  } else if (draw <= 96) {
    m_Verdict.Note("death is near");
    m_Disk.KillWithin(m_Random, m_Random.Percent(50) ? 20 : 20000);
  } else if (draw <= 98) {
    Restart();
  } else {
    DropStray();
  }
}

void Simulation::CallOperation() {
  const long draw = m_Random.Between(1, 100);
  if (draw <= 40) {
    ChangeTask();
  } else if (draw <= 50) {
    EnableTasks();
  } else if (draw <= 60) {
    SetRunState();
  } else if (draw <= 80) {
    AskTask();
  } else if (draw <= 88) {
    ListTasks();
  } else if (draw <= 95) {
    AskReport();
  } else {
    (void)m_Scheduler->RefreshTaskList();
    TheClock().Settle();
  }
}

void Simulation::ChangeTask() {
  const auto count = static_cast<long>(m_Ledger.Existing().size());
  if (m_Random.Percent(count < m_Options.m_Tasks ? 55 : 25)) {
    AddTask();
  } else if (m_Random.Percent(60)) {
    ReplaceTask();
  } else {
    DeleteTask();
  }
}

// Operations --------------------------------------------------------------------------------------

void Simulation::AddTask() {
  AddDocument(m_Random.Percent(30) ? std::string() : DrawNewId(), DrawDocument());
}

void Simulation::ReplaceTask() {
  const std::string taskId = DrawTask();
  if (!taskId.empty()) {
    AddDocument(taskId, DrawDocument());
  }
}

void Simulation::AddDocument(const std::string& taskId, std::shared_ptr<const Document> document) {
  m_Verdict.Note("add '" + taskId + "', document " + std::to_string(document->Number()));
  AString newId;
  m_Ledger.Begin(Ledger::Operation::Add, taskId, document);
  const long result = m_Scheduler->AddTask(Wide(taskId), Wide(document->Text()), newId);
  TheClock().Settle();
  m_Ledger.EndAdd(result, newId.ToUtf8());
  m_Verdict.Note("  gives " + std::to_string(result) + " '" + newId.ToUtf8() + "'");
  CrashIfDead();
}

void Simulation::DeleteTask() {
  const std::string taskId = m_Random.Percent(90) ? DrawTask() : DrawNewId();
  if (taskId.empty() || taskId.compare(0, 6, "canary") == 0) {
    return;
  }
  m_Ledger.Begin(Ledger::Operation::Delete, taskId);
  const long result = m_Scheduler->DeleteTask(Wide(taskId));
  TheClock().Settle();
  m_Verdict.Note("delete '" + taskId + "' gives " + std::to_string(result));
  m_Ledger.EndDelete(result);
  CrashIfDead();
}

void Simulation::EnableTasks() {
  std::vector<std::string> taskIds = {DrawTask(), DrawNewId(), DrawTask()};
  const bool enable = m_Random.Percent(70);
  const std::string joined = taskIds[0] + ':' + taskIds[1] + ':' + taskIds[2];
  m_Ledger.Begin(Ledger::Operation::Enable, {});
  const long result = m_Scheduler->EnableTask(Wide(joined), enable);
  TheClock().Settle();
  m_Verdict.Note((enable ? "enable '" : "disable '") + joined + "' gives " +
                 std::to_string(result));
  m_Ledger.End();
  CrashIfDead();
}

void Simulation::SetRunState() {
  const std::string taskId = DrawTask();
  const std::string state =
      m_Random.OneOf<const char*>({"Ok", "Ok", "Failed", "Busy", "two words"});
  m_Ledger.Begin(Ledger::Operation::SetState, taskId);
  const long result = m_Scheduler->SetRunState(Wide(taskId), Wide(state));
  TheClock().Settle();
  m_Verdict.Note("state of '" + taskId + "' to " + state + " gives " + std::to_string(result));
  m_Ledger.End();
  CrashIfDead();
}

void Simulation::AskTask() {
  const std::string taskId = DrawTask();
  AString text;
  const long result = m_Scheduler->GetTaskXML(Wide(taskId), text);
  if (!taskId.empty() && m_Disk.IsHealthy() && !m_Disk.IsDead() &&
      (result != 1 || text.ToUtf8() != m_Ledger.ExpectedText(taskId))) {
    m_Verdict.Violation("the document of '" + taskId + "' reads as:\n" + text.ToUtf8());
  }
  AttributeMap attributes;
  if (m_Scheduler->GetTaskAttributes(Wide(taskId), attributes, nullptr) == 1 &&
      attributes[L"t0"].ToUtf8() != taskId) {
    m_Verdict.Violation("the attributes of '" + taskId + "' are those of another task");
  }
  CrashIfDead();
}

void Simulation::ListTasks() {
  std::vector<std::string> found;
  unsigned long handle = 0;
  AString taskId;
  long result = m_Scheduler->FindFirstTask(handle, taskId);
  while (result > 0) {
    const std::string name = taskId.ToUtf8();
    if (name != "." && name != "..") {
      found.push_back(name);
    }
    result = m_Scheduler->FindNextTask(handle, taskId);
  }
  (void)m_Scheduler->FindClose(handle);
  std::sort(found.begin(), found.end());
  const std::vector<std::string> expected = m_Ledger.Existing();
  if (m_Disk.IsHealthy() && !m_Disk.IsDead() &&
      !std::includes(found.begin(), found.end(), expected.begin(), expected.end())) {
    m_Verdict.Violation("the list of tasks has only " + std::to_string(found.size()) + " of " +
                        std::to_string(expected.size()));
  }
  CrashIfDead();
}

void Simulation::AskReport() {
  AString report;
  (void)m_Scheduler->ObjectDebugInfo(report);
  const AString end =
      m_IsGateOpen ? L"\n\nTask processing is enabled.\n" : L"\n\nTask processing is disabled.\n";
  if (report.Find(L"Currently running tasks:\n") != 0 || report.Find(end) == AString::npos) {
    m_Verdict.Violation("the report is wrong about the gate: " + report.ToUtf8());
  }
}

// Trouble -----------------------------------------------------------------------------------------

void Simulation::SendNotification() {
  // A gate that is shut is opened more often than not, or little would ever run.
  const long kind = m_IsGateOpen ? m_Random.OneOf<long>({0, 1, 2, 4, 5, 6, 7, 3, 10, 10, 11})
                                 : m_Random.OneOf<long>({0, 2, 2, 4, 5, 7, 2});
  m_Verdict.Note("notification of kind " + std::to_string(kind));
  Notify(kind, m_Random.OneOf<long>({300, 302, 301}));
  CrashIfDead();
}

void Simulation::ChangeClock() {
  const long seconds = m_Random.OneOf<long>({1, 30, Hour, Day, 2 * Day}) * m_Random.Between(1, 3);
  const long draw = m_Random.Between(0, 2);
  m_Verdict.Note((draw == 0   ? "the machine sleeps "
                  : draw == 1 ? "clock forward "
                              : "clock back ") +
                 std::to_string(seconds));
  if (draw == 0) {
    TheClock().Suspend(seconds);
  } else {
    TheClock().StepWallClock(draw == 1 ? seconds : -seconds);
  }
  TheClock().Settle();
  m_Ledger.Disturb();
  CrashIfDead();
}

void Simulation::ChangeHandler() {
  const std::string& handlerId = m_Random.OneOf(HandlerIds());
  const Manner manner =
      m_Random.Percent(50)
          ? Manner::Accepts
          : static_cast<Manner>(m_Random.Between(0, static_cast<long>(Manner::Kills)));
  m_Verdict.Note("handler " + handlerId + ' ' + Name(manner));
  m_Host.SetManner(handlerId, manner);
}

void Simulation::ChangeDisk() {
  if (!m_Disk.IsHealthy() || m_Random.Percent(40)) {
    m_Verdict.Note("the disk is well");
    m_Disk.Heal();
  } else {
    m_Ledger.DiskFellIll();
    m_Verdict.Note(m_Disk.FallIll(m_Random));
  }
}

void Simulation::DropStray() {
  const std::string name = "stray" + std::to_string(++m_LastNumber) +
                           m_Random.OneOf<const char*>({".vsk", ".txt", ".vsk.old", ""});
  m_Verdict.Note("somebody puts " + name);
  m_Disk.PutFile(name, m_Random.OneOf<const char*>({"", "garbage", "<Task", "<Task/>"}));
  m_Ledger.AddStray(name);
}

std::string Simulation::DrawTask() {
  const std::vector<std::string> taskIds = m_Ledger.Existing();
  return taskIds.empty() ? std::string() : m_Random.OneOf(taskIds);
}

std::string Simulation::DrawNewId() {
  // One in twenty needs encoding in a batch.
  return (m_Random.Percent(5) ? "a task " : "task") + std::to_string(++m_LastNumber);
}

std::shared_ptr<const Document> Simulation::DrawDocument() {
  return std::make_shared<Document>(m_Random, ++m_LastNumber, TheClock().Now());
}

// What the scheduler does -------------------------------------------------------------------------

void Simulation::OnPosted(long code, const std::string& taskId) {
  m_Ledger.OnPosted(code, taskId);
}

void Simulation::OnMissing(const std::string& handlerId) {
  m_Ledger.OnMissingHandler(handlerId);
}

void Simulation::OnBatch(const std::string& handlerId, const std::string& batch, Manner manner) {
  m_Verdict.Note("batch for " + handlerId + " (" + Name(manner) + "): " + batch);
  const bool refuses = manner == Manner::Declines || manner == Manner::DeclinesOldWay;
  m_Ledger.OnBatch(handlerId, batch, !refuses && manner != Manner::Kills);
  if (manner == Manner::TakesHours) {
    TheClock().Sleep(m_Random.Between(1, 10) * Hour * 1000 / 2);
  } else if (manner == Manner::Kills) {
    m_Host.SetManner(handlerId, Manner::Accepts);  // or it would kill every new process at once
    m_Disk.KillNow();
  } else if (manner == Manner::ReportsFailure) {
    const AString first = Wide(batch.substr(0, batch.find(':')));
    (void)m_Scheduler->SetRunState(first, L"Failed");
  }
}

}  // namespace Simulation
