#include <BaseSDK/AMemoryFileSystem.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

namespace BaseSDK {

namespace {

struct PathParts {
  std::string m_Directory;  ///< without a separator at its end
  std::string m_Name;
};

PathParts Split(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  std::string directory = slash == std::string::npos ? "." : path.substr(0, slash);
  while (directory.size() > 1 && directory.back() == '/') {
    directory.pop_back();
  }
  return {directory, path.substr(slash + 1)};  // npos + 1 is 0
}

std::string DirectoryName(const std::string& path) {
  return Split(path + '/').m_Directory;
}

bool WantsToWrite(int flags) {
  return (flags & O_ACCMODE) != O_RDONLY || (flags & (O_CREAT | O_TRUNC)) != 0;
}

}  // namespace

// Laying out and looking
// --------------------------------------------------------------------

void AMemoryFileSystem::MakeDirectory(const std::string& path) {
  const AMutexGuard guard(m_Lock);
  m_Directories[DirectoryName(path)];
}

void AMemoryFileSystem::SetFreeBytes(std::size_t bytes) {
  const AMutexGuard guard(m_Lock);
  m_FreeBytes = bytes;
}

void AMemoryFileSystem::SetReadOnly(bool readOnly) {
  const AMutexGuard guard(m_Lock);
  m_ReadOnly = readOnly;
}

std::vector<std::string> AMemoryFileSystem::Names(const std::string& directory) const {
  const AMutexGuard guard(m_Lock);
  std::vector<std::string> names;
  const auto found = m_Directories.find(DirectoryName(directory));
  if (found != m_Directories.end()) {
    for (const auto& entry : found->second) {
      names.push_back(entry.first);
    }
  }
  return names;
}

bool AMemoryFileSystem::Has(const std::string& path) const {
  const AMutexGuard guard(m_Lock);
  return Find(path) != nullptr;
}

std::string AMemoryFileSystem::ReadFile(const std::string& path) const {
  const AMutexGuard guard(m_Lock);
  const FilePtr file = Find(path);
  return file != nullptr ? file->m_Content : std::string();
}

void AMemoryFileSystem::WriteFile(const std::string& path, const std::string& content) {
  const AMutexGuard guard(m_Lock);
  const PathParts parts = Split(path);
  m_Directories[parts.m_Directory][parts.m_Name] = NewFile(content, 0644);
}

void AMemoryFileSystem::RemoveFile(const std::string& path) {
  const AMutexGuard guard(m_Lock);
  const PathParts parts = Split(path);
  m_Directories[parts.m_Directory].erase(parts.m_Name);
}

std::size_t AMemoryFileSystem::OpenHandles() const {
  const AMutexGuard guard(m_Lock);
  return m_OpenFiles.size() + m_Listings.size();
}

AMemoryFileSystem::FilePtr AMemoryFileSystem::Find(const std::string& path) const {
  const PathParts parts = Split(path);
  const auto directory = m_Directories.find(parts.m_Directory);
  if (directory == m_Directories.end()) {
    return nullptr;
  }
  const auto file = directory->second.find(parts.m_Name);
  return file != directory->second.end() ? file->second : nullptr;
}

// Files
// ---------------------------------------------------------------------------------------------

int AMemoryFileSystem::Open(const char* path, int flags, unsigned mode, int& fd) {
  const AMutexGuard guard(m_Lock);
  fd = -1;
  FilePtr file;
  const bool isDirectory = m_Directories.count(DirectoryName(path)) > 0;
  if (m_ReadOnly && WantsToWrite(flags)) {
    return EROFS;
  }
  if (!isDirectory) {
    const int error = OpenRegular(path, flags, mode, file);
    if (error != 0) {
      return error;
    }
  } else if (WantsToWrite(flags)) {
    return EISDIR;
  }
  fd = ++m_LastFd;
  m_OpenFiles[fd] = {file, 0, (flags & O_ACCMODE) != O_RDONLY};
  return 0;
}

int AMemoryFileSystem::OpenRegular(const std::string& path, int flags, unsigned mode,
                                   FilePtr& file) {
  const PathParts parts = Split(path);
  const auto directory = m_Directories.find(parts.m_Directory);
  if (directory == m_Directories.end()) {
    return ENOENT;
  }
  file = Find(path);
  if (file != nullptr && (flags & O_DIRECTORY) != 0) {
    return ENOTDIR;
  }
  if (file != nullptr && (flags & O_CREAT) != 0 && (flags & O_EXCL) != 0) {
    return EEXIST;
  }
  if (file == nullptr && (flags & O_CREAT) == 0) {
    return ENOENT;
  }
  if (file == nullptr) {
    file = NewFile({}, mode & 0777);
    directory->second[parts.m_Name] = file;
  } else if ((flags & O_TRUNC) != 0) {
    file->m_Content.clear();
    ++file->m_Changes;
  }
  return 0;
}

int AMemoryFileSystem::Read(int fd, void* buffer, std::size_t size, std::size_t& got) {
  const AMutexGuard guard(m_Lock);
  got = 0;
  const auto found = m_OpenFiles.find(fd);
  if (found == m_OpenFiles.end()) {
    return EBADF;
  }
  OpenFile& open = found->second;
  if (open.m_File == nullptr) {
    return EISDIR;
  }
  const std::string& content = open.m_File->m_Content;
  got = std::min(size, content.size() - std::min(content.size(), open.m_Offset));
  std::memcpy(buffer, content.data() + open.m_Offset, got);
  open.m_Offset += got;
  return 0;
}

int AMemoryFileSystem::Write(int fd, const void* data, std::size_t size, std::size_t& written) {
  const AMutexGuard guard(m_Lock);
  written = 0;
  const auto found = m_OpenFiles.find(fd);
  if (found == m_OpenFiles.end() || !found->second.m_Writes) {
    return EBADF;
  }
  OpenFile& open = found->second;
  std::string& content = open.m_File->m_Content;
  const std::size_t rest = content.size() - std::min(content.size(), open.m_Offset);
  const std::size_t growth = size - std::min(size, rest);
  written = size - growth + std::min(growth, m_FreeBytes);
  if (written == 0 && size > 0) {
    return ENOSPC;
  }
  m_FreeBytes -= m_FreeBytes == Unlimited ? 0 : std::min(growth, m_FreeBytes);
  content.resize(std::max(content.size(), open.m_Offset + written));
  content.replace(open.m_Offset, written, static_cast<const char*>(data), written);
  open.m_Offset += written;
  ++open.m_File->m_Changes;
  return 0;
}

int AMemoryFileSystem::Sync(int fd) {
  const AMutexGuard guard(m_Lock);
  return m_OpenFiles.count(fd) > 0 ? 0 : EBADF;
}

int AMemoryFileSystem::Close(int fd) {
  const AMutexGuard guard(m_Lock);
  return m_OpenFiles.erase(fd) > 0 ? 0 : EBADF;
}

int AMemoryFileSystem::SetMode(int fd, unsigned mode) {
  const AMutexGuard guard(m_Lock);
  const auto found = m_OpenFiles.find(fd);
  if (found == m_OpenFiles.end() || found->second.m_File == nullptr) {
    return EBADF;
  }
  found->second.m_File->m_Mode = S_IFREG | (mode & 07777);
  ++found->second.m_File->m_Changes;
  return 0;
}

int AMemoryFileSystem::GetInfo(const char* path, Info& info) {
  const AMutexGuard guard(m_Lock);
  const FilePtr file = Find(path);
  const bool isDirectory = m_Directories.count(DirectoryName(path)) > 0;
  info = InfoOf(file);
  return file != nullptr || isDirectory ? 0 : ENOENT;
}

int AMemoryFileSystem::GetOpenInfo(int fd, Info& info) {
  const AMutexGuard guard(m_Lock);
  const auto found = m_OpenFiles.find(fd);
  if (found == m_OpenFiles.end()) {
    return EBADF;
  }
  info = InfoOf(found->second.m_File);
  return 0;
}

AMemoryFileSystem::FilePtr AMemoryFileSystem::NewFile(std::string content, unsigned mode) {
  return std::make_shared<File>(File{std::move(content), S_IFREG | mode, ++m_LastFile, 0});
}

/// A directory's for null.
AMemoryFileSystem::Info AMemoryFileSystem::InfoOf(const FilePtr& file) {
  Info info;
  info.m_Mode = S_IFDIR | 0755;
  if (file != nullptr) {
    info.m_Mode = file->m_Mode;
    info.m_Number = file->m_Number;
    info.m_Size = file->m_Content.size();
    info.m_Modified = file->m_Changes;
    info.m_Changed = file->m_Changes;
  }
  return info;
}

// Entries
// -------------------------------------------------------------------------------------------

int AMemoryFileSystem::Rename(const char* from, const char* to, bool replace) {
  const AMutexGuard guard(m_Lock);
  const PathParts source = Split(from);
  const PathParts target = Split(to);
  const FilePtr file = Find(from);
  if (file == nullptr || m_Directories.count(target.m_Directory) == 0) {
    return ENOENT;
  }
  if (m_ReadOnly) {
    return EROFS;
  }
  if (!replace && Find(to) != nullptr) {
    return EEXIST;
  }
  m_Directories[source.m_Directory].erase(source.m_Name);
  m_Directories[target.m_Directory][target.m_Name] = file;
  return 0;
}

int AMemoryFileSystem::Unlink(const char* path) {
  const AMutexGuard guard(m_Lock);
  const PathParts parts = Split(path);
  if (Find(path) == nullptr) {
    return ENOENT;
  }
  if (m_ReadOnly) {
    return EROFS;
  }
  m_Directories[parts.m_Directory].erase(parts.m_Name);
  return 0;
}

int AMemoryFileSystem::OpenDirectory(const char* path, unsigned long& handle) {
  const AMutexGuard guard(m_Lock);
  handle = 0;
  const auto found = m_Directories.find(DirectoryName(path));
  if (found == m_Directories.end()) {
    return ENOENT;
  }
  Listing listing{{".", ".."}, 0};
  for (const auto& entry : found->second) {
    listing.m_Names.push_back(entry.first);
  }
  handle = ++m_LastHandle;
  m_Listings[handle] = std::move(listing);
  return 0;
}

int AMemoryFileSystem::ReadDirectory(unsigned long handle, const char*& name) {
  const AMutexGuard guard(m_Lock);
  name = nullptr;
  const auto found = m_Listings.find(handle);
  if (found == m_Listings.end()) {
    return EBADF;
  }
  Listing& listing = found->second;
  if (listing.m_Next < listing.m_Names.size()) {
    name = listing.m_Names[listing.m_Next++].c_str();
  }
  return 0;
}

int AMemoryFileSystem::CloseDirectory(unsigned long handle) {
  const AMutexGuard guard(m_Lock);
  return m_Listings.erase(handle) > 0 ? 0 : EBADF;
}

std::uint64_t AMemoryFileSystem::UniqueNumber() {
  const AMutexGuard guard(m_Lock);
  // The multiplication spreads a counter over all characters of a tail.
  return ++m_LastNumber * 0x9E3779B97F4A7C15ULL >> 8;
}

}  // namespace BaseSDK
