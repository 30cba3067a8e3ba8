#include "agent/handler/run/RunRecords.h"

#include "agent/handler/Log.h"
#include "agent/handler/system/FileWrite.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

using BaseSDK::ALogger;
using BaseSDK::AString;

namespace NoxHandler {

namespace {

constexpr std::size_t SlotBytes = NamedRunRecord::Bytes;

off_t PositionOf(std::size_t slot) {
  return static_cast<off_t>(slot) * static_cast<off_t>(SlotBytes);
}

off_t SizeOf(const FileDescriptor& file) {
  struct stat info {};
  return fstat(file.Get(), &info) == 0 ? info.st_size : 0;
}

// A file system that never overwrites in place would need new space for each record. Those that
// have this switch let go of that for a file that is still empty; the others refuse it.
void OverwriteInPlace(const FileDescriptor& file) {
  int flags = 0;
  if (ioctl(file.Get(), FS_IOC_GETFLAGS, &flags) == 0) {
    flags |= FS_NOCOW_FL;
    (void)ioctl(file.Get(), FS_IOC_SETFLAGS, &flags);
  }
}

}  // namespace

RunRecords::RunRecords(const AString& directory, std::size_t slots)
    : m_FileName(directory + "/runs"), m_Reserved(slots) {
  if (const int error = Open(); error != 0) {
    ALOG(HandlerLog(), ALogger::Error, HandlerSource,
         AString("Cannot hold space for the records of runs in %1: %2")
             .Arg(m_FileName, strerror(error)));
  }
}

int RunRecords::Open() {
  m_File = FileDescriptor(open(m_FileName.ToUtf8().c_str(),
                               O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600));
  if (!m_File) {
    return errno;
  }
  ReadSlots();
  return TakeSpace();
}

void RunRecords::ReadSlots() {
  m_Slots.clear();
  const off_t size = SizeOf(m_File);
  for (std::size_t slot = 0; PositionOf(slot) < size; ++slot) {
    m_Slots.emplace_back();
    const std::string bytes = Get(slot);
    if (bytes.find_first_not_of('\0') == std::string::npos) {
      continue;
    }
    if (const auto named = NamedRunRecord::Decode(bytes)) {
      m_Slots[slot] = named->m_Record.m_Token;
    } else {
      ALOG(HandlerLog(), ALogger::Warning, HandlerSource,
           AString("Deleting the unreadable run record %1 of %2")
               .Arg(DecimalText(static_cast<long>(slot)), m_FileName));
      (void)Put(slot, std::string(SlotBytes, '\0'));
    }
  }
}

int RunRecords::TakeSpace() const {
  const off_t end = PositionOf(m_Reserved);
  off_t position = SizeOf(m_File);
  if (position == 0) {
    OverwriteInPlace(m_File);
  }
  const std::string zeros(64 * 1024, '\0');
  while (position < end) {
    const auto size = std::min(static_cast<off_t>(zeros.size()), end - position);
    const std::string_view part = std::string_view(zeros).substr(0, static_cast<std::size_t>(size));
    if (const int error = FileWrite::At(m_File.Get(), part, position); error != 0) {
      return error;
    }
    position += size;
  }
  // Some file systems find a place on the disk only now.
  return fdatasync(m_File.Get()) == 0 ? 0 : errno;
}

int RunRecords::Write(const NamedRunRecord& named) {
  if (!m_File || IsFileGone()) {
    if (const int error = Open(); !m_File) {
      return error;
    }
  }
  const std::string bytes = named.Encode();
  if (bytes.empty()) {
    return ENAMETOOLONG;
  }
  const std::size_t slot = SlotFor(named.m_Record.m_Token);
  if (const int error = Put(slot, bytes); error != 0) {
    (void)Put(slot, std::string(SlotBytes, '\0'));
    m_Slots[slot].clear();
    return error;
  }
  m_Slots[slot] = named.m_Record.m_Token;
  return 0;
}

void RunRecords::Remove(const std::string& token) {
  if (const auto found = std::find(m_Slots.begin(), m_Slots.end(), token); found != m_Slots.end()) {
    (void)Put(static_cast<std::size_t>(found - m_Slots.begin()), std::string(SlotBytes, '\0'));
    found->clear();
  }
}

std::vector<NamedRunRecord> RunRecords::All() const {
  std::vector<NamedRunRecord> records;
  for (std::size_t slot = 0; slot < m_Slots.size(); ++slot) {
    if (auto named = m_Slots[slot].empty() ? std::nullopt : NamedRunRecord::Decode(Get(slot))) {
      records.push_back(std::move(*named));
    }
  }
  return records;
}

// No later agent finds what is written to a deleted file.
bool RunRecords::IsFileGone() const {
  struct stat info {};
  return fstat(m_File.Get(), &info) != 0 || info.st_nlink == 0;
}

int RunRecords::Put(std::size_t slot, std::string_view bytes) const {
  return FileWrite::At(m_File.Get(), bytes, PositionOf(slot));
}

std::string RunRecords::Get(std::size_t slot) const {
  std::string bytes(SlotBytes, '\0');
  (void)!pread(m_File.Get(), bytes.data(), bytes.size(), PositionOf(slot));
  return bytes;
}

// The slot that the run has, else a free one. There are more slots than have their space taken
// only when processes of an earlier agent could not be ended: their records stay.
std::size_t RunRecords::SlotFor(const std::string& token) {
  auto found = std::find(m_Slots.begin(), m_Slots.end(), token);
  if (found == m_Slots.end()) {
    found = std::find(m_Slots.begin(), m_Slots.end(), std::string());
  }
  if (found == m_Slots.end()) {
    found = m_Slots.insert(found, std::string());
  }
  return static_cast<std::size_t>(found - m_Slots.begin());
}

}  // namespace NoxHandler
