// The file systems that tests put in force behave like the system's, except where a test tells them
// otherwise.
#include "tests/support/FailingFileSystem.h"
#include "tests/support/MemoryFileSystem.h"
#include "tests/support/TempDir.h"

#include <BaseSDK/AFile.h>
#include <BaseSDK/AFileSystem.h>
#include <BaseSDK/AResult.h>
#include <BaseSDK/AUtf8Encoding.h>
#include <BaseSDK/Sys.h>

#include <gtest/gtest.h>

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <string>
#include <vector>

namespace {

using BaseSDK::AFile;
using BaseSDK::AFileSystem;
using BaseSDK::AString;
using BaseSDK::AUtf8Encoding;
using BaseSDK::ErrnoFromResult;
using BaseSDK::Wrappers::Sys;
using TestSupport::FailingFileSystem;
using TestSupport::MemoryFileSystem;
using TestSupport::TempDir;

/// Puts a file system in force while it lives.
class InForce {
 public:
  explicit InForce(AFileSystem& fileSystem) : m_Before(AFileSystem::Replace(&fileSystem)) {}
  InForce(const InForce&) = delete;
  InForce& operator=(const InForce&) = delete;
  ~InForce() { (void)AFileSystem::Replace(m_Before); }

 private:
  AFileSystem* m_Before;
};

/// The same steps on the system's files and on those in memory.
class FileSystems : public testing::TestWithParam<bool> {
 protected:
  FileSystems() {
    m_Memory.MakeDirectory(m_Directory.Path().string());
    if (GetParam()) {
      m_InForce = std::make_unique<InForce>(m_Memory);
    }
  }

  AString Path(const std::string& name) const {
    return AString::FromUtf8((m_Directory / name).string());
  }
  static int Error(unsigned long result) { return ErrnoFromResult(result); }
  int Write(const std::string& name, const std::string& text) const {
    return Error(AFile::Write(Path(name), AString::FromUtf8(text), AUtf8Encoding()));
  }
  int Read(const std::string& name, std::string& text) const {
    AString read;
    const int error = Error(AFile::Read(Path(name), read, AUtf8Encoding()));
    text = read.ToUtf8();
    return error;
  }
  std::vector<std::string> List() const {
    std::vector<std::string> names;
    unsigned long handle = 0;
    EXPECT_EQ(Sys::Opendir(m_Directory.Path().c_str(), handle), 0U);
    const char* name = nullptr;
    while (Sys::Readdir(handle, name) == 0 && name != nullptr) {
      names.emplace_back(name);
    }
    EXPECT_EQ(Sys::Closedir(handle), 0U);
    std::sort(names.begin(), names.end());
    return names;
  }

