#include "agent/daemon/journal/TaskJournal.h"

#include "agent/daemon/journal/JournalReplay.h"
#include "agent/daemon/process/AgentLog.h"
#include "agent/daemon/store/FileCalls.h"

#include <cerrno>
#include <cstring>
#include <new>
#include <utility>
#include <vector>

using BaseSDK::AFileSystem;
using BaseSDK::ALogger;
using BaseSDK::AMutexGuard;
using BaseSDK::AString;

namespace NoxAgent {
namespace {

constexpr const char* TaskJournalSource = "TaskJournal";

}  // namespace

TaskJournal::TaskJournal(AFileSystem& files, std::string directory, std::string path)
    : m_Files(files),
      m_Directory(std::move(directory)),
      m_Path(std::move(path)),
      m_Journal(files, m_Path) {}

void TaskJournal::Begin() {
  AMutexGuard guard(m_Lock);
  if (m_Journal.IsReady()) {
    return;
  }
  int error = Replay();
  if (error == 0) {
    error = m_Journal.Clear();
    (void)Report("cannot be made", error);
  }
  if (error == 0 && std::exchange(m_Reported, 0) != 0) {
    ALOG(AgentLog(), ALogger::Notice, TaskJournalSource,
         AString("The journal %1 can be used again").Arg(AString::FromUtf8(m_Path)));
  }
}

int TaskJournal::Replay() {
  std::vector<JournalRecord> records;
  if (const int error = m_Journal.Read(records); error != 0) {
    return Report("cannot be read", error);
  }
  if (records.empty()) {
    return 0;
  }
  JournalReplay replay(m_Files, m_Directory, records);
  const int error = replay.Perform();
  m_DiskFlushes += 2;
  if (error != 0) {
    return Report("tells of task files that cannot be brought up to date", error);
  }
  ALOG(AgentLog(), ALogger::Notice, TaskJournalSource,
       AString("The agent did not end in order. Of its last %1 changes of task files, %2 files "
               "were out of date and are not any more")
           .Arg(AString().SetNum(static_cast<unsigned long>(records.size()), 'u'),
                AString().SetNum(static_cast<unsigned long>(replay.Renewed()), 'u')));
  for (const std::string& name : replay.Left()) {
    ALOG(AgentLog(), ALogger::Notice, TaskJournalSource,
         AString("The task file %1 was changed by somebody else since: it stays as it is")
             .Arg(AString::FromUtf8(name)));
  }
  return 0;
}

bool TaskJournal::IsReady() const {
  AMutexGuard guard(m_Lock);
  return m_Journal.IsReady();
}

bool TaskJournal::HasRoomFor(std::size_t bytes) const {
  AMutexGuard guard(m_Lock);
  return m_Journal.HasRoomFor(bytes);
}

int TaskJournal::Append(const std::list<WaitingFile>& files) {
  AMutexGuard guard(m_Lock);
  int error = ENOMEM;
  try {
    std::vector<const JournalRecord*> records;
    for (const WaitingFile& file : files) {
      records.push_back(&file.m_Record);
    }
    error = m_Journal.Append(records);
  } catch (const std::bad_alloc&) {
    // The journal is as it was.
  }
  return Report("cannot be written", error);
}

int TaskJournal::Empty() {
  AMutexGuard guard(m_Lock);
  if (m_Journal.UsedBytes() == 0) {
    return 0;
  }
  ++m_DiskFlushes;
  const int error = FlushDiskOf(m_Files, m_Directory);
  return Report("cannot be emptied", error != 0 ? error : m_Journal.Clear());
}

std::size_t TaskJournal::UsedBytes() const {
  AMutexGuard guard(m_Lock);
  return m_Journal.UsedBytes();
}

std::uint64_t TaskJournal::Flushes() const {
  AMutexGuard guard(m_Lock);
  return m_Journal.Flushes() + m_DiskFlushes;
}

int TaskJournal::Report(const char* problem, int error) {
  if (error != 0 && std::exchange(m_Reported, error) != error) {
    ALOG(AgentLog(), ALogger::Warning, TaskJournalSource,
         AString("The journal %1 %2: %3. Each task file is flushed by itself meanwhile")
             .Arg(AString::FromUtf8(m_Path), AString(problem), std::strerror(error)));
  }
  return error;
}

}  // namespace NoxAgent
