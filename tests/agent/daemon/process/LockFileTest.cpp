#include "agent/daemon/process/LockFile.h"

#include "agent/daemon/AgentError.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sched.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

using BaseSDK::AString;
namespace fs = std::filesystem;

namespace NoxAgent {
namespace {

TEST(LockFile, KeepsASecondOneOutAndNamesTheFirst) {
  const TestSupport::TempDir dir;
  const AString path = AString::FromUtf8(dir.Path().string());
  const LockFile first(path);
  try {
    const LockFile second(path);
    FAIL();
  } catch (const AgentError& error) {
    EXPECT_EQ(error.ExitStatus(), 3);
    EXPECT_EQ(error.what(), "another noxagentd (process " + std::to_string(::getpid()) + ") uses " +
                                dir.Path().string() +
                                ": stop it, or choose directories of your own with --state-dir "
                                "and --runtime-dir");
  }
}

TEST(LockFile, IsFreeAfterwardsAlthoughTheFileStays) {
  const TestSupport::TempDir dir;
  const AString path = AString::FromUtf8(dir.Path().string());
  { const LockFile first(path); }
  EXPECT_TRUE(dir.Has("noxagentd.lock"));
  const LockFile second(path);
}

// Whether the process has the file open.
bool HasOpen(pid_t process, const fs::path& file) {
  const fs::directory_iterator descriptors("/proc/" + std::to_string(process) + "/fd");
  std::error_code error;
  return std::any_of(begin(descriptors), end(descriptors), [&](const auto& descriptor) {
    return fs::read_symlink(descriptor, error) == file;
  });
}

// A process that has the lock of another, which is gone, until the test asks for it.
pid_t StartHeir(const fs::path& file) {
  const pid_t owner = ::fork();
  if (owner == 0) {
    ::_exit(0);
  }
  (void)::waitpid(owner, nullptr, 0);
  std::ofstream(file) << owner << "\n";
  const int fd = ::open(file.c_str(), O_RDWR | O_CLOEXEC);
  (void)::flock(fd, LOCK_EX);
  int released[2];
  EXPECT_EQ(::pipe(released), 0);
  const pid_t heir = ::fork();
  if (heir == 0) {
    char byte = 0;
    (void)!::read(released[0], &byte, 1);
    while (!HasOpen(::getppid(), file)) {
      (void)::sched_yield();
    }
    ::_exit(0);
  }
  (void)::close(fd);
  (void)!::write(released[1], "r", 1);
  (void)::close(released[0]);
  (void)::close(released[1]);
  return heir;
}

TEST(LockFile, WaitsForTheLockOfAnAgentThatIsGone) {
  const TestSupport::TempDir dir;
  const pid_t heir = StartHeir(dir / "noxagentd.lock");
  EXPECT_NO_THROW(const LockFile lock(AString::FromUtf8(dir.Path().string())));
  (void)::waitpid(heir, nullptr, 0);
}

TEST(LockFile, SaysWhyItCannotBeMade) {
  try {
    const LockFile lock("/nowhere/at/all");
    FAIL();
  } catch (const AgentError& error) {
    EXPECT_EQ(error.ExitStatus(), 1);
    EXPECT_STREQ(error.what(),
                 "cannot open the lock file /nowhere/at/all/noxagentd.lock: No such file or "
                 "directory");
  }
}

}  // namespace
}  // namespace NoxAgent
