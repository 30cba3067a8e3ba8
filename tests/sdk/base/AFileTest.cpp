#include "FailingFileSystem.h"
#include "ScratchDirectory.h"
#include "tests/support/Texts.h"

#include <BaseSDK/AFile.h>
#include <BaseSDK/AResult.h>
#include <BaseSDK/AUtf8Encoding.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <string>

namespace BaseSDK {
namespace {

using TestSupport::Texts;
namespace fs = std::filesystem;

class AFileTest : public testing::Test {
 protected:
  unsigned long Write(const std::string& file, const AString& text) {
    return AFile::Write(m_Scratch.Name(file), text, AUtf8Encoding());
  }
  unsigned ModeOf(const std::string& file) {
    return static_cast<unsigned>(fs::status(m_Scratch.Path() / file).permissions());
  }
  void SetMode(const std::string& file, unsigned mode) {
    fs::permissions(m_Scratch.Path() / file, static_cast<fs::perms>(mode));
  }

  ScratchDirectory m_Scratch;
};

TEST_F(AFileTest, WriteCreatesWithTheUsualMode) {
  const mode_t before = umask(022);
  EXPECT_EQ(Write("T1.vsk", L"\u00E4\n"), 0u);
  (void)umask(before);
  EXPECT_EQ(m_Scratch.Get("T1.vsk"), "\xC3\xA4\n");
  EXPECT_EQ(ModeOf("T1.vsk"), 0644u);
  EXPECT_EQ(m_Scratch.Files(), FileNames{"T1.vsk"});
}

TEST_F(AFileTest, WriteReplacesAndKeepsTheMode) {
  m_Scratch.Put("T1.vsk", "old, and longer than the new");
  SetMode("T1.vsk", 0600);
  EXPECT_EQ(Write("T1.vsk", "new"), 0u);
  EXPECT_EQ(m_Scratch.Get("T1.vsk"), "new");
  EXPECT_EQ(ModeOf("T1.vsk"), 0600u);
  EXPECT_EQ(m_Scratch.Files(), FileNames{"T1.vsk"});
}

TEST_F(AFileTest, WriteTakesAnEmptyTextAndNamesWithoutDirectoryOrExtension) {
  EXPECT_EQ(Write("empty", ""), 0u);
  EXPECT_EQ(m_Scratch.Get("empty"), "");
  const fs::path before = fs::current_path();
  fs::current_path(m_Scratch.Path());
  EXPECT_EQ(AFile::Write("bare", "x", AUtf8Encoding()), 0u);
  EXPECT_EQ(AFile::Write(".hidden", "x", AUtf8Encoding()), 0u);
  fs::current_path(before);
  EXPECT_EQ(m_Scratch.Files(), (FileNames{".hidden", "bare", "empty"}));
}

TEST_F(AFileTest, WriteTakesTheLongestName) {
  const std::string longest = std::string(251, 'n') + ".vsk";
  EXPECT_EQ(Write(longest, "x"), 0u);
  EXPECT_EQ(m_Scratch.Get(longest), "x");
  EXPECT_EQ(Write(longest + 'x', "x"), ResultFromErrno(ENAMETOOLONG));
}

TEST_F(AFileTest, WriteFlushesTheFileBeforeTheRenameAndTheDirectoryAfter) {
  FailingFileSystem system;
  EXPECT_EQ(Write("T1.vsk", "x"), 0u);
  EXPECT_EQ(system.Calls(),
            (Texts{"info", "open", "write", "sync", "close", "rename", "open", "sync", "close"}));
}

TEST_F(AFileTest, AFileSystemMayReplaceFilesInItsOwnWay) {
  class Replacing : public FailingFileSystem {
   public:
    int ReplaceFile(const char* path, const std::string& bytes) override {
      m_Replaced = path + ("=" + bytes);
      return ENOSPC;
    }
    std::string m_Replaced;
  } system;
  EXPECT_EQ(Write("T1.vsk", "y"), ResultFromErrno(ENOSPC));
  EXPECT_EQ(system.m_Replaced, (m_Scratch.Path() / "T1.vsk").string() + "=y");
  EXPECT_EQ(system.Calls(), Texts());
}

TEST_F(AFileTest, WriteUsesAHiddenTemporaryWithoutTheExtension) {
  class Watching : public FailingFileSystem {
   public:
    int Rename(const char* from, const char* to, bool replace) override {
      m_From = fs::path(from).filename();
      return FailingFileSystem::Rename(from, to, replace);
    }
    std::string m_From;
  } system;
  EXPECT_EQ(Write("corvane.T1.vsk", "x"), 0u);
  EXPECT_THAT(system.m_From, testing::MatchesRegex("\\.corvane\\.T1\\.[0-9A-Za-z]{6}"));
  EXPECT_EQ(Write(".vsk", "x"), 0u);
  EXPECT_THAT(system.m_From, testing::MatchesRegex("\\.\\.vsk\\.[0-9A-Za-z]{6}"))
      << "a name that is all extension keeps it, so that the leftover is known for one";
}

TEST_F(AFileTest, WriteReportsEveryFailureAndLeavesOldOrNew) {
  std::size_t calls = 0;
  {
    FailingFileSystem system;
    m_Scratch.Put("T1.vsk", "old");
    ASSERT_EQ(Write("T1.vsk", "new"), 0u);
    calls = system.Calls().size();
  }
  for (std::size_t failing = 0; failing < calls; ++failing) {
    m_Scratch.Put("T1.vsk", "old");
    FailingFileSystem system;
    system.FailCall(failing, EIO);
    SCOPED_TRACE(failing);
    EXPECT_EQ(Write("T1.vsk", "new"), ResultFromErrno(EIO));
    EXPECT_EQ(m_Scratch.Files(), FileNames{"T1.vsk"}) << system.Calls()[failing];
    const bool renamed = system.Calls()[failing] != "rename" && failing + 3 >= calls;
    EXPECT_EQ(m_Scratch.Get("T1.vsk"), renamed ? "new" : "old") << system.Calls()[failing];
    EXPECT_EQ(system.OpenDescriptors(), 0u);
  }
}

TEST_F(AFileTest, WriteStartsAgainAfterSignals) {
  for (std::size_t interrupted = 0; interrupted < 10; ++interrupted) {
    m_Scratch.Put("T1.vsk", "old");
    FailingFileSystem system;
    system.FailCalls(interrupted, 3, EINTR);
    // A close is not repeated: the descriptor is gone, and may be another thread's by now.
    const bool hitsClose = (Write("T1.vsk", "new") != 0);
    const auto& calls = system.Calls();
    EXPECT_EQ(hitsClose, calls.at(interrupted) == "close") << interrupted;
    EXPECT_EQ(m_Scratch.Files(), FileNames{"T1.vsk"});
    EXPECT_EQ(system.OpenDescriptors(), 0u);
  }
}

TEST_F(AFileTest, WriteGoesOnAfterShortWrites) {
  FailingFileSystem system;
  system.LimitWrites(3);
  EXPECT_EQ(Write("T1.vsk", "0123456789"), 0u);
  EXPECT_EQ(m_Scratch.Get("T1.vsk"), "0123456789");
  EXPECT_EQ(std::count(system.Calls().begin(), system.Calls().end(), "write"), 4);
}

TEST_F(AFileTest, WriteEndsWhenTheSystemTakesNothing) {
  FailingFileSystem system;
  system.LimitWrites(0);
  EXPECT_EQ(Write("T1.vsk", "0123456789"), ResultFromErrno(EIO));
  EXPECT_TRUE(m_Scratch.Files().empty());
}

TEST_F(AFileTest, WriteTriesOtherNamesAndInTheEndGivesUp) {
  FailingFileSystem system;
  system.FailCalls(1, 2, EEXIST);
  EXPECT_EQ(Write("T1.vsk", "x"), 0u);
  system.FailCalls(system.Calls().size() + 1, 1000, EEXIST);
  EXPECT_EQ(Write("T2.vsk", "x"), ResultFromErrno(EEXIST));
}

TEST_F(AFileTest, DirectoryThatCannotBeFlushedForGoodIsNoFailure) {
  FailingFileSystem system;
  system.FailCall(7, EINVAL);  // what some file systems answer always
  EXPECT_EQ(Write("T1.vsk", "x"), 0u);
  EXPECT_EQ(system.Calls().at(7), "sync");
}

TEST_F(AFileTest, WriteRefusesWhatIsNoFile) {
  fs::create_directory(m_Scratch.Path() / "dir.vsk");
  ASSERT_EQ(mkfifo((m_Scratch.Path() / "pipe.vsk").c_str(), 0600), 0);
  EXPECT_EQ(Write("dir.vsk", "x"), ResultFromErrno(EISDIR));
  EXPECT_EQ(Write("pipe.vsk", "x"), ResultFromErrno(EINVAL));
  EXPECT_EQ(Write("missing/T1.vsk", "x"), ResultFromErrno(ENOENT));
  EXPECT_EQ(m_Scratch.Files().size(), 2u);
}

TEST_F(AFileTest, WriteReplacesASymbolicLinkAndNotItsTarget) {
  m_Scratch.Put("target", "old");
  fs::create_symlink("target", m_Scratch.Path() / "T1.vsk");
  EXPECT_EQ(Write("T1.vsk", "new"), 0u);
  EXPECT_EQ(m_Scratch.Get("target"), "old");
  EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(m_Scratch.Path() / "T1.vsk")));
}

