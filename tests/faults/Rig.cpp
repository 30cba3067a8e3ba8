#include "tests/faults/Rig.h"

#include <BaseSDK/AFile.h>

namespace Faults {

using BaseSDK::AString;
using TestSupport::TaskXml;
using TestSupport::TriggerXml;

namespace {

constexpr const char* Begin = "2005-03-01 08:00:00";

bool IsTaskFile(const std::string& name) {
  const std::string extension = ".vsk";
  return name.front() != '.' && name.size() > extension.size() &&
         name.substr(name.size() - extension.size()) == extension;
}

}  // namespace

Rig::Rig() : m_Before(BaseSDK::AFileSystem::Replace(&m_Failing)), m_Scheduler("UTC0", Begin) {
  m_Memory.MakeDirectory(m_Scheduler.Directory().Path().string());
  (void)m_Scheduler.Start();
  m_Scheduler.OpenGate();
}

Rig::~Rig() {
  m_Scheduler.Stop();
  (void)BaseSDK::AFileSystem::Replace(m_Before);
}

Rig::Snapshot Rig::Look() const {
  const std::string directory = m_Scheduler.Directory().Path().string();
  Snapshot snapshot;
  for (const std::string& name : m_Memory.Names(directory)) {
    if (IsTaskFile(name)) {
      snapshot[name] = m_Memory.ReadFile(directory + '/' + name);
    }
  }
  return snapshot;
}

void Rig::WriteFile(const std::string& name, const std::string& content) {
  m_Memory.WriteFile(m_Scheduler.Directory().Path().string() + '/' + name, content);
}

std::vector<std::string> Rig::Others() const {
  std::vector<std::string> others;
  for (const std::string& name : m_Memory.Names(m_Scheduler.Directory().Path().string())) {
    if (!IsTaskFile(name)) {
      others.push_back(name);
    }
  }
  return others;
}

void Rig::Restart(const std::string& localTime) {
  m_Scheduler.Stop();
  TestSupport::TestScheduler::Clock().Start(TestSupport::TestScheduler::Local(localTime));
  m_Failing.Reset();
  unsigned removed = 0;
  (void)BaseSDK::AFile::RemoveLeftovers(AString::FromUtf8(m_Scheduler.Directory().Path().string()),
                                        removed);
  (void)m_Scheduler.Start();
}

namespace {

TaskXml Daily(const char* begin) {
  return TaskXml().With(TriggerXml::Daily(begin));
}

void HaveTask(Rig& rig) {
  (void)rig.Scheduler().AddTask("T1",
                                Daily("2005/02/01 12:00:00").LastRun("2005-02-28 12:00:00 Ok"));
  (void)rig.Scheduler().AddTask("T2",
                                Daily("2005/02/01 13:00:00").LastRun("2005-02-28 13:00:00 Ok"));
}

void HaveExpiringTask(Rig& rig) {
  HaveTask(rig);
  (void)rig.Scheduler().AddTask(
      "T3", TaskXml()
                .With(TriggerXml::Daily("2005/02/01 12:00:00").End("2005-03-01 10:00:00"))
                .LastRun("2005-02-28 12:00:00 Ok"));
}

long Replace(Rig& rig) {
  return rig.Scheduler().AddTask("T1", Daily("2005/02/02 14:00:00"));
}

long AddNamed(Rig& rig) {
  return rig.Scheduler().AddTask("T9", Daily("2005/04/01 12:00:00"));
}

long AddInvented(Rig& rig) {
  return rig.Scheduler().AddUnnamedTask(Daily("2005/04/01 12:00:00")).empty() ? -1 : 1;
}

long Disable(Rig& rig) {
  return rig.Scheduler().EnableTask("T1", false);
}

long SetState(Rig& rig) {
  return rig.Scheduler().SetRunState("T1", "Failed") == 0 ? 1 : -1;
}

long Delete(Rig& rig) {
  return rig.Scheduler().DeleteTask("T1");
}

long RunWhenDue(Rig& rig) {
  rig.Scheduler().RunUntil("2005-03-01 12:00:01");
  return 1;
}

long Expire(Rig& rig) {
  rig.Scheduler().RunUntil("2005-03-01 10:30:00");
  return 1;
}

long Reload(Rig& rig) {
  rig.Scheduler().RunUntil("2005-03-01 09:00:10");
  return 1;
}

}  // namespace

const std::vector<Operation>& Operations() {
  static const std::vector<Operation> operations = {
      {"AddNamed", HaveTask, AddNamed, true, true},
      {"AddInvented", HaveTask, AddInvented, true, false},
      // Kept on purpose: the three that replace a file report success also when they could not.
      {"Replace", HaveTask, Replace, false, false},
      {"Disable", HaveTask, Disable, false, false},
      {"SetState", HaveTask, SetState, false, false},
      {"Delete", HaveTask, Delete, true, false},
      {"RunWhenDue", HaveTask, RunWhenDue, false, false},
      {"Expire", HaveExpiringTask, Expire, false, false},
      {"Reload", HaveTask, Reload, false, false},
  };
  return operations;
}

}  // namespace Faults
