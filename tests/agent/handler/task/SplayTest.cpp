#include "agent/handler/task/Splay.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

using BaseSDK::AString;
using NoxHandler::Splay;

namespace NoxHandlerTest {

// Written down, because a machine keeps its time of the day over new versions.
TEST(Splay, GivesATaskOnAMachineTheSameShareForever) {
  EXPECT_EQ(Splay::ShareOf(3600, "0123456789abcdef", "backup").count(), 1847153);
  EXPECT_EQ(Splay::ShareOf(3600, "0123456789abcdeg", "backup").count(), 2554068);
  EXPECT_EQ(Splay::ShareOf(3600, "", "backup").count(), 2357739);
  EXPECT_EQ(Splay::ShareOf(0, "0123456789abcdef", "backup").count(), 0);
}

TEST(Splay, SpreadsManyMachinesAndTasksEvenly) {
  constexpr int Rounds = 10000;
  for (const bool areMachines : {true, false}) {
    std::array<int, 10> counts{};
    for (int i = 0; i < Rounds; ++i) {
      const std::string name = "name" + std::to_string(i);
      const auto share = areMachines ? Splay::ShareOf(600, name, "backup")
                                     : Splay::ShareOf(600, "machine", AString(name.c_str()));
      ASSERT_GE(share.count(), 0);
      ASSERT_LT(share.count(), 600000);
      ++counts.at(static_cast<std::size_t>(share.count() / 60000));
    }
    for (const int count : counts) {
      EXPECT_NEAR(count, Rounds / 10, 150) << areMachines;
    }
  }
}

}  // namespace NoxHandlerTest
