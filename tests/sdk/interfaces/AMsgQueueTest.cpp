#include "tests/sdk/interfaces/RecordingObjects.h"

#include <AgentInterfacesV3/AMsgQueue.h>
#include <BaseSDK/AFileSystem.h>

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <latch>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace Corvane::AgentInterfacesV3;
using RecordingObjects::Scheduler;

/// Answers with 1 after doing what the test wants done meanwhile.
class Server : public AMsgQueueServer {
 public:
  explicit Server(std::function<void()> meanwhile = [] {}) : m_Meanwhile(std::move(meanwhile)) {}
  long ProcessRequest(const AMsgIn* request) override {
    m_Meanwhile();
    request->Reply().SetResult(1, {});
    return 1;
  }

 private:
  const std::function<void()> m_Meanwhile;
};

/// One request and its reply.
struct Exchange {
  AMsgReply m_Reply;
  AMsgIn m_Request{"INoxTaskScheduler", "RefreshTaskList", m_Reply};

  long SendTo(AMsgQueue& queue) { return queue.Send(m_Request); }
};

using Steps = std::vector<std::string>;

/// Is in force while it lives, and writes down when changes are to be made safe.
class SafeFiles : public BaseSDK::AFileSystem {
 public:
  explicit SafeFiles(Steps& steps) : m_Steps(steps), m_Before(Replace(this)) {}
  ~SafeFiles() override { (void)Replace(m_Before); }
  void MakeSafe() override { m_Steps.emplace_back("safe"); }

 private:
  Steps& m_Steps;
  AFileSystem* const m_Before;
};

TEST(AMsgQueue, HandsARequestToItsObject) {
  AMsgQueue queue(5);
  EXPECT_TRUE(queue.IsOpen());
  EXPECT_EQ(queue.Number(), 5);
  EXPECT_FALSE(queue.HasObject());

  Scheduler object;
  EXPECT_EQ(object.Open(5), 1);
  EXPECT_TRUE(queue.HasObject());

  Exchange exchange;
  EXPECT_EQ(exchange.SendTo(queue), 1);
  EXPECT_EQ(exchange.m_Reply.Result(), 1);
  EXPECT_EQ(object.m_Calls.All().size(), 1U);
}

TEST(AMsgQueue, AnErrorOfTheObjectIsTheResult) {
  AMsgQueue queue(5);
  Scheduler object;
  ASSERT_EQ(object.Open(5), 1);
  AMsgReply reply;
  EXPECT_EQ(queue.Send(AMsgIn("INoxTaskScheduler", "Nothing", reply)), -1);
  EXPECT_EQ(reply.ErrorCode(), AMsgError::UnknownOperation);
}

TEST(AMsgQueue, ARequestWithoutAnObjectIsAnError) {
  AMsgQueue queue(5);
  Exchange exchange;
  EXPECT_EQ(exchange.SendTo(queue), -1);
  EXPECT_EQ(exchange.m_Reply.ErrorCode(), AMsgError::NoObject);
}

TEST(AMsgQueue, ARequestLeftUnansweredIsAnError) {
  class Silent : public AMsgQueueServer {
    long ProcessRequest(const AMsgIn*) override { return 1; }
  };
  AMsgQueue queue(5);
  Silent server;
  ASSERT_EQ(server.Open(5), 1);
  Exchange exchange;
  EXPECT_EQ(exchange.SendTo(queue), -1);
  EXPECT_EQ(exchange.m_Reply.ErrorCode(), AMsgError::OperationFailed);
}

TEST(AMsgQueue, KnowsWhetherTheThreadAnswersARequest) {
  AMsgQueue inner(6);
  Server leaf;
  ASSERT_EQ(leaf.Open(6), 1);
  bool within = false;
  bool behindAnother = false;
  bool elsewhere = true;
  AMsgQueue queue(5);
  Server server([&] {
    within = AMsgQueue::IsAnswering();
    (void)Exchange().SendTo(inner);
    behindAnother = AMsgQueue::IsAnswering();
    std::thread([&] { elsewhere = AMsgQueue::IsAnswering(); }).join();
  });
  ASSERT_EQ(server.Open(5), 1);
  EXPECT_FALSE(AMsgQueue::IsAnswering());
  EXPECT_EQ(Exchange().SendTo(queue), 1);
  EXPECT_FALSE(AMsgQueue::IsAnswering());
  EXPECT_TRUE(within);
  EXPECT_TRUE(behindAnother);
  EXPECT_FALSE(elsewhere) << "the object's own thread";
}

