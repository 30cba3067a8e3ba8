#include "agent/daemon/journal/Journal.h"

#include "tests/agent/daemon/journal/JournalSamples.h"
#include "tests/support/FailingFileSystem.h"
#include "tests/support/MemoryFileSystem.h"
#include "tests/support/TempDir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cerrno>
#include <filesystem>

using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::FailingFileSystem;

namespace NoxAgent {
namespace {

constexpr const char* JournalPath = "/var/journal";

using Names = std::vector<std::string>;

// Which files the records are of; a failure is told in their place.
Names ReadNames(Journal& journal) {
  std::vector<JournalRecord> records;
  const int error = journal.Read(records);
  Names names;
  for (const JournalRecord& record : records) {
    names.push_back(record.m_Name);
  }
  return error != 0 ? Names{"error " + std::to_string(error)} : names;
}

int AppendRecord(Journal& journal, const std::string& name, const std::string& content = "x") {
  const JournalRecord record = RecordOf(name, content);
  return journal.Append({&record});
}

class JournalTest : public testing::Test {
 protected:
  JournalTest() { m_Memory.MakeDirectory("/var"); }

  // Ready for records, as the agent makes it.
  void Begin(Journal& journal) {
    (void)ReadNames(journal);
    ASSERT_EQ(journal.Clear(), 0);
  }
  // What the next process would find.
  Names ReadAnew() {
    Journal journal(m_Memory, JournalPath);
    return ReadNames(journal);
  }
  std::string Bytes() const { return m_Memory.ReadFile(JournalPath); }

