#include "tests/agent/daemon/journal/CrashDisk.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace NoxAgent {
namespace {

std::string DirectoryOf(const std::string& path) {
  return path.substr(0, path.rfind('/'));
}

std::string WithoutSlash(std::string path) {
  while (path.size() > 1 && path.back() == '/') {
    path.pop_back();
  }
  return path;
}

// Bytes and size of a file after one change.
void Apply(std::size_t offset, const std::string& bytes, std::string& content) {
  if (bytes.empty()) {
    content.clear();
    return;
  }
  content.resize(std::max(content.size(), offset + bytes.size()));
  content.replace(offset, bytes.size(), bytes);
}

}  // namespace

// A power cut: decides what of the unflushed is kept.
// --------------------------------------------------

class CrashDisk::Cut {
 public:
  Cut(Loss loss, std::uint64_t moment, std::mt19937_64& random)
      : m_Loss(loss), m_LastKept(random() % (moment + 1)), m_Random(random) {}

  bool KeepsEntries(const EntryChange& change) {
    return KeepsWhole(change.m_Moment) || (m_Loss == Loss::Any && Throw(m_EntryChance));
  }
  // A renamed file may still have its old name as well.
  bool KeepsOldName() { return m_Loss == Loss::Any && Throw(10); }

  std::int64_t TimeOf(const File& file) {
    std::int64_t time = file.m_WasFlushed ? file.m_Modified : file.m_ModifiedOnDisk;
    for (const Change& change : file.m_Unflushed) {
      if (KeepsWhole(change.m_Moment) || (m_Loss == Loss::Any && Throw(50))) {
        time = std::max(time, change.m_Modified);
      }
    }
    return time;
  }

  std::string ContentOf(const File& file) {
    return m_Loss == Loss::Any ? AnyContentOf(file) : WholeContentOf(file);
  }

 private:
  std::size_t Draw(std::size_t bound) { return static_cast<std::size_t>(m_Random() % bound); }
  bool Throw(unsigned chance) { return m_Random() % 100 < chance; }

  bool KeepsWhole(std::uint64_t moment) const {
    return m_Loss == Loss::None || (m_Loss == Loss::Latest && moment <= m_LastKept);
  }

  std::string WholeContentOf(const File& file) const {
    std::string content = file.m_OnDisk;
    for (const Change& change : file.m_Unflushed) {
      if (KeepsWhole(change.m_Moment)) {
        Apply(change.m_Offset, change.m_Bytes, content);
      }
    }
    return content;
  }

  // Of each sector the first changes, none to all; the size for itself.
  std::string AnyContentOf(const File& file) {
    static constexpr unsigned Chances[] = {5, 50, 95};
    const unsigned chance = Chances[m_Random() % 3];
    std::string content = file.m_OnDisk;
    std::vector<std::size_t> sizes{content.size()};
    std::string after = content;
    for (const Change& change : file.m_Unflushed) {
      Apply(change.m_Offset, change.m_Bytes, after);
      sizes.push_back(after.size());
    }
    content.resize(*std::max_element(sizes.begin(), sizes.end()));
    std::vector<bool> isLost(content.size() / SectorSize + 1);
    for (const Change& change : file.m_Unflushed) {
      ApplySectors(change, chance, isLost, content);
    }
    content.resize(AnySize(sizes));
    return content;
  }

  void ApplySectors(const Change& change, unsigned chance, std::vector<bool>& isLost,
                    std::string& content) {
    const bool cuts = change.m_Bytes.empty();
    const std::size_t begin = cuts ? 0 : change.m_Offset;
    const std::size_t end = cuts ? content.size() : begin + change.m_Bytes.size();
    for (std::size_t from = begin; from < end;) {
      const std::size_t sector = from / SectorSize;
      const std::size_t to = std::min(end, (sector + 1) * SectorSize);
      isLost[sector] = isLost[sector] || !Throw(chance);
      if (!isLost[sector]) {
        content.replace(
            from, to - from,
            cuts ? std::string(to - from, '\0') : change.m_Bytes.substr(from - begin, to - from));
      }
      from = to;
    }
  }

