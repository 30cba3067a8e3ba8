#include "agent/daemon/journal/UnflushedChanges.h"

#include "agent/daemon/store/FileCalls.h"

#include <cerrno>

using BaseSDK::AFileSystem;

namespace NoxAgent {

void UnflushedChanges::AddName(const std::string& path, Thread thread) {
  m_Changes[path].m_Thread = thread;
}

void UnflushedChanges::AddContent(const std::string& path, Thread thread) {
  m_Changes[path] = {thread, true};
}

void UnflushedChanges::AddRename(const std::string& from, const std::string& to, Thread thread) {
  m_Changes[from] = {thread, false};
  // The journal may have its content, but under the name that is gone.
  m_Changes[to] = {thread, true};
}

void UnflushedChanges::AddRemoval(const std::string& path, Thread thread) {
  m_Changes[path] = {thread, false};
}

unsigned UnflushedChanges::Flush(AFileSystem& files, const std::string& directory,
                                 FailedChanges& failed) {
  // One flush of the whole disk costs about as much as a few of single files, unless others write
  // much to it at that moment.
  constexpr std::size_t MostOneByOne = 8;
  const bool areMany = m_HasUnnamed || m_Changes.size() > MostOneByOne;
  unsigned flushes = areMany ? 1 : 0;
  if (!areMany || FlushDiskOf(files, directory) != 0) {
    flushes += m_Changes.empty() ? 0 : FlushOneByOne(files, directory, failed);
  }
  m_Changes.clear();
  m_HasUnnamed = false;
  return flushes;
}

unsigned UnflushedChanges::FlushOneByOne(AFileSystem& files, const std::string& directory,
                                         FailedChanges& failed) const {
  unsigned flushes = 1;
  for (const auto& [path, change] : m_Changes) {
    if (change.m_HasContent) {
      ++flushes;
      const int error = FlushFile(files, path);
      // One that somebody has removed meanwhile has nothing left to flush.
      if (error != 0 && error != ENOENT) {
        failed.Note(change.m_Thread, path, error);
      }
    }
  }
  if (const int error = FlushDirectory(files, directory); error != 0) {
    for (const auto& [path, change] : m_Changes) {
      failed.Note(change.m_Thread, path, error);
    }
  }
  return flushes;
}

}  // namespace NoxAgent
