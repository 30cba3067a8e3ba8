#include "agent/daemon/journal/JournaledFiles.h"

#include <BaseSDK/AFileCalls.h>

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <new>
#include <utility>

using BaseSDK::AFileCalls;
using BaseSDK::AFileReplacement;
using BaseSDK::AMutexGuard;

namespace NoxAgent {
namespace {

// Up to so many files are prepared at once, and put in their place by the one who has made them
// safe: he then learns when that fails. More would keep him for longer than the flush did, as a
// file system may take a millisecond to make one.
constexpr std::size_t MostFollowedAtOnce = 16;

bool IsToWrite(int flags) {
  return (flags & O_ACCMODE) != O_RDONLY;
}

constexpr std::uint64_t FlushesByItself = 2;

bool IsSameFile(const WaitingFile& left, const WaitingFile& right) {
  return left.m_Record.m_Name == right.m_Record.m_Name;
}

// Takes out the late files that a later one of the list replaces: they need not be made. None of
// those that are left has an older one behind it of which the journal does not know the version.
WaitingFiles::Files TakeReplaced(WaitingFiles::Files& files) {
  WaitingFiles::Files replaced;
  for (auto file = files.begin(); file != files.end();) {
    const auto next = std::next(file);
    const bool isReplaced =
        file->m_IsLate && std::any_of(next, files.end(), [&](const WaitingFile& later) {
          return IsSameFile(later, *file);
        });
    if (isReplaced) {
      replaced.splice(replaced.end(), files, file);
    }
    file = next;
  }
  return replaced;
}

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
    Begin();
  }
  return ForwardingFileSystem::OpenDirectory(path, handle);
}

// What it has taken meanwhile is in its place before it forgets that; otherwise another time.
void JournaledFiles::Begin() {
  AMutexGuard guard(m_AppendLock);
  if (m_Waiting.CountSafe() == 0) {
    m_Journal.Begin();
  }
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
      m_Journal.IsReady() &&
      Journal::CanEverHold(JournalFormat::SizeOf(record) + JournalFormat::SizeOfVersion(record));
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
  ++m_ByThemselves;
  Info info;
  if (error == 0 && m_Observer != nullptr && Below().GetInfo(path, info) == 0) {
    m_Observer->OnReplaced(path, info);
  }
  return error;
}

int JournaledFiles::ReplaceLater(const char* path, JournalRecord record) {
  Files files;
  WaitingFile& file = files.emplace_back(Below(), path);
  file.m_Record = std::move(record);
  file.m_IsLate = IsNextLate();
  file.m_Looked = Epoch();
  AFileReplacement& replacement = file.m_Replacement;
  const int error = file.m_IsLate ? replacement.Look() : Prepare(file);
  if (error != 0) {
    return error;
  }
  // The journal renews files that are there, and brings none back.
  if (!replacement.Replaces()) {
    return ReplaceAtOnce(path, file.m_Record.m_Content);
  }
  file.m_Record.m_Before = FileVersion(replacement.Previous());
  m_Waiting.Add(files);
  m_Shared.Count();
  return 0;
}

bool JournaledFiles::IsNextLate() const {
  const bool isFailureAwaited = m_Observer != nullptr && m_Observer->IsFailureAwaited();
  return m_Waiting.Count() >= MostFollowedAtOnce && !isFailureAwaited;
}

// Writes the file beside the one that it is to replace.
int JournaledFiles::Prepare(WaitingFile& file) {
  AFileReplacement& replacement = file.m_Replacement;
  int error = replacement.Prepare(file.m_Record.m_Content, AFileReplacement::Flushed::No);
  if (error != 0) {
    return error;
  }
  Info info;
  const char* const path = replacement.Temporary().c_str();
  error = AFileCalls::Retry([&] { return Below().GetInfo(path, info); });
  file.m_Record.m_After = FileVersion(info);
  return error;
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
  Files files = m_Waiting.TakeUnsafe();
  FlushChanges();
  Files unnamed = TakeUnnamed(files);
  while (!files.empty()) {
    FlushSome(files);
  }
  if (!unnamed.empty()) {
    Follow();
    FlushEach(unnamed);
  }
}

// A replay brings no file back, so what the journal tells of a file without a name is lost.
JournaledFiles::Files JournaledFiles::TakeUnnamed(Files& files) {
  AMutexGuard guard(m_Lock);
  Files unnamed;
  for (auto file = files.begin(); file != files.end();) {
    const auto next = std::next(file);
    if (m_Changes.MayHave(file->m_Replacement.Path())) {
      unnamed.splice(unnamed.end(), files, file);
    }
    file = next;
  }
  return unnamed;
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
  if (changes.IsEmpty()) {
    return;
  }
  // What has failed is tried again whenever all is to be safe, and before the journal tells of
  // these files.
  {
    AMutexGuard guard(m_Lock);
    m_Changes.AddEarlier(changes);
  }
  m_Shared.Count();
}