TEST(AMsgQueue, NumbersAreTakenOnceAndFreeAgainAfterwards) {
  {
    AMsgQueue first(5);
    AMsgQueue second(5);
    EXPECT_TRUE(first.IsOpen());
    EXPECT_FALSE(second.IsOpen());
    AMsgQueue third(6);
    EXPECT_TRUE(third.IsOpen());
  }
  EXPECT_TRUE(AMsgQueue(5).IsOpen());
}

TEST(AMsgQueue, ANegativeNumberIsNone) {
  EXPECT_FALSE(AMsgQueue(-1).IsOpen());
  EXPECT_TRUE(AMsgQueue(0).IsOpen());
}

TEST(AMsgQueueServer, OpenFailsWithoutAQueue) {
  Server server;
  EXPECT_LT(server.Open(5), 0);
  const AMsgQueue queue(5);
  EXPECT_LT(server.Open(4), 0);
  EXPECT_EQ(server.Open(5), 1);
}

TEST(AMsgQueueServer, OpenFailsWhenEitherEndIsBoundAlready) {
  const AMsgQueue first(1);
  const AMsgQueue second(2);
  Server server;
  Server other;
  EXPECT_EQ(server.Open(1), 1);
  EXPECT_LT(other.Open(1), 0);
  EXPECT_LT(server.Open(2), 0);
  EXPECT_EQ(other.Open(2), 1);
}

TEST(AMsgQueueServer, DestructionFreesTheQueueForTheNext) {
  AMsgQueue queue(5);
  {
    Server server;
    ASSERT_EQ(server.Open(5), 1);
  }
  EXPECT_FALSE(queue.HasObject());
  Exchange exchange;
  EXPECT_EQ(exchange.SendTo(queue), -1);
  EXPECT_EQ(exchange.m_Reply.ErrorCode(), AMsgError::NoObject);

  Server next;
  EXPECT_EQ(next.Open(5), 1);
}

TEST(AMsgQueueServer, MayOutliveItsQueue) {
  auto queue = std::make_unique<AMsgQueue>(5);
  Server server;
  ASSERT_EQ(server.Open(5), 1);
  queue.reset();
  const AMsgQueue again(5);
  EXPECT_FALSE(again.HasObject());
}

TEST(AMsgQueue, RequestsDoNotWaitForOneAnother) {
  AMsgQueue queue(5);
  std::latch bothInside(2);
  Server server([&] { bothInside.arrive_and_wait(); });
  ASSERT_EQ(server.Open(5), 1);

  Exchange one;
  Exchange two;
  std::thread other([&] { EXPECT_EQ(one.SendTo(queue), 1); });
  EXPECT_EQ(two.SendTo(queue), 1);
  other.join();
}

TEST(AMsgQueue, ARequestMaySendAnother) {
  AMsgQueue queue(5);
  unsigned depth = 0;
  Server server([&] {
    if (++depth < 3) {
      Exchange inner;
      EXPECT_EQ(inner.SendTo(queue), 1);
    }
  });
  ASSERT_EQ(server.Open(5), 1);
  Exchange exchange;
  EXPECT_EQ(exchange.SendTo(queue), 1);
  EXPECT_EQ(depth, 3U);
}

TEST(AMsgQueue, MakesChangesSafeAroundARequestWithinARequest) {
  Steps steps;
  const SafeFiles files(steps);
  AMsgQueue inner(6);
  Server leaf([&] { steps.emplace_back("inner"); });
  ASSERT_EQ(leaf.Open(6), 1);
  AMsgQueue queue(5);
  Server server([&] {
    steps.emplace_back("outer begins");
    (void)Exchange().SendTo(inner);
    steps.emplace_back("outer ends");
  });
  ASSERT_EQ(server.Open(5), 1);
  EXPECT_EQ(Exchange().SendTo(queue), 1);
  EXPECT_EQ(steps, (Steps{"safe", "outer begins", "safe", "inner", "safe", "outer ends", "safe"}));
}

