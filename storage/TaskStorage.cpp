#include "storage/TaskStorage.h"

#include "Common/Notifications.h"

#include <BaseSDK/AFile.h>
#include <BaseSDK/AStringEncoder.h>
#include <BaseSDK/AUtf8Encoding.h>
#include <BaseSDK/Sys.h>

#include <fcntl.h>

#include <utility>

using BaseSDK::AFile;
using BaseSDK::AMutexGuard;
using BaseSDK::AString;
using BaseSDK::AStringEncoder;
using BaseSDK::AUtf8Encoding;
using BaseSDK::Wrappers::Sys;

namespace {

constexpr wchar_t InventedPrefix[] = L"corvane_task_";

constexpr int OpenMade = O_RDWR;
constexpr int OpenNew = O_RDWR | O_CREAT | O_EXCL;
static_assert(OpenMade == 2 && OpenNew == 0xC2);
constexpr int FileMode = 0644;

constexpr unsigned long NoRemoveFlags = 0;
/// The host's flag of a rename that replaces an existing target.
constexpr unsigned long RenameReplacing = 2;

AString LastComponent(const AString& path) {
  const std::size_t slash = path.ReverseFind(L'/');
  return slash == AString::npos ? path : path.Mid(slash + 1);
}

bool IsDirectoryItself(const AString& name) {
  return name == L"." || name == L"..";
}

/// -1 when the file cannot be opened.
int OpenFile(const AString& name, int flags) {
  int fd = -1;
  const AStringEncoder localName(name, AStringEncoder::Local);
  return Sys::Open(localName.c_str(), flags, FileMode, fd) == 0 ? fd : -1;
}

}  // namespace

/// The file of a task that is being added: closed and removed again, unless it is kept.
class CTaskStorage::NewFile {
 public:
  NewFile() = default;
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;
  ~NewFile() {
    Close();
    if (m_Exists) {
      Remove();
    }
  }

  void Close() {
    if (m_Fd != -1) {
      (void)Sys::Close(std::exchange(m_Fd, -1));
    }
  }
  void Keep() { m_Exists = false; }

  AString m_Name;
  int m_Fd = -1;
  bool m_Exists = false;  // as long as it is ours to remove

 private:
  void Remove() {
    try {
      (void)AFile::Remove(m_Name, NoRemoveFlags);
    } catch (...) {
      // No memory for that either. What lies there is no whole document, and so no task for long.
    }
  }
};

CTaskStorage::CTaskStorage(const AString& path, const AString& extension)
    : m_Path(path.IsEmpty() ? AString(L"%installdir%/var/tasks") : path),
      m_LastError(0),
      m_Extension(extension.IsEmpty() ? AString(L".vsk") : extension) {
  // Kept on purpose: also after a slash. Existing configurations get the doubled separator.
  m_Path += L"/";
}

CTaskStorage::~CTaskStorage() = default;

long CTaskStorage::Fail(unsigned long code) {
  m_LastError.store(code, std::memory_order_relaxed);
  return -1;
}

long CTaskStorage::Result() const {
  return m_LastError.load(std::memory_order_relaxed) == 0 ? 1 : -1;
}

long CTaskStorage::AddTask(const AString& taskID, const AString& taskXML, AString& newTaskID) {
  AMutexGuard guard(m_Lock);
  if (taskXML.IsEmpty()) {
    return Fail(ERR_INVALID_ARGUMENT);
  }
  m_LastError.store(0, std::memory_order_relaxed);
  // Everything that needs memory comes before the file is whole: when memory runs out, no file
  // stays behind that the caller does not know of.
  const AStringEncoder bytes(taskXML, AStringEncoder::Utf8);
  const bool invented = taskID.IsEmpty();
  NewFile file;
  if (invented) {
    OpenInventedFile(file);
  } else {
    OpenNamedFile(taskID, file);
  }
  if (file.m_Fd == -1) {
    return Fail(ERR_FILE_WRITE);
  }
  const AString finalName = invented ? file.m_Name + m_Extension : file.m_Name;
  AString addedID = invented ? LastComponent(file.m_Name) : taskID;
  // Kept on purpose: as many bytes as the document has characters, so one with characters outside
  // ASCII is cut. Clients that create tasks keep to ASCII; SetTaskXML writes all.
  WriteNewFile(file, bytes.c_str(), taskXML.Length());
  if (Result() != 1) {
    return -1;
  }
  if (invented) {
    m_LastError.store(AFile::Rename(file.m_Name, finalName, RenameReplacing),
                      std::memory_order_relaxed);
  }
  file.Keep();
  newTaskID = std::move(addedID);
  // Kept on purpose: announced also when the rename failed; the document is on disk by then.
  Nox::Announce(Nox::TaskAdded, newTaskID);
  return Result();
}