  TempDir m_Directory;
  MemoryFileSystem m_Memory;
  std::unique_ptr<InForce> m_InForce;
};

TEST_P(FileSystems, ReadWhatWasWrittenAndReplaced) {
  std::string text;
  EXPECT_EQ(Read("a.vsk", text), ENOENT);
  EXPECT_EQ(Write("a.vsk", "one"), 0);
  EXPECT_EQ(Write("a.vsk", std::string(100000, 'x')), 0);
  EXPECT_EQ(Read("a.vsk", text), 0);
  EXPECT_EQ(text, std::string(100000, 'x'));
  EXPECT_EQ(List(), (std::vector<std::string>{".", "..", "a.vsk"}));
  EXPECT_EQ(m_Memory.OpenHandles(), 0U);
}

TEST_P(FileSystems, RemoveAndRename) {
  EXPECT_EQ(Error(AFile::Remove(Path("a"), 0)), ENOENT);
  EXPECT_EQ(Write("a", "one"), 0);
  EXPECT_EQ(Write("b", "two"), 0);
  EXPECT_EQ(Error(AFile::Rename(Path("a"), Path("b"), 0)), EEXIST);
  EXPECT_EQ(Error(AFile::Rename(Path("a"), Path("b"), AFile::ReplaceExisting)), 0);
  EXPECT_EQ(Error(AFile::Rename(Path("a"), Path("c"), 0)), ENOENT);
  EXPECT_EQ(Error(AFile::Rename(Path("b"), Path("none/b"), 0)), ENOENT);
  EXPECT_EQ(List(), (std::vector<std::string>{".", "..", "b"}));
  EXPECT_EQ(Error(AFile::Remove(Path("b"), 0)), 0);
  EXPECT_EQ(List(), (std::vector<std::string>{".", ".."}));
}

TEST_P(FileSystems, OpenAsAskedFor) {
  int fd = -1;
  const std::string path = (m_Directory / "a").string();
  EXPECT_EQ(Error(Sys::Open(path.c_str(), O_RDWR, 0644, fd)), ENOENT);
  EXPECT_EQ(Error(Sys::Open(path.c_str(), O_RDWR | O_CREAT | O_EXCL, 0644, fd)), 0);
  std::size_t written = 0;
  EXPECT_EQ(Error(Sys::Write(fd, "abc", 3, written)), 0);
  EXPECT_EQ(written, 3U);
  EXPECT_EQ(Error(Sys::Close(fd)), 0);
  EXPECT_EQ(Error(Sys::Close(fd)), EBADF);
  EXPECT_EQ(Error(Sys::Open(path.c_str(), O_RDWR | O_CREAT | O_EXCL, 0644, fd)), EEXIST);
  EXPECT_EQ(Error(Sys::Open((path + "/b").c_str(), O_RDONLY, 0, fd)) == 0, false);
  unsigned long handle = 0;
  EXPECT_EQ(Error(Sys::Opendir((path + "none").c_str(), handle)), ENOENT);
}

TEST_P(FileSystems, TellFilesApartAndSeeTheirChanges) {
  const auto infoOf = [this](const std::string& name) {
    AFileSystem::Info info;
    EXPECT_EQ(AFileSystem::Current().GetInfo((m_Directory / name).c_str(), info), 0) << name;
    return info;
  };
  EXPECT_EQ(Write("a", "one"), 0);
  EXPECT_EQ(Write("b", "two"), 0);
  const AFileSystem::Info first = infoOf("a");
  EXPECT_EQ(first.m_Size, 3U);
  EXPECT_NE(first.m_Number, infoOf("b").m_Number);
  EXPECT_EQ(first.m_Device, infoOf("b").m_Device);
  int fd = -1;
  EXPECT_EQ(Error(Sys::Open((m_Directory / "a").c_str(), O_RDWR, 0, fd)), 0);
  AFileSystem::Info open;
  EXPECT_EQ(AFileSystem::Current().GetOpenInfo(fd, open), 0);
  EXPECT_EQ(open.m_Number, first.m_Number);
  EXPECT_EQ(open.m_Modified, first.m_Modified);
  EXPECT_EQ(open.m_Changed, first.m_Changed);
  std::size_t written = 0;
  EXPECT_EQ(Error(Sys::Write(fd, "more", 4, written)), 0);
  EXPECT_EQ(AFileSystem::Current().GetOpenInfo(fd, open), 0);
  EXPECT_EQ(open.m_Size, 4U);
  EXPECT_EQ(Error(Sys::Close(fd)), 0);
  EXPECT_EQ(AFileSystem::Current().GetOpenInfo(fd, open), EBADF);
  EXPECT_EQ(Write("a", "new"), 0);
  EXPECT_NE(infoOf("a").m_Number, first.m_Number) << "replaced while it was there";
}

TEST_P(FileSystems, UniqueNamesDiffer) {
  AString first;
  AString second;
  EXPECT_EQ(AFile::MakeTemp(Path("corvane_task_"), first), 0U);
  EXPECT_EQ(AFile::MakeTemp(Path("corvane_task_"), second), 0U);
  EXPECT_FALSE(first == second);
}

std::string SystemOrMemory(const testing::TestParamInfo<bool>& info) {
  return info.param ? "Memory" : "System";
}
INSTANTIATE_TEST_SUITE_P(Both, FileSystems, testing::Bool(), SystemOrMemory);

class MemoryFiles : public testing::Test {
 protected:
  MemoryFiles() { m_Memory.MakeDirectory("/d"); }
  int Write(const std::string& text) const {
    return ErrnoFromResult(AFile::Write(L"/d//a.vsk", AString::FromUtf8(text), AUtf8Encoding()));
  }