// As many as the journal has room for. What it cannot take is flushed by itself, behind what it has
// taken.
void JournaledFiles::FlushSome(Files& files) {
  Files fitting;
  if (m_Journal.IsReady()) {
    fitting = TakeFitting(files);
  }
  if (!fitting.empty() && AppendToJournal(fitting)) {
    return;
  }
  Follow();
  if (!fitting.empty()) {
    FlushEach(fitting);
  } else if (!m_Journal.IsReady() || m_Journal.Empty() != 0) {
    FlushEach(files);
  }
}

JournaledFiles::Files JournaledFiles::TakeFitting(Files& files) {
  Files fitting;
  std::size_t size = 0;
  while (!files.empty()) {
    size += TaskJournal::SizeOf(files.front());
    if (!m_Journal.HasRoomFor(size)) {
      break;
    }
    fitting.splice(fitting.end(), files, files.begin());
  }
  return fitting;
}

bool JournaledFiles::AppendToJournal(Files& files) {
  AMutexGuard guard(m_AppendLock);
  for (WaitingFile& file : files) {
    LookAgain(file);
  }
  const bool isSafe = m_Journal.Append(files) == 0;
  if (isSafe) {
    m_Waiting.AddSafe(files);
  }
  return isSafe;
}

std::uint64_t JournaledFiles::Epoch() const {
  return m_Journal.Emptied() + m_ByThemselves;
}

// A replay finds only a file that the journal knows to be out of date.
void JournaledFiles::LookAgain(WaitingFile& file) {
  Info info;
  const char* const path = file.m_Replacement.Path().c_str();
  if (file.m_Looked != Epoch() &&
      AFileCalls::Retry([&] { return Below().GetInfo(path, info); }) == 0) {
    file.m_Record.m_Before = FileVersion(info);
  }
}

void JournaledFiles::FlushEach(Files& files) {
  AMutexGuard guard(m_FollowLock);
  while (!files.empty()) {
    Files first;
    first.splice(first.end(), files, files.begin());
    Finish(first.front(), FinishByItself(first.front()));
    m_Waiting.Remove(first);
  }
}

// The steps that make a file last without a journal, each with its flush.
int JournaledFiles::FinishByItself(WaitingFile& file) {
  AFileReplacement& replacement = file.m_Replacement;
  int error = replacement.Temporary().empty() ? MakeLate(file) : 0;
  if (error != 0) {
    return error;
  }
  m_Flushes.fetch_add(FlushesByItself, std::memory_order_relaxed);
  error = replacement.Flush();
  error = error != 0 ? error : replacement.Rename();
  ++m_ByThemselves;  // behind the rename: who sees the number finds the new file
  return error != 0 ? error : replacement.FlushDirectory();
}

// Following
// -----------------------------------------------------------------------------------------

void JournaledFiles::Follow() {
  AMutexGuard guard(m_FollowLock);
  for (Files files = m_Waiting.TakeSafe(); !files.empty(); files = m_Waiting.TakeSafe()) {
    PutInPlace(files);
  }
}

// A file takes its place when the journal knows it, or else when it is flushed and nothing newer is
// in the journal: a replay then finds one that it knows, or the newest content.
void JournaledFiles::PutInPlace(Files& files) {
  Files replaced = TakeReplaced(files);
  MakeLate(files);
  const bool areKnown = TellVersions(files);
  if (!areKnown) {
    Files more = TakeReplaced(files);
    replaced.splice(replaced.end(), more);
    MakeLate(files);
  }
  m_Waiting.RemoveSafe(replaced);
  while (!files.empty()) {
    Files first;
    first.splice(first.end(), files, files.begin());
    WaitingFile& file = first.front();
    Finish(file, areKnown ? file.m_Replacement.Rename() : FinishByItself(file));
    m_Waiting.RemoveSafe(first);
  }
}

// False when the journal cannot be told any more. The list then has all that the journal tells of
// and that is not in its place.
bool JournaledFiles::TellVersions(Files& files) {
  if (std::none_of(files.begin(), files.end(), [](const auto& file) { return file.m_IsLate; })) {
    return true;  // the journal knows them
  }
  AMutexGuard guard(m_AppendLock);
  if (m_Journal.AppendVersions(files) != 0) {
    Files more = m_Waiting.TakeSafe();
    files.splice(files.end(), more);
    return false;
  }
  for (WaitingFile& file : files) {
    file.m_IsLate = false;
  }
  return true;
}

void JournaledFiles::MakeLate(Files& files) {
  for (auto file = files.begin(); file != files.end();) {
    const auto next = std::next(file);
    const int error = file->m_Replacement.Temporary().empty() ? MakeLate(*file) : 0;
    if (error != 0) {
      Files failed;
      failed.splice(failed.end(), files, file);
      Finish(failed.front(), error);
      m_Waiting.RemoveSafe(failed);
    }
    file = next;
  }
}

int JournaledFiles::MakeLate(WaitingFile& file) {
  try {
    return Prepare(file);
  } catch (const std::bad_alloc&) {
    return ENOMEM;
  }
}

void JournaledFiles::Finish(const WaitingFile& file, int error) {
  const std::string& path = file.m_Replacement.Path();
  Info info;
  error = error != 0 ? error : Below().GetInfo(path.c_str(), info);
  if (error != 0) {
    m_Failed.Note(file.m_Thread, path, error);
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
