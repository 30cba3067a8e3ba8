#include "agent/daemon/journal/JournalReplay.h"

#include "tests/agent/daemon/journal/JournalSamples.h"
#include "tests/support/FailingFileSystem.h"
#include "tests/support/MemoryFileSystem.h"
#include "tests/support/TempDir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>

using BaseSDK::AFileSystem;
using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::FailingFileSystem;

namespace NoxAgent {
namespace {

FileVersion VersionAt(AFileSystem& files, const std::string& path) {
  AFileSystem::Info info;
  EXPECT_EQ(files.GetInfo(path.c_str(), info), 0) << path;
  return FileVersion(info);
}

class JournalReplayTest : public testing::Test {
 protected:
  JournalReplayTest() { m_Memory.MakeDirectory("/tasks"); }

  static std::string PathOf(const std::string& name) { return "/tasks/" + name; }
  // Lays out a file, another one than any before; which it is.
  FileVersion Put(const std::string& name, const std::string& text) {
    m_Memory.WriteFile(PathOf(name), text);
    return VersionAt(m_Memory, PathOf(name));
  }
  // Writes into the file that is there, which is then another version.
  void Overwrite(const std::string& name, const std::string& text) {
    int fd = -1;
    ASSERT_EQ(m_Memory.Open(PathOf(name).c_str(), O_WRONLY | O_TRUNC, 0, fd), 0);
    std::size_t written = 0;
    ASSERT_EQ(m_Memory.Write(fd, text.data(), text.size(), written), 0);
    ASSERT_EQ(m_Memory.Close(fd), 0);
  }
  // Leaves a part of the file that is there, as a power cut does, with an earlier time; which
  // version the whole file was.
  FileVersion Tear(const std::string& name, const std::string& part) {
    Overwrite(name, part);
    FileVersion whole = VersionAt(m_Memory, PathOf(name));
    ++whole.m_Modified;
    return whole;
  }
  void Record(const std::string& name, const FileVersion& before, const FileVersion& after,
              const std::string& content) {
    m_Records.push_back({name, before, after, content});
  }
  void RecordVersion(const std::string& name, const FileVersion& after) {
    m_Records.push_back({name, m_Gone, after, {}, true});
  }
  // Returns how many files it has renewed.
  std::size_t Replay() {
    JournalReplay replay(m_Disk, "/tasks", m_Records);
    EXPECT_EQ(replay.Perform(), 0);
    m_Left = replay.Left();
    return replay.Renewed();
  }
  std::string Text(const std::string& name) const { return m_Memory.ReadFile(PathOf(name)); }
  void ExpectStays(const std::string& name, const std::string& text) {
    EXPECT_EQ(Replay(), 0U);
    EXPECT_EQ(Text(name), text);
    EXPECT_THAT(m_Left, ElementsAre(name));
  }

  // Versions that no file has.
  const FileVersion m_Gone = VersionOf(1001, 1);
  const FileVersion m_GoneToo = VersionOf(1002, 1);

