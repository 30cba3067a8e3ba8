#include "agent/daemon/AgentThread.h"

#include <gtest/gtest.h>

#include <future>
#include <stdexcept>
#include <vector>

namespace NoxAgent {
namespace {

TEST(AgentThread, DoesOneThingAfterTheOther) {
  std::vector<int> done;
  AgentThread thread;
  for (int number = 0; number < 1000; ++number) {
    ASSERT_TRUE(thread.Post([&done, number] { done.push_back(number); }));
  }
  thread.Call([&done] { done.push_back(1000); });
  ASSERT_EQ(done.size(), 1001U);
  for (int number = 0; number <= 1000; ++number) {
    EXPECT_EQ(done[static_cast<std::size_t>(number)], number);
  }
}

TEST(AgentThread, NeverWorksOnTheThreadOfThePoster) {
  AgentThread thread;
  std::thread::id poster;
  std::thread::id worker;
  thread.Call([&] { worker = std::this_thread::get_id(); });
  EXPECT_NE(worker, std::this_thread::get_id());
  thread.Call([&] { thread.Call([&] { poster = std::this_thread::get_id(); }); });
  EXPECT_EQ(poster, worker) << "a call from the agent thread itself is done at once";
}

TEST(AgentThread, PostsFromAJobComeLater) {
  AgentThread thread;
  std::vector<int> order;
  thread.Call([&] {
    (void)thread.Post([&] { order.push_back(2); });
    order.push_back(1);
  });
  thread.Call([] {});
  EXPECT_EQ(order, (std::vector{1, 2}));
}

TEST(AgentThread, RefusesWhenTooMuchWaits) {
  AgentThread thread;
  std::promise<void> hold;
  (void)thread.Post([&] { hold.get_future().wait(); });
  std::size_t taken = 0;
  while (thread.Post([] {})) {
    ++taken;
  }
  EXPECT_GE(taken, AgentThread::MaxWaiting - 1);
  EXPECT_LE(taken, AgentThread::MaxWaiting);
  hold.set_value();
  thread.Call([] {});
  EXPECT_TRUE(thread.Post([] {}));
}

TEST(AgentThread, HandsOnWhatACallThrows) {
  AgentThread thread;
  EXPECT_THROW(thread.Call([] { throw std::runtime_error("x"); }), std::runtime_error);
  thread.Call([] {});
}

// The wake-up for the last job and that for the end can be one and the same.
TEST(AgentThread, EndsAtWhateverMomentTheLastJobCame) {
  for (int round = 0; round < 3000; ++round) {
    AgentThread thread;
    for (int number = 0; number < round % 5; ++number) {
      (void)thread.Post([] { std::this_thread::yield(); });
    }
  }
}

TEST(AgentThread, FinishesWhatWaitsBeforeItEnds) {
  int done = 0;
  {
    AgentThread thread;
    for (int number = 0; number < 100; ++number) {
      (void)thread.Post([&done] { ++done; });
    }
  }
  EXPECT_EQ(done, 100);
}

}  // namespace
}  // namespace NoxAgent
