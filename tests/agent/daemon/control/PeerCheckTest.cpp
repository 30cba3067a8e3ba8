#include "agent/daemon/control/PeerCheck.h"

#include <gtest/gtest.h>

#include <sys/socket.h>
#include <unistd.h>

namespace NoxAgent {
namespace {

constexpr uid_t Stranger = 54321;

TEST(PeerCheck, AdmitsRootAndTheAgentsOwnUser) {
  const PeerCheck check(std::nullopt);
  const gid_t groups[] = {54321};
  EXPECT_TRUE(check.Admits(0, groups, 1));
  EXPECT_TRUE(check.Admits(::geteuid(), groups, 1));
  EXPECT_FALSE(check.Admits(Stranger, groups, 1));
}

TEST(PeerCheck, AdmitsTheMembersOfTheGroup) {
  const PeerCheck check(gid_t{77});
  const gid_t groups[] = {5, 77, 9};
  EXPECT_TRUE(check.Admits(Stranger, groups, 3));
  EXPECT_FALSE(check.Admits(Stranger, groups, 1));
  EXPECT_FALSE(check.Admits(Stranger, groups, 0));
}

TEST(PeerCheck, OpensJobsToTheGroupOnlyWhenItIsToldTo) {
  for (const bool groupUsesJobs : {false, true}) {
    const PeerCheck check(gid_t{77}, groupUsesJobs);
    EXPECT_TRUE(check.OpensJobsTo(0));
    EXPECT_TRUE(check.OpensJobsTo(::geteuid()));
    EXPECT_EQ(check.OpensJobsTo(Stranger), groupUsesJobs);
  }
}

TEST(PeerCheck, AsksTheKernelWhoConnected) {
  int fds[2];
  ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, fds), 0);
  const std::optional<Caller> caller = PeerCheck(std::nullopt).CallerAt(fds[0]);
  ASSERT_TRUE(caller.has_value());
  EXPECT_EQ(caller->m_Process, ::getpid());
  EXPECT_TRUE(caller->m_MayUseJobs);
  (void)::close(fds[1]);
  (void)::close(fds[0]);
  EXPECT_FALSE(PeerCheck(std::nullopt).CallerAt(-1).has_value());
}

}  // namespace
}  // namespace NoxAgent