TEST_F(AFileTest, NameWithAZeroCharacterIsRefusedEverywhere) {
  m_Scratch.Put("T1", "old");
  const AString name = m_Scratch.Name("T1") + AString(L"\0x", 2);
  const unsigned long invalid = ResultFromErrno(EINVAL);
  AString text;
  unsigned removed = 0;
  EXPECT_EQ(AFile::Write(name, "new", AUtf8Encoding()), invalid);
  EXPECT_EQ(AFile::Read(name, text, AUtf8Encoding()), invalid);
  EXPECT_EQ(AFile::Remove(name, 0), invalid);
  EXPECT_EQ(AFile::Rename(name, m_Scratch.Name("T2"), 2), invalid);
  EXPECT_EQ(AFile::Rename(m_Scratch.Name("T1"), name, 2), invalid);
  EXPECT_EQ(AFile::MakeTemp(name, text), invalid);
  EXPECT_EQ(AFile::RemoveLeftovers(name, removed), invalid);
  EXPECT_EQ(m_Scratch.Get("T1"), "old");
  EXPECT_EQ(m_Scratch.Files(), FileNames{"T1"});
}

TEST_F(AFileTest, ReadGivesWhatWriteWroteWithInvalidBytes) {
  std::string bytes(100000, 'x');
  bytes += "\xFF\xC3\n";
  m_Scratch.Put("T1", bytes);
  AString text;
  EXPECT_EQ(AFile::Read(m_Scratch.Name("T1"), text, AUtf8Encoding()), 0u);
  EXPECT_EQ(text.ToUtf8(), bytes);
  EXPECT_EQ(Write("T2", text), 0u);
  EXPECT_EQ(m_Scratch.Get("T2"), bytes);
}

