#include "tests/proof/OwnProcess.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

void InOwnProcess(const std::function<void()>& body) {
  (void)std::fflush(nullptr);  // or the child prints again what waits to be printed
  const pid_t child = fork();
  ASSERT_NE(child, -1);
  if (child == 0) {
    body();
    std::exit(::testing::Test::HasFailure() ? EXIT_FAILURE : EXIT_SUCCESS);
  }
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0) << "failed in a process of its own, which says more above";
}
