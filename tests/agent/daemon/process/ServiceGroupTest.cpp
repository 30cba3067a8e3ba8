// Plain directories stand for the control groups here: what is written can be read, and nothing is
// limited.
#include "agent/daemon/process/ServiceGroup.h"

#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>

using BaseSDK::AString;

namespace NoxAgent {
namespace {

class ServiceGroupTest : public testing::Test {
 protected:
  ServiceGroupTest() { std::filesystem::create_directories(m_Mount / "system.slice/x.service"); }

  ServiceGroup Take(const std::string& ownGroups) {
    return ServiceGroup::Take({m_Mount.Path(), ownGroups, [this](const std::string& directory) {
                                 return m_Delegated.contains(directory);
                               }});
  }
  std::string Path(const std::string& name) const { return (m_Mount / name).string(); }

  TestSupport::TempDir m_Mount;
  std::set<std::string> m_Delegated;
};

}  // namespace

TEST_F(ServiceGroupTest, MakesRoomForGroupsOfRunsBesideItsOwn) {
  m_Delegated = {Path("system.slice/x.service")};
  const ServiceGroup taken = Take("0::/system.slice/x.service\n");
  EXPECT_EQ(taken.m_Path, AString::FromUtf8(Path("system.slice/x.service")));
  EXPECT_TRUE(taken.m_Problem.IsEmpty());
  EXPECT_EQ(m_Mount.Read("system.slice/x.service/agent/cgroup.procs"), "0");
  EXPECT_EQ(m_Mount.Read("system.slice/x.service/cgroup.subtree_control"), "+memory");
}

TEST_F(ServiceGroupTest, StaysWhereTheServiceManagerHasPutItBelow) {
  std::filesystem::create_directory(m_Mount / "system.slice/x.service/main");
  m_Delegated = {Path("system.slice/x.service")};
  const ServiceGroup taken = Take("1:name=systemd:/y\n0::/system.slice/x.service/main\n");
  EXPECT_EQ(taken.m_Path, AString::FromUtf8(Path("system.slice/x.service")));
  EXPECT_EQ(m_Mount.Read("system.slice/x.service/cgroup.subtree_control"), "+memory");
  EXPECT_FALSE(m_Mount.Has("system.slice/x.service/agent"));
  EXPECT_FALSE(m_Mount.Has("system.slice/x.service/main/cgroup.procs"));
}

TEST_F(ServiceGroupTest, TakesTheRootOfAContainer) {
  m_Delegated = {m_Mount.Path()};
  EXPECT_EQ(Take("0::/\n").m_Path, AString::FromUtf8(m_Mount.Path().string()));
  EXPECT_EQ(m_Mount.Read("agent/cgroup.procs"), "0");
}

TEST_F(ServiceGroupTest, TouchesNothingThatWasNotHandedOver) {
  for (const char* const own : {"0::/system.slice/x.service\n", "0::/\n", "4:memory:/a\n", ""}) {
    const ServiceGroup taken = Take(own);
    EXPECT_TRUE(taken.m_Path.IsEmpty()) << own;
    EXPECT_TRUE(taken.m_Problem.IsEmpty()) << own;
  }
  EXPECT_EQ(m_Mount.Names(), std::vector<std::string>{"system.slice"});
  EXPECT_TRUE(std::filesystem::is_empty(m_Mount / "system.slice/x.service"));
}

TEST_F(ServiceGroupTest, GoesBackWhenMemoryCannotBeLimitedThere) {
  m_Delegated = {Path("system.slice/x.service")};
  std::filesystem::create_directory(m_Mount / "system.slice/x.service/cgroup.subtree_control");
  const ServiceGroup taken = Take("0::/system.slice/x.service\n");
  EXPECT_TRUE(taken.m_Path.IsEmpty());
  EXPECT_EQ(
      taken.m_Problem,
      AString::FromUtf8(Path("system.slice/x.service/cgroup.subtree_control: Is a directory")));
  EXPECT_EQ(m_Mount.Read("system.slice/x.service/cgroup.procs"), "0");
}

TEST_F(ServiceGroupTest, SaysWhyItCannotMove) {
  m_Delegated = {Path("system.slice/x.service")};
  m_Mount.Write("system.slice/x.service/agent", "");
  const ServiceGroup taken = Take("0::/system.slice/x.service\n");
  EXPECT_EQ(taken.m_Problem,
            AString::FromUtf8(Path("system.slice/x.service/agent/cgroup.procs: Not a directory")));
  EXPECT_FALSE(m_Mount.Has("system.slice/x.service/cgroup.subtree_control"));
}

}  // namespace NoxAgent
