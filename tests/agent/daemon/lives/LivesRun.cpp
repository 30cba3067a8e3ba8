#include "tests/agent/daemon/lives/LivesRun.h"

#include "agent/daemon/store/DirectoryListings.h"
#include "agent/daemon/store/WholeFile.h"
#include "tests/support/LocalTimes.h"

#include <AgentInterfacesV3/AMsgGroup.h>
#include <BaseSDK/ADateTime.h>
#include <BaseSDK/AString.h>
#include <BaseSDK/AStringTokenizer.h>

#include <iterator>

using BaseSDK::AString;
using BaseSDK::AStringTokenizer;
using Corvane::AgentInterfacesV3::AMsgGroup;
using Corvane::AgentInterfacesV3::TASK_HANDLER_DECLINED;
using TestSupport::Day;
using TestSupport::Hour;

namespace NoxAgent {
namespace {

constexpr int MostLives = 4;
constexpr int MostSteps = 25;
constexpr std::size_t MostTornBytes = 3000;

constexpr long FirstMoment = 1109664000;  // 2005-03-01 08:00:00

AString Wide(const std::string& text) {
  return AString::FromUtf8(text);
}

}  // namespace

LivesRun::LivesRun(std::uint64_t seed)
    : m_Random(seed), m_Ledger([this](const std::string& problem) { Fail(problem); }) {
  AgentLife::Clock().Start(FirstMoment);
  Note("seed " + std::to_string(seed));
  m_Disk.MakeDirectory(AgentLife::Directory);
  m_Disk.MakeDirectory("/state");
}

void LivesRun::Note(const std::string& words) {
  const AString now = BaseSDK::ADateTime::Now().ToString(L"%Y/%m/%d %H:%M:%S ");
  m_Story.push_back(now.ToUtf8() + words);
}

void LivesRun::Fail(const std::string& problem) {
  if (m_Problem.empty()) {
    for (const std::string& words : m_Story) {
      m_Problem += words + "\n";
    }
    m_Problem += problem;
  }
}

// Lives
// -----

std::string LivesRun::Perform() {
  const int lives = 2 + Draw(MostLives - 1);
  for (int life = 0; life < lives && m_Problem.empty(); ++life) {
    Begin(DrawLastCall());
    Live();
    End();
  }
  if (m_Problem.empty()) {
    RestForADay();
  }
  m_Life.reset();
  return m_Problem;
}

void LivesRun::RestForADay() {
  Begin(std::nullopt);
  AgentLife::Clock().RunFor(1000LL * Day);
  if (GoesOn()) {
    m_Ledger.CheckRuns(Now());
    m_Life->End();
    m_Ledger.Restart(ReadFiles(), Now());
  }
}

// Some lives end while they begin, most later, some not by themselves.
std::optional<unsigned> LivesRun::DrawLastCall() {
  constexpr unsigned CallsToBegin = 60;
  constexpr unsigned MostCalls = 1000;
  const int draw = Draw(100);
  return draw < 15   ? std::optional(1 + Draw(CallsToBegin))
         : draw < 80 ? std::optional(CallsToBegin + Draw(MostCalls))
                     : std::nullopt;
}

void LivesRun::Begin(std::optional<unsigned> lastCall) {
  Note("begin");
  m_UnderWay.clear();
  m_Life = std::make_unique<AgentLife>(m_Disk,
                                       [this](const std::string& batch) { return OnBatch(batch); });
  if (lastCall) {
    m_Life->Calls().KillAt(*lastCall, Draw(MostTornBytes));
  }
  m_Life->Start([this] { m_Ledger.Restart(ReadFiles(), Now()); });
}

void LivesRun::Live() {
  const int steps = 1 + Draw(MostSteps);
  for (int i = 0; i < steps && GoesOn(); ++i) {
    Step();
    if (GoesOn()) {
      m_Ledger.CheckRuns(Now());
    }
  }
}

void LivesRun::End() {
  if (GoesOn() && Throw(15)) {
    Note("end");
    m_Life->End();
  }
  Note("over after " + std::to_string(m_Life->Calls().Count()) + " calls to the disk");
  m_Life.reset();
  if (m_Disk.OpenHandles() != 0) {
    Fail("left open: " + std::to_string(m_Disk.OpenHandles()));
  }
  if (Throw(75)) {
    CutPower();
  } else {
    Note("killed");
  }
  // The machine or the agent is down for a while.
  AgentLife::Clock().RunFor(1000LL * (1 + (Throw(30) ? Draw(2 * Day) : 0)));
}

void LivesRun::CutPower() {
  constexpr CrashDisk::Loss Losses[] = {CrashDisk::Loss::All, CrashDisk::Loss::None,
                                        CrashDisk::Loss::Latest, CrashDisk::Loss::Any,
                                        CrashDisk::Loss::Any};
  const std::size_t draw = Draw(std::size(Losses));
  Note("power cut " + std::to_string(draw));
  m_Disk.CutPower(Losses[draw], m_Random);
}

std::map<std::string, std::string> LivesRun::ReadFiles() {
  const TaskDirectory directory(AgentLife::Directory, AgentLife::Extension);
  DirectoryListings::Listing listing;
  (void)DirectoryListings::List(m_Disk, AgentLife::Directory, listing);
  std::map<std::string, std::string> files;
  for (const std::string& name : listing.m_Names) {
    FileIdentity identity;
    if (directory.IsTaskFile(name)) {
      std::string& text = files[directory.TaskIdOf(name)];
      (void)ReadFile(m_Disk, directory.Path() + "/" + name, text, identity);
    } else if (name != "." && name != ".." && !name.starts_with("corvane_task_")) {
      Fail("a file that is none of a task was left: " + name);
    }
  }
  return files;
}

// Steps
// -----

void LivesRun::Step() {
  const std::string id = DrawTask();
  const int draw = Draw(100);
  if (draw < 40) {
    PassTime();
  } else if (draw < 45) {
    AddUnnamed();
  } else if (draw < 55 || id.empty()) {
    Add("T" + std::to_string(m_LastNumber + 1));
  } else if (draw < 58) {
    AddMany();
  } else if (draw < 64) {
    Add(id);
  } else if (draw < 69) {
    Delete(id);
  } else if (draw < 77) {
    Enable(id, Throw(50));
  } else if (draw < 95) {
    ReportOne();
  } else {
    Note("follow");
    m_Life->Follow();
  }
}

std::string LivesRun::DrawTask() {
  const std::vector<std::string> ids = m_Ledger.Ids(Now());
  return ids.empty() ? std::string() : ids[Draw(ids.size())];
}

// It begins now or within the hour, at one of a few moments, so that tasks run together.
TaskPlan LivesRun::DrawPlan() {
  constexpr long Step = 600;
  TaskPlan plan{++m_LastNumber, Now() / Step * Step + Step * Draw(Hour / Step)};
  if (Throw(30)) {
    plan.m_Interval = Step * (1 + Draw(3));
  }
  if (Throw(20)) {
    plan.m_End = plan.m_Begin + Draw(2 * Day);
  }
  return plan;
}

void LivesRun::PassTime() {
  const std::string id = DrawTask();
  const long span = Throw(80) ? Draw(2 * Hour) : Draw(Day);
  const long until =
      !id.empty() && Throw(60) ? m_Ledger.NextStart(id, Now()) + Draw(3) : Now() + span;
  AgentLife::Clock().RunUntil(until);
}

void LivesRun::Add(const std::string& id) {
  const TaskPlan plan = DrawPlan();
  Note("add " + id + ": " + plan.Describe());
  m_Life->Ask([&](Scheduler& scheduler) {
    m_Ledger.AskToAdd(id, plan);
    AString newId;
    const long result = scheduler.AddTask(Wide(id), Wide(MakeTaskText(plan)), newId);
    if (m_Life->IsDead()) {
      return;
    }
    if (result != 1 || newId.ToUtf8() != id) {
      Fail("not added");
    }
    m_Ledger.Told();
    m_Ledger.Added(id, plan);
  });
}

void LivesRun::AddUnnamed() {
  const TaskPlan plan = DrawPlan();
  Note("add without ID: " + plan.Describe());
  m_Life->Ask([&](Scheduler& scheduler) {
    AString newId;
    const long result = scheduler.AddTask({}, Wide(MakeTaskText(plan)), newId);
    if (m_Life->IsDead()) {
      m_Ledger.LeftUnnamed(plan);
      return;
    }
    if (result != 1) {
      Fail("not added");
    }
    m_Ledger.Told();
    m_Ledger.AskToAdd(newId.ToUtf8(), plan);
    m_Ledger.Added(newId.ToUtf8(), plan);
  });
}

// Made safe together. The monitor has nothing to change in between: tasks that have ended are gone,
// and the new ones begin later; often all at once, more than the journal prepares files for.
void LivesRun::AddMany() {
  m_Life->Ask([](Scheduler& scheduler) { (void)scheduler.RefreshTaskList(); });
  const long together = Throw(50) ? DrawPlan().m_Begin : 0;
  m_Life->Ask([&](Scheduler& scheduler) {
    std::map<std::string, TaskPlan> plans;
    {
      const AMsgGroup group;
      for (int i = 0; i < 20; ++i) {
        TaskPlan plan = DrawPlan();
        plan.m_Begin = (together != 0 ? together : plan.m_Begin) + Hour;
        plan.m_End = TaskPlan::Never;
        const std::string id = "T" + std::to_string(plan.m_Number);
        Note("add " + id + " among others: " + plan.Describe());
        m_Ledger.AskToAdd(id, plan);
        AString newId;
        (void)scheduler.AddTask(Wide(id), Wide(MakeTaskText(plan)), newId);
        plans[id] = plan;
      }
    }
    if (m_Life->IsDead()) {
      return;
    }
    m_Ledger.Told();
    for (const auto& [id, plan] : plans) {
      m_Ledger.Added(id, plan);
    }
  });
}

void LivesRun::Delete(const std::string& id) {
  Note("delete " + id);
  m_Life->Ask([&](Scheduler& scheduler) {
    m_Ledger.AskToDelete(id);
    const long result = scheduler.DeleteTask(Wide(id));
    if (m_Life->IsDead()) {
      return;
    }
    if (result != 1) {
      Fail("not deleted");
    }
    m_Ledger.Told();
    m_Ledger.Deleted(id);
    m_UnderWay.erase(id);
  });
}

void LivesRun::Enable(const std::string& id, bool enable) {
  Note((enable ? "enable " : "disable ") + id);
  m_Life->Ask([&](Scheduler& scheduler) {
    m_Ledger.AskToEnable(id, enable);
    const long result = scheduler.EnableTask(Wide(id), enable);
    if (m_Life->IsDead()) {
      return;
    }
    m_Ledger.Told();
    if (result == 1) {  // or it was so before
      m_Ledger.Enabled(id, enable, Now());
    }
  });
}

void LivesRun::ReportOne() {
  std::erase_if(m_UnderWay, [&](const auto& id) { return m_Ledger.MayHaveEnded(id, Now()); });
  if (!m_UnderWay.empty()) {
    const std::vector<std::string> ids(m_UnderWay.begin(), m_UnderWay.end());
    const std::string id = ids[Draw(ids.size())];
    m_Life->Ask([&](Scheduler& scheduler) { Report(scheduler, id); });
  }
}

void LivesRun::Report(Scheduler& scheduler, const std::string& id) {
  const std::string state = Throw(80) ? "Ok" : "Failed";
  Note("report " + id + " " + state);
  m_UnderWay.erase(id);
  m_Ledger.AskToReport(id, state, Now());
  const long result = scheduler.SetRunState(Wide(id), Wide(state));
  if (m_Life->IsDead()) {
    return;
  }
  if (result != 0) {
    Fail("not reported");
  }
  m_Ledger.Told();
  m_Ledger.Reported(id, state);
}

// The handler
// -----------

long LivesRun::OnBatch(const std::string& batch) {
  if (m_Life->IsDead()) {
    return TASK_HANDLER_DECLINED;
  }
  Note("run " + batch);
  m_Ledger.Told();
  std::vector<std::string> ids;
  const AStringTokenizer entries(Wide(batch), L";");
  for (std::size_t i = 0; i < entries.Count(); ++i) {
    const AStringTokenizer fields(entries.Token(i), L":");
    ids.push_back(fields.Token(0).ToUtf8());
    m_Ledger.Run(ids.back(), fields.Token(2) == L"1", Now());
    m_UnderWay.erase(ids.back());
  }
  return m_Problem.empty() ? Answer(ids) : TASK_HANDLER_DECLINED;
}

long LivesRun::Answer(const std::vector<std::string>& ids) {
  const int draw = Draw(100);
  if (draw < 5) {
    Note("dies within the call");
    m_Life->Die();
  } else if (draw < 45) {
    Note("accepted");
    for (const std::string& id : ids) {
      m_Ledger.Accepted(id, Now());
    }
    return 1;
  } else if (draw < 75) {
    m_UnderWay.insert(ids.begin(), ids.end());
  } else {
    for (std::size_t i = 0; i < ids.size() && GoesOn(); ++i) {
      m_Life->AskFromHandler([&](Scheduler& scheduler) { Report(scheduler, ids[i]); });
    }
  }
  return TASK_HANDLER_DECLINED;
}

}  // namespace NoxAgent