TEST_F(AFileTest, FailedReadLeavesTheTextAlone) {
  AString text = "before";
  EXPECT_EQ(AFile::Read(m_Scratch.Name("none"), text, AUtf8Encoding()), ResultFromErrno(ENOENT));
  EXPECT_EQ(AFile::Read(m_Scratch.Name("."), text, AUtf8Encoding()), ResultFromErrno(EISDIR));
  m_Scratch.Put("T1", "0123456789");
  for (std::size_t failing = 0; failing < 2; ++failing) {
    FailingFileSystem system;
    system.FailCall(failing, EIO);
    EXPECT_EQ(AFile::Read(m_Scratch.Name("T1"), text, AUtf8Encoding()), ResultFromErrno(EIO));
    EXPECT_EQ(system.OpenDescriptors(), 0u);
  }
  EXPECT_EQ(text, AString("before"));
}

TEST_F(AFileTest, ReadIsBoundedAndDoesNotWaitForAPipe) {
  AString text = "before";
  m_Scratch.Put("big", std::string(AFile::MaxReadBytes, 'x'));
  EXPECT_EQ(AFile::Read(m_Scratch.Name("big"), text, AUtf8Encoding()), 0u);
  EXPECT_EQ(text.Length(), AFile::MaxReadBytes);
  m_Scratch.Put("bigger", std::string(AFile::MaxReadBytes + 1, 'x'));
  EXPECT_EQ(AFile::Read(m_Scratch.Name("bigger"), text, AUtf8Encoding()), ResultFromErrno(EFBIG));
  ASSERT_EQ(mkfifo((m_Scratch.Path() / "pipe").c_str(), 0600), 0);
  EXPECT_EQ(AFile::Read(m_Scratch.Name("pipe"), text, AUtf8Encoding()), 0u);
  EXPECT_TRUE(text.IsEmpty());
}

