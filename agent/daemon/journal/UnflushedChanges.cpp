#include "agent/daemon/journal/UnflushedChanges.h"

#include <BaseSDK/AFileCalls.h>

#include <cerrno>
#include <utility>

using BaseSDK::AFileCalls;
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

void UnflushedChanges::AddEarlier(UnflushedChanges& earlier) noexcept {
  m_Changes.merge(earlier.m_Changes);
  for (const auto& [path, change] : earlier.m_Changes) {
    m_Changes.find(path)->second.m_HasContent |= change.m_HasContent;
  }
  earlier.m_Changes.clear();
  m_HasUnnamed |= std::exchange(earlier.m_HasUnnamed, false);
}

unsigned UnflushedChanges::Flush(AFileSystem& files, const std::string& directory,
                                 FailedChanges& failed) {
  // One flush of the whole disk costs about as much as a few of single files, unless others write
  // much to it at that moment.
  constexpr std::size_t MostOneByOne = 8;
  if (!m_HasUnnamed && m_Changes.size() <= MostOneByOne) {
    return m_Changes.empty() ? 0 : FlushOneByOne(files, directory, failed);
  }
  if (AFileCalls::FlushDiskOf(files, directory) != 0) {
    return 1 + FlushOneByOne(files, directory, failed);
  }
  m_Changes.clear();
  m_HasUnnamed = false;
  return 1;
}

// The thread is at work for somebody else when the flush is tried again.
void UnflushedChanges::TellOnce(Change& change, const std::string& path, int error,
                                FailedChanges& failed) {
  if (change.m_Thread != Thread()) {
    failed.Note(change.m_Thread, path, error);
    change.m_Thread = Thread();
  }
}

unsigned UnflushedChanges::FlushOneByOne(AFileSystem& files, const std::string& directory,
                                         FailedChanges& failed) {
  unsigned flushes = 1;
  for (auto& [path, change] : m_Changes) {
    if (change.m_HasContent) {
      ++flushes;
      const int error = AFileCalls::FlushFile(files, path);
      // One that somebody has removed meanwhile has nothing left to flush.
      change.m_HasContent = error != 0 && error != ENOENT;
      if (change.m_HasContent) {
        TellOnce(change, path, error, failed);
      }
    }
  }
  if (const int error = AFileCalls::FlushDirectory(files, directory); error != 0) {
    for (auto& [path, change] : m_Changes) {
      TellOnce(change, path, error, failed);
    }
  } else {
    std::erase_if(m_Changes, [](const auto& entry) { return !entry.second.m_HasContent; });
  }
  return flushes;
}

}  // namespace NoxAgent
