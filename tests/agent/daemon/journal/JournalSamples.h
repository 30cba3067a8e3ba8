// Records and their versions, for the tests of the journal.
#pragma once

#include "agent/daemon/journal/JournalRecord.h"

#include <cstdint>
#include <string>

namespace NoxAgent {

inline FileVersion VersionOf(std::uint64_t number, std::int64_t modified) {
  FileVersion version;
  version.m_Number = number;
  version.m_Modified = modified;
  return version;
}

/// Of another record's file: its version alone.
inline JournalRecord VersionRecordOf(const std::string& name) {
  return {name, VersionOf(1, 2), VersionOf(5, 6), {}, true};
}

inline JournalRecord RecordOf(const std::string& name, const std::string& content) {
  return {name, VersionOf(1, 2), VersionOf(3, 4), content};
}

/// All of it, for a comparison: "T1.vsk 1@2 -> 3@4: <Task/>"; without a content, no colon.
inline std::string TextOf(const JournalRecord& record) {
  const auto text = [](const FileVersion& version) {
    return std::to_string(version.m_Number) + "@" + std::to_string(version.m_Modified);
  };
  return record.m_Name + " " + text(record.m_Before) + " -> " + text(record.m_After) +
         (record.m_IsVersionAlone ? "" : ": " + record.m_Content);
}

}  // namespace NoxAgent
