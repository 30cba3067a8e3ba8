#pragma once

#include <AgentInterfacesV3/AMsgValue.h>
#include <AgentInterfacesV3/INoxObject.h>

namespace Corvane::AgentInterfacesV3 {

/// The task scheduler as its clients see it: tasks are documents by ID, stored in files; the
/// scheduler keeps those that it has read in memory. docs/task-document.md describes documents.
/// Results of 1 and above are success and below 1 failure unless stated. [any thread]
class INoxTaskScheduler : public virtual INoxObject {
 public:
  /// Adds a task, or replaces the document of an existing one and keeps its history. An empty
  /// `taskId` has an ID invented. `newTaskId` becomes the ID in use. The document is not checked.
  virtual long AddTask(const BaseSDK::AString& taskId, const BaseSDK::AString& taskXml,
                       BaseSDK::AString& newTaskId) = 0;
  /// Deletes the task's file and drops the task; fails when there is no file. A run under way goes
  /// on.
  virtual long DeleteTask(const BaseSDK::AString& taskId) = 0;
  /// Reads the document from the task's file; negative when there is no such file or it cannot be
  /// read.
  virtual long GetTaskXML(const BaseSDK::AString& taskId, BaseSDK::AString& taskXml) = 0;

  /// Starts to enumerate the stored tasks and gives the first ID. `handle` is 0 on entry. If it is
  /// not 0 afterwards, it must be handed to FindClose, also when there was no task.
  virtual long FindFirstTask(unsigned long& handle, BaseSDK::AString& taskId) = 0;
  /// The next ID, in no particular order; fails after the last one. The IDs "." and ".." are no
  /// tasks: skip them.
  virtual long FindNextTask(unsigned long handle, BaseSDK::AString& taskId) = 0;
  /// Ends the enumeration. The result carries no information.
  virtual long FindClose(unsigned long handle) = 0;

  /// Has the scheduler evaluate the tasks in memory now. It does not read their files again.
  virtual long RefreshTaskList() = 0;
  /// Records how a task's last run went, in one word such as "Ok" or "Failed". 0 when recorded, 1
  /// when there is no such task in memory.
  virtual long SetRunState(const BaseSDK::AString& taskId, const BaseSDK::AString& runState) = 0;
  /// Adds what the scheduler knows of a task to `attributes`; keys that are there already keep
  /// their values. docs/plugins.md lists the keys. 1; -1 when there is no such task in memory.
  /// `inputAttributes` may be null.
  virtual long GetTaskAttributes(const BaseSDK::AString& taskId, AStringMap& attributes,
                                 const AStringMap* inputAttributes) = 0;
  /// Enables or disables tasks; `taskIds` joins their IDs by ":". 1 when at least one task accepted
  /// the change, else -1.
  virtual long EnableTask(const BaseSDK::AString& taskIds, bool enable) = 0;

  /// The identifier of this interface, as CIGetObjectInterface takes it.
  static const BaseSDK::AGuid& GetIID();

 protected:
  ~INoxTaskScheduler() = default;
};

}  // namespace Corvane::AgentInterfacesV3
