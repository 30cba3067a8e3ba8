#include "tests/support/FakeHost.h"

#include <AgentSDK/AHost.h>

#include <gtest/gtest.h>

namespace {

using AgentSDK::AHost;
using TestSupport::FakeHost;

TEST(AHost, NoneIsInPlaceAtFirst) {
  EXPECT_EQ(AHost::Current(), nullptr);
}

TEST(AHost, ReplaceGivesBackTheOneBefore) {
  FakeHost first;
  EXPECT_EQ(AHost::Current(), &first);
  EXPECT_EQ(AHost::Replace(nullptr), &first);
  EXPECT_EQ(AHost::Current(), nullptr);
  EXPECT_EQ(AHost::Replace(&first), nullptr);
  EXPECT_EQ(AHost::Current(), &first);
}

TEST(AHost, HostsNest) {
  FakeHost outer;
  {
    const FakeHost inner;
    EXPECT_EQ(AHost::Current(), &inner);
  }
  EXPECT_EQ(AHost::Current(), &outer);
}

}  // namespace