void CTaskStorage::OpenInventedFile(NewFile& file) const {
  if (AFile::MakeTemp(m_Path + InventedPrefix, file.m_Name) != 0) {
    return;
  }
  file.m_Exists = true;
  file.m_Fd = OpenFile(file.m_Name, OpenMade);
}

void CTaskStorage::OpenNamedFile(const AString& taskID, NewFile& file) const {
  file.m_Name = GetTaskFilename(taskID);
  file.m_Fd = OpenFile(file.m_Name, OpenNew);
  file.m_Exists = file.m_Fd != -1;
}

void CTaskStorage::WriteNewFile(NewFile& file, const char* bytes, std::size_t count) {
  std::size_t written = 0;
  unsigned long code = Sys::Write(file.m_Fd, bytes, count, written);
  if (code == 0 && written != count) {
    code = ERR_FILE_WRITE;
  }
  m_LastError.store(code, std::memory_order_relaxed);
  file.Close();
}

long CTaskStorage::SetTaskXML(const AString& taskID, const AString& taskXML) {
  AMutexGuard guard(m_Lock);
  if (taskID.IsEmpty() || taskXML.IsEmpty()) {
    return Fail(ERR_INVALID_ARGUMENT);
  }
  m_LastError.store(0, std::memory_order_relaxed);
  // Kept on purpose: a write that failed is success. The task in memory goes on with the new
  // document, and its next change writes the file again.
  (void)AFile::Write(GetTaskFilename(taskID), taskXML, AUtf8Encoding());
  Nox::Announce(Nox::TaskChanged, taskID);
  return 1;
}

long CTaskStorage::GetTaskXML(const AString& taskID, AString& taskXML) {
  AMutexGuard guard(m_Lock);
  const unsigned long code = taskID.IsEmpty()
                                 ? ERR_INVALID_ARGUMENT
                                 : AFile::Read(GetTaskFilename(taskID), taskXML, AUtf8Encoding());
  m_LastError.store(code, std::memory_order_relaxed);
  // Kept on purpose: only codes whose two top bits are 10 count as failure, unlike elsewhere.
  constexpr unsigned long TopBits = 0xC0000000UL;
  constexpr unsigned long FailureBits = 0x80000000UL;
  return (code & TopBits) == FailureBits ? -1 : 1;
}

long CTaskStorage::DeleteTask(const AString& taskID) {
  AMutexGuard guard(m_Lock);
  if (taskID.IsEmpty()) {
    return Fail(ERR_INVALID_ARGUMENT);
  }
  const unsigned long code = AFile::Remove(GetTaskFilename(taskID), NoRemoveFlags);
  m_LastError.store(code, std::memory_order_relaxed);
  if (code == 0) {
    Nox::Announce(Nox::TaskDeleted, taskID);
  }
  return Result();
}

long CTaskStorage::FindFirstTask(unsigned long& handle, AString& taskID) {
  AMutexGuard guard(m_Lock);
  if (handle != 0) {
    return Fail(ERR_INVALID_ARGUMENT);
  }
  const AStringEncoder localPath(m_Path, AStringEncoder::Local);
  const unsigned long code = Sys::Opendir(localPath.c_str(), handle);
  m_LastError.store(code, std::memory_order_relaxed);
  if (code != 0) {
    return -1;
  }
  if (handle == 0) {
    return 1;
  }
  AString name;
  do {
    if (!ReadEntry(handle, name)) {
      return -1;
    }
  } while (IsDirectoryItself(name));
  taskID = GetTaskID(name);
  return 1;
}

long CTaskStorage::FindNextTask(unsigned long handle, AString& taskID) {
  AMutexGuard guard(m_Lock);
  if (handle == 0) {
    (void)Fail(ERR_INVALID_ARGUMENT);
    return 0;  // Kept on purpose: the one failure that is not -1.
  }
  m_LastError.store(0, std::memory_order_relaxed);
  AString name;
  if (!ReadEntry(handle, name)) {
    return -1;
  }
  // Kept on purpose: unlike FindFirstTask, "." and ".." are delivered; their documents do not read.
  taskID = GetTaskID(name);
  return 1;
}

void CTaskStorage::FindClose(unsigned long handle) {
  AMutexGuard guard(m_Lock);
  if (handle != 0) {
    (void)Sys::Closedir(handle);
  }
}

bool CTaskStorage::ReadEntry(unsigned long handle, AString& name) {
  const char* entry = nullptr;
  if (Sys::Readdir(handle, entry) != 0 || entry == nullptr) {
    (void)Fail(ERR_NO_MORE_TASKS);
    return false;
  }
  name = AString(entry);
  return true;
}

AString CTaskStorage::GetTaskFilename(const AString& taskID) const {
  return m_Path + taskID + m_Extension;
}

AString CTaskStorage::GetTaskID(const AString& fileName) const {
  const AString name = LastComponent(fileName);
  const std::size_t end = name.Find(m_Extension);
  return end == AString::npos ? name : name.Left(end);
}