  std::size_t AnySize(const std::vector<std::size_t>& sizes) {
    const std::size_t which = Draw(sizes.size());
    const std::size_t size = sizes[which];
    const bool isBetween = which + 1 < sizes.size() && sizes[which + 1] > size && Throw(30);
    return isBetween ? size + Draw(sizes[which + 1] - size) : size;
  }

  const Loss m_Loss;
  const std::uint64_t m_LastKept;
  std::mt19937_64& m_Random;
  const unsigned m_EntryChance = 10 + static_cast<unsigned>(m_Random() % 80);
};

void CrashDisk::CutPower(Loss loss, std::mt19937_64& random) {
  m_Open.clear();
  m_Listings.clear();
  Cut cut(loss, m_Moment, random);
  for (const EntryChange& change : m_UnflushedEntries) {
    if (cut.KeepsEntries(change)) {
      for (const auto& [path, file] : change.m_Entries) {
        if (file != nullptr || change.m_Entries.size() == 1 || !cut.KeepsOldName()) {
          m_EntriesOnDisk[path] = file;
        }
      }
    }
  }
  m_UnflushedEntries.clear();
  std::erase_if(m_EntriesOnDisk, [](const auto& entry) { return entry.second == nullptr; });
  m_Entries = m_EntriesOnDisk;
  std::set<FilePtr> files;
  for (const auto& entry : m_Entries) {
    files.insert(entry.second);
  }
  // In the order of their numbers, so that a seed gives the same disk each time.
  for (const auto& [number, known] : m_Files) {
    if (const FilePtr file = known.lock(); files.contains(file)) {
      file->m_Content = cut.ContentOf(*file);
      file->m_Modified = cut.TimeOf(*file);
      file->m_Unflushed.clear();
      file->m_OnDisk = file->m_Content;
      file->m_ModifiedOnDisk = file->m_Modified;
      file->m_WasFlushed = true;
    }
  }
}

// Flushes
// -------

void CrashDisk::FlushContent(File& file, bool withTime) {
  for (const Change& change : file.m_Unflushed) {
    Apply(change.m_Offset, change.m_Bytes, file.m_OnDisk);
  }
  file.m_Unflushed.clear();
  file.m_WasFlushed = true;
  if (withTime) {
    file.m_ModifiedOnDisk = file.m_Modified;
  }
}

void CrashDisk::FlushEntries(const std::string& directory) {
  for (const EntryChange& change : m_UnflushedEntries) {
    for (const auto& [path, file] : change.m_Entries) {
      if (DirectoryOf(path) == directory) {
        m_EntriesOnDisk[path] = file;
      }
    }
  }
  std::erase_if(m_UnflushedEntries, [&](const EntryChange& change) {
    return DirectoryOf(change.m_Entries.front().first) == directory;
  });
  std::erase_if(m_EntriesOnDisk, [](const auto& entry) { return entry.second == nullptr; });
}

int CrashDisk::Sync(int fd) {
  const auto found = m_Open.find(fd);
  if (found == m_Open.end()) {
    return EBADF;
  }
  if (found->second.m_File != nullptr) {
    FlushContent(*found->second.m_File, true);
  } else {
    FlushEntries(found->second.m_Directory);
  }
  return 0;
}

int CrashDisk::SyncData(int fd) {
  const auto found = m_Open.find(fd);
  if (found == m_Open.end() || found->second.m_File == nullptr) {
    return EBADF;
  }
  FlushContent(*found->second.m_File, false);
  return 0;
}

