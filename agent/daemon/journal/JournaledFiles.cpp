#include "agent/daemon/journal/JournaledFiles.h"

#include <BaseSDK/AFileCalls.h>

#include <fcntl.h>

#include <cerrno>
#include <new>
#include <utility>

using BaseSDK::AFileCalls;
using BaseSDK::AFileReplacement;
using BaseSDK::AMutexGuard;

namespace NoxAgent {
namespace {

// Up to so many files are put in their place by the one who has made them safe: he then learns
// when that fails. More would keep him for longer than the flush did.
constexpr std::size_t MostFollowedAtOnce = 16;

bool IsToWrite(int flags) {
  return (flags & O_ACCMODE) != O_RDONLY;
}

// The steps that make a prepared file last without a journal, each with its flush.
int FinishByItself(AFileReplacement& replacement) {
  int error = replacement.Flush();
  error = error != 0 ? error : replacement.Rename();
  return error != 0 ? error : replacement.FlushDirectory();
}

constexpr std::uint64_t FlushesByItself = 2;

}  // namespace

JournaledFiles::JournaledFiles(AFileSystem& below, const TaskDirectory& directory,
                               const std::string& journalPath)
    : ForwardingFileSystem(below),
      m_Directory(directory),
      m_Journal(below, directory.Path(), journalPath) {}

// Calls
// ---------------------------------------------------------------------------------------------

int JournaledFiles::Open(const char* path, int flags, unsigned mode, int& fd) {
  SettleAt(path);
  const int error = ForwardingFileSystem::Open(path, flags, mode, fd);
  if (error != 0) {
    return error;
  }
  if (IsToWrite(flags) && IsIn(path)) {
    NoteChange([&]() NOX_REQUIRES(m_Lock) {
      m_Changes.AddName(path, std::this_thread::get_id());
      m_Open[fd] = path;
    });
  } else if (m_Directory.IsItself(path)) {
    AMutexGuard guard(m_Lock);
    m_Open[fd] = {};
  }
  return 0;
}

// Noted also when no Sync follows: the file is there, and may be replaced through the journal.
int JournaledFiles::Write(int fd, const void* data, std::size_t size, std::size_t& written) {
  const int error = ForwardingFileSystem::Write(fd, data, size, written);
  if (written > 0 && IsFlushedLater(fd)) {
    NoteChange([&]() NOX_REQUIRES(m_Lock) {
      m_Changes.AddContent(m_Open.at(fd), std::this_thread::get_id());
    });
  }
  return error;
}

// The flush is MakeSafe's: all changes were noted when they were made.
int JournaledFiles::Sync(int fd) {
  return IsFlushedLater(fd) ? 0 : ForwardingFileSystem::Sync(fd);
}

int JournaledFiles::Close(int fd) {
  {
    AMutexGuard guard(m_Lock);
    m_Open.erase(fd);
  }
  return ForwardingFileSystem::Close(fd);
}

bool JournaledFiles::IsFlushedLater(int fd) {
  AMutexGuard guard(m_Lock);
  return m_Open.contains(fd);
}

int JournaledFiles::GetInfo(const char* path, Info& info) {
  SettleAt(path);
  return ForwardingFileSystem::GetInfo(path, info);
}

int JournaledFiles::Rename(const char* from, const char* to, bool replace) {
  SettleAt(from);
  SettleAt(to);
  const int error = ForwardingFileSystem::Rename(from, to, replace);
  if (error == 0 && (IsIn(from) || IsIn(to))) {
    NoteChange(
        [&]() NOX_REQUIRES(m_Lock) { m_Changes.AddRename(from, to, std::this_thread::get_id()); });
  }
  return error;
}

int JournaledFiles::Unlink(const char* path) {
  SettleAt(path);
  const int error = ForwardingFileSystem::Unlink(path);
  if (error == 0 && IsIn(path)) {
    NoteChange(
        [&]() NOX_REQUIRES(m_Lock) { m_Changes.AddRemoval(path, std::this_thread::get_id()); });
  }
  return error;
}

int JournaledFiles::OpenDirectory(const char* path, unsigned long& handle) {
  if (m_Directory.IsItself(path)) {
    MakeSafe();
    Follow();
    m_Journal.Begin();
  }
  return ForwardingFileSystem::OpenDirectory(path, handle);
}

template <class Note>
void JournaledFiles::NoteChange(const Note& note) {
  {
    AMutexGuard guard(m_Lock);
    try {
      note();
    } catch (const std::bad_alloc&) {
      m_Changes.AddUnnamed();  // the change has been made, and is to be made safe all the same
    }
  }
  m_Shared.Count();
  m_Waiting.NoteOther();
}

// Replacing
// -----------------------------------------------------------------------------------------

int JournaledFiles::ReplaceFile(const char* path, const std::string& bytes) {
  const auto name = m_Directory.NameOf(path);
  if (!name) {
    return Below().ReplaceFile(path, bytes);
  }
  JournalRecord record{*name, {}, {}, bytes};
  const bool isForJournal =
      m_Journal.IsReady() && Journal::CanEverHold(JournalFormat::SizeOf(record));
  const int error =
      isForJournal ? ReplaceLater(path, std::move(record)) : ReplaceAtOnce(path, bytes);
  if (error == 0) {
    m_Replaced.fetch_add(1, std::memory_order_relaxed);
  }
  return error;
}

int JournaledFiles::ReplaceAtOnce(const char* path, const std::string& bytes) {
  SettleAt(path);
  m_Flushes.fetch_add(FlushesByItself, std::memory_order_relaxed);
  const int error = Below().ReplaceFile(path, bytes);
  Info info;
  if (error == 0 && m_Observer != nullptr && Below().GetInfo(path, info) == 0) {
    m_Observer->OnReplaced(path, info);
  }
  return error;
}

int JournaledFiles::ReplaceLater(const char* path, JournalRecord record) {
  Files file;
  file.emplace_back(Below(), path);
  AFileReplacement& replacement = file.back().m_Replacement;
  const int prepareError = replacement.Prepare(record.m_Content, AFileReplacement::Flushed::No);
  if (prepareError != 0) {
    return prepareError;
  }
  // The journal renews files that are there, and brings none back.
  if (!replacement.Replaces()) {
    return ReplaceAtOnce(path, record.m_Content);
  }
  Info info;
  const int error =
      AFileCalls::Retry([&] { return Below().GetInfo(replacement.Temporary().c_str(), info); });
  if (error != 0) {
    return error;
  }
  record.m_Before = FileVersion(replacement.Previous());
  record.m_After = FileVersion(info);
  file.back().m_Record = std::move(record);
  m_Waiting.Add(file);
  m_Shared.Count();
  return 0;
}

// Making safe
// ---------------------------------------------------------------------------------------

void JournaledFiles::MakeSafe() {
  m_Shared.Share([this] { FlushAll(); });
  // Also when there is none: another thread may be putting the last one in its place.
  if (m_Waiting.CountSafe() <= MostFollowedAtOnce) {
    Follow();
  }
  ReportOwnFailures();
}

void JournaledFiles::FlushAll() {
  m_Waiting.BeginFlush();
  FlushChanges();
  Files files = m_Waiting.TakeUnsafe();
  while (!files.empty()) {
    FlushSome(files);
  }
}

// Before the journal: it tells only of files whose names last.
void JournaledFiles::FlushChanges() {
  UnflushedChanges changes;
  {
    AMutexGuard guard(m_Lock);
    std::swap(changes, m_Changes);
  }
  m_Flushes.fetch_add(changes.Flush(Below(), m_Directory.Path(), m_Failed),
                      std::memory_order_relaxed);
  // What has failed is tried again before the journal tells of these files.
  AMutexGuard guard(m_Lock);
  m_Changes.AddEarlier(changes);
}

// As many as the journal has room for. What it cannot take is flushed by itself, behind what it has
// taken.
void JournaledFiles::FlushSome(Files& files) {
  Files fitting;
  if (m_Journal.IsReady()) {
    fitting = TakeFitting(files);
  }
  if (!fitting.empty() && m_Journal.Append(fitting) == 0) {
    m_Waiting.AddSafe(fitting);
    return;
  }
  Follow();
  if (!fitting.empty()) {
    FlushEach(fitting);
  } else if (m_Journal.IsReady() && m_Journal.Empty() == 0) {
    LookAgain(files);
  } else {
    FlushEach(files);
  }
}

JournaledFiles::Files JournaledFiles::TakeFitting(Files& files) {
  Files fitting;
  std::size_t size = 0;
  while (!files.empty()) {
    size += JournalFormat::SizeOf(files.front().m_Record);
    if (!m_Journal.HasRoomFor(size)) {
      break;
    }
    fitting.splice(fitting.end(), files, files.begin());
  }
  return fitting;
}

// An emptied journal knows no more what has come to their places since they were prepared.
void JournaledFiles::LookAgain(Files& files) {
  for (WaitingFile& file : files) {
    Info info;
    const char* const path = file.m_Replacement.Path().c_str();
    if (AFileCalls::Retry([&] { return Below().GetInfo(path, info); }) == 0) {
      file.m_Record.m_Before = FileVersion(info);
    }
  }
}

void JournaledFiles::FlushEach(Files& files) {
  AMutexGuard guard(m_FollowLock);
  while (!files.empty()) {
    Files first;
    first.splice(first.end(), files, files.begin());
    m_Flushes.fetch_add(FlushesByItself, std::memory_order_relaxed);
    Finish(first, FinishByItself(first.front().m_Replacement));
  }
}

// Following
// -----------------------------------------------------------------------------------------

void JournaledFiles::Follow() {
  AMutexGuard guard(m_FollowLock);
  for (Files file = m_Waiting.TakeFirstSafe(); !file.empty(); file = m_Waiting.TakeFirstSafe()) {
    Finish(file, file.front().m_Replacement.Rename());
  }
}

void JournaledFiles::Finish(const Files& file, int error) {
  const std::string& path = file.front().m_Replacement.Path();
  Info info;
  error = error != 0 ? error : Below().GetInfo(path.c_str(), info);
  m_Waiting.Remove(file);
  if (error != 0) {
    m_Failed.Note(file.front().m_Thread, path, error);
  } else if (m_Observer != nullptr) {
    m_Observer->OnReplaced(path, info);
  }
}

void JournaledFiles::SettleAt(const char* path) {
  const auto name = m_Directory.NameOf(path);
  if (name && m_Waiting.Has(*name)) {
    MakeSafe();
    Follow();
  }
}

void JournaledFiles::End() {
  MakeSafe();
  Follow();
  (void)m_Journal.Empty();  // logged; what it tells of is in its place
}

void JournaledFiles::ReportOwnFailures() {
  for (const auto& [path, error] : m_Failed.TakeOwn()) {
    if (m_Observer != nullptr) {
      m_Observer->OnFailure(path, error);
    }
  }
}

JournaledFiles::Counts JournaledFiles::Count() const {
  return {m_Replaced.load(std::memory_order_relaxed),
          m_Flushes.load(std::memory_order_relaxed) + m_Journal.Flushes(), m_Journal.UsedBytes()};
}

}  // namespace NoxAgent
