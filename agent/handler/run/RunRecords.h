#pragma once

#include "agent/handler/run/RunRecord.h"
#include "agent/handler/system/FileDescriptor.h"

#include <BaseSDK/AString.h>

#include <cstddef>
#include <string_view>
#include <vector>

namespace NoxHandler {

/// The records of one agent's runs: a file with a slot for each run that may go on at the same
/// time. All its space is taken when the agent starts and a record is written in its place, so a
/// disk that is full later keeps no job from running, least of all the one that would make room.
///
/// Records have to outlive the agent, not the machine: a boot ends the processes too, so they are
/// not flushed to disk. [one thread at a time]
class RunRecords {
 public:
  /// Opens or creates the file "runs" and sees to its space. What cannot be read is logged and
  /// cleared. Without a file or the space this is logged, and Write tries for itself. `directory`
  /// is written by this agent alone.
  RunRecords(const BaseSDK::AString& directory, std::size_t slots);

  /// 0, or an errno: the record is not there then. A task has one record at most.
  int Write(const NamedRunRecord& named);
  void Remove(const BaseSDK::AString& taskId);

  /// All that are there.
  std::vector<NamedRunRecord> All() const;

 private:
  int Open();
  void ReadSlots();
  int TakeSpace() const;
  bool IsFileGone() const;
  int Put(std::size_t slot, std::string_view bytes) const;
  std::string Get(std::size_t slot) const;
  std::size_t SlotFor(const BaseSDK::AString& taskId);

  const BaseSDK::AString m_FileName;
  const std::size_t m_Reserved;  ///< slots whose space is held
  FileDescriptor m_File;
  std::vector<BaseSDK::AString> m_Slots;  ///< whose record is in it; empty: free
};

}  // namespace NoxHandler