  MemoryFileSystem m_Memory;
};

TEST_F(MemoryFiles, FullDiskTakesWhatItCanAndThenNoMore) {
  const InForce inForce(m_Memory);
  EXPECT_EQ(Write("old"), 0);
  m_Memory.SetFreeBytes(2);
  EXPECT_EQ(Write("new"), ENOSPC);
  EXPECT_EQ(m_Memory.ReadFile("/d/a.vsk"), "old");
  EXPECT_EQ(m_Memory.Names("/d"), (std::vector<std::string>{"a.vsk"}));
  m_Memory.SetFreeBytes(MemoryFileSystem::Unlimited);
  EXPECT_EQ(Write("new"), 0);
  EXPECT_EQ(m_Memory.ReadFile("/d/a.vsk"), "new");
}

TEST_F(MemoryFiles, ReadOnlyDiskIsRead) {
  const InForce inForce(m_Memory);
  EXPECT_EQ(Write("old"), 0);
  m_Memory.SetReadOnly(true);
  EXPECT_EQ(Write("new"), EROFS);
  EXPECT_EQ(ErrnoFromResult(AFile::Remove(L"/d/a.vsk", 0)), EROFS);
  EXPECT_EQ(m_Memory.ReadFile("/d/a.vsk"), "old");
}

TEST_F(MemoryFiles, NamesAreTheSameEveryTime) {
  MemoryFileSystem other;
  EXPECT_EQ(m_Memory.UniqueNumber(), other.UniqueNumber());
  EXPECT_EQ(m_Memory.UniqueNumber(), other.UniqueNumber());
}

class FailingFiles : public MemoryFiles {
 protected:
  FailingFileSystem m_Failing{m_Memory};
};

TEST_F(FailingFiles, OneCallFailsAndTheOthersDoNot) {
  const InForce inForce(m_Failing);
  EXPECT_EQ(Write("old"), 0);
  const unsigned calls = m_Failing.Count();
  for (unsigned i = 1; i <= calls; ++i) {
    m_Failing.Reset();
    m_Failing.FailAt(i, EACCES);
    (void)Write("new");
    EXPECT_EQ(m_Memory.OpenHandles(), 0U) << "after a failure of call " << i;
    m_Failing.Reset();
    EXPECT_EQ(Write("old"), 0);
  }
}

TEST_F(FailingFiles, AKindOfCallFailsUntilReset) {
  const InForce inForce(m_Failing);
  m_Failing.FailAll(FailingFileSystem::RenameCall, EXDEV);
  EXPECT_EQ(Write("new"), EXDEV);
  EXPECT_EQ(Write("new"), EXDEV);
  EXPECT_EQ(m_Failing.Count(FailingFileSystem::RenameCall), 2U);
  m_Failing.Reset();
  EXPECT_EQ(Write("new"), 0);
}

TEST_F(FailingFiles, DeathLeavesTheDiskAsItIs) {
  const InForce inForce(m_Failing);
  EXPECT_EQ(Write("old"), 0);
  m_Failing.Reset();
  m_Failing.ShortenAt(1, 1);  // not a write: means nothing
  unsigned write = 0;
  EXPECT_EQ(Write("new text"), 0);
  const std::vector<std::string> history = m_Failing.History();
  while (history[write] != "write") {
    ++write;
  }
  m_Failing.Reset();
  m_Failing.KillAt(write + 1, 5);
  EXPECT_FALSE(m_Failing.IsDead());
  EXPECT_EQ(Write("newer text"), EIO);
  EXPECT_TRUE(m_Failing.IsDead());
  EXPECT_EQ(m_Memory.ReadFile("/d/a.vsk"), "new text");
  ASSERT_EQ(m_Memory.Names("/d").size(), 2U);
  EXPECT_EQ(m_Memory.ReadFile("/d/" + m_Memory.Names("/d")[0]), "newer");
  EXPECT_EQ(m_Memory.OpenHandles(), 0U);
}

TEST_F(FailingFiles, ShortWriteIsNoError) {
  const InForce inForce(m_Failing);
  int fd = -1;
  ASSERT_EQ(m_Failing.Open("/d/b", O_RDWR | O_CREAT, 0644, fd), 0);
  m_Failing.ShortenAt(2, 3);
  std::size_t written = 0;
  EXPECT_EQ(m_Failing.Write(fd, "abcdef", 6, written), 0);
  EXPECT_EQ(written, 3U);
  EXPECT_EQ(m_Failing.Close(fd), 0);
  EXPECT_EQ(m_Memory.ReadFile("/d/b"), "abc");
}

}  // namespace
