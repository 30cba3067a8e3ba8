#include "agent/daemon/journal/Journal.h"

#include <BaseSDK/AFileCalls.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <utility>

using BaseSDK::AFileCalls;

namespace NoxAgent {
namespace {

constexpr unsigned JournalMode = 0600;
// What is no regular file must not hold the agent up, nor lead it elsewhere.
constexpr int JournalFlags = O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;

}  // namespace

Journal::Journal(BaseSDK::AFileSystem& files, std::string path)
    : m_Files(files), m_Path(std::move(path)) {}

Journal::~Journal() {
  Close();
}

int Journal::Open(int extraFlags) {
  Close();
  const int flags = JournalFlags | extraFlags;
  int error =
      AFileCalls::Retry([&] { return m_Files.Open(m_Path.c_str(), flags, JournalMode, m_Fd); });
  BaseSDK::AFileSystem::Info info;
  error = error != 0 ? error : m_Files.GetOpenInfo(m_Fd, info);
  return error == 0 && !S_ISREG(info.m_Mode) ? EINVAL : error;
}

void Journal::Close() {
  m_Ready = false;
  if (m_Fd != -1) {
    (void)m_Files.Close(std::exchange(m_Fd, -1));  // what counts was flushed before
  }
}

int Journal::Read(std::vector<JournalRecord>& records) {
  m_HasSpace = false;
  int error = Open(0);
  if (error == ENOENT) {
    return 0;
  }
  std::string bytes;
  error = error != 0 ? error : ReadAll(bytes);
  if (error != 0) {
    return error;
  }
  const auto generation = JournalFormat::GenerationOf(bytes);
  m_HasSpace = generation.has_value() && bytes.size() == Size;
  m_Generation = generation.value_or(0);
  for (std::size_t offset = JournalFormat::HeadSize; offset < bytes.size();) {
    const auto record =
        JournalFormat::Read(std::string_view(bytes).substr(offset), {m_Generation, offset});
    if (!record) {
      break;
    }
    offset += JournalFormat::SizeOf(*record);
    records.push_back(*record);
  }
  return 0;
}

int Journal::ReadAll(std::string& bytes) {
  // One byte more tells a longer file, which is no journal of ours.
  bytes.resize(Size + 1);
  std::size_t filled = 0;
  for (;;) {
    std::size_t got = 0;
    const int error = AFileCalls::Retry(
        [&] { return m_Files.Read(m_Fd, bytes.data() + filled, bytes.size() - filled, got); });
    filled += got;
    if (error != 0 || got == 0 || filled == bytes.size()) {
      bytes.resize(filled);
      return error;
    }
  }
}

int Journal::Clear() {
  // Opened anew to write from the beginning; somebody may have deleted it meanwhile.
  int error = m_HasSpace ? Open(0) : ENOENT;
  if (error == ENOENT) {
    error = TakeSpace();
    error = error != 0 ? error : Open(0);
  }
  error = error != 0 ? error : WriteHead();
  m_Ready = error == 0;
  return error;
}

int Journal::TakeSpace() {
  int error = Open(O_CREAT | O_TRUNC);
  if (error != 0) {
    return error;
  }
  error = FillSpace();
  m_HasSpace = error == 0;
  if (error != 0) {
    // A part is of no use, and would take the last bytes of a full disk.
    Close();
    (void)m_Files.Unlink(m_Path.c_str());
  }
  return error;
}

// Zeros are written, not skipped: a flush of data that fills a hole would have to flush the file's
// map of blocks as well.
int Journal::FillSpace() {
  m_Flushes += 2;
  int error = Write(std::string(Size, '\0'));
  error = error != 0 ? error : AFileCalls::Retry([&] { return m_Files.Sync(m_Fd); });
  return error != 0 ? error : FlushName();
}

// Flushed before any record of the new generation is written: otherwise a power cut could leave the
// old head with a part of the old records, and these would count.
int Journal::WriteHead() {
  const int error = Write(JournalFormat::Head(m_Generation + 1));
  if (error != 0) {
    return error;
  }
  ++m_Generation;
  m_Used = JournalFormat::HeadSize;
  ++m_Flushes;
  return AFileCalls::Retry([&] { return m_Files.SyncData(m_Fd); });
}

int Journal::FlushName() {
  return AFileCalls::FlushDirectory(m_Files, AFileCalls::DirectoryOf(m_Path));
}

int Journal::Append(const std::vector<const JournalRecord*>& records) {
  std::string bytes;
  for (const JournalRecord* const record : records) {
    JournalFormat::Append(*record, {m_Generation, m_Used + bytes.size()}, bytes);
  }
  int error = m_Ready ? Write(bytes) : EBADF;
  if (error == 0) {
    m_Used += bytes.size();
    ++m_Flushes;
    error = AFileCalls::Retry([&] { return m_Files.SyncData(m_Fd); });
  }
  if (error != 0) {
    Close();
  }
  return error;
}

int Journal::Write(const std::string& bytes) {
  std::size_t written = 0;
  return AFileCalls::WriteAll(m_Files, m_Fd, bytes.data(), bytes.size(), written);
}

}  // namespace NoxAgent
