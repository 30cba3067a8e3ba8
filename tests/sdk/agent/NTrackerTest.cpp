#include "tests/support/FakeHost.h"

#include <AgentSDK/NTracker.h>

#include <gtest/gtest.h>

namespace {

using AgentSDK::NTracker;
using TestSupport::FakeHost;

constexpr long Codes[] = {300, 302};

TEST(NTracker, SubscribesAtTheHost) {
  const FakeHost host;
  EXPECT_GE(NTracker::Subscribe("Corvane.Test", Codes, 2), 1);

  ASSERT_EQ(host.Subscriptions().size(), 1U);
  EXPECT_EQ(host.Subscriptions()[0].m_Subscriber, "Corvane.Test");
  EXPECT_EQ(host.Subscriptions()[0].m_Codes, (std::vector<long>{300, 302}));
}

TEST(NTracker, PostsAtTheHost) {
  const FakeHost host;
  EXPECT_GE(NTracker::PostNotification(102, "backup"), 1);
  EXPECT_EQ(host.CountNotifications(102, "backup"), 1U);
}

TEST(NTracker, GivesBackTheHostsRefusal) {
  FakeHost host;
  host.AnswerSubscribe(0);
  host.AnswerPost(-7);
  EXPECT_EQ(NTracker::Subscribe("Corvane.Test", Codes, 2), 0);
  EXPECT_EQ(NTracker::PostNotification(100, ""), -7);
}

TEST(NTracker, FailsWithoutAHost) {
  EXPECT_LT(NTracker::Subscribe("Corvane.Test", Codes, 2), 0);
  EXPECT_LT(NTracker::PostNotification(100, "backup"), 0);
}

}  // namespace
