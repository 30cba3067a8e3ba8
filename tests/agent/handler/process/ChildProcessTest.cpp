#include "agent/handler/process/ChildProcess.h"

#include "agent/handler/job/Job.h"
#include "agent/handler/process/Launch.h"
#include "agent/handler/task/TaskBatch.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

namespace NoxHandlerTest {

using namespace NoxHandler;

// The next agent waits for the locks of one that was killed, copies included, and ends then what it
// finds in the sessions of its runs: a process that is in none yet would run on beside it.
TEST(ChildProcess, HasItsSessionBeforeItLetsGoOfTheAgentsDescriptors) {
  Job job;
  job.m_Command = "/bin/true";
  TaskBatch::Entry entry;
  entry.m_TaskId = "a";
  const Launch launch(job, entry, "token", 1);
  for (int round = 0; round < 200; ++round) {
    int fds[2];
    ASSERT_EQ(pipe2(fds, O_CLOEXEC), 0);
    const ChildProcess child(launch);
    (void)close(fds[1]);
    char byte = 0;
    EXPECT_EQ(read(fds[0], &byte, 1), 0) << "returns when the child has let go of its copy";
    EXPECT_EQ(getsid(child.Pid()), child.Pid()) << round;
    (void)close(fds[0]);
  }
}

}  // namespace NoxHandlerTest
