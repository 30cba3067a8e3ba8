#include "agent/daemon/store/TaskStore.h"

#include "agent/daemon/AgentError.h"
#include "agent/daemon/process/AgentLog.h"

#include <cstring>

using BaseSDK::AFileSystem;
using BaseSDK::ALogger;
using BaseSDK::AString;

namespace NoxAgent {

TaskStore::TaskStore() : m_Spared(AFileSystem::Current()) {
  m_Before = AFileSystem::Replace(&m_Spared);
}

TaskStore::~TaskStore() {
  (void)AFileSystem::Replace(m_Before);
}

void TaskStore::Guard(const AString& directory, const AString& extension,
                      const AString& refusedPath) {
  TaskDirectory tasks(directory.ToUtf8(), extension.ToUtf8());
  if (m_Files != nullptr) {
    if (!m_Files->Directory().IsItself(tasks.Path())) {
      ALOG(AgentLog(), ALogger::Warning, "TaskStore",
           AString("There is more than one task directory: nobody looks after the files in %1")
               .Arg(directory));
    }
    return;
  }
  DirectoryListings::Listing listing;
  int error = DirectoryListings::List(m_Spared, tasks.Path().c_str(), listing);
  error = error != 0 ? error : listing.m_Error;
  if (error != 0) {
    throw AgentError(AgentError::Kind::Failure,
                     AString("cannot read the task directory %1: %2; no task would run")
                         .Arg(directory, std::strerror(error)));
  }
  m_Files = std::make_unique<StoreFileSystem>(m_Spared, std::move(tasks), refusedPath.ToUtf8());
  (void)AFileSystem::Replace(m_Files.get());
}

}  // namespace NoxAgent