int CrashDisk::SyncAll(int fd) {
  if (!m_Open.contains(fd)) {
    return EBADF;
  }
  for (const std::string& directory : m_Directories) {
    FlushEntries(directory);
  }
  for (const auto& entry : m_Files) {
    if (const FilePtr file = entry.second.lock()) {
      FlushContent(*file, true);
    }
  }
  return 0;
}

// Files
// -----

void CrashDisk::MakeDirectory(const std::string& path) {
  m_Directories.insert(path);
}

CrashDisk::FilePtr CrashDisk::Find(const std::string& path) const {
  const auto found = m_Entries.find(path);
  return found != m_Entries.end() ? found->second : nullptr;
}

bool CrashDisk::HasDirectoryOf(const std::string& path) const {
  return m_Directories.contains(DirectoryOf(path));
}

// With the least number that is free.
CrashDisk::FilePtr CrashDisk::NewFile(unsigned mode) {
  auto file = std::make_shared<File>();
  std::uint64_t number = 1;
  for (auto used = m_Files.begin(); used != m_Files.end() && !used->second.expired(); ++used) {
    ++number;
  }
  m_Files[number] = file;
  file->m_Number = number;
  file->m_Mode = S_IFREG | (mode & 0777);
  file->m_Modified = file->m_Changed = static_cast<std::int64_t>(++m_Moment);
  file->m_ModifiedOnDisk = file->m_Modified;
  return file;
}

int CrashDisk::Open(const char* path, int flags, unsigned mode, int& fd) {
  fd = -1;
  const std::string directory = WithoutSlash(path);
  OpenFile open;
  open.m_Writes = (flags & O_ACCMODE) != O_RDONLY;
  if (m_Directories.contains(directory)) {
    if (open.m_Writes) {
      return EISDIR;
    }
    open.m_Directory = directory;
  } else if (const int error = OpenRegular(path, flags, mode, open.m_File); error != 0) {
    return error;
  }
  fd = ++m_LastFd;
  m_Open[fd] = std::move(open);
  return 0;
}

int CrashDisk::OpenRegular(const std::string& path, int flags, unsigned mode, FilePtr& file) {
  file = Find(path);
  if (file != nullptr && (flags & O_DIRECTORY) != 0) {
    return ENOTDIR;
  }
  if (file != nullptr && (flags & O_CREAT) != 0 && (flags & O_EXCL) != 0) {
    return EEXIST;
  }
  if (file == nullptr && ((flags & O_CREAT) == 0 || !HasDirectoryOf(path))) {
    return ENOENT;
  }
  if (file == nullptr) {
    file = NewFile(mode);
    ChangeEntries({++m_Moment, {{path, file}}});
  } else if ((flags & O_TRUNC) != 0 && !file->m_Content.empty()) {
    ChangeContent(*file, 0, {});
  }
  return 0;
}

void CrashDisk::ChangeContent(File& file, std::size_t offset, std::string bytes) {
  Apply(offset, bytes, file.m_Content);
  ++m_Moment;
  file.m_Modified = file.m_Changed = static_cast<std::int64_t>(m_Moment);
  file.m_Unflushed.push_back({m_Moment, offset, std::move(bytes), file.m_Modified});
}

void CrashDisk::ChangeEntries(EntryChange change) {
  for (const auto& [path, file] : change.m_Entries) {
    m_Entries[path] = file;
  }
  std::erase_if(m_Entries, [](const auto& entry) { return entry.second == nullptr; });
  m_UnflushedEntries.push_back(std::move(change));
}

int CrashDisk::Read(int fd, void* buffer, std::size_t size, std::size_t& got) {
  got = 0;
  const auto found = m_Open.find(fd);
  if (found == m_Open.end() || found->second.m_File == nullptr) {
    return found == m_Open.end() ? EBADF : EISDIR;
  }
  OpenFile& open = found->second;
  const std::string& content = open.m_File->m_Content;
  got = std::min(size, content.size() - std::min(content.size(), open.m_Offset));
  std::memcpy(buffer, content.data() + open.m_Offset, got);
  open.m_Offset += got;
  return 0;
}