TEST(AMsgQueue, MakesChangesSafeAlsoWhenTheReplyIsAnError) {
  Steps steps;
  const SafeFiles files(steps);
  AMsgQueue queue(5);
  Scheduler object;
  ASSERT_EQ(object.Open(5), 1);
  AMsgReply reply;
  EXPECT_EQ(queue.Send(AMsgIn("INoxTaskScheduler", "Nothing", reply)), -1);
  EXPECT_EQ(steps, (Steps{"safe", "safe"}));
}

TEST(AMsgQueue, AnswersWithAnErrorWhenClosedAndTakesRequestsWhenReopened) {
  AMsgQueue queue(5);
  Server server;
  ASSERT_EQ(server.Open(5), 1);
  queue.Close();
  queue.Close();
  EXPECT_FALSE(queue.IsOpen());
  Exchange exchange;
  EXPECT_EQ(exchange.SendTo(queue), -1);
  EXPECT_EQ(exchange.m_Reply.ErrorCode(), AMsgError::QueueClosed);

  queue.Reopen();
  EXPECT_TRUE(queue.IsOpen());
  EXPECT_EQ(exchange.SendTo(queue), 1);
  EXPECT_FALSE(exchange.m_Reply.IsError());
}

/// Keeps a request inside the object until it is let go.
struct Gate {
  std::latch m_Inside{1};
  std::latch m_LetGo{1};
  std::atomic<bool> m_Ended = false;
};

/// Touches nothing of its own once a request has entered, so that it may be destroyed meanwhile.
class GatedServer : public AMsgQueueServer {
 public:
  explicit GatedServer(Gate& gate) : m_Gate(gate) {}

  long ProcessRequest(const AMsgIn* request) override {
    Gate& gate = m_Gate;
    gate.m_Inside.count_down();
    gate.m_LetGo.wait();
    gate.m_Ended = true;
    request->Reply().SetResult(1, {});
    return 1;
  }

 private:
  Gate& m_Gate;
};

/// A request under way, at the time that the test begins.
class SlowRequest {
 public:
  SlowRequest() {
    EXPECT_EQ(m_Server->Open(5), 1);
    m_Sender = std::thread([this] { EXPECT_EQ(m_Exchange.SendTo(m_Queue), 1); });
    m_Gate.m_Inside.wait();
  }
  ~SlowRequest() { m_Sender.join(); }

  /// Runs `closing` on a thread of its own, lets the request go once `hasBegun`, and tells whether
  /// `closing` returned only after the request had ended.
  bool EndsBefore(const std::function<void()>& closing, const std::function<bool()>& hasBegun) {
    bool ended = false;
    std::thread closer([&] {
      closing();
      ended = m_Gate.m_Ended;
    });
    while (!hasBegun()) {
      std::this_thread::yield();
    }
    m_Gate.m_LetGo.count_down();
    closer.join();
    return ended;
  }

  AMsgQueue m_Queue{5};
  Gate m_Gate;
  std::unique_ptr<GatedServer> m_Server = std::make_unique<GatedServer>(m_Gate);

 private:
  Exchange m_Exchange;
  std::thread m_Sender;
};

TEST(AMsgQueue, ClosingWaitsForRequestsUnderWay) {
  SlowRequest slow;
  EXPECT_TRUE(
      slow.EndsBefore([&] { slow.m_Queue.Close(); }, [&] { return !slow.m_Queue.IsOpen(); }));
}

TEST(AMsgQueue, ClosingRefusesNewRequestsAndGivesUpAtItsTime) {
  SlowRequest slow;
  EXPECT_FALSE(slow.m_Queue.Close(0));
  Exchange exchange;
  EXPECT_EQ(exchange.SendTo(slow.m_Queue), -1);
  EXPECT_EQ(exchange.m_Reply.ErrorCode(), AMsgError::QueueClosed);

  EXPECT_TRUE(slow.EndsBefore([&] { EXPECT_TRUE(slow.m_Queue.Close(600000)); },
                              [&] { return !slow.m_Queue.IsOpen(); }));
}

TEST(AMsgQueueServer, DestructionWaitsForRequestsUnderWay) {
  SlowRequest slow;
  EXPECT_TRUE(
      slow.EndsBefore([&] { slow.m_Server.reset(); }, [&] { return !slow.m_Queue.HasObject(); }));
}

}  // namespace
