#include "agent/daemon/store/TaskStore.h"

#include "agent/daemon/AgentError.h"
#include "agent/daemon/process/AgentLog.h"
#include "agent/daemon/process/Directories.h"

#include <cstring>

using BaseSDK::AFileSystem;
using BaseSDK::ALogger;
using BaseSDK::AString;

namespace NoxAgent {

namespace {

AString FolderOf(const AString& path) {
  return path.Left(path.ReverseFind(L'/'));
}

}  // namespace

TaskStore::TaskStore() : m_Spared(AFileSystem::Current()) {
  m_Before = AFileSystem::Replace(&m_Spared);
}

TaskStore::~TaskStore() {
  (void)AFileSystem::Replace(m_Before);
  m_Follower.reset();
  if (m_Journaled != nullptr) {
    m_Journaled->End();
  }
}

void TaskStore::Guard(const Tasks& tasks) {
  TaskDirectory directory(tasks.m_Directory.ToUtf8(), tasks.m_Extension.ToUtf8());
  if (m_Files != nullptr) {
    if (!m_Files->Directory().IsItself(directory.Path())) {
      ALOG(AgentLog(), ALogger::Warning, "TaskStore",
           AString("There is more than one task directory: nobody looks after the files in %1")
               .Arg(tasks.m_Directory));
    }
    return;
  }
  Directories::Make(FolderOf(tasks.m_JournalPath), Directories::Private);
  m_Journaled = std::make_unique<JournaledFiles>(m_Spared, directory, tasks.m_JournalPath.ToUtf8());
  m_Journaled->Begin();
  DirectoryListings::Listing listing;
  int error = DirectoryListings::List(*m_Journaled, directory.Path().c_str(), listing);
  error = error != 0 ? error : listing.m_Error;
  if (error != 0) {
    throw AgentError(AgentError::Kind::Failure,
                     AString("cannot read the task directory %1: %2; no task would run")
                         .Arg(tasks.m_Directory, std::strerror(error)));
  }
  m_Files = std::make_unique<StoreFileSystem>(*m_Journaled, std::move(directory),
                                              tasks.m_RefusedPath.ToUtf8());
  m_Scheduler = tasks.m_Scheduler;
  m_Follower = std::make_unique<JournalFollower>(*m_Journaled);
  (void)AFileSystem::Replace(m_Files.get());
}

JournaledFiles::Counts TaskStore::Counts() const {
  return m_Journaled != nullptr ? m_Journaled->Count() : JournaledFiles::Counts();
}

}  // namespace NoxAgent