  TestSupport::MemoryFileSystem m_Memory;
  FailingFileSystem m_Disk{m_Memory};
  std::vector<JournalRecord> m_Records;
  std::vector<std::string> m_Left;
};

TEST_F(JournalReplayTest, DoesNothingWithoutRecords) {
  EXPECT_EQ(Replay(), 0U);
  EXPECT_EQ(m_Disk.Count(), 0U);
}

TEST_F(JournalReplayTest, BringsNoFileBack) {
  Record("T1.vsk", m_Gone, m_GoneToo, "new");
  EXPECT_EQ(Replay(), 0U);
  EXPECT_THAT(m_Memory.Names("/tasks"), IsEmpty());
  EXPECT_THAT(m_Left, IsEmpty());
}

TEST_F(JournalReplayTest, LeavesAFileThatHasTheNewestContent) {
  const FileVersion present = Put("T1.vsk", "new");
  Record("T1.vsk", m_Gone, m_GoneToo, "new");
  EXPECT_EQ(Replay(), 0U);
  EXPECT_EQ(VersionAt(m_Memory, PathOf("T1.vsk")), present);
  EXPECT_THAT(m_Left, IsEmpty());
}

TEST_F(JournalReplayTest, RenewsTheFileThatWasReplaced) {
  Record("T1.vsk", Put("T1.vsk", "old"), m_Gone, "new");
  EXPECT_EQ(Replay(), 1U);
  EXPECT_EQ(Text("T1.vsk"), "new");
  EXPECT_THAT(m_Memory.Names("/tasks"), ElementsAre("T1.vsk"));
}

TEST_F(JournalReplayTest, RenewsAVersionThatWasToldAlone) {
  Record("T1.vsk", m_Gone, {}, "newer");
  Record("T1.vsk", m_Gone, {}, "newest");
  RecordVersion("T1.vsk", Put("T1.vsk", "newer"));
  EXPECT_EQ(Replay(), 1U);
  EXPECT_EQ(Text("T1.vsk"), "newest");
}

TEST_F(JournalReplayTest, RenewsAPartOfAVersionThatWasToldAlone) {
  Record("T1.vsk", m_Gone, {}, "a newer one");
  Record("T1.vsk", m_Gone, {}, "the newest");
  Put("T1.vsk", "");
  RecordVersion("T1.vsk", Tear("T1.vsk", "a new"));
  EXPECT_EQ(Replay(), 1U);
  EXPECT_EQ(Text("T1.vsk"), "the newest");
}

TEST_F(JournalReplayTest, LeavesAFileOfWhichOnlyAVersionWasTold) {
  RecordVersion("T1.vsk", Put("T1.vsk", "old"));
  EXPECT_EQ(Replay(), 0U);
  EXPECT_EQ(Text("T1.vsk"), "old");
  EXPECT_THAT(m_Left, IsEmpty());
}

TEST_F(JournalReplayTest, RenewsAnyVersionInTheChainToTheNewest) {
  for (int place = 0; place < 4; ++place) {
    FileVersion versions[] = {m_Gone, m_Gone, m_Gone, m_Gone};
    versions[place] = Put("T1.vsk", "old");
    m_Records.clear();
    Record("T1.vsk", versions[0], versions[1], "newer");
    Record("T1.vsk", versions[2], versions[3], "newest");
    EXPECT_EQ(Replay(), 1U) << place;
    EXPECT_EQ(Text("T1.vsk"), "newest") << place;
  }
}

TEST_F(JournalReplayTest, RenewsATornVersionOfAFileThatItKnows) {
  const std::string whole = "<Task>new</Task>";
  const std::string torn[] = {"", "<Task>n", std::string(whole.size(), '\0'),
                              std::string("<Task>\0\0\0</Task>", whole.size())};
  for (const std::string& part : torn) {
    Put("T1.vsk", whole);
    const FileVersion after = Tear("T1.vsk", part);
    m_Records.clear();
    Record("T1.vsk", m_Gone, after, whole);
    EXPECT_EQ(Replay(), 1U) << part;
    EXPECT_EQ(Text("T1.vsk"), whole);
  }
}

TEST_F(JournalReplayTest, RenewsATornVersionOfAnEarlierRecord) {
  Put("T1.vsk", "<Task>newer</Task>");
  const FileVersion after = Tear("T1.vsk", "<Task>newer");
  Record("T1.vsk", m_Gone, after, "<Task>newer</Task>");
  Record("T1.vsk", m_Gone, m_GoneToo, "<Task>newest</Task>");
  EXPECT_EQ(Replay(), 1U);
  EXPECT_EQ(Text("T1.vsk"), "<Task>newest</Task>");
}

TEST_F(JournalReplayTest, LeavesAFileThatSomebodyHasPutThere) {
  const FileVersion before = Put("T1.vsk", "old");
  Put("T1.vsk", "old");  // the same, and yet another file
  Record("T1.vsk", before, m_Gone, "new");
  ExpectStays("T1.vsk", "old");
}

TEST_F(JournalReplayTest, LeavesAFileThatSomebodyHasEdited) {
  const FileVersion before = Put("T1.vsk", "old");
  Overwrite("T1.vsk", "edited");
  Record("T1.vsk", before, m_Gone, "new");
  ExpectStays("T1.vsk", "edited");
}

TEST_F(JournalReplayTest, LeavesAnEditedFileThatItHadWritten) {
  for (const char* const edited : {"new and more", "nex", "ne\n"}) {
    const FileVersion after = Put("T1.vsk", "new");
    Overwrite("T1.vsk", edited);
    m_Records.clear();
    Record("T1.vsk", m_Gone, after, "new");
    ExpectStays("T1.vsk", edited);
  }
}

TEST_F(JournalReplayTest, LeavesATornFileThatItDoesNotKnow) {
  Put("T1.vsk", "ne");
  Record("T1.vsk", m_Gone, m_GoneToo, "new");
  ExpectStays("T1.vsk", "ne");
}

TEST_F(JournalReplayTest, LeavesAFileThatIsOnlyLikeAnEarlierRecord) {
  Put("T1.vsk", "newer");
  Record("T1.vsk", m_Gone, m_GoneToo, "newer");
  Record("T1.vsk", m_Gone, m_GoneToo, "newest");
  ExpectStays("T1.vsk", "newer");
}

TEST_F(JournalReplayTest, KeepsEachFileToItsOwnRecords) {
  const FileVersion other = Put("T2.vsk", "old");
  Put("T1.vsk", "old");
  Record("T1.vsk", other, m_Gone, "new");
  Record("T2.vsk", other, m_Gone, "new");
  EXPECT_EQ(Replay(), 1U);
  EXPECT_EQ(Text("T1.vsk"), "old");
  EXPECT_EQ(Text("T2.vsk"), "new");
  EXPECT_THAT(m_Left, ElementsAre("T1.vsk"));
}

TEST_F(JournalReplayTest, FlushesTheDiskBeforeTheRenames) {
  Record("T1.vsk", Put("T1.vsk", "old"), m_Gone, "new");
  Record("T2.vsk", Put("T2.vsk", "old"), m_Gone, "new");
  EXPECT_EQ(Replay(), 2U);
  std::vector<std::string> steps;
  for (const std::string& call : m_Disk.History()) {
    if (call.starts_with("rename") || call.starts_with("sync")) {
      steps.push_back(call.substr(call.rfind(' ') + 1));
    }
  }
  EXPECT_THAT(steps, ElementsAre("all", "T1.vsk", "T2.vsk"));
  EXPECT_EQ(m_Memory.OpenHandles(), 0U);
}

TEST_F(JournalReplayTest, LeavesAFileThatMustNotBeReplaced) {
  Record("T1.vsk", Put("T1.vsk", "old"), m_Gone, "new");
  m_Disk.FailAll(FailingFileSystem::RenameCall, EPERM);
  ExpectStays("T1.vsk", "old");
  EXPECT_THAT(m_Memory.Names("/tasks"), ElementsAre("T1.vsk"));
}

TEST_F(JournalReplayTest, AnErrorAtAnyCallLosesNothing) {
  unsigned calls = 1;
  for (unsigned failing = 1; failing <= calls; ++failing) {
    SCOPED_TRACE(failing);
    m_Records.clear();
    Record("T1.vsk", Put("T1.vsk", "old"), m_Gone, "new");
    Put("T2.vsk", "new");
    const FileVersion after = Tear("T2.vsk", "n");
    Record("T2.vsk", m_Gone, after, "new");
    m_Disk.Reset();
    m_Disk.FailAt(failing, EIO);
    JournalReplay replay(m_Disk, "/tasks", m_Records);
    const bool isDone = replay.Perform() == 0;
    EXPECT_TRUE(Text("T1.vsk") == "new" || (Text("T1.vsk") == "old" && !isDone));
    EXPECT_TRUE(Text("T2.vsk") == "new" || (Text("T2.vsk") == "n" && !isDone));
    EXPECT_THAT(replay.Left(), IsEmpty());
    m_Disk.Reset();
    EXPECT_EQ(replay.Perform(), 0) << "done again";
    calls = std::max(calls, m_Disk.Count());
    EXPECT_EQ(Text("T1.vsk"), "new");
    EXPECT_EQ(Text("T2.vsk"), "new");
  }
  EXPECT_GT(calls, 20U) << "the error was tried everywhere";
}

TEST_F(JournalReplayTest, LeavesAFileThatItMayNotLookAt) {
  Put("T1.vsk", "somebody's");
  Record("T1.vsk", m_Gone, m_GoneToo, "new");
  m_Disk.FailAt(2, EACCES);  // its opening
  ExpectStays("T1.vsk", "somebody's");
}

TEST_F(JournalReplayTest, RenewsAFileThatItKnowsAndMayNotRead) {
  Record("T1.vsk", Put("T1.vsk", "old"), m_Gone, "new");
  m_Disk.FailAt(2, EACCES);
  EXPECT_EQ(Replay(), 1U);
  EXPECT_EQ(Text("T1.vsk"), "new");
}

// Modes, links and directories, on a real disk
// ----------------------------------------------------------------

class JournalReplayOnDiskTest : public testing::Test {
 protected:
  void Replay(const FileVersion& before) {
    const std::vector<JournalRecord> records{{"T1.vsk", before, VersionOf(0, 0), "new"}};
    JournalReplay replay(AFileSystem::Current(), m_Dir.Path().string(), records);
    EXPECT_EQ(replay.Perform(), 0);
    m_Left = replay.Left();
  }
  FileVersion Present() { return VersionAt(AFileSystem::Current(), Path()); }
  std::string Path() const { return m_Dir / "T1.vsk"; }

