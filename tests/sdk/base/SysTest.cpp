#include "FailingFileSystem.h"
#include "ScratchDirectory.h"
#include "tests/support/Texts.h"

#include <BaseSDK/AResult.h>
#include <BaseSDK/Sys.h>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string>

namespace BaseSDK::Wrappers {
namespace {

using TestSupport::Texts;

class SysTest : public testing::Test {
 protected:
  std::string Path(const std::string& file) { return (m_Scratch.Path() / file).string(); }

  ScratchDirectory m_Scratch;
};

TEST_F(SysTest, OpensAsAsked) {
  int fd = -1;
  EXPECT_EQ(Sys::Open(Path("T1").c_str(), O_RDWR, 0644, fd), ResultFromErrno(ENOENT));
  EXPECT_EQ(fd, -1);
  EXPECT_EQ(Sys::Open(Path("T1").c_str(), 0xC2, 0644, fd), 0u);
  EXPECT_EQ(fcntl(fd, F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
  EXPECT_EQ(Sys::Close(fd), 0u);
  EXPECT_EQ(Sys::Open(Path("T1").c_str(), 0xC2, 0644, fd), ResultFromErrno(EEXIST));
  EXPECT_EQ(fd, -1);
  EXPECT_EQ(Sys::Close(-1), ResultFromErrno(EBADF));
}

TEST_F(SysTest, WritesEverythingAndFlushes) {
  FailingFileSystem system;
  system.LimitWrites(4);
  int fd = -1;
  std::size_t written = 0;
  ASSERT_EQ(Sys::Open(Path("T1").c_str(), 0xC2, 0644, fd), 0u);
  EXPECT_EQ(Sys::Write(fd, "0123456789", 10, written), 0u);
  EXPECT_EQ(written, 10u);
  EXPECT_EQ(Sys::Close(fd), 0u);
  EXPECT_EQ(m_Scratch.Get("T1"), "0123456789");
  EXPECT_EQ(system.Calls(), (Texts{"open", "write", "write", "write", "sync", "close"}));
}

TEST_F(SysTest, CountsWhatWasWrittenBeforeAFailure) {
  FailingFileSystem system;
  system.LimitWrites(4);
  int fd = -1;
  std::size_t written = 99;
  ASSERT_EQ(Sys::Open(Path("T1").c_str(), 0xC2, 0644, fd), 0u);
  system.FailCall(2, ENOSPC);
  EXPECT_EQ(Sys::Write(fd, "0123456789", 10, written), ResultFromErrno(ENOSPC));
  EXPECT_EQ(written, 4u);
  system.FailCall(system.Calls().size() + 1, EIO);
  EXPECT_EQ(Sys::Write(fd, "0123", 4, written), ResultFromErrno(EIO)) << "of the flush";
  EXPECT_EQ(Sys::Close(fd), 0u);
  EXPECT_EQ(Sys::Write(-1, "x", 1, written), ResultFromErrno(EBADF));
  EXPECT_EQ(written, 0u);
}

TEST_F(SysTest, WritesIntoAPipeThatHasNothingToFlush) {
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe(ends.data()), 0);
  std::size_t written = 0;
  EXPECT_EQ(Sys::Write(ends[1], "x", 1, written), 0u);
  EXPECT_EQ(written, 1u);
  EXPECT_EQ(Sys::Close(ends[0]), 0u);
  EXPECT_EQ(Sys::Close(ends[1]), 0u);
}

TEST_F(SysTest, ListsADirectory) {
  m_Scratch.Put("a", "");
  m_Scratch.Put("b\xFF", "");
  unsigned long handle = 0;
  ASSERT_EQ(Sys::Opendir(Path("").c_str(), handle), 0u);
  EXPECT_NE(handle, 0u);
  FileNames names;
  const char* name = nullptr;
  while (Sys::Readdir(handle, name) == 0 && name != nullptr) {
    names.insert(name);
  }
  EXPECT_EQ(names, (FileNames{".", "..", "a", "b\xFF"}));
  EXPECT_EQ(Sys::Readdir(handle, name), 0u);
  EXPECT_EQ(name, nullptr);
  EXPECT_EQ(Sys::Closedir(handle), 0u);
}

TEST_F(SysTest, ReportsDirectoryFailures) {
  unsigned long handle = 77;
  EXPECT_EQ(Sys::Opendir(Path("none").c_str(), handle), ResultFromErrno(ENOENT));
  EXPECT_EQ(handle, 0u);
  FailingFileSystem system;
  ASSERT_EQ(Sys::Opendir(Path("").c_str(), handle), 0u);
  system.FailCall(1, EIO);
  const char* name = "before";
  EXPECT_EQ(Sys::Readdir(handle, name), ResultFromErrno(EIO));
  EXPECT_EQ(name, nullptr);
  EXPECT_EQ(Sys::Closedir(handle), 0u);
  EXPECT_EQ(system.OpenDescriptors(), 0u);
}

TEST_F(SysTest, StartsAgainAfterSignals) {
  FailingFileSystem system;
  system.FailCalls(0, 3, EINTR);
  unsigned long handle = 0;
  const char* name = nullptr;
  ASSERT_EQ(Sys::Opendir(Path("").c_str(), handle), 0u);
  system.FailCalls(system.Calls().size(), 2, EINTR);
  EXPECT_EQ(Sys::Readdir(handle, name), 0u);
  EXPECT_NE(name, nullptr);
  EXPECT_EQ(Sys::Closedir(handle), 0u);
}

}  // namespace
}  // namespace BaseSDK::Wrappers
