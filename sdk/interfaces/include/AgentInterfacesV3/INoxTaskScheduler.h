#pragma once

#include <AgentInterfacesV3/AMsgValue.h>
#include <AgentInterfacesV3/INoxObject.h>

namespace Corvane::AgentInterfacesV3 {

/// The task scheduler as its clients see it. Results of 1 and above are success and below 1 failure
/// unless stated. [any thread]
class INoxTaskScheduler : public virtual INoxObject {
 public:
  /// Adds a task, or replaces the document of an existing one and keeps its history. An empty
  /// `taskId` has an ID invented. `newTaskId` becomes the ID in use.
  virtual long AddTask(const BaseSDK::AString& taskId, const BaseSDK::AString& taskXml,
                       BaseSDK::AString& newTaskId) = 0;
  virtual long DeleteTask(const BaseSDK::AString& taskId) = 0;
  virtual long GetTaskXML(const BaseSDK::AString& taskId, BaseSDK::AString& taskXml) = 0;

  /// Enumerates the stored tasks. `handle` is 0 on entry; if it is not 0 afterwards FindClose is
  /// due, also when there was no task.
  virtual long FindFirstTask(unsigned long& handle, BaseSDK::AString& taskId) = 0;
  /// The IDs "." and ".." are no tasks and are to be skipped.
  virtual long FindNextTask(unsigned long handle, BaseSDK::AString& taskId) = 0;
  /// The result carries no information.
  virtual long FindClose(unsigned long handle) = 0;

  /// Has the scheduler evaluate its tasks now.
  virtual long RefreshTaskList() = 0;
  /// Records how a task's last run went, in one word. 0 when recorded, 1 when there is no such task
  /// in memory.
  virtual long SetRunState(const BaseSDK::AString& taskId, const BaseSDK::AString& runState) = 0;
  /// Adds a task's attributes to those in `attributes`, which keep their values; -1 when there is
  /// no such task in memory. `inputAttributes` may be null.
  virtual long GetTaskAttributes(const BaseSDK::AString& taskId, AStringMap& attributes,
                                 const AStringMap* inputAttributes) = 0;
  /// `taskIds` joins IDs by ":"; 1 when at least one task accepted the change, else -1.
  virtual long EnableTask(const BaseSDK::AString& taskIds, bool enable) = 0;

  static const BaseSDK::AGuid& GetIID();

 protected:
  ~INoxTaskScheduler() = default;
};

}  // namespace Corvane::AgentInterfacesV3
