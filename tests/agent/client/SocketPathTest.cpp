#include "agent/client/SocketPath.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdlib>

namespace NoxAgentTest {

using NoxAgent::SocketPath;

TEST(SocketPath, TakesWhatIsNamed) {
  EXPECT_EQ("/a/b.sock", SocketPath("/a/b.sock", "/c"));
  EXPECT_EQ("/c/control.sock", SocketPath("", "/c"));
}

TEST(SocketPath, FallsBackToTheDefaultOfTheUser) {
  const std::string expected = geteuid() == 0
                                   ? "/run/nox/control.sock"
                                   : NoxAgent::DefaultRuntimeDirectory() + "/control.sock";
  EXPECT_EQ(expected, SocketPath("", ""));
}

}  // namespace NoxAgentTest
