#pragma once

#include <BaseSDK/AFileSystem.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace NoxAgent {

/// Which file it is, and when it was written last: tells a file from all that were and will be at
/// its path. A rename keeps it, and so does a power cut; a copy is another one.
struct FileVersion {
  std::uint64_t m_Number = 0;   ///< on its device
  std::int64_t m_Modified = 0;  ///< in nanoseconds since the epoch

  FileVersion() = default;
  explicit FileVersion(const BaseSDK::AFileSystem::Info& info)
      : m_Number(info.m_Number), m_Modified(info.m_Modified) {}
  bool operator==(const FileVersion&) const = default;
};

/// The replacement of one task file, as the journal keeps it.
struct JournalRecord {
  std::string m_Name;    ///< of the file, without its directory
  FileVersion m_Before;  ///< what was replaced
  FileVersion m_After;   ///< what took its place
  std::string m_Content;
  /// It tells no content: what took its place has that of an earlier record of the file.
  bool m_IsVersionAlone = false;
};

/// How records lie in the journal, one behind the other: a head of fixed size, the name, the
/// content. Numbers are little-endian, so a disk can be carried to another machine. The checksum is
/// FNV-1a with 64 bits (Fowler, Noll, Vo), over the generation of the journal, the place of the
/// record in it and all that follows; so whatever is left of an earlier generation is no record.
class JournalFormat {
 public:
  /// A place in the journal, as the checksum takes it in.
  struct Place {
    std::uint64_t m_Generation = 0;
    std::uint64_t m_Offset = 0;
  };

  /// How many bytes the record takes.
  static std::size_t SizeOf(const JournalRecord& record);
  /// How many it takes when it tells the version alone.
  static std::size_t SizeOfVersion(const JournalRecord& record);
  /// Appends the record's bytes for this place to `bytes`.
  static void Append(const JournalRecord& record, Place place, std::string& bytes);
  /// The record that `bytes` begin with; nothing when they begin with no whole one of this place.
  static std::optional<JournalRecord> Read(std::string_view bytes, Place place);

  /// What stands in front of the records: a head that names the generation, in a block of its own.
  static constexpr std::size_t HeadSize = 4096;
  static std::string Head(std::uint64_t generation);
  /// The generation of a head; nothing when it is none.
  static std::optional<std::uint64_t> GenerationOf(std::string_view head);
};

}  // namespace NoxAgent
