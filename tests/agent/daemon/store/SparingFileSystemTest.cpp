#include "agent/daemon/store/SparingFileSystem.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

using BaseSDK::AFileSystem;

namespace NoxAgent {
namespace {

// Leaves the process without a free descriptor while it lives.
class NoDescriptors {
 public:
  NoDescriptors() {
    (void)::getrlimit(RLIMIT_NOFILE, &m_Before);
    rlimit few = m_Before;
    few.rlim_cur = 64;
    (void)::setrlimit(RLIMIT_NOFILE, &few);
    for (int fd = ::dup(0); fd >= 0; fd = ::dup(0)) {
      m_Taken.push_back(fd);
    }
  }
  NoDescriptors(const NoDescriptors&) = delete;
  NoDescriptors& operator=(const NoDescriptors&) = delete;
  ~NoDescriptors() {
    for (const int fd : m_Taken) {
      (void)::close(fd);
    }
    (void)::setrlimit(RLIMIT_NOFILE, &m_Before);
  }

 private:
  rlimit m_Before{};
  std::vector<int> m_Taken;
};

// Before the descriptors are gone: a sanitizer needs some to look at an object for the first time.
void UseOnce(AFileSystem& files) {
  int fd = -1;
  ASSERT_EQ(files.Open("/dev/null", O_RDONLY, 0, fd), 0);
  EXPECT_EQ(files.Close(fd), 0);
  unsigned long handle = 0;
  ASSERT_EQ(files.OpenDirectory("/", handle), 0);
  EXPECT_EQ(files.CloseDirectory(handle), 0);
}

TEST(SparingFileSystem, OpensAFileAfterAllWhenNoDescriptorIsLeft) {
  AFileSystem system;
  SparingFileSystem files(system);
  UseOnce(system);
  UseOnce(files);
  const NoDescriptors none;
  int fd = -1;
  EXPECT_EQ(system.Open("/dev/null", O_RDONLY, 0, fd), EMFILE) << "there is really none";
  for (int round = 0; round < 3; ++round) {
    ASSERT_EQ(files.Open("/dev/null", O_RDONLY, 0, fd), 0) << round;
    int second = -1;
    EXPECT_EQ(files.Open("/dev/null", O_RDONLY, 0, second), EMFILE) << "there is one spare";
    EXPECT_EQ(files.Close(fd), 0);
  }
}

TEST(SparingFileSystem, KeepsItsSpareForAFileThatIsThere) {
  AFileSystem system;
  SparingFileSystem files(system);
  UseOnce(system);
  UseOnce(files);
  const NoDescriptors none;
  int fd = -1;
  EXPECT_EQ(files.Open("/no/such/file", O_RDONLY, 0, fd), ENOENT);
  EXPECT_EQ(::dup(0), -1) << "nobody else gets it";
  EXPECT_EQ(files.Open("/dev/null", O_RDONLY, 0, fd), 0);
  EXPECT_EQ(files.Close(fd), 0);
}

TEST(SparingFileSystem, ListsADirectoryAfterAllWhenNoDescriptorIsLeft) {
  AFileSystem system;
  SparingFileSystem files(system);
  UseOnce(system);
  UseOnce(files);
  const NoDescriptors none;
  for (int round = 0; round < 3; ++round) {
    unsigned long handle = 0;
    ASSERT_EQ(files.OpenDirectory("/", handle), 0) << round;
    EXPECT_EQ(files.CloseDirectory(handle), 0);
  }
}

}  // namespace
}  // namespace NoxAgent
