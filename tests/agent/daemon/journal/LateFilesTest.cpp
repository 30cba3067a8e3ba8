// Files that are made when the journal has them, because many wait already.
#include "tests/agent/daemon/journal/JournalFixture.h"

#include <gmock/gmock.h>

#include <thread>

using testing::ElementsAre;
using TestSupport::FailingFileSystem;

namespace NoxAgent {
namespace {

class LateFilesTest : public JournalFixture {
 protected:
  LateFilesTest() { m_Files.Begin(); }
};

TEST_F(LateFilesTest, FilesPastTheFirstSixteenAreMadeWhenTheyAreSafe) {
  constexpr int Many = 40;
  ReplaceMany(Many);
  EXPECT_EQ(m_Memory.Names("/state/tasks").size(), Many + 16U);
  m_Files.MakeSafe();
  EXPECT_EQ(m_Memory.Names("/state/tasks").size(), Many + 16U);
  m_Files.Follow();
  EXPECT_EQ(CountNew(Many), Many);
  EXPECT_EQ(m_Memory.Names("/state/tasks").size(), 0U + Many);
  ReplaceMany(1);
  EXPECT_EQ(m_Memory.Names("/state/tasks").size(), Many + 1U) << "they do not count any more";
}

TEST_F(LateFilesTest, ALateFileThatIsReplacedAgainIsMadeOnce) {
  ReplaceMany(17);
  ASSERT_EQ(Write(NameOf(16), "newer"), 0);
  ASSERT_EQ(Write(NameOf(0), "newer"), 0);
  m_Files.MakeSafe();
  m_Files.Follow();
  EXPECT_EQ(OnDisk(NameOf(16)), "newer");
  EXPECT_EQ(OnDisk(NameOf(0)), "newer");
  EXPECT_EQ(m_Observer.Told().size(), 18U);
  EXPECT_EQ(m_Observer.Told()[16], NameOf(16));
  EXPECT_EQ(m_Files.Count().m_Replaced, 19U);
}

TEST_F(LateFilesTest, ALateFileThatCannotBeMadeIsToldToTheThreadThatWrote) {
  ReplaceMany(18);
  m_Files.MakeSafe();
  m_Disk.FailAll(FailingFileSystem::WriteCall, ENOSPC);
  m_Files.Follow();
  m_Disk.Reset();
  EXPECT_EQ(CountNew(18), 16);
  m_Files.MakeSafe();
  const auto told = m_Observer.Told();
  EXPECT_THAT(std::vector(told.begin() + 16, told.end()),
              ElementsAre("T16.vsk failed: 28", "T17.vsk failed: 28"));
  EXPECT_EQ(m_Memory.Names("/state/tasks").size(), 18U);
  ASSERT_EQ(Write("T16.vsk", "newer"), 0);
  m_Files.MakeSafe();
  EXPECT_EQ(OnDisk("T16.vsk"), "newer");
}

TEST_F(LateFilesTest, NoFileIsLateWhileSomebodyAwaitsItsFailure) {
  ReplaceMany(18);
  m_Memory.SetFreeBytes(1);
  EXPECT_EQ(Write(NameOf(16), "newer"), 0) << "late";
  m_Observer.m_IsFailureAwaited = true;
  EXPECT_EQ(Write(NameOf(17), "newer"), ENOSPC);
}

TEST_F(LateFilesTest, AnAbsentFileIsWrittenAtOnceAlsoWhenManyWait) {
  ReplaceMany(17);
  EXPECT_EQ(Write("T17.vsk", "new"), 0);
  EXPECT_EQ(OnDisk("T17.vsk"), "new");
  EXPECT_EQ(CountNew(17), 0);
}

TEST_F(LateFilesTest, VersionsOfLateFilesFindRoomInTheJournal) {
  constexpr int Many = 40;
  ReplaceMany(Many);
  m_Files.MakeSafe();
  std::size_t room = Journal::Size - JournalFormat::HeadSize - m_Files.Count().m_JournalBytes;
  for (int late = 16; late < Many; ++late) {
    room -= JournalFormat::SizeOfVersion({NameOf(late), {}, {}, {}});
  }
  // It fits, if it were not for its own version.
  const std::string large(room - JournalFormat::SizeOfVersion({NameOf(0), {}, {}, {}}), 'x');
  ASSERT_EQ(Write(NameOf(0), large), 0);
  m_Files.MakeSafe();
  m_Files.Follow();
  EXPECT_EQ(m_Memory.ReadFile("/state/journal").size(), Journal::Size);
  EXPECT_EQ(OnDisk(NameOf(0)), large);
}

// A replay could not tell an older one, of which the journal has no version, from somebody else's.
TEST_F(LateFilesTest, OnlyTheNewestTakesItsPlaceWhenTheJournalCannotBeToldOfIt) {
  constexpr int Many = 20;
  ReplaceMany(Many);
  m_Files.MakeSafe();
  m_Disk.m_BeforeFile = [&] {
    std::thread([&] {
      ASSERT_EQ(Write(NameOf(18), "newer"), 0);
      m_Files.MakeSafe();
    }).join();
    m_Disk.m_JournalError = EIO;
  };
  m_Disk.m_IsFileAwaited = true;
  m_Files.Follow();
  EXPECT_EQ(CountNew(Many), Many - 1);
  EXPECT_EQ(OnDisk(NameOf(18)), "newer");
  EXPECT_EQ(m_Observer.Told().size(), 0U + Many) << "each once";
  EXPECT_EQ(m_Log.CountContaining("The journal /state/journal cannot be written"), 1U);
}

// The journal is emptied between the look at what a file replaces and the record that tells of it.
TEST_F(LateFilesTest, AFileIsKnownToAJournalThatWasEmptiedWhileItWaited) {
  constexpr int Many = 17;
  ReplaceMany(Many);
  m_Files.MakeSafe();
  Put("T17.vsk", "old");
  ASSERT_EQ(Write("T17.vsk", std::string(Journal::Size - 5000, 'x')), 0);
  m_Disk.m_BeforeFile = [&] {
    std::thread([&] { ASSERT_EQ(Write(NameOf(16), "newest"), 0); }).join();
  };
  m_Disk.m_IsFileAwaited = true;
  m_Files.MakeSafe();
  ASSERT_EQ(OnDisk(NameOf(16)), "new") << "the one before has taken its place";
  m_Disk.FailAll(FailingFileSystem::RenameCall, EIO);
  m_Files.MakeSafe();
  ASSERT_EQ(OnDisk(NameOf(16)), "new");
  JournaledFiles next(m_Memory, m_Tasks, "/state/journal");
  next.Begin();
  EXPECT_EQ(OnDisk(NameOf(16)), "newest");
}

}  // namespace
}  // namespace NoxAgent