  TestSupport::TempDir m_Dir;
  std::vector<std::string> m_Left;
};

TEST_F(JournalReplayOnDiskTest, KeepsTheMode) {
  m_Dir.Write("T1.vsk", "old");
  ASSERT_EQ(chmod(Path().c_str(), 0604), 0);
  Replay(Present());
  struct stat status {};
  ASSERT_EQ(stat(Path().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0604U);
  EXPECT_EQ(m_Dir.Read("T1.vsk"), "new");
}

TEST_F(JournalReplayOnDiskTest, RenewsASymbolicLinkThatWasReplaced) {
  m_Dir.Write("target", "somebody's");
  std::filesystem::create_symlink(m_Dir / "target", Path());
  Replay(Present());
  EXPECT_FALSE(std::filesystem::is_symlink(Path()));
  EXPECT_EQ(m_Dir.Read("T1.vsk"), "new");
  EXPECT_EQ(m_Dir.Read("target"), "somebody's");
}

TEST_F(JournalReplayOnDiskTest, LeavesASymbolicLinkThatSomebodyHasPutThere) {
  for (const char* const content : {"somebody's", "new"}) {
    m_Dir.Write("target", content);
    std::filesystem::remove(Path());
    std::filesystem::create_symlink(m_Dir / "target", Path());
    Replay(VersionAt(AFileSystem::Current(), m_Dir / "target"));
    EXPECT_TRUE(std::filesystem::is_symlink(Path()));
    EXPECT_EQ(m_Dir.Read("target"), content);
    EXPECT_THAT(m_Left, ElementsAre("T1.vsk"));
  }
}

TEST_F(JournalReplayOnDiskTest, LeavesADirectory) {
  std::filesystem::create_directory(Path());
  Replay(VersionOf(0, 0));
  EXPECT_TRUE(std::filesystem::is_directory(Path()));
  EXPECT_THAT(m_Left, ElementsAre("T1.vsk"));
}

TEST_F(JournalReplayOnDiskTest, DoesNotWaitForAPipe) {
  ASSERT_EQ(mkfifo(Path().c_str(), 0600), 0);
  Replay(VersionOf(0, 0));
  EXPECT_TRUE(std::filesystem::is_fifo(Path()));
  EXPECT_THAT(m_Left, ElementsAre("T1.vsk"));
}

}  // namespace
}  // namespace NoxAgent
