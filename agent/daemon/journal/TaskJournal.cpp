#include "agent/daemon/journal/TaskJournal.h"

#include "agent/daemon/journal/JournalReplay.h"
#include "agent/daemon/process/AgentLog.h"

#include <BaseSDK/AFileCalls.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <utility>
#include <vector>

using BaseSDK::AFileCalls;
using BaseSDK::AFileSystem;
using BaseSDK::ALogger;
using BaseSDK::AMutexGuard;
using BaseSDK::AString;

namespace NoxAgent {
namespace {

constexpr const char* TaskJournalSource = "TaskJournal";

// A file may have two records: its content, and which version it is.
unsigned long CountChanges(const std::vector<JournalRecord>& records) {
  return static_cast<unsigned long>(
      std::count_if(records.begin(), records.end(),
                    [](const JournalRecord& record) { return !record.m_IsVersionAlone; }));
}

}  // namespace

TaskJournal::TaskJournal(AFileSystem& files, std::string directory, std::string path)
    : m_Files(files),
      m_Directory(std::move(directory)),
      m_Path(std::move(path)),
      m_Journal(files, m_Path) {}

void TaskJournal::Begin() {
  AMutexGuard guard(m_Lock);
  if (m_Journal.IsReady() || ReplayOnce() != 0 || Report("cannot be made", Clear()) != 0) {
    return;
  }
  if (std::exchange(m_Reported, 0) != 0) {
    ALOG(AgentLog(), ALogger::Notice, TaskJournalSource,
         AString("The journal %1 can be used again").Arg(AString::FromUtf8(m_Path)));
  }
}

int TaskJournal::ReplayOnce() {
  std::vector<JournalRecord> records;
  if (m_Replayed) {
    return 0;
  }
  if (const int error = m_Journal.Read(records); error != 0) {
    return Report("cannot be read", error);
  }
  m_HasRecords = !records.empty();
  // Files that a killed agent had made and not flushed are there, and count as safe from now on:
  // without records, nothing else would flush them.
  const int error = m_HasRecords ? Replay(records) : Report("cannot be readied", FlushDisk());
  m_Replayed = error == 0;
  return error;
}

int TaskJournal::Replay(const std::vector<JournalRecord>& records) {
  JournalReplay replay(m_Files, m_Directory, records);
  const int error = replay.Perform();
  ++m_DiskFlushes;
  if (error != 0) {
    return Report("tells of task files that cannot be brought up to date", error);
  }
  ALOG(AgentLog(), ALogger::Notice, TaskJournalSource,
       AString("The agent did not end in order. Of its last %1 changes of task files, %2 files "
               "were out of date and are not any more")
           .Arg(AString().SetNum(CountChanges(records), 'u'),
                AString().SetNum(static_cast<unsigned long>(replay.Renewed()), 'u')));
  for (const std::string& name : replay.Left()) {
    ALOG(AgentLog(), ALogger::Notice, TaskJournalSource,
         AString("The task file %1 was changed by somebody else since: it stays as it is")
             .Arg(AString::FromUtf8(name)));
  }
  return 0;
}

int TaskJournal::FlushDisk() {
  ++m_DiskFlushes;
  return AFileCalls::FlushDiskOf(m_Files, m_Directory);
}

int TaskJournal::Clear() {
  if (m_HasRecords) {
    if (const int error = FlushDisk(); error != 0) {
      return error;
    }
  }
  ++m_Emptied;
  const int error = m_Journal.Clear();
  m_HasRecords = m_HasRecords && error != 0;
  m_Kept = 0;
  return error;
}

bool TaskJournal::IsReady() const {
  AMutexGuard guard(m_Lock);
  return m_Journal.IsReady();
}

bool TaskJournal::HasRoomFor(std::size_t bytes) const {
  AMutexGuard guard(m_Lock);
  return m_Journal.HasRoomFor(bytes + m_Kept);
}

std::size_t TaskJournal::SizeOf(const WaitingFile& file) {
  return JournalFormat::SizeOf(file.m_Record) +
         (file.m_IsLate ? JournalFormat::SizeOfVersion(file.m_Record) : 0);
}

int TaskJournal::Append(const std::list<WaitingFile>& files) {
  AMutexGuard guard(m_Lock);
  int error = ENOMEM;
  m_HasRecords = true;
  try {
    std::vector<const JournalRecord*> records;
    for (const WaitingFile& file : files) {
      records.push_back(&file.m_Record);
    }
    error = m_Journal.Append(records);
  } catch (const std::bad_alloc&) {
    // The journal is as it was.
  }
  for (const WaitingFile& file : files) {
    m_Kept += file.m_IsLate ? JournalFormat::SizeOfVersion(file.m_Record) : 0;
  }
  return Report("cannot be written", error);
}

int TaskJournal::AppendVersions(const std::list<WaitingFile>& files) {
  AMutexGuard guard(m_Lock);
  if (!m_Journal.IsReady()) {
    return EBADF;  // known since it broke
  }
  int error = ENOMEM;
  try {
    std::list<JournalRecord> versions;
    std::vector<const JournalRecord*> records;
    for (const WaitingFile& file : files) {
      if (file.m_IsLate) {
        const JournalRecord& record = file.m_Record;
        versions.push_back({record.m_Name, record.m_Before, record.m_After, {}, true});
        records.push_back(&versions.back());
        m_Kept -= JournalFormat::SizeOfVersion(record);
      }
    }
    error = m_Journal.Append(records);
  } catch (const std::bad_alloc&) {
    // It must not tell of any later change of these files, as it does not know them.
    m_Journal.GiveUp();
  }
  return Report("cannot be written", error);
}

int TaskJournal::Empty() {
  AMutexGuard guard(m_Lock);
  // Records that were not replayed are those of an earlier agent, whose files may be out of date.
  return m_HasRecords && m_Replayed ? Report("cannot be emptied", Clear()) : 0;
}

std::uint64_t TaskJournal::Emptied() const {
  AMutexGuard guard(m_Lock);
  return m_Emptied;
}

std::size_t TaskJournal::UsedBytes() const {
  AMutexGuard guard(m_Lock);
  return m_Journal.UsedBytes();
}

std::uint64_t TaskJournal::Flushes() const {
  AMutexGuard guard(m_Lock);
  return m_Journal.Flushes() + m_DiskFlushes;
}

int TaskJournal::Report(const char* problem, int error) noexcept {
  if (error == 0 || std::exchange(m_Reported, error) == error) {
    return error;
  }
  try {
    ALOG(AgentLog(), ALogger::Warning, TaskJournalSource,
         AString("The journal %1 %2: %3. Each task file is flushed by itself meanwhile")
             .Arg(AString::FromUtf8(m_Path), AString(problem), std::strerror(error)));
  } catch (const std::bad_alloc&) {
    // The files matter more than the word on them.
  }
  return error;
}

}  // namespace NoxAgent
