#include "agent/daemon/journal/Journal.h"
#include "tests/agent/daemon/journal/JournalFixture.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <latch>
#include <thread>

using BaseSDK::ALogger;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using TestSupport::FailingFileSystem;

namespace NoxAgent {
namespace {

class JournaledFilesTest : public JournalFixture {
 protected:
  JournaledFilesTest() { m_Files.Begin(); }

  // As the scheduler writes a new task: a file of a name that no other has.
  void Make(const std::string& name, const std::string& text) {
    int fd = -1;
    ASSERT_EQ(m_Files.Open(PathOf(name).c_str(), O_WRONLY | O_CREAT | O_EXCL, 0600, fd), 0);
    std::size_t written = 0;
    ASSERT_EQ(m_Files.Write(fd, text.data(), text.size(), written), 0);
    ASSERT_EQ(m_Files.Sync(fd), 0);
    ASSERT_EQ(m_Files.Close(fd), 0);
    FlushDirectory();
  }
  // As the kit does behind each change of a name.
  void FlushDirectory() {
    int fd = -1;
    ASSERT_EQ(m_Files.Open("/state/tasks", O_RDONLY | O_DIRECTORY, 0, fd), 0);
    ASSERT_EQ(m_Files.Sync(fd), 0);
    ASSERT_EQ(m_Files.Close(fd), 0);
  }
  void List() {
    unsigned long handle = 0;
    ASSERT_EQ(m_Files.OpenDirectory("/state/tasks/", handle), 0);
    ASSERT_EQ(m_Files.CloseDirectory(handle), 0);
  }
  // The records that the next process would find in the journal.
  std::vector<JournalRecord> Records() {
    std::vector<JournalRecord> records;
    Journal journal(m_Memory, "/state/journal");
    EXPECT_EQ(journal.Read(records), 0);
    return records;
  }
};

// Flushes
// ------------------------------------------------------------------------------------------

TEST_F(JournaledFilesTest, OneReplacementTakesOneFlush) {
  Put("T1.vsk", "old");
  const auto replace = [&] {
    EXPECT_EQ(Write("T1.vsk", "new"), 0);
    m_Files.MakeSafe();
  };
  EXPECT_EQ(FlushesOf(replace), 1U);
  EXPECT_EQ(OnDisk("T1.vsk"), "new");
  EXPECT_EQ(m_Files.Count().m_Replaced, 1U);
}

TEST_F(JournaledFilesTest, AThousandReplacementsTakeOneFlushAndOneMoreInTheirPlaces) {
  constexpr int Many = 1000;
  EXPECT_EQ(FlushesOf([&] {
              ReplaceMany(Many);
              m_Files.MakeSafe();
            }),
            1U);
  EXPECT_EQ(FlushesOf([&] { m_Files.Follow(); }), 1U);
  EXPECT_EQ(CountNew(Many), Many);
  EXPECT_EQ(m_Files.Count().m_Replaced, 1000U);
  EXPECT_EQ(m_Memory.Names("/state/tasks").size(), 1000U) << "no temporary is left";
}

TEST_F(JournaledFilesTest, WhatIsSafeTakesNoFlush) {
  ReplaceMany(1);
  m_Files.MakeSafe();
  EXPECT_EQ(FlushesOf([&] { m_Files.MakeSafe(); }), 0U);
}

TEST_F(JournaledFilesTest, NothingIsFlushedBeforeItIsMadeSafe) {
  Put("T2.vsk", "old");
  Put("T3.vsk", "old");
  EXPECT_EQ(FlushesOf([&] {
              ReplaceMany(1);
              Make("T1.vsk", "new");
              EXPECT_EQ(m_Files.Unlink(PathOf("T2.vsk").c_str()), 0);
              EXPECT_EQ(m_Files.Rename(PathOf("T3.vsk").c_str(), PathOf("T4.vsk").c_str(), false),
                        0);
            }),
            0U);
  EXPECT_EQ(OnDisk("T1.vsk"), "new");
  EXPECT_FALSE(m_Memory.Has(PathOf("T2.vsk")));
  EXPECT_TRUE(m_Memory.Has(PathOf("T4.vsk")));
}

TEST_F(JournaledFilesTest, NamesAreFlushedBeforeTheJournalTellsOfTheirFiles) {
  Make("T1.vsk", "made");
  ASSERT_EQ(Write("T1.vsk", "new"), 0);
  m_Disk.Reset();
  m_Files.MakeSafe();
  const std::vector<std::string> calls = m_Disk.History();
  ASSERT_GE(calls.size(), 8U);
  EXPECT_THAT(std::vector(calls.begin(), calls.begin() + 8),
              ElementsAre("open T1.vsk", "sync", "close", "open tasks", "sync", "close", "write",
                          "sync data"));
}

TEST_F(JournaledFilesTest, ADeletedFileTakesAFlushOfTheDirectory) {
  Put("T1.vsk", "old");
  ASSERT_EQ(m_Files.Unlink(PathOf("T1.vsk").c_str()), 0);
  EXPECT_EQ(FlushesOf([&] { m_Files.MakeSafe(); }), 1U);
}

TEST_F(JournaledFilesTest, OtherFilesPassThrough) {
  m_Memory.WriteFile("/state/other.vsk", "old");
  EXPECT_EQ(m_Files.ReplaceFile("/state/other.vsk", "new"), 0);
  EXPECT_EQ(m_Memory.ReadFile("/state/other.vsk"), "new");
  int fd = -1;
  ASSERT_EQ(m_Files.Open("/state/other.vsk", O_WRONLY, 0, fd), 0);
  const unsigned before = m_Disk.Count(FailingFileSystem::SyncCall);
  EXPECT_EQ(m_Files.Sync(fd), 0);
  EXPECT_EQ(m_Disk.Count(FailingFileSystem::SyncCall), before + 1);
  EXPECT_EQ(m_Files.Close(fd), 0);
  EXPECT_THAT(m_Observer.Told(), IsEmpty());
  EXPECT_EQ(m_Files.Count().m_Replaced, 0U);
}

// What others see
// ----------------------------------------------------------------------------------

TEST_F(JournaledFilesTest, AReaderGetsWhatWasWrittenLast) {
  Put("T1.vsk", "old");
  ASSERT_EQ(Write("T1.vsk", "newer"), 0);
  ASSERT_EQ(Write("T1.vsk", "newest"), 0);
  EXPECT_EQ(OnDisk("T1.vsk"), "old");
  EXPECT_EQ(Read(PathOf("T1.vsk")), "newest");
}

TEST_F(JournaledFilesTest, AReaderGetsWhatIsSafeAndNotInItsPlaceYet) {
  constexpr int Many = 17;
  ReplaceMany(Many);
  m_Files.MakeSafe();
  ASSERT_EQ(CountNew(Many), 0);
  EXPECT_EQ(Read(PathOf(NameOf(16))), "new");
}

TEST_F(JournaledFilesTest, EveryCallFindsTheNewFile) {
  BaseSDK::AFileSystem::Info info;
  Put("T1.vsk", "old");
  ASSERT_EQ(Write("T1.vsk", "newer"), 0);
  EXPECT_EQ(m_Files.GetInfo(PathOf("T1.vsk").c_str(), info), 0);
  EXPECT_EQ(info.m_Size, 5U);

  ASSERT_EQ(Write("T1.vsk", "newest"), 0);
  EXPECT_EQ(m_Files.Rename(PathOf("T1.vsk").c_str(), PathOf("T2.vsk").c_str(), false), 0);
  EXPECT_EQ(OnDisk("T2.vsk"), "newest");

  ASSERT_EQ(Write("T2.vsk", "gone"), 0);
  EXPECT_EQ(m_Files.Unlink(PathOf("T2.vsk").c_str()), 0);
  m_Files.MakeSafe();
  EXPECT_THAT(m_Memory.Names("/state/tasks"), IsEmpty()) << "a deleted file never comes back";
}

TEST_F(JournaledFilesTest, ARenameOverAFileThatWaitsComesAfterIt) {
  Put("T1.vsk", "old");
  Put("T2.vsk", "other");
  ASSERT_EQ(Write("T1.vsk", "new"), 0);
  EXPECT_EQ(m_Files.Rename(PathOf("T2.vsk").c_str(), PathOf("T1.vsk").c_str(), true), 0);
  m_Files.MakeSafe();
  EXPECT_EQ(OnDisk("T1.vsk"), "other");
}

TEST_F(JournaledFilesTest, AListingFindsEveryFileInItsPlace) {
  constexpr int Many = 17;
  ReplaceMany(Many);
  List();
  EXPECT_EQ(CountNew(Many), Many);
}

TEST_F(JournaledFilesTest, APathWithTwoSlashesIsThatOfTheSameFile) {
  Put("T1.vsk", "old");
  ASSERT_EQ(m_Files.ReplaceFile("/state/tasks//T1.vsk", "new"), 0);
  EXPECT_EQ(OnDisk("T1.vsk"), "old") << "it waits";
  EXPECT_EQ(Read(PathOf("T1.vsk")), "new");
  ASSERT_EQ(Write("T1.vsk", "newest"), 0);
  EXPECT_EQ(Read("/state/tasks//T1.vsk"), "newest");
}

TEST_F(JournaledFilesTest, ItsObserverIsToldInTheOrderOfWriting) {
  Put("T1.vsk", "old");
  Put("T2.vsk", "old");
  ASSERT_EQ(Write("T2.vsk", "newer"), 0);
  ASSERT_EQ(Write("T1.vsk", "new"), 0);
  ASSERT_EQ(Write("T2.vsk", "newest"), 0);
  EXPECT_THAT(m_Observer.Told(), IsEmpty());
  m_Files.MakeSafe();
  EXPECT_THAT(m_Observer.Told(), ElementsAre("T2.vsk", "T1.vsk", "T2.vsk"));
  EXPECT_EQ(OnDisk("T2.vsk"), "newest");
}

// Without the journal
// ------------------------------------------------------------------------------

TEST_F(JournaledFilesTest, AnAbsentFileIsWrittenAtOnce) {
  EXPECT_EQ(FlushesOf([&] { EXPECT_EQ(Write("T1.vsk", "new"), 0); }), 2U) << "file and directory";
  EXPECT_EQ(OnDisk("T1.vsk"), "new");
  EXPECT_THAT(Records(), IsEmpty());
  EXPECT_THAT(m_Observer.Told(), ElementsAre("T1.vsk"));
}

TEST_F(JournaledFilesTest, AFileThatNoJournalHoldsIsWrittenAtOnce) {
  const std::string large(Journal::Size, 'x');
  Put("T1.vsk", "old");
  ASSERT_EQ(Write("T1.vsk", "new"), 0);
  ASSERT_EQ(Write("T1.vsk", large), 0);
  EXPECT_EQ(OnDisk("T1.vsk"), large);
  EXPECT_THAT(m_Observer.Told(), ElementsAre("T1.vsk", "T1.vsk")) << "the one that waited first";
  m_Files.MakeSafe();
  EXPECT_EQ(OnDisk("T1.vsk"), large);
}

TEST_F(JournaledFilesTest, AFullJournalIsEmptiedAndGoesOn) {
  constexpr int Many = 10;
  const std::string third(Journal::Size / 3 - 4096, 'x');
  for (int i = 0; i < Many; ++i) {
    Put(NameOf(i), "old");
    ASSERT_EQ(Write(NameOf(i), third), 0);
  }
  m_Files.MakeSafe();
  EXPECT_EQ(Records().size(), 1U) << "three at a time, and one that is left";
  for (int i = 0; i < Many; ++i) {
    EXPECT_EQ(OnDisk(NameOf(i)), third) << i;
  }
  EXPECT_THAT(m_Log.Lines(), IsEmpty());
}

TEST_F(JournaledFilesTest, AFullJournalIsEmptiedOnlyWhenItsFilesAreOnTheDisk) {
  const std::string half(Journal::Size / 2, 'x');
  Put("T1.vsk", "old");
  Put("T2.vsk", "old");
  ASSERT_EQ(Write("T1.vsk", half), 0);
  ASSERT_EQ(Write("T2.vsk", half), 0);
  m_Disk.Reset();
  m_Files.MakeSafe();
  std::vector<std::string> steps;
  for (const std::string& call : m_Disk.History()) {
    if (call.starts_with("rename")) {
      steps.push_back(call.substr(call.rfind(' ') + 1));
    } else if (call.starts_with("sync")) {
      steps.push_back(call);
    }
  }
  EXPECT_THAT(steps,
              ElementsAre("sync data", "T1.vsk", "sync all", "sync data", "sync data", "T2.vsk"));
}

TEST_F(JournaledFilesTest, AJournalThatBreaksIsToldOfOnceAlsoWhenMoreWaitThanItHolds) {
  constexpr int Many = 3;
  const std::string large(Journal::Size / 2, 'x');
  for (int i = 0; i < Many; ++i) {
    const std::string name = "T" + std::to_string(i) + ".vsk";
    Put(name, "old");
    ASSERT_EQ(Write(name, large), 0);
  }
  m_Disk.m_JournalError = EIO;
  m_Files.MakeSafe();
  EXPECT_EQ(m_Log.Messages(ALogger::Warning).size(), 1U);
  for (int i = 0; i < Many; ++i) {
    EXPECT_EQ(OnDisk("T" + std::to_string(i) + ".vsk"), large);
  }
}

TEST_F(JournaledFilesTest, AJournalThatCannotBeWrittenIsToldOfOnceAndDoneWithout) {
  m_Disk.m_JournalError = EIO;
  for (const char* const text : {"first", "second", "third"}) {
    Put("T1.vsk", "old");
    ASSERT_EQ(Write("T1.vsk", text), 0);
    m_Files.MakeSafe();
    EXPECT_EQ(OnDisk("T1.vsk"), text);
  }
  EXPECT_THAT(m_Log.Messages(ALogger::Warning),
              ElementsAre("The journal /state/journal cannot be written: Input/output error. Each "
                          "task file is flushed by itself meanwhile"));
  const auto replace = [&] {
    ASSERT_EQ(Write("T1.vsk", "fourth"), 0);
    m_Files.MakeSafe();
  };
  EXPECT_EQ(FlushesOf(replace), 2U) << "file and directory";

  m_Disk.m_JournalError = 0;
  List();
  EXPECT_EQ(m_Log.CountContaining("The journal /state/journal can be used again"), 1U);
  EXPECT_EQ(FlushesOf(replace), 1U);
}

TEST_F(JournaledFilesTest, AllThatWaitAreWrittenWhenTheJournalCannotBe) {
  ReplaceMany(20);
  m_Disk.m_JournalError = EIO;
  EXPECT_EQ(FlushesOf([&] { m_Files.MakeSafe(); }), 41U) << "the attempt; file and directory each";
  EXPECT_EQ(CountNew(20), 20);
  EXPECT_EQ(m_Observer.Told().size(), 20U);
}

TEST_F(JournalFixture, BeforeTheBeginEachFileIsFlushedByItself) {
  Put("T1.vsk", "old");
  EXPECT_EQ(FlushesOf([&] { EXPECT_EQ(Write("T1.vsk", "new"), 0); }), 2U);
  EXPECT_EQ(OnDisk("T1.vsk"), "new");
  EXPECT_FALSE(m_Memory.Has("/state/journal"));
}

TEST_F(JournalFixture, ADiskWithoutRoomForTheJournalKeepsItsLastBytes) {
  constexpr std::size_t Last = 1000;
  m_Memory.SetFreeBytes(Last);
  m_Files.Begin();
  EXPECT_FALSE(m_Memory.Has("/state/journal"));
  EXPECT_EQ(m_Log.CountContaining("The journal /state/journal cannot be made: No space left"), 1U);
}

// Failures
// -----------------------------------------------------------------------------------------

TEST_F(JournaledFilesTest, AFailingRenameIsToldToWhoeverMakesItsOwnFileSafe) {
  ReplaceMany(1);
  m_Disk.FailAll(FailingFileSystem::RenameCall, EACCES);
  m_Files.MakeSafe();
  EXPECT_THAT(m_Observer.Told(), ElementsAre("T0.vsk failed: 13"));
  EXPECT_EQ(OnDisk("T0.vsk"), "old");
  EXPECT_THAT(m_Memory.Names("/state/tasks"), ElementsAre("T0.vsk"));
  m_Disk.Reset();
  m_Files.MakeSafe();
  EXPECT_EQ(m_Observer.Told().size(), 1U) << "once";
}

TEST_F(JournaledFilesTest, AFailingRenameIsToldToTheThreadThatWrote) {
  std::latch isWritten(1);
  std::latch hasFailed(1);
  std::thread writer([&] {
    ReplaceMany(1);
    isWritten.count_down();
    hasFailed.wait();
    m_Files.MakeSafe();
  });
  isWritten.wait();
  m_Disk.FailAll(FailingFileSystem::RenameCall, EACCES);
  m_Files.MakeSafe();
  EXPECT_THAT(m_Observer.Told(), IsEmpty());
  hasFailed.count_down();
  writer.join();
  EXPECT_THAT(m_Observer.Told(), ElementsAre("T0.vsk failed: 13"));
}

TEST_F(JournaledFilesTest, ANameThatCannotBeFlushedIsToldToTheThreadThatMadeIt) {
  Make("T1.vsk", "new");
  m_Disk.FailAll(FailingFileSystem::SyncCall, EIO);
  m_Files.MakeSafe();
  EXPECT_THAT(m_Observer.Told(), ElementsAre("T1.vsk failed: 5"));
}

// Whoever reads then that it is gone must not find it after a power cut.
TEST_F(JournaledFilesTest, ARemovalThatCouldNotBeFlushedIsFlushedWheneverAllIsToBeSafe) {
  Put("T1.vsk", "old");
  ASSERT_EQ(m_Files.Unlink(PathOf("T1.vsk").c_str()), 0);
  m_Disk.FailAll(FailingFileSystem::SyncCall, EIO);
  m_Files.MakeSafe();
  EXPECT_THAT(m_Observer.Told(), ElementsAre("T1.vsk failed: 5"));
  EXPECT_EQ(FlushesOf([&] { m_Files.MakeSafe(); }), 1U);
  m_Disk.Reset();
  EXPECT_EQ(FlushesOf([&] { m_Files.MakeSafe(); }), 1U);
  EXPECT_EQ(FlushesOf([&] { m_Files.MakeSafe(); }), 0U);
  EXPECT_EQ(m_Observer.Told().size(), 1U) << "told once";
}

// A power cut would take the file, and with it what the journal tells of it.
TEST_F(JournaledFilesTest, AReplacementIsNotSafeBeforeItsFilesNameIs) {
  Make("T1.vsk", "made");
  m_Disk.FailAll(FailingFileSystem::OpenCall, EIO);
  m_Files.MakeSafe();
  EXPECT_THAT(m_Observer.Told(), ElementsAre("T1.vsk failed: 5"));
  m_Disk.Reset();
  ASSERT_EQ(Write("T1.vsk", "new"), 0);
  m_Disk.FailAll(FailingFileSystem::OpenCall, EIO);
  m_Files.MakeSafe();
  EXPECT_THAT(m_Observer.Told(), ElementsAre("T1.vsk failed: 5", "T1.vsk failed: 5"));
  EXPECT_EQ(OnDisk("T1.vsk"), "made");
  m_Disk.Reset();
  ASSERT_EQ(Write("T1.vsk", "newer"), 0);
  m_Files.MakeSafe();
  EXPECT_EQ(m_Observer.Told().size(), 3U);
  EXPECT_EQ(OnDisk("T1.vsk"), "newer");
}

TEST_F(JournaledFilesTest, AFileThatCannotBeWrittenIsAnErrorAtOnce) {
  Put("T1.vsk", "old");
  m_Memory.SetFreeBytes(1);
  EXPECT_EQ(Write("T1.vsk", "new"), ENOSPC);
  m_Files.MakeSafe();
  EXPECT_EQ(OnDisk("T1.vsk"), "old");
  EXPECT_THAT(m_Memory.Names("/state/tasks"), ElementsAre("T1.vsk"));
  EXPECT_EQ(m_Files.Count().m_Replaced, 0U);
  EXPECT_THAT(m_Observer.Told(), IsEmpty());
}

// From one process to the next
// ---------------------------------------------------------------------

TEST_F(JournaledFilesTest, EndLeavesAnEmptyJournalAndEveryFileInItsPlace) {
  ReplaceMany(17);
  m_Files.End();
  EXPECT_EQ(CountNew(17), 17);
  EXPECT_THAT(Records(), IsEmpty());
  EXPECT_EQ(m_Files.Count().m_JournalBytes, 0U);
  EXPECT_EQ(m_Memory.ReadFile("/state/journal").size(), Journal::Size);
}

TEST_F(JournaledFilesTest, WhatWasMadeSafeOutlivesAKilledProcess) {
  constexpr int Many = 17;
  ReplaceMany(Many);
  m_Files.MakeSafe();
  ASSERT_EQ(CountNew(Many), 0);
  JournaledFiles next(m_Memory, m_Tasks, "/state/journal");
  next.Begin();
  EXPECT_EQ(CountNew(Many), Many);
  EXPECT_EQ(m_Log.CountContaining("Of its last 17 changes of task files, 17 files were out of date "
                                  "and are not any more"),
            1U);
  EXPECT_THAT(Records(), IsEmpty());
}

TEST_F(JournaledFilesTest, AJournalIsEmptiedOnlyWhenTheDiskHasWhatWasReplayed) {
  ReplaceMany(1);
  m_Files.MakeSafe();
  ASSERT_EQ(CountNew(1), 1) << "up to date, but perhaps in the system's memory alone";
  FailingFileSystem disk(m_Memory);
  JournaledFiles next(disk, m_Tasks, "/state/journal");
  disk.FailAll(FailingFileSystem::SyncCall, EIO);
  next.Begin();
  EXPECT_EQ(Records().size(), 1U);
  disk.Reset();
  next.Begin();
  const std::vector<std::string> calls = disk.History();
  EXPECT_LT(std::find(calls.begin(), calls.end(), "sync all"),
            std::find(calls.begin(), calls.end(), "write"));
  EXPECT_THAT(Records(), IsEmpty());
}

TEST_F(JournaledFilesTest, AFileOfSomebodyElseStaysAndIsToldOf) {
  ReplaceMany(1);
  m_Files.MakeSafe();
  Put("T0.vsk", "an administrator's");
  JournaledFiles next(m_Memory, m_Tasks, "/state/journal");
  next.Begin();
  EXPECT_EQ(OnDisk("T0.vsk"), "an administrator's");
  EXPECT_EQ(m_Log.CountContaining("The task file T0.vsk was changed by somebody else since"), 1U);
}

TEST_F(JournaledFilesTest, AJournalThatCannotBeReadStaysAsItIs) {
  constexpr int Many = 17;
  ReplaceMany(Many);
  m_Files.MakeSafe();
  FailingFileSystem disk(m_Memory);
  disk.FailAll(FailingFileSystem::ReadCall, EIO);
  JournaledFiles next(disk, m_Tasks, "/state/journal");
  next.Begin();
  EXPECT_EQ(m_Log.CountContaining("The journal /state/journal cannot be read: Input/output error"),
            1U);
  EXPECT_EQ(Records().size(), 17U);
  disk.Reset();
  unsigned long handle = 0;
  ASSERT_EQ(next.OpenDirectory("/state/tasks", handle), 0) << "which tries again";
  ASSERT_EQ(next.CloseDirectory(handle), 0);
  EXPECT_EQ(CountNew(Many), Many);
}

TEST_F(JournaledFilesTest, ManyThreadsShareFlushesAndLoseNothing) {
  constexpr int Threads = 8;
  constexpr int Rounds = 50;
  std::vector<std::thread> threads;
  for (int i = 0; i < Threads; ++i) {
    Put(NameOf(i), "old");
  }
  for (int i = 0; i < Threads; ++i) {
    threads.emplace_back([this, i] {
      for (int round = 0; round < Rounds; ++round) {
        const std::string text = std::to_string(round);
        ASSERT_EQ(Write(NameOf(i), text), 0);
        m_Files.MakeSafe();
        ASSERT_EQ(Read(PathOf(NameOf(i))), text);
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(m_Observer.Told().size(), static_cast<std::size_t>(Threads * Rounds));
}

}  // namespace
}  // namespace NoxAgent
