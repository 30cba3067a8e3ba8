#pragma once

#include <AgentInterfacesV3/INoxCommandHandler_impl.h>
#include <AgentInterfacesV3/INoxScheduledTaskHandler_impl.h>
#include <AgentInterfacesV3/INoxTaskScheduler_impl.h>
#include <BaseSDK/AString.h>

#include <functional>
#include <string>
#include <vector>

/// Objects that do nothing but write down each call as text, such as `DeleteTask("backup")`, and
/// answer with results and out values of their own for each operation.
namespace RecordingObjects {

using BaseSDK::AString;
using Corvane::AgentInterfacesV3::AStringMap;

class Calls {
 public:
  /// Also runs the hook, if there is one.
  void Add(const std::string& call);
  const std::vector<std::string>& All() const { return m_All; }

  std::function<void()> m_Hook;  ///< may throw

 private:
  std::vector<std::string> m_All;
};

/// Serves the scheduler's three interfaces.
class Scheduler : public Corvane::AgentInterfacesV3::INoxTaskScheduler_impl {
 public:
  /// Result of RefreshTaskList, the one that a test may set.
  long m_RefreshResult = 1;
  Calls m_Calls;
  unsigned* m_Destroyed = nullptr;  ///< counted up by the destructor

  ~Scheduler() override;

  int ObjectDebugInfo(AString& report) override;
  int NotifyObject(long kind, long code, const AString& text) override;
  int AgentStart() override;
  int AgentStop() override;
  int AgentRefresh() override;
  int AgentQuery() override;
  int AgentQueryUnload() override;
  int AgentInstall() override;
  int AgentUninstall() override;
  int AgentUpgrade() override;
  long AddTask(const AString& taskId, const AString& taskXml, AString& newTaskId) override;
  long DeleteTask(const AString& taskId) override;
  long GetTaskXML(const AString& taskId, AString& taskXml) override;
  long FindFirstTask(unsigned long& handle, AString& taskId) override;
  long FindNextTask(unsigned long handle, AString& taskId) override;
  long FindClose(unsigned long handle) override;
  long RefreshTaskList() override;
  long SetRunState(const AString& taskId, const AString& runState) override;
  long GetTaskAttributes(const AString& taskId, AStringMap& attributes,
                         const AStringMap* inputAttributes) override;
  long EnableTask(const AString& taskIds, bool enable) override;
};

/// Serves INoxObject and INoxScheduledTaskHandler.
class Handler : public Corvane::AgentInterfacesV3::INoxScheduledTaskHandler_impl {
 public:
  Calls m_Calls;

  int ObjectDebugInfo(AString& report) override;
  int NotifyObject(long kind, long code, const AString& text) override;
  long RunTasks(const AString& batch) override;
  long RunTasksEx(const AString& batch) override;
};

/// Serves INoxObject and INoxCommandHandler.
class CommandHandler : public Corvane::AgentInterfacesV3::INoxCommandHandler_impl {
 public:
  Calls m_Calls;

  int ObjectDebugInfo(AString& report) override;
  int NotifyObject(long kind, long code, const AString& text) override;
  long GetRun(const AString& taskId, AStringMap& run) override;
  long CheckJob(const AString& taskId, AString& problem) override;
  long PutJob(const AString& taskId, const AString& text, AString& problem) override;
  long GetJob(const AString& taskId, AString& text, AString& problem) override;
  long DeleteJob(const AString& taskId, AString& problem) override;
  long GetOutput(const AString& taskId, const AString& position, AString& text,
                 AString& next) override;
  long StopRun(const AString& taskId) override;
};

}  // namespace RecordingObjects
