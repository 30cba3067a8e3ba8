#pragma once

#include "agent/daemon/journal/JournalRecord.h"

#include <BaseSDK/AFileSystem.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace NoxAgent {

/// The journal of the task files: one file of fixed size, into which records are written one behind
/// the other. It takes its space once, so an append changes data alone and needs one flush. To
/// empty it, its generation goes up by one: records of an earlier one count no more.
///
/// Every routine returns 0 or an errno. After an error the journal takes no records until Clear
/// succeeds. Not for use by several threads at once.
class Journal {
 public:
  static constexpr std::size_t Size = 1024 * 1024;

  /// `files` is borrowed and outlives this object.
  Journal(BaseSDK::AFileSystem& files, std::string path);
  Journal(const Journal&) = delete;
  Journal& operator=(const Journal&) = delete;
  ~Journal();

  /// Reads the records, up to the first one that is not whole: what follows was not flushed. None
  /// when there is no file, or another one than a journal. Call Clear before the first Append.
  int Read(std::vector<JournalRecord>& records);
  /// Empties the journal and readies it for Append; makes the file where there is none. REQUIRES:
  /// no power cut can undo any more what the records tell.
  int Clear();

  /// Whether records of this many bytes (JournalFormat::SizeOf) can be appended now.
  bool HasRoomFor(std::size_t bytes) const { return bytes <= Size - m_Used; }
  /// Whether they could be, if the journal were empty.
  static bool CanEverHold(std::size_t bytes) { return bytes <= Size - JournalFormat::HeadSize; }
  /// Appends the records and flushes them; when it returns 0, a power cut leaves them. REQUIRES:
  /// HasRoomFor all of them, and at least one.
  int Append(const std::vector<const JournalRecord*>& records);

  /// From now on it takes no records, as after an error.
  void GiveUp() { Close(); }

  bool IsReady() const { return m_Ready; }
  /// How many bytes of records it holds.
  std::size_t UsedBytes() const { return m_Ready ? m_Used - JournalFormat::HeadSize : 0; }
  /// How many flushes it took so far.
  std::uint64_t Flushes() const { return m_Flushes; }

 private:
  int Open(int extraFlags);
  void Close();
  int ReadAll(std::string& bytes);
  int Write(const std::string& bytes);
  int TakeSpace();
  int FillSpace();
  int WriteHead();
  int FlushName();

  BaseSDK::AFileSystem& m_Files;
  const std::string m_Path;
  int m_Fd = -1;
  bool m_Ready = false;
  bool m_HasSpace = false;  ///< the file is a journal and has its full size on the disk
  std::uint64_t m_Generation = 0;
  std::size_t m_Used = JournalFormat::HeadSize;
  std::uint64_t m_Flushes = 0;
};

}  // namespace NoxAgent
