#pragma once

#include "agent/daemon/journal/JournaledFiles.h"
#include "agent/daemon/store/DirectoryListings.h"
#include "agent/daemon/store/ForwardingFileSystem.h"
#include "agent/daemon/store/KnownFiles.h"
#include "agent/daemon/store/OpenTaskFiles.h"
#include "agent/daemon/store/ReadingTimes.h"
#include "agent/daemon/store/RefusedFolder.h"
#include "agent/daemon/store/StrayFiles.h"
#include "agent/daemon/store/TaskDirectory.h"
#include "agent/daemon/store/TaskReader.h"
#include "agent/daemon/store/TaskRemover.h"
#include "agent/daemon/store/WriteTrouble.h"

#include <optional>
#include <string>

namespace NoxAgent {

/// The file system as the scheduler sees it. It watches over the task directory, because the
/// scheduler is careless with it, and silent: it takes any file for a task, deletes what it can
/// make no task of, drops tasks that it cannot read, and goes on when it cannot write. So on the
/// way to the disk:
///
/// - a file is judged when it is opened for reading (TaskReader);
/// - a file that the scheduler deletes of its own accord is reported in the log (TaskRemover);
/// - a task file that cannot be written is reported (WriteTrouble, WriteFailures);
/// - the directory is listed in one go, and a listing that breaks off is reported.
///
/// Everything else passes through. A call counts as the scheduler's own when the thread is
/// answering no request. [any thread]
class StoreFileSystem final : public ForwardingFileSystem, private JournaledFiles::Observer {
 public:
  /// `below` is borrowed and outlives this object. Refused documents go to the folder
  /// `refusedPath`.
  StoreFileSystem(JournaledFiles& below, TaskDirectory directory, const std::string& refusedPath);
  ~StoreFileSystem() override;
  StoreFileSystem(const StoreFileSystem&) = delete;
  StoreFileSystem& operator=(const StoreFileSystem&) = delete;

  const TaskDirectory& Directory() const { return m_Directory; }
  RefusedFolder& Refused() { return m_Refused; }
  StrayFiles& Strays() { return m_Strays; }
  const ReadingTimes& Readings() const { return m_Readings; }
  const WriteTrouble& Trouble() const { return m_WriteTrouble; }

  int Open(const char* path, int flags, unsigned mode, int& fd) override;
  int Read(int fd, void* buffer, std::size_t size, std::size_t& got) override;
  int Write(int fd, const void* data, std::size_t size, std::size_t& written) override;
  int Sync(int fd) override;
  int Close(int fd) override;
  int Rename(const char* from, const char* to, bool replace) override;
  int Unlink(const char* path) override;
  int OpenDirectory(const char* path, unsigned long& handle) override;
  int ReadDirectory(unsigned long handle, const char*& name) override;
  int CloseDirectory(unsigned long handle) override;
  int ReplaceFile(const char* path, const std::string& bytes) override;

 private:
  void OnReplaced(const std::string& path, const Info& info) noexcept override;
  void OnFailure(const std::string& path, int error) noexcept override;
  bool IsFailureAwaited() const noexcept override;

  /// The name of a task file; nothing for any other path.
  std::optional<std::string> TaskFileAt(const char* path) const;
  int Make(const std::string& name, const char* path, int flags, unsigned mode, int& fd);
  /// Notes the failure of a call on a file that is being made; returns `error`.
  int NoteOfMade(int fd, int error);
  void ReportReading(int error) const;

  JournaledFiles& m_Journaled;
  const TaskDirectory m_Directory;
  RefusedFolder m_Refused;

  // Each with a lock of its own.
  KnownFiles m_Known;
  OpenTaskFiles m_Open;
  DirectoryListings m_Listings;
  ReadingTimes m_Readings;
  WriteTrouble m_WriteTrouble;
  StrayFiles m_Strays;

  TaskReader m_Reader;
  TaskRemover m_Remover;
};

}  // namespace NoxAgent
