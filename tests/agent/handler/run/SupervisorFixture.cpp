#include "tests/agent/handler/run/SupervisorFixture.h"

#include "agent/Protocol.h"
#include "agent/handler/system/ProcessHandle.h"
#include "agent/handler/system/ProcessTable.h"
#include "tests/support/Patience.h"

#include <poll.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

using BaseSDK::AString;

namespace NoxHandlerTest {

using namespace NoxHandler;

namespace {

AString Text(const std::filesystem::path& path) {
  return AString(path.c_str());
}

}  // namespace

SupervisorFixture::SupervisorFixture()
    : m_Started((m_Directory / "started").string()), m_Gate((m_Directory / "gate").string()) {
  for (const char* name : {"jobs", "output", "records"}) {
    std::filesystem::create_directory(m_Directory / name);
  }
  (void)chmod(m_Directory.Path().c_str(), 0755);  // jobs of another user reach their pipes
}

SupervisorFixture::~SupervisorFixture() {
  if (m_Supervisor) {
    EXPECT_TRUE(m_Supervisor->Stop());
  }
}

void SupervisorFixture::AddJob(const std::string& name, const std::string& script,
                               const std::string& keys) {
  m_Directory.Write("jobs/" + name + ".sh", script + "\n");
  m_Directory.Write(
      "jobs/" + name + ".job",
      "[Job]\ncommand = /bin/sh\narguments = " + (m_Directory / ("jobs/" + name + ".sh")).string() +
          "\n" + keys + "\n[Environment]\nSTARTED = " + m_Started.Path() +
          "\nGATE = " + m_Gate.Path() + "\n");
  m_Scheduler.AddStoredTask(name);
}

void SupervisorFixture::AddGatedJob(const std::string& name, const std::string& keys) {
  AddJob(name, "echo $$ > $STARTED; read line < $GATE", keys);
}

void SupervisorFixture::Dispatch(const std::string& name, bool neverRun, bool killAtEnd) {
  m_Supervisor->Post({{AString(name.c_str()), false, neverRun, killAtEnd}});
}

void SupervisorFixture::StartSupervisor(std::chrono::milliseconds killGrace, std::size_t maxRuns) {
  HandlerSettings settings;
  settings.m_JobPath = Text(m_Directory / "jobs");
  settings.m_OutputPath = Text(m_Directory / "output");
  settings.m_RecordPath = Text(m_Directory / "records");
  settings.m_SchedulerClassId = NoxAgent::SchedulerClassId;
  settings.m_MachineId = "0123456789abcdef";
  settings.m_KillGrace = killGrace;
  settings.m_MaxRuns = maxRuns;
  settings.m_LogOutput = m_LogOutput;
  settings.m_GroupPath = AString::FromUtf8(m_GroupPath);
  m_Supervisor = std::make_unique<Supervisor>(settings, m_Clock);
  m_Supervisor->Start();
}

std::string SupervisorFixture::RunToEnd(const std::string& script, const std::string& keys) {
  AddJob("a", script, keys);
  StartSupervisor();
  Dispatch("a");
  const auto states = m_Scheduler.WaitForStates(1);
  return states.size() == 1 ? states[0] : "not one state";
}

std::string SupervisorFixture::Output(const std::string& name) const {
  return m_Directory.Has("output/" + name + ".log") ? m_Directory.Read("output/" + name + ".log")
                                                    : std::string();
}

std::vector<std::string> SupervisorFixture::RecordedTasks() const {
  std::vector<std::string> tasks;
  for (const NamedRunRecord& named : RunRecords(Text(m_Directory / "records"), 0).All()) {
    tasks.push_back(named.m_TaskId.ToUtf8());
  }
  return tasks;
}

unsigned SupervisorFixture::LogCount(const std::string& part) const {
  return m_Log.CountContaining(AString(part.c_str()));
}

bool SupervisorFixture::WaitUntil(const std::function<bool()>& condition) {
  for (int waited = 0; waited < TestSupport::PatienceMilliseconds && !condition(); ++waited) {
    (void)poll(nullptr, 0, 1);
  }
  return condition();
}

void SupervisorFixture::PassTime(std::chrono::seconds length) {
  m_Clock.Move(length);
  m_Supervisor->Post({});  // it looks at the clock
}

std::map<std::string, std::string> SupervisorFixture::Told(const std::string& name) const {
  std::map<std::string, std::string> told;
  for (const auto& [key, value] : m_Supervisor->Latest().Describe(AString(name.c_str()))) {
    told[key.ToUtf8()] = value.ToUtf8();
  }
  return told;
}

bool SupervisorFixture::WaitUntilTold(const std::string& name, const std::string& key,
                                      const std::string& value) {
  return WaitUntil([&] { return Told(name)[key] == value; });
}

void SupervisorFixture::StopSupervisor() {
  EXPECT_TRUE(m_Supervisor->Stop());
  m_Supervisor.reset();
}

bool SupervisorFixture::IsAlive(const std::string& pid) {
  const auto process = ProcessTable::Find(std::stoi(pid));
  return process && process->m_State != 'Z';
}

bool SupervisorFixture::WaitForEnd(const std::string& pid) {
  const FileDescriptor handle = ProcessHandle::Open(std::stoi(pid));
  pollfd end{handle.Get(), POLLIN, 0};
  return !handle || poll(&end, 1, TestSupport::PatienceMilliseconds) == 1;
}

}  // namespace NoxHandlerTest
