#pragma once

#include "Common/PluginBase.h"
#include "Common/ThreadAnnotations.h"
#include "scheduler/MonitorThread.h"
#include "scheduler/TaskMap.h"

#include <AgentInterfacesV3/INoxTaskScheduler_impl.h>
#include <BaseSDK/ALtstr.h>
#include <BaseSDK/AMap.h>
#include <BaseSDK/AMutex.h>
#include <BaseSDK/AString.h>

#include <atomic>
#include <cstdint>
#include <memory>

class CTask;
class CTaskStorage;

/// The plug-in's one server object: it holds the task files, the tasks in memory, the monitor
/// thread that runs them, and the gate that keeps tasks from running while the agent is busy with
/// itself.
///
/// The frame makes it, calls Initialize, and destroys it after Uninitialize(1). Operations of the
/// interfaces come on the agent's threads, several at once, after Initialize has succeeded and
/// before Uninitialize.
///
/// Locks: the state lock before the storage's own lock, never the reverse; the count lock alone.
/// While a handler is called none is held. docs/threads-and-locks.md has the whole picture.
class TaskSchedulerObject_i : public Corvane::AgentInterfacesV3::INoxTaskScheduler_impl,
                              public APluginBase {
 public:
  /// The attributes of a task by their keys.
  using AttributeMap =
      BaseSDK::Container::AMap<BaseSDK::AString, BaseSDK::AString, BaseSDK::ALtstr>;

  /// Starts nothing and subscribes to nothing; the gate is closed.
  TaskSchedulerObject_i();
  ~TaskSchedulerObject_i() override;

  // INoxObject

  int ObjectDebugInfo(BaseSDK::AString& report) override PLUGIN_EXCLUDES(m_StateLock);
  int NotifyObject(long kind, long code, const BaseSDK::AString& text) override
      PLUGIN_EXCLUDES(m_StateLock, m_CountLock);

  // INoxVeskClientAgent: acknowledged, nothing more. The gate opens through NotifyObject.

  int AgentStart() override;
  int AgentStop() override;
  int AgentRefresh() override;
  int AgentQuery() override;
  int AgentQueryUnload() override;
  int AgentInstall() override;
  int AgentUninstall() override;
  int AgentUpgrade() override;

  // INoxTaskScheduler

  long AddTask(const BaseSDK::AString& taskID, const BaseSDK::AString& taskXML,
               BaseSDK::AString& newTaskID) override PLUGIN_EXCLUDES(m_StateLock);
  long DeleteTask(const BaseSDK::AString& taskID) override PLUGIN_EXCLUDES(m_StateLock);
  long GetTaskXML(const BaseSDK::AString& taskID, BaseSDK::AString& taskXML) override;
  long FindFirstTask(unsigned long& handle, BaseSDK::AString& taskID) override;
  long FindNextTask(unsigned long handle, BaseSDK::AString& taskID) override;
  long FindClose(unsigned long handle) override;
  long RefreshTaskList() override;
  long SetRunState(const BaseSDK::AString& taskID, const BaseSDK::AString& runState) override
      PLUGIN_EXCLUDES(m_StateLock);
  long GetTaskAttributes(const BaseSDK::AString& taskID, AttributeMap& attributes,
                         const AttributeMap* inputAttributes) override PLUGIN_EXCLUDES(m_StateLock);
  long EnableTask(const BaseSDK::AString& taskIDs, bool enable) override
      PLUGIN_EXCLUDES(m_StateLock);

  // INoxInterfaceFactory and APluginBase

  int QueryInterface(const UUID& interfaceId, void*& object) override;
  int QueryInterface(const BaseSDK::AGuid& interfaceId, void*& object) override;
  int GetVersion() override;
  /// 1 when the tasks are stored somewhere and the monitor runs. Takes no lock.
  int Initialize() override;
  /// Refuses unless forced. Then it stops the monitor and lets the storage go; 1. Takes no lock.
  int Uninitialize(unsigned int forced) override;
  int GetAttribute(const char* name, BaseSDK::AString& value) override;

  /// For the tasks and the monitor. Borrowed; null before Initialize and after Uninitialize.
  CTaskStorage* Storage() const { return m_Storage.get(); }

  /// Rewrites a task document around the given markup of a TaskHistory element. Never fails: what a
  /// document lacks stays empty.
  static void UpdateTaskHistoryNode(BaseSDK::AString& document, const BaseSDK::AString& history);

 private:
  friend class CMonitorThread;

  // The gate and its notifications
  bool IsProcessingEnabled() const;
  void OpenGate();
  void CloseGate();
  void OpenGateAfter(const wchar_t* message);
  void CloseGateForPolicyRefresh();
  void BeginInstallTask(const wchar_t* message, const BaseSDK::AString& plugin)
      PLUGIN_EXCLUDES(m_CountLock);
  void EndInstallTask(const wchar_t* message, const BaseSDK::AString& plugin)
      PLUGIN_EXCLUDES(m_CountLock);
  void RecordNotification(long code, const BaseSDK::AString& text) PLUGIN_EXCLUDES(m_StateLock);

  // The interface
  long AddNewTask(const BaseSDK::AString& taskID, const BaseSDK::AString& taskXML,
                  BaseSDK::AString& newTaskID) PLUGIN_EXCLUDES(m_StateLock);
  long ReplaceTask(const BaseSDK::AString& taskID, const BaseSDK::AString& taskXML)
      PLUGIN_EXCLUDES(m_StateLock);
  /// Copies the storage's code; passes `result` on.
  long WithLastError(long result);

  // The task map. Both rouse the monitor, which waits for the state lock then.
  /// Puts a task into the map in place of the one of that ID. Without memory for it there is none
  /// of that ID until the next load.
  void StartTaskThread(const BaseSDK::AString& taskID, const BaseSDK::AString& taskXML)
      PLUGIN_REQUIRES(m_StateLock);
  /// Takes a task out of the map.
  void StopTaskThread(const BaseSDK::AString& taskID) PLUGIN_REQUIRES(m_StateLock);
  /// A task with its place in the map, so that putting it there takes no more memory. When there is
  /// not enough, a place without a task, or not even that.
  TaskMap::Node MakeTask(const BaseSDK::AString& taskID, const BaseSDK::AString& taskXML);

  std::unique_ptr<CTaskStorage> m_Storage;
  BaseSDK::AMutex m_StateLock;
  bool m_Notification302 PLUGIN_GUARDED_BY(m_StateLock) = false;
  bool m_Notification300 PLUGIN_GUARDED_BY(m_StateLock) = false;
  // Result code of the operations' last storage call. Written without a lock by whichever request
  // comes last; relaxed, for it orders nothing.
  std::atomic<unsigned long> m_LastError = 0;
  TaskMap m_Tasks PLUGIN_GUARDED_BY(m_StateLock);
  CMonitorThread m_MonitorThread;
  // The gate. Written with and without the count lock, read by the monitor without one: a reading
  // that is one iteration late is fine. Relaxed: the event that rouses the monitor orders it.
  std::atomic<bool> m_ProcessingEnabled = false;
  std::uint32_t m_InstallTaskCount PLUGIN_GUARDED_BY(m_CountLock) = 0;
  BaseSDK::AMutex m_CountLock;
};