int CrashDisk::Write(int fd, const void* data, std::size_t size, std::size_t& written) {
  written = 0;
  const auto found = m_Open.find(fd);
  if (found == m_Open.end() || !found->second.m_Writes) {
    return EBADF;
  }
  if (size > 0) {
    OpenFile& open = found->second;
    ChangeContent(*open.m_File, open.m_Offset, std::string(static_cast<const char*>(data), size));
    open.m_Offset += size;
    written = size;
  }
  return 0;
}

int CrashDisk::Close(int fd) {
  return m_Open.erase(fd) > 0 ? 0 : EBADF;
}

int CrashDisk::SetMode(int fd, unsigned mode) {
  const auto found = m_Open.find(fd);
  if (found == m_Open.end() || found->second.m_File == nullptr) {
    return EBADF;
  }
  found->second.m_File->m_Mode = S_IFREG | (mode & 07777);
  found->second.m_File->m_Changed = static_cast<std::int64_t>(++m_Moment);
  return 0;
}

CrashDisk::Info CrashDisk::InfoOf(const FilePtr& file) {
  Info info;
  info.m_Mode = S_IFDIR | 0755;
  if (file != nullptr) {
    info.m_Mode = file->m_Mode;
    info.m_Number = file->m_Number;
    info.m_Size = file->m_Content.size();
    info.m_Modified = file->m_Modified;
    info.m_Changed = file->m_Changed;
  }
  return info;
}

int CrashDisk::GetInfo(const char* path, Info& info) {
  const FilePtr file = Find(path);
  info = InfoOf(file);
  return file != nullptr || m_Directories.contains(WithoutSlash(path)) ? 0 : ENOENT;
}

int CrashDisk::GetOpenInfo(int fd, Info& info) {
  const auto found = m_Open.find(fd);
  info = found != m_Open.end() ? InfoOf(found->second.m_File) : Info();
  return found != m_Open.end() ? 0 : EBADF;
}

// Entries
// -------

int CrashDisk::Rename(const char* from, const char* to, bool replace) {
  const FilePtr file = Find(from);
  if (file == nullptr) {
    return ENOENT;
  }
  if (DirectoryOf(from) != DirectoryOf(to)) {
    return EXDEV;
  }
  if (!replace && Find(to) != nullptr) {
    return EEXIST;
  }
  file->m_Changed = static_cast<std::int64_t>(++m_Moment);
  if (Find(to) != file) {  // two names of one file both stay
    ChangeEntries({m_Moment, {{to, file}, {from, nullptr}}});
  }
  return 0;
}

int CrashDisk::Unlink(const char* path) {
  if (Find(path) == nullptr) {
    return ENOENT;
  }
  ChangeEntries({++m_Moment, {{path, nullptr}}});
  return 0;
}

int CrashDisk::OpenDirectory(const char* path, unsigned long& handle) {
  handle = 0;
  const std::string directory = WithoutSlash(path);
  if (!m_Directories.contains(directory)) {
    return ENOENT;
  }
  Listing listing{{".", ".."}, 0};
  for (const auto& entry : m_Entries) {
    if (DirectoryOf(entry.first) == directory) {
      listing.m_Names.push_back(entry.first.substr(directory.size() + 1));
    }
  }
  handle = ++m_LastHandle;
  m_Listings[handle] = std::move(listing);
  return 0;
}

int CrashDisk::ReadDirectory(unsigned long handle, const char*& name) {
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

int CrashDisk::CloseDirectory(unsigned long handle) {
  return m_Listings.erase(handle) > 0 ? 0 : EBADF;
}

std::uint64_t CrashDisk::UniqueNumber() {
  // The multiplication spreads a counter over all characters of a name's tail.
  return ++m_LastUnique * 0x9E3779B97F4A7C15ULL >> 8;
}

}  // namespace NoxAgent
