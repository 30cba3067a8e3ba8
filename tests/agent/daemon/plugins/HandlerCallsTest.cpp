#include "agent/daemon/plugins/HandlerCalls.h"

#include "tests/support/FakeHandler.h"

#include <gtest/gtest.h>

#include <thread>

namespace NoxAgent {
namespace {

TEST(HandlerCalls, ForwardsToTheHandlerAndReleasesItOnce) {
  TestSupport::FakeHandler handler;
  handler.AnswerAlways(5, 7);
  HandlerCalls calls;
  HandlerCalls::Handler* const tracked = calls.Track(&handler);
  EXPECT_EQ(tracked->RunTasksEx("a:0:0:0;"), 5);
  EXPECT_EQ(tracked->RunTasks("b:0:0:0;"), 7);
  EXPECT_EQ(handler.Batches(), (TestSupport::Texts{"a:0:0:0;", "b:0:0:0;"}));
  EXPECT_EQ(handler.Releases(), 0U);
  EXPECT_EQ(tracked->Release(), 0);
  EXPECT_EQ(handler.Releases(), 1U);
}

TEST(HandlerCalls, CountsAHandlerAsOpenUntilItIsReleased) {
  TestSupport::FakeHandler handler;
  HandlerCalls calls;
  EXPECT_TRUE(calls.WaitUntilNone(0));
  HandlerCalls::Handler* const first = calls.Track(&handler);
  HandlerCalls::Handler* const second = calls.Track(&handler);
  EXPECT_FALSE(calls.WaitUntilNone(0));
  (void)first->Release();
  EXPECT_FALSE(calls.WaitUntilNone(1));
  (void)second->Release();
  EXPECT_TRUE(calls.WaitUntilNone(0));
}

TEST(HandlerCalls, WaitsForTheRelease) {
  TestSupport::FakeHandler handler;
  HandlerCalls calls;
  HandlerCalls::Handler* const tracked = calls.Track(&handler);
  std::thread other([tracked] { (void)tracked->Release(); });
  EXPECT_TRUE(calls.WaitUntilNone(30000));
  other.join();
}

}  // namespace
}  // namespace NoxAgent
