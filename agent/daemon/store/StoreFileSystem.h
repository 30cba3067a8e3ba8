#pragma once

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

/// The file system as the scheduler sees it, with an eye on the task directory. The scheduler takes
/// any file for a task and deletes what it can make nothing of, drops tasks that it cannot read,
/// and goes on when it cannot write, all without a word. So here, on the way to the disk:
///
/// - a file is judged when it is opened to be read (TaskReader);
/// - what the scheduler deletes, though no request has asked it to, is told of (TaskRemover);
/// - a task file that cannot be written is told of (WriteTrouble, WriteFailures);
/// - the directory is listed in one go, and a listing that breaks off is told of.
///
/// Everything else passes through. [any thread]
class StoreFileSystem final : public ForwardingFileSystem {
 public:
  /// `below` is borrowed; refused documents go to the folder `refusedPath`.
  StoreFileSystem(AFileSystem& below, TaskDirectory directory, const std::string& refusedPath);

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
  void Replaced(const char* path, int error) override;

 private:
  /// The name of a task file; nothing for any other path.
  std::optional<std::string> TaskFileAt(const char* path) const;
  int Make(const std::string& name, const char* path, int flags, unsigned mode, int& fd);
  /// Of a file that is being made.
  int NoteOfMade(int fd, int error);
  void ReportReading(int error) const;

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
