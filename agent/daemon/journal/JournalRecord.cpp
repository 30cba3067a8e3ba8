#include "agent/daemon/journal/JournalRecord.h"

namespace NoxAgent {
namespace {

constexpr std::string_view Magic = "noxjrnl1";
constexpr std::size_t NumberSize = 8;
// The checksum; the lengths of name and content; two versions of two numbers each.
constexpr std::size_t RecordHeadSize = 7 * NumberSize;
constexpr std::size_t JournalHeadUsed = Magic.size() + 2 * NumberSize;
constexpr std::uint64_t NoContent = ~std::uint64_t{0};  // in place of its length

void AppendNumber(std::uint64_t number, std::string& bytes) {
  for (std::size_t i = 0; i < NumberSize; ++i) {
    bytes += static_cast<char>(number >> (8 * i) & 0xFF);
  }
}

std::uint64_t NumberAt(std::string_view bytes, std::size_t position) {
  std::uint64_t number = 0;
  for (std::size_t i = 0; i < NumberSize; ++i) {
    number |= std::uint64_t{static_cast<unsigned char>(bytes[position + i])} << (8 * i);
  }
  return number;
}

void AppendVersion(const FileVersion& version, std::string& bytes) {
  AppendNumber(version.m_Number, bytes);
  AppendNumber(static_cast<std::uint64_t>(version.m_Modified), bytes);
}

FileVersion VersionAt(std::string_view bytes, std::size_t position) {
  FileVersion version;
  version.m_Number = NumberAt(bytes, position);
  version.m_Modified = static_cast<std::int64_t>(NumberAt(bytes, position + NumberSize));
  return version;
}

std::uint64_t Checksum(std::string_view bytes, std::uint64_t seed) {
  constexpr std::uint64_t Prime = 0x100000001B3;
  for (const char byte : bytes) {
    seed = (seed ^ static_cast<unsigned char>(byte)) * Prime;
  }
  return seed;
}

std::uint64_t Checksum(std::string_view bytes, JournalFormat::Place place) {
  constexpr std::uint64_t OffsetBasis = 0xCBF29CE484222325;
  std::string numbers;
  AppendNumber(place.m_Generation, numbers);
  AppendNumber(place.m_Offset, numbers);
  return Checksum(bytes, Checksum(numbers, OffsetBasis));
}

}  // namespace

std::size_t JournalFormat::SizeOf(const JournalRecord& record) {
  return SizeOfVersion(record) + (record.m_IsVersionAlone ? 0 : record.m_Content.size());
}

std::size_t JournalFormat::SizeOfVersion(const JournalRecord& record) {
  return RecordHeadSize + record.m_Name.size();
}

void JournalFormat::Append(const JournalRecord& record, Place place, std::string& bytes) {
  std::string rest;
  rest.reserve(SizeOf(record) - NumberSize);
  AppendNumber(record.m_Name.size(), rest);
  AppendNumber(record.m_IsVersionAlone ? NoContent : record.m_Content.size(), rest);
  AppendVersion(record.m_Before, rest);
  AppendVersion(record.m_After, rest);
  rest += record.m_Name;
  rest += record.m_IsVersionAlone ? std::string_view() : record.m_Content;
  AppendNumber(Checksum(rest, place), bytes);
  bytes += rest;
}

std::optional<JournalRecord> JournalFormat::Read(std::string_view bytes, Place place) {
  if (bytes.size() < RecordHeadSize) {
    return std::nullopt;
  }
  const std::uint64_t nameSize = NumberAt(bytes, NumberSize);
  const bool hasContent = NumberAt(bytes, 2 * NumberSize) != NoContent;
  const std::uint64_t contentSize = hasContent ? NumberAt(bytes, 2 * NumberSize) : 0;
  const std::size_t room = bytes.size() - RecordHeadSize;
  if (nameSize == 0 || nameSize > room || contentSize > room - nameSize) {
    return std::nullopt;
  }
  const auto nameLength = static_cast<std::size_t>(nameSize);
  const auto contentLength = static_cast<std::size_t>(contentSize);
  bytes = bytes.substr(0, RecordHeadSize + nameLength + contentLength);
  if (NumberAt(bytes, 0) != Checksum(bytes.substr(NumberSize), place)) {
    return std::nullopt;
  }
  JournalRecord record;
  record.m_Before = VersionAt(bytes, 3 * NumberSize);
  record.m_After = VersionAt(bytes, 5 * NumberSize);
  record.m_Name = bytes.substr(RecordHeadSize, nameLength);
  record.m_Content = bytes.substr(RecordHeadSize + nameLength);
  record.m_IsVersionAlone = !hasContent;
  return record;
}

std::string JournalFormat::Head(std::uint64_t generation) {
  std::string head(Magic);
  AppendNumber(generation, head);
  AppendNumber(Checksum(head, Place{}), head);
  head.resize(HeadSize, '\0');
  return head;
}

std::optional<std::uint64_t> JournalFormat::GenerationOf(std::string_view head) {
  if (head.size() < JournalHeadUsed || !head.starts_with(Magic)) {
    return std::nullopt;
  }
  const std::size_t sumPosition = Magic.size() + NumberSize;
  const bool isWhole =
      NumberAt(head, sumPosition) == Checksum(head.substr(0, sumPosition), Place{});
  return isWhole ? std::optional(NumberAt(head, Magic.size())) : std::nullopt;
}

}  // namespace NoxAgent
