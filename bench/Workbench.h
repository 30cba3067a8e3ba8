#pragma once

#include "agent/daemon/store/TaskStore.h"
#include "scheduler/TaskSchedulerObject.h"

#include <AgentInterfacesV3/INoxScheduledTaskHandler.h>
#include <AgentSDK/AHost.h>
#include <BaseSDK/ALogSink.h>

#include <condition_variable>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

/// What the benchmarks share: a task directory, an agent of a few lines, and the real plug-in.
namespace Workbench {

/// The task handler of the benchmarks.
constexpr const char* BenchHandlerClassId = "{B0000000-0000-0000-0000-000000000001}";

/// Seconds since the epoch, with fractions.
double FineNow();
/// The seconds for which this process has had a processor, all its threads together.
double CpuNow();

/// A document of about 640 bytes: a daily trigger, a description that begins with the number, a run
/// of today. No two tasks of a machine have the same document, and reading one twice costs less.
std::string DailyTask(long number, const std::string& handlerClassId = BenchHandlerClassId);
/// Runs once, at `due`.
std::string TaskDueAt(long due, long number);

/// A directory that goes with the object.
class TaskDirectory {
 public:
  TaskDirectory();
  TaskDirectory(const TaskDirectory&) = delete;
  TaskDirectory& operator=(const TaskDirectory&) = delete;
  ~TaskDirectory();

  /// Makes so many task files.
  void Fill(long count, const std::function<std::string(long number)>& document) const;
  /// The task file of this number.
  std::filesystem::path File(long number) const;
  const std::filesystem::path& Folder() const { return m_Path; }
  BaseSDK::AString Path() const;

 private:
  std::filesystem::path m_Path;
};

/// The agent's part in the files of a directory: its journal, above all.
class Store {
 public:
  explicit Store(const TaskDirectory& directory);

 private:
  NoxAgent::TaskStore m_Store;
};

/// Takes every batch and remembers when the first of them came.
class Handler : public Corvane::AgentInterfacesV3::INoxScheduledTaskHandler {
 public:
  virtual ~Handler() = default;
  double WaitForCall();

  long RunTasks(const BaseSDK::AString&) override { return 1; }
  long RunTasksEx(const BaseSDK::AString&) override;
  long Release() override { return 1; }
  int ObjectDebugInfo(BaseSDK::AString&) override { return 1; }
  int NotifyObject(long, long, const BaseSDK::AString&) override { return 0; }

 private:
  std::mutex m_Lock;
  std::condition_variable m_Called;
  double m_CallTime = 0;
};

class Host : public AgentSDK::AHost {
 public:
  Host(BaseSDK::AString taskPath, Handler& handler);
  ~Host() override;

  long Subscribe(const BaseSDK::AString&, const long*, unsigned) override { return 1; }
  long PostNotification(long, const BaseSDK::AString&) override { return 1; }
  BaseSDK::AString GetConfigString(const BaseSDK::AString& section, const BaseSDK::AString& key,
                                   const BaseSDK::AString& fallback) override;
  long OpenObject(const BaseSDK::AString& classId, const BaseSDK::AGuid& interfaceId,
                  unsigned long flags, void*& object) override;

 private:
  BaseSDK::AString m_TaskPath;
  Handler& m_Handler;
  AgentSDK::AHost* const m_Before;
};

/// Listens to the log for the monitor going to sleep: its work is then done.
class SleepListener : public BaseSDK::ALogSink {
 public:
  void Write(const BaseSDK::ALogRecord& record) noexcept override;
  void WaitForSleep();
  /// Returns when the monitor has gone to sleep after `moment`, as FineNow says it.
  void WaitForSleepAfter(double moment);

 private:
  std::mutex m_Lock;
  std::condition_variable m_Slept;
  unsigned m_Sleeps = 0, m_Seen = 0;
  double m_LastSleep = 0;
};

/// The plug-in over a directory, from its start to its end. The gate is closed at first.
class Plugin {
 public:
  explicit Plugin(const TaskDirectory& directory);
  ~Plugin();

  /// Returns when every task is loaded.
  void Start();
  /// Opens the gate, which is one pass over all tasks; returns when it is over.
  void Pass();
  /// Returns when the monitor sleeps again, all runs recorded, after the handler's first call.
  void WaitUntilRecorded() { m_Listener->WaitForSleepAfter(m_Handler.WaitForCall()); }
  Handler& TaskHandler() { return m_Handler; }

 private:
  const Store m_Store;
  Handler m_Handler;
  Host m_Host;
  std::shared_ptr<SleepListener> m_Listener;
  TaskSchedulerObject_i m_Scheduler;
};

}  // namespace Workbench