TEST_F(AFileTest, MakeTempCreatesNewEmptyFiles) {
  const mode_t before = umask(022);
  AString first;
  AString second;
  EXPECT_EQ(AFile::MakeTemp(m_Scratch.Name("corvane_task_"), first), 0u);
  EXPECT_EQ(AFile::MakeTemp(m_Scratch.Name("corvane_task_"), second), 0u);
  (void)umask(before);
  EXPECT_NE(first, second);
  EXPECT_EQ(m_Scratch.Files().size(), 2u);
  for (const std::string& file : m_Scratch.Files()) {
    EXPECT_THAT(file, testing::MatchesRegex("corvane_task_[0-9A-Za-z]{6}"));
    EXPECT_EQ(ModeOf(file), 0644u);
    EXPECT_EQ(m_Scratch.Get(file), "");
  }
}

TEST_F(AFileTest, MakeTempReportsEveryFailureAndLeavesNothing) {
  for (std::size_t failing = 0; failing < 2; ++failing) {
    FailingFileSystem system;
    system.FailCall(failing, EIO);
    AString name = "before";
    EXPECT_EQ(AFile::MakeTemp(m_Scratch.Name("T"), name), ResultFromErrno(EIO)) << failing;
    EXPECT_EQ(name, AString("before"));
    EXPECT_TRUE(m_Scratch.Files().empty()) << failing;
    EXPECT_EQ(system.OpenDescriptors(), 0u);
  }
}

TEST_F(AFileTest, RemoveDeletesAndFlushes) {
  m_Scratch.Put("T1", "x");
  FailingFileSystem system;
  EXPECT_EQ(AFile::Remove(m_Scratch.Name("T1"), 1), ResultFromErrno(EINVAL));
  EXPECT_EQ(AFile::Remove(m_Scratch.Name("T1"), 0), 0u);
  EXPECT_EQ(system.Calls(), (Texts{"unlink", "open", "sync", "close"}));
  EXPECT_TRUE(m_Scratch.Files().empty());
  EXPECT_EQ(AFile::Remove(m_Scratch.Name("T1"), 0), ResultFromErrno(ENOENT));
}

TEST_F(AFileTest, RemoveReportsEveryFailure) {
  for (std::size_t failing = 0; failing < 4; ++failing) {
    m_Scratch.Put("T1", "x");
    FailingFileSystem system;
    system.FailCall(failing, EIO);
    EXPECT_EQ(AFile::Remove(m_Scratch.Name("T1"), 0), ResultFromErrno(EIO)) << failing;
    EXPECT_EQ(system.OpenDescriptors(), 0u);
  }
}

TEST_F(AFileTest, RenameReplacesOnlyWhenAsked) {
  m_Scratch.Put("a", "new");
  m_Scratch.Put("b", "old");
  EXPECT_EQ(AFile::Rename(m_Scratch.Name("a"), m_Scratch.Name("b"), 0), ResultFromErrno(EEXIST));
  EXPECT_EQ(m_Scratch.Get("b"), "old");
  EXPECT_EQ(AFile::Rename(m_Scratch.Name("a"), m_Scratch.Name("b"), AFile::ReplaceExisting), 0u);
  EXPECT_EQ(m_Scratch.Get("b"), "new");
  EXPECT_EQ(AFile::Rename(m_Scratch.Name("b"), m_Scratch.Name("c"), 0), 0u);
  EXPECT_EQ(m_Scratch.Files(), FileNames{"c"});
  EXPECT_EQ(AFile::Rename(m_Scratch.Name("c"), m_Scratch.Name("d"), 4), ResultFromErrno(EINVAL));
  EXPECT_EQ(AFile::Rename(m_Scratch.Name("x"), m_Scratch.Name("d"), 2), ResultFromErrno(ENOENT));
}

