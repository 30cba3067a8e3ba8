#pragma once

#include "Common/ThreadAnnotations.h"

#include <BaseSDK/AMutex.h>
#include <BaseSDK/AString.h>

#include <atomic>
#include <cstddef>

/// The tasks on disk: one directory, one UTF-8 file per task, named after the task ID. Documents
/// are opaque here. The agent is told of every change: 100 replaced, 101 deleted, 102 added, each
/// with the task ID. docs/files.md describes the directory.
///
/// Operations return 1 for success and -1 for failure, with the code in m_LastError, unless they
/// say otherwise. When memory runs out they throw, and have changed nothing on disk. All may be
/// called from any thread. The storage lock comes after the scheduler's state lock where both are
/// held.
class CTaskStorage {
 public:
  /// Codes of the storage's own; other codes are those of the base library's file routines.
  static constexpr unsigned long ERR_FILE_WRITE = 0x80000044UL;
  static constexpr unsigned long ERR_INVALID_ARGUMENT = 0x8000005EUL;
  static constexpr unsigned long ERR_NO_MORE_TASKS = 0x80000064UL;

  /// An empty `path` means "%installdir%/var/tasks", an empty `extension` ".vsk". "/" is always
  /// appended to the path. Nothing on disk is touched.
  CTaskStorage(const BaseSDK::AString& path, const BaseSDK::AString& extension);
  CTaskStorage(const CTaskStorage&) = delete;
  CTaskStorage& operator=(const CTaskStorage&) = delete;
  virtual ~CTaskStorage();

  /// Creates the file of a new task. An empty `taskID` asks for one to be invented:
  /// "corvane_task_" and a unique tail. `newTaskID` receives the ID the task has now; it is filled
  /// also when only the last step, the rename of an invented file, failed. An existing file is
  /// ERR_FILE_WRITE and stays as it is.
  long AddTask(const BaseSDK::AString& taskID, const BaseSDK::AString& taskXML,
               BaseSDK::AString& newTaskID) PLUGIN_EXCLUDES(m_Lock);
  /// Creates or replaces the task's file. Fails only for an empty ID or document.
  long SetTaskXML(const BaseSDK::AString& taskID, const BaseSDK::AString& taskXML)
      PLUGIN_EXCLUDES(m_Lock);
  /// Reads the task's file; `taskXML` is left alone on failure.
  long GetTaskXML(const BaseSDK::AString& taskID, BaseSDK::AString& taskXML)
      PLUGIN_EXCLUDES(m_Lock);
  /// Deletes the task's file.
  long DeleteTask(const BaseSDK::AString& taskID) PLUGIN_EXCLUDES(m_Lock);

  /// To enumerate, call FindFirstTask with a handle of 0, then FindNextTask until it fails, then
  /// FindClose. FindClose is due whenever FindFirstTask leaves a handle other than 0, even if it
  /// failed or threw. The order is the directory's own; every entry counts as a task. Files may
  /// come and go meanwhile. After an exception the next call goes on behind the entry that was
  /// lost.
  long FindFirstTask(unsigned long& handle, BaseSDK::AString& taskID) PLUGIN_EXCLUDES(m_Lock);
  /// 0 for a handle of 0, which is a failure too. Delivers the entries "." and ".." like others.
  long FindNextTask(unsigned long handle, BaseSDK::AString& taskID) PLUGIN_EXCLUDES(m_Lock);
  void FindClose(unsigned long handle) PLUGIN_EXCLUDES(m_Lock);

  /// Path, ID and extension in a row; the ID is neither checked nor escaped.
  BaseSDK::AString GetTaskFilename(const BaseSDK::AString& taskID) const;
  /// The name after its last "/", up to the first occurrence of the extension.
  BaseSDK::AString GetTaskID(const BaseSDK::AString& fileName) const;

 private:
  class NewFile;

  long Fail(unsigned long code) PLUGIN_REQUIRES(m_Lock);
  long Result() const PLUGIN_REQUIRES(m_Lock);
  // These two leave the descriptor at -1 when the file cannot be opened.
  void OpenInventedFile(NewFile& file) const;
  void OpenNamedFile(const BaseSDK::AString& taskID, NewFile& file) const;
  /// Closes the file in every case; the outcome is in m_LastError.
  void WriteNewFile(NewFile& file, const char* bytes, std::size_t count) PLUGIN_REQUIRES(m_Lock);
  bool ReadEntry(unsigned long handle, BaseSDK::AString& name) PLUGIN_REQUIRES(m_Lock);

  BaseSDK::AMutex m_Lock;
  BaseSDK::AString m_Path;  // constant after construction; ends in "/"

 public:
  /// Result code of the last operation, 0 for success. Callers read it after their call without the
  /// lock, so it may be that of another thread's call by then. Relaxed access is enough: it orders
  /// nothing.
  std::atomic<unsigned long> m_LastError;

 private:
  BaseSDK::AString m_Extension;  // constant after construction; dot included
};