  TestSupport::MemoryFileSystem m_Memory;
  FailingFileSystem m_Disk{m_Memory};
  Journal m_Journal{m_Disk, JournalPath};
};

TEST_F(JournalTest, TakesAllOfItsSpaceAtFirstUse) {
  EXPECT_THAT(ReadNames(m_Journal), IsEmpty());
  EXPECT_FALSE(m_Memory.Has(JournalPath)) << "reading makes no file";
  EXPECT_FALSE(m_Journal.IsReady());
  EXPECT_EQ(m_Journal.Clear(), 0);
  EXPECT_TRUE(m_Journal.IsReady());
  EXPECT_EQ(Bytes().size(), Journal::Size);
  m_Memory.SetFreeBytes(0);
  EXPECT_EQ(AppendRecord(m_Journal, "T1.vsk", std::string(100000, 'x')), 0);
  EXPECT_EQ(Bytes().size(), Journal::Size);
}

TEST_F(JournalTest, ReadsItsRecordsBackInOrder) {
  Begin(m_Journal);
  const JournalRecord first = RecordOf("T1.vsk", "<Task/>");
  const JournalRecord second = RecordOf("T2.vsk", "");
  const JournalRecord third = RecordOf("T1.vsk", "<Task Enabled='0'/>");
  ASSERT_EQ(m_Journal.Append({&first, &second}), 0);
  ASSERT_EQ(m_Journal.Append({&third}), 0);
  EXPECT_EQ(m_Journal.UsedBytes(), JournalFormat::SizeOf(first) + JournalFormat::SizeOf(second) +
                                       JournalFormat::SizeOf(third));

  std::vector<JournalRecord> records;
  Journal next(m_Memory, JournalPath);
  ASSERT_EQ(next.Read(records), 0);
  ASSERT_EQ(records.size(), 3U);
  EXPECT_EQ(TextOf(records[0]), TextOf(first));
  EXPECT_EQ(TextOf(records[1]), TextOf(second));
  EXPECT_EQ(TextOf(records[2]), TextOf(third));
}

TEST_F(JournalTest, ReadsUpToARecordThatIsTorn) {
  Begin(m_Journal);
  ASSERT_EQ(AppendRecord(m_Journal, "T1.vsk"), 0);
  const std::size_t torn = JournalFormat::HeadSize + m_Journal.UsedBytes();
  ASSERT_EQ(AppendRecord(m_Journal, "T2.vsk", "torn"), 0);
  const std::size_t end = JournalFormat::HeadSize + m_Journal.UsedBytes();
  ASSERT_EQ(AppendRecord(m_Journal, "T3.vsk", "whole, but behind the torn one"), 0);
  const std::string whole = Bytes();
  for (std::size_t from = torn; from < end; ++from) {
    std::string bytes = whole;
    bytes.replace(from, end - from, end - from, '\0');
    m_Memory.WriteFile(JournalPath, bytes);
    EXPECT_THAT(ReadAnew(), ElementsAre("T1.vsk")) << from;
  }
}

TEST_F(JournalTest, CountsNoRecordsOfBeforeItWasEmptied) {
  Begin(m_Journal);
  ASSERT_EQ(AppendRecord(m_Journal, "T1.vsk"), 0);
  ASSERT_EQ(AppendRecord(m_Journal, "T2.vsk"), 0);
  ASSERT_EQ(m_Journal.Clear(), 0);
  EXPECT_EQ(m_Journal.UsedBytes(), 0U);
  EXPECT_THAT(ReadAnew(), IsEmpty());
  ASSERT_EQ(AppendRecord(m_Journal, "T3.vsk"), 0);
  EXPECT_THAT(ReadAnew(), ElementsAre("T3.vsk")) << "T2 still stands behind it";
}

TEST_F(JournalTest, CountsNoRecordsOfAnEarlierProcess) {
  {
    Journal earlier(m_Memory, JournalPath);
    Begin(earlier);
    ASSERT_EQ(AppendRecord(earlier, "T1.vsk"), 0);
    ASSERT_EQ(AppendRecord(earlier, "T2.vsk"), 0);
  }
  EXPECT_THAT(ReadNames(m_Journal), ElementsAre("T1.vsk", "T2.vsk"));
  ASSERT_EQ(m_Journal.Clear(), 0);
  ASSERT_EQ(AppendRecord(m_Journal, "T3.vsk"), 0);
  EXPECT_THAT(ReadAnew(), ElementsAre("T3.vsk"));
}

TEST_F(JournalTest, MakesAFileAnewThatIsNoJournal) {
  const std::string foreign[] = {"",
                                 "x",
                                 std::string(Journal::Size - 1, 'x'),
                                 std::string(Journal::Size, '\0'),
                                 std::string(Journal::Size, 'x'),
                                 std::string(2 * Journal::Size, 'x')};
  for (const std::string& bytes : foreign) {
    m_Memory.WriteFile(JournalPath, bytes);
    EXPECT_THAT(ReadNames(m_Journal), IsEmpty());
    ASSERT_EQ(m_Journal.Clear(), 0);
    ASSERT_EQ(AppendRecord(m_Journal, "T1.vsk"), 0);
    EXPECT_EQ(Bytes().size(), Journal::Size);
    EXPECT_THAT(ReadAnew(), ElementsAre("T1.vsk"));
  }
}

TEST_F(JournalTest, ReadsOneOfAnotherSizeBeforeItIsMadeAnew) {
  Begin(m_Journal);
  ASSERT_EQ(AppendRecord(m_Journal, "T1.vsk"), 0);
  const std::string whole = Bytes();
  for (const std::string& bytes : {whole.substr(0, 8192), whole + "x"}) {
    m_Memory.WriteFile(JournalPath, bytes);
    Journal next(m_Memory, JournalPath);
    EXPECT_THAT(ReadNames(next), ElementsAre("T1.vsk"));
    EXPECT_EQ(next.Clear(), 0);
    EXPECT_EQ(Bytes().size(), Journal::Size);
    EXPECT_THAT(ReadAnew(), IsEmpty());
  }
}

TEST_F(JournalTest, IsMadeAnewWhenSomebodyHasDeletedIt) {
  Begin(m_Journal);
  m_Memory.RemoveFile(JournalPath);
  EXPECT_EQ(m_Journal.Clear(), 0);
  EXPECT_EQ(Bytes().size(), Journal::Size);
  ASSERT_EQ(AppendRecord(m_Journal, "T1.vsk"), 0);
  EXPECT_THAT(ReadAnew(), ElementsAre("T1.vsk"));
}

TEST_F(JournalTest, LeavesNothingOnADiskThatHasNoRoomForIt) {
  m_Memory.SetFreeBytes(Journal::Size - 1);
  EXPECT_THAT(ReadNames(m_Journal), IsEmpty());
  EXPECT_EQ(m_Journal.Clear(), ENOSPC);
  EXPECT_FALSE(m_Journal.IsReady());
  EXPECT_FALSE(m_Memory.Has(JournalPath));
  EXPECT_EQ(m_Memory.OpenHandles(), 0U);

  m_Memory.SetFreeBytes(Journal::Size);
  EXPECT_EQ(m_Journal.Clear(), 0);
  EXPECT_TRUE(m_Journal.IsReady());
}

TEST_F(JournalTest, LeavesNothingThatCannotBeFlushed) {
  m_Disk.FailAll(FailingFileSystem::SyncCall, EIO);
  EXPECT_EQ(m_Journal.Clear(), EIO);
  EXPECT_FALSE(m_Memory.Has(JournalPath));
}

TEST_F(JournalTest, HoldsWhatFitsToTheLastByte) {
  Begin(m_Journal);
  const std::size_t room = Journal::Size - JournalFormat::HeadSize;
  EXPECT_TRUE(Journal::CanEverHold(room));
  EXPECT_FALSE(Journal::CanEverHold(room + 1));
  ASSERT_EQ(AppendRecord(m_Journal, "T1.vsk"), 0);
  const std::size_t rest = room - m_Journal.UsedBytes();
  EXPECT_TRUE(m_Journal.HasRoomFor(rest));
  EXPECT_FALSE(m_Journal.HasRoomFor(rest + 1));
  const std::string content(rest - JournalFormat::SizeOf(RecordOf("T2.vsk", "")), 'x');
  ASSERT_EQ(AppendRecord(m_Journal, "T2.vsk", content), 0);
  EXPECT_FALSE(m_Journal.HasRoomFor(1));
  EXPECT_EQ(Bytes().size(), Journal::Size);
  EXPECT_THAT(ReadAnew(), ElementsAre("T1.vsk", "T2.vsk"));
}

TEST_F(JournalTest, TakesNoRecordsAfterAnErrorUntilItIsEmptied) {
  for (const auto kind : {FailingFileSystem::WriteCall, FailingFileSystem::SyncCall}) {
    Begin(m_Journal);
    m_Disk.FailAll(kind, EIO);
    EXPECT_EQ(AppendRecord(m_Journal, "T1.vsk"), EIO);
    EXPECT_FALSE(m_Journal.IsReady());
    EXPECT_EQ(m_Journal.UsedBytes(), 0U);
    EXPECT_EQ(m_Journal.Clear(), EIO);
    EXPECT_FALSE(m_Journal.IsReady());
    m_Disk.Reset();
    EXPECT_EQ(AppendRecord(m_Journal, "T2.vsk"), EBADF);
    EXPECT_EQ(m_Journal.Clear(), 0);
    EXPECT_EQ(AppendRecord(m_Journal, "T3.vsk"), 0);
    EXPECT_THAT(ReadAnew(), ElementsAre("T3.vsk"));
  }
}

TEST_F(JournalTest, TellsThatItCannotBeRead) {
  Begin(m_Journal);
  m_Disk.FailAll(FailingFileSystem::ReadCall, EIO);
  EXPECT_THAT(ReadNames(m_Journal), ElementsAre("error " + std::to_string(EIO)));
  EXPECT_FALSE(m_Journal.IsReady());
}

TEST_F(JournalTest, WritesOnAfterASignalAndAShortWrite) {
  Begin(m_Journal);
  m_Disk.Reset();
  m_Disk.FailAt(1, EINTR);
  m_Disk.ShortenAt(2, 10);
  m_Disk.FailAt(4, EINTR);
  EXPECT_EQ(AppendRecord(m_Journal, "T1.vsk"), 0);
  EXPECT_THAT(m_Disk.History(), ElementsAre("write", "write", "write", "sync data", "sync data"));
  EXPECT_THAT(ReadAnew(), ElementsAre("T1.vsk"));
}

TEST_F(JournalTest, CountsItsFlushes) {
  const auto flushes = [&] { return m_Disk.Count(FailingFileSystem::SyncCall); };
  Begin(m_Journal);
  EXPECT_EQ(flushes(), 3U) << "the space, the name, the head";
  EXPECT_EQ(m_Journal.Flushes(), flushes());
  const JournalRecord record = RecordOf("T1.vsk", "x");
  ASSERT_EQ(m_Journal.Append({&record, &record, &record}), 0);
  EXPECT_EQ(flushes(), 4U) << "many records, one flush";
  EXPECT_EQ(m_Journal.Flushes(), flushes());
  ASSERT_EQ(m_Journal.Clear(), 0);
  EXPECT_EQ(flushes(), 5U) << "the head alone";
  EXPECT_EQ(m_Journal.Flushes(), flushes());
}

// What lies in the place of a journal, on a real disk
// ------------------------------------------------------------------

class JournalOnDiskTest : public testing::Test {
 protected:
  // It is neither read nor taken for the journal's own.
  void ExpectRefused(int error) {
    Journal journal(BaseSDK::AFileSystem::Current(), m_Dir / "journal");
    EXPECT_THAT(ReadNames(journal), ElementsAre("error " + std::to_string(error)));
    EXPECT_EQ(journal.Clear(), error);
    EXPECT_FALSE(journal.IsReady());
  }

