#include <BaseSDK/ADescriptorLimit.h>

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace BaseSDK {
namespace {

// In a process of its own: the limit is raised once.
int InChild(int (*test)()) {
  const pid_t child = fork();
  if (child == 0) {
    _exit(test());
  }
  int status = -1;
  (void)waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(ADescriptorLimit, IsRaisedAndPutBack) {
  EXPECT_EQ(
      InChild([] {
        const rlimit few{50, 100};
        (void)setrlimit(RLIMIT_NOFILE, &few);
        const bool before = ADescriptorLimit::Current() == 50 && ADescriptorLimit::Original() == 50;
        ADescriptorLimit::Raise(80);
        const bool raised = ADescriptorLimit::Current() == 80 && ADescriptorLimit::Original() == 50;
        ADescriptorLimit::Restore();
        const bool restored = ADescriptorLimit::Current() == 50;
        return before && raised && restored ? 0 : 1;
      }),
      0);
}

TEST(ADescriptorLimit, IsRaisedNoHigherThanAllowedAndNeverLowered) {
  EXPECT_EQ(InChild([] {
              const rlimit few{50, 100};
              (void)setrlimit(RLIMIT_NOFILE, &few);
              ADescriptorLimit::Raise(40);
              const bool kept = ADescriptorLimit::Current() == 50;
              ADescriptorLimit::Raise(1000);
              return kept && ADescriptorLimit::Current() == 100 ? 0 : 1;
            }),
            0);
}

}  // namespace
}  // namespace BaseSDK
