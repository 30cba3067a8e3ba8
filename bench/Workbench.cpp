#include "bench/Workbench.h"

#include <BaseSDK/ADateTime.h>
#include <BaseSDK/AFileSystem.h>
#include <BaseSDK/ALogConfig.h>

#include <cstdlib>
#include <ctime>
#include <fstream>
#include <stdexcept>
#include <utility>

using BaseSDK::AString;

namespace Workbench {
namespace {

constexpr long StartupFinished = 0;

constexpr const char* JournalSuffix = ".journal";

constexpr const char* SchedulerChannel = "Corvane::Agent::TaskScheduler";

std::string Document(const std::string& handlerClassId, const std::string& trigger,
                     const std::string& history) {
  return "<Task Enabled=\"1\">\n\t<HandlerCLSID>" + handlerClassId +
         "</HandlerCLSID>\n\t<Schedule>\n\t\t" + trigger + "\n\t</Schedule>\n\t" + history +
         "\n</Task>";
}

double SecondsOn(clockid_t clock) {
  timespec now{};
  clock_gettime(clock, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

}  // namespace

double FineNow() {
  return SecondsOn(CLOCK_REALTIME);
}

double CpuNow() {
  return SecondsOn(CLOCK_PROCESS_CPUTIME_ID);
}

std::string DailyTask(long number, const std::string& handlerClassId) {
  const std::string name = std::to_string(number);
  const std::string today = BaseSDK::ADateTime::Now().ToString(L"%Y-%m-%d %H:%M:%S").ToUtf8();
  return Document(handlerClassId,
                  "<Trigger Type=\"1\" Description=\"" + name +
                      std::string(230 - name.size(), 'd') +
                      "\" Interval=\"0\" IntervalUnit=\"MINUTE\" Duration=\"0\" KillAtEnd=\"0\">"
                      "<BeginDate>2005/03/01 03:00:00</BeginDate><DaysInterval>1</DaysInterval>"
                      "<MonthsOfYear>4095</MonthsOfYear></Trigger>",
                  "<TaskHistory>\n\t\t<RunTime>" + today + " Ok</RunTime>\n\t</TaskHistory>");
}

std::string TaskDueAt(long due, long number) {
  const std::string begin = BaseSDK::ADateTime(due).ToString(L"%Y/%m/%d %H:%M:%S").ToUtf8();
  return Document(BenchHandlerClassId,
                  "<Trigger Type=\"0\" Description=\"" + std::to_string(number) + "\"><BeginDate>" +
                      begin + "</BeginDate></Trigger>",
                  "");
}

TaskDirectory::TaskDirectory() {
  std::string name = (std::filesystem::temp_directory_path() / "nox_bench_XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) {
    throw std::runtime_error("no temporary directory: " + name);
  }
  m_Path = name;
}

TaskDirectory::~TaskDirectory() {
  std::filesystem::remove_all(m_Path);
  std::filesystem::remove(m_Path.string() + JournalSuffix);
}

void TaskDirectory::Fill(long count,
                         const std::function<std::string(long number)>& document) const {
  for (long i = 0; i < count; ++i) {
    std::ofstream(File(i)) << document(i);
  }
}

std::filesystem::path TaskDirectory::File(long number) const {
  return m_Path / ("task" + std::to_string(number) + ".vsk");
}

AString TaskDirectory::Path() const {
  return AString::FromUtf8(m_Path.string());
}

Store::Store(const TaskDirectory& directory) {
  const AString path = directory.Path();
  m_Store.Guard({"scheduler", path, ".vsk", path + ".refused", path + JournalSuffix});
}

// The message queue, which stands between the scheduler and a handler in the agent, makes all safe
// first.
long Handler::RunTasksEx(const AString&) {
  BaseSDK::AFileSystem::Current().MakeSafe();
  const double now = FineNow();
  const std::lock_guard guard(m_Lock);
  if (m_CallTime == 0) {
    m_CallTime = now;
  }
  m_Called.notify_all();
  return 1;
}

double Handler::WaitForCall() {
  std::unique_lock guard(m_Lock);
  m_Called.wait(guard, [this] { return m_CallTime != 0; });
  return m_CallTime;
}

Host::Host(AString taskPath, Handler& handler)
    : m_TaskPath(std::move(taskPath)), m_Handler(handler), m_Before(Replace(this)) {}

Host::~Host() {
  Replace(m_Before);
}

AString Host::GetConfigString(const AString&, const AString& key, const AString& fallback) {
  if (key == L"task_storage_path") {
    return m_TaskPath;
  }
  return key == L"task_file_extension" ? AString(L".vsk") : fallback;
}

long Host::OpenObject(const AString&, const BaseSDK::AGuid&, unsigned long, void*& object) {
  object = static_cast<Corvane::AgentInterfacesV3::INoxScheduledTaskHandler*>(&m_Handler);
  return 1;
}

void SleepListener::Write(const BaseSDK::ALogRecord& record) noexcept {
  if (record.m_Message.Find(L"Task Thread is sleeping") == AString::npos) {
    return;
  }
  const std::lock_guard guard(m_Lock);
  ++m_Sleeps;
  m_LastSleep = FineNow();
  m_Slept.notify_all();
}

void SleepListener::WaitForSleep() {
  std::unique_lock guard(m_Lock);
  m_Slept.wait(guard, [this] { return m_Sleeps > m_Seen; });
  m_Seen = m_Sleeps;
}

void SleepListener::WaitForSleepAfter(double moment) {
  std::unique_lock guard(m_Lock);
  m_Slept.wait(guard, [&] { return m_LastSleep > moment; });
  m_Seen = m_Sleeps;
}

Plugin::Plugin(const TaskDirectory& directory)
    : m_Store(directory),
      m_Host(directory.Path(), m_Handler),
      m_Listener(std::make_shared<SleepListener>()) {
  BaseSDK::ALogConfig::SetLevel(SchedulerChannel, BaseSDK::ALogger::Trace);
  BaseSDK::ALogConfig::AddSink(m_Listener);
}

Plugin::~Plugin() {
  (void)m_Scheduler.Uninitialize(1);
  BaseSDK::ALogConfig::RemoveSink(m_Listener);
}

void Plugin::Start() {
  if (m_Scheduler.Initialize() != 1) {
    throw std::runtime_error("the plug-in did not start");
  }
  m_Listener->WaitForSleep();
}

void Plugin::Pass() {
  (void)m_Scheduler.NotifyObject(StartupFinished, 0, L"");
  m_Listener->WaitForSleep();
}

}  // namespace Workbench