  TestSupport::TempDir m_Dir;
};

TEST_F(JournalOnDiskTest, FollowsNoSymbolicLink) {
  m_Dir.Write("target", "somebody's");
  std::filesystem::create_symlink(m_Dir / "target", m_Dir / "journal");
  ExpectRefused(ELOOP);
  EXPECT_EQ(m_Dir.Read("target"), "somebody's");
  EXPECT_TRUE(std::filesystem::is_symlink(m_Dir / "journal"));
}

TEST_F(JournalOnDiskTest, MakesNoFileBehindASymbolicLink) {
  std::filesystem::create_symlink(m_Dir / "target", m_Dir / "journal");
  ExpectRefused(ELOOP);
  EXPECT_FALSE(m_Dir.Has("target"));
}

TEST_F(JournalOnDiskTest, LeavesADirectoryAlone) {
  std::filesystem::create_directory(m_Dir / "journal");
  ExpectRefused(EISDIR);
}

TEST_F(JournalOnDiskTest, DoesNotWaitForAPipe) {
  ASSERT_EQ(mkfifo((m_Dir / "journal").c_str(), 0600), 0);
  ExpectRefused(EINVAL);
  EXPECT_TRUE(std::filesystem::is_fifo(m_Dir / "journal"));
}

TEST_F(JournalOnDiskTest, IsReadByItsOwnerAlone) {
  Journal journal(BaseSDK::AFileSystem::Current(), m_Dir / "journal");
  ASSERT_EQ(journal.Clear(), 0);
  EXPECT_EQ(std::filesystem::status(m_Dir / "journal").permissions(),
            std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

}  // namespace
}  // namespace NoxAgent