TEST_F(AFileTest, RenameFlushesBothDirectories) {
  fs::create_directory(m_Scratch.Path() / "dir");
  m_Scratch.Put("a", "x");
  FailingFileSystem system;
  EXPECT_EQ(AFile::Rename(m_Scratch.Name("a"), m_Scratch.Name("dir/a"), 2), 0u);
  EXPECT_EQ(system.Calls(), (Texts{"rename", "open", "sync", "close", "open", "sync", "close"}));
}

TEST_F(AFileTest, RenameReportsEveryFailure) {
  for (std::size_t failing = 0; failing < 4; ++failing) {
    m_Scratch.Put("a", "x");
    FailingFileSystem system;
    system.FailCall(failing, EIO);
    EXPECT_EQ(AFile::Rename(m_Scratch.Name("a"), m_Scratch.Name("b"), 2), ResultFromErrno(EIO));
    EXPECT_EQ(m_Scratch.Files().count("b"), failing == 0 ? 0u : 1u);
    (void)fs::remove(m_Scratch.Path() / "b");
  }
}

TEST_F(AFileTest, RemoveLeftoversTakesTemporariesOnly) {
  for (const char* name : {".T1.aB3xY9", ".a.b.000000", ".T1.aB3xY", ".T1.aB3xY99", ".T1.aB3x-9",
                           "T1.aB3xY9", "..aB3xY9", ".aB3xY9", "T1.vsk", ".T1aB3xY9"}) {
    m_Scratch.Put(name, "x");
  }
  fs::create_directory(m_Scratch.Path() / ".dir.aB3xY9");
  unsigned removed = 77;
  EXPECT_EQ(AFile::RemoveLeftovers(m_Scratch.Name(""), removed), 0u);
  EXPECT_EQ(removed, 2u);
  EXPECT_EQ(m_Scratch.Files(),
            (FileNames{".T1.aB3xY", ".T1.aB3xY99", ".T1.aB3x-9", "T1.aB3xY9", "..aB3xY9", ".aB3xY9",
                       "T1.vsk", ".T1aB3xY9", ".dir.aB3xY9"}));
}

TEST_F(AFileTest, RemoveLeftoversFindsWhatAnInterruptedWriteLeaves) {
  {
    class Killed : public FailingFileSystem {
     public:
      int Rename(const char*, const char*, bool) override { return EIO; }
      int Unlink(const char*) override { return EIO; }
    } system;
    EXPECT_EQ(Write("T1.vsk", "x"), ResultFromErrno(EIO));
  }
  EXPECT_EQ(m_Scratch.Files().size(), 1u);
  unsigned removed = 0;
  EXPECT_EQ(AFile::RemoveLeftovers(m_Scratch.Name("."), removed), 0u);
  EXPECT_EQ(removed, 1u);
  EXPECT_TRUE(m_Scratch.Files().empty());
}

TEST_F(AFileTest, RemoveLeftoversReportsFailuresAndGoesOn) {
  unsigned removed = 7;
  EXPECT_EQ(AFile::RemoveLeftovers(m_Scratch.Name("none"), removed), ResultFromErrno(ENOENT));
  EXPECT_EQ(removed, 0u);
  m_Scratch.Put(".a.000000", "x");
  m_Scratch.Put(".b.000000", "x");
  class OneStays : public FailingFileSystem {
   public:
    int Unlink(const char* path) override {
      return m_Failed++ == 0 ? EACCES : FailingFileSystem::Unlink(path);
    }
    int m_Failed = 0;
  } system;
  EXPECT_EQ(AFile::RemoveLeftovers(m_Scratch.Name(""), removed), ResultFromErrno(EACCES));
  EXPECT_EQ(removed, 1u);
  EXPECT_EQ(m_Scratch.Files().size(), 1u);
  EXPECT_EQ(system.OpenDescriptors(), 0u);
}

}  // namespace
}  // namespace BaseSDK
