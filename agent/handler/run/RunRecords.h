#pragma once

#include "agent/handler/run/RunRecord.h"
#include "agent/handler/system/FileDescriptor.h"

#include <BaseSDK/AString.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace NoxHandler {

/// The records of one agent's runs: a file with a slot for each run that may go on at the same
/// time. The file takes all its space when the agent starts, and records are written in their
/// slots. So a disk that is full later keeps no job from running, least of all one that would make
/// room.
///
/// Records have to outlive the agent, not the machine: a boot ends the processes too, so they are
/// not flushed to disk. [one thread at a time]
class RunRecords {
 public:
  /// Opens or creates the file "runs" in `directory`, which this agent alone writes to, and takes
  /// its space. Slots that cannot be read are logged and cleared. When the file
  /// cannot be opened or has no space, that is logged, and each Write tries again.
  RunRecords(const BaseSDK::AString& directory, std::size_t slots);

  /// Writes the run's record, in place of an earlier one of it; its token tells which run it is. 0;
  /// or an errno, and there is no record.
  int Write(const NamedRunRecord& named);
  /// Clears the record of the run with this token, if there is one.
  void Remove(const std::string& token);

  /// All that are there.
  std::vector<NamedRunRecord> All() const;

 private:
  int Open();
  void ReadSlots();
  int TakeSpace() const;
  bool IsFileGone() const;
  int Put(std::size_t slot, std::string_view bytes) const;
  std::string Get(std::size_t slot) const;
  std::size_t SlotFor(const std::string& token);

  const BaseSDK::AString m_FileName;
  const std::size_t m_Reserved;  ///< slots whose space is held
  FileDescriptor m_File;
  std::vector<std::string> m_Slots;  ///< the token of the run whose record is in it; empty: free
};

}  // namespace NoxHandler
