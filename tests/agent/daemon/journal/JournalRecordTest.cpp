#include "agent/daemon/journal/JournalRecord.h"

#include "tests/agent/daemon/journal/JournalSamples.h"

#include <gtest/gtest.h>

#include <limits>

namespace NoxAgent {
namespace {

constexpr JournalFormat::Place SamplePlace{7, 4096};

std::string BytesOf(const JournalRecord& record) {
  std::string bytes;
  JournalFormat::Append(record, SamplePlace, bytes);
  return bytes;
}

bool IsRecord(const std::string& bytes, JournalFormat::Place place = SamplePlace) {
  return JournalFormat::Read(bytes, place).has_value();
}

std::string WithByteAt(std::string bytes, std::size_t position, char byte) {
  bytes[position] = byte;
  return bytes;
}

TEST(JournalFormat, ReadsARecordBack) {
  const JournalRecord records[] = {
      RecordOf("T1.vsk", "<Task/>"),
      RecordOf("T1.vsk", ""),
      VersionRecordOf("T1.vsk"),
      RecordOf("\xC3\xA4.vsk", std::string("\0\xFF\n", 3)),
      {"T1.vsk", VersionOf(std::numeric_limits<std::uint64_t>::max(), -1),
       VersionOf(0, std::numeric_limits<std::int64_t>::min()), "<Task/>"},
  };
  for (const JournalRecord& record : records) {
    const std::string bytes = BytesOf(record);
    const auto read = JournalFormat::Read(bytes, SamplePlace);
    ASSERT_TRUE(read) << TextOf(record);
    EXPECT_EQ(TextOf(*read), TextOf(record));
    EXPECT_EQ(bytes.size(), JournalFormat::SizeOf(record));
  }
}

TEST(JournalFormat, AVersionAloneTakesNoRoomForAContent) {
  EXPECT_EQ(JournalFormat::SizeOf(VersionRecordOf("T1.vsk")),
            JournalFormat::SizeOfVersion(RecordOf("T1.vsk", "<Task/>")));
  EXPECT_LT(JournalFormat::SizeOf(VersionRecordOf("T1.vsk")),
            JournalFormat::SizeOf(RecordOf("T1.vsk", "<Task/>")));
}

TEST(JournalFormat, ReadsTheRecordThatTheBytesBeginWith) {
  const JournalRecord first = RecordOf("T1.vsk", "<Task/>");
  const auto read =
      JournalFormat::Read(BytesOf(first) + BytesOf(RecordOf("T2.vsk", "")), SamplePlace);
  ASSERT_TRUE(read);
  EXPECT_EQ(TextOf(*read), TextOf(first));
}

TEST(JournalFormat, ARecordThatIsCutAnywhereIsNone) {
  const std::string bytes = BytesOf(RecordOf("T1.vsk", "<Task/>"));
  for (std::size_t length = 0; length < bytes.size(); ++length) {
    EXPECT_FALSE(IsRecord(bytes.substr(0, length))) << length;
    EXPECT_FALSE(IsRecord(bytes.substr(0, length) + std::string(bytes.size() - length, '\0')))
        << length << " and zeros";
  }
}

TEST(JournalFormat, ARecordWithAnyOneBitFlippedIsNone) {
  const std::string bytes = BytesOf(RecordOf("T1.vsk", "<Task/>"));
  for (std::size_t bit = 0; bit < 8 * bytes.size(); ++bit) {
    const auto flipped = static_cast<char>(bytes[bit / 8] ^ (1 << bit % 8));
    EXPECT_FALSE(IsRecord(WithByteAt(bytes, bit / 8, flipped))) << "bit " << bit;
  }
}

TEST(JournalFormat, ARecordOfAnotherGenerationOrPlaceIsNone) {
  const std::string bytes = BytesOf(RecordOf("T1.vsk", "<Task/>"));
  EXPECT_TRUE(IsRecord(bytes, {7, 4096}));
  EXPECT_FALSE(IsRecord(bytes, {6, 4096}));
  EXPECT_FALSE(IsRecord(bytes, {8, 4096}));
  EXPECT_FALSE(IsRecord(bytes, {7, 4097}));
  EXPECT_FALSE(IsRecord(bytes, {4096, 7}));
}

TEST(JournalFormat, LengthsThatLieMakeNoRecord) {
  constexpr std::size_t NameLength = 8;
  constexpr std::size_t ContentLength = 16;
  constexpr std::size_t NumberSize = 8;
  const std::string bytes = BytesOf(RecordOf("T1.vsk", "<Task/>"));
  for (const std::size_t position : {NameLength, ContentLength}) {
    for (const char byte : {'\0', '\x01', '\x05', '\x7F', '\x80', '\xFF'}) {
      for (std::size_t i = 0; i < NumberSize; ++i) {
        std::string lying = bytes;
        lying.replace(position, i + 1, i + 1, byte);
        EXPECT_FALSE(IsRecord(lying)) << position << ", " << i + 1 << " of " << +byte;
      }
    }
  }
}

TEST(JournalFormat, ARecordWithoutANameIsNone) {
  EXPECT_FALSE(IsRecord(BytesOf(RecordOf("", "<Task/>"))));
}

TEST(JournalFormat, BytesThatWereNeverWrittenAreNoRecord) {
  EXPECT_FALSE(IsRecord(std::string(4096, '\0')));
  EXPECT_FALSE(IsRecord(std::string(4096, '\0'), {}));
  EXPECT_FALSE(IsRecord(std::string(4096, '\xFF')));
}

TEST(JournalFormat, AHeadTellsItsGeneration) {
  for (const std::uint64_t generation :
       {std::uint64_t{0}, std::uint64_t{1}, std::numeric_limits<std::uint64_t>::max()}) {
    const std::string head = JournalFormat::Head(generation);
    EXPECT_EQ(head.size(), JournalFormat::HeadSize);
    EXPECT_EQ(JournalFormat::GenerationOf(head), generation);
  }
}

TEST(JournalFormat, WhatIsNotAHeadHasNoGeneration) {
  constexpr std::size_t Used = 24;
  const std::string head = JournalFormat::Head(7);
  for (std::size_t length = 0; length < Used; ++length) {
    EXPECT_FALSE(JournalFormat::GenerationOf(head.substr(0, length))) << length;
  }
  for (std::size_t bit = 0; bit < 8 * Used; ++bit) {
    const auto flipped = static_cast<char>(head[bit / 8] ^ (1 << bit % 8));
    EXPECT_FALSE(JournalFormat::GenerationOf(WithByteAt(head, bit / 8, flipped))) << "bit " << bit;
  }
  EXPECT_FALSE(JournalFormat::GenerationOf(std::string(JournalFormat::HeadSize, '\0')));
}

}  // namespace
}  // namespace NoxAgent
