// What a run's processes find of the job's limits.
#include "tests/agent/handler/run/SupervisorFixture.h"

#include <gtest/gtest.h>

namespace NoxHandlerTest {

using namespace NoxHandler;

namespace {

class RunLimits : public SupervisorFixture {};

}  // namespace

TEST_F(RunLimits, HoldForTheCommandAndWhatItStarts) {
  EXPECT_EQ(RunToEnd("nice; sh -c 'ulimit -v; ulimit -Ht; ulimit -t; ulimit -n; ulimit -Hn'\n"
                     "cat /proc/self/oom_score_adj",
                     "nice = 19\nionice = idle\nmemory = 512M\ncpu_time = 10m\nfiles = 64\n"
                     "oom_score = 1000"),
            "a Ok");
  EXPECT_EQ(Output("a").find("19\n524288\n605\n600\n64\n64\n1000\n"), 0u) << Output("a");
}

TEST_F(RunLimits, EndACommandThatTakesTooMuchTime) {
  EXPECT_EQ(RunToEnd("while :; do :; done", "cpu_time = 1s"), "a Failed");
  EXPECT_EQ(LogCount("Task 'a' failed: signal 24 (CPU time limit exceeded) after "), 1u);
}

// Who may do that hangs on more than on the user.
TEST_F(RunLimits, SayWhichOneTheSystemRefuses) {
  const std::string state = RunToEnd("cat /proc/self/oom_score_adj", "oom_score = -1000");
  if (state == "a Ok") {
    EXPECT_EQ(Output("a").find("-1000\n"), 0u) << Output("a");
  } else {
    EXPECT_EQ(LogCount("Task 'a' failed: cannot set the job's oom_score: Permission denied"), 1u);
  }
}

}  // namespace NoxHandlerTest
