#include <AgentInterfacesV3/AMsgGroup.h>
#include <AgentInterfacesV3/AMsgIn.h>
#include <AgentInterfacesV3/AMsgQueue.h>
#include <AgentInterfacesV3/AMsgQueueServer.h>
#include <BaseSDK/AFileSystem.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <thread>

namespace {

using namespace Corvane::AgentInterfacesV3;

/// Notes in `m_Events` when all is made safe: "s". In force while it lives.
class WatchedFiles : public BaseSDK::AFileSystem {
 public:
  WatchedFiles() { (void)Replace(this); }
  ~WatchedFiles() override { (void)Replace(nullptr); }
  void MakeSafe() override { m_Events += 's'; }

  std::string m_Events;
};

/// An object on a queue of its own, which does `work` for each request.
class Object : public AMsgQueueServer {
 public:
  Object(int number, std::function<void()> work) : m_Queue(number), m_Work(std::move(work)) {
    EXPECT_EQ(Open(number), 1);
  }
  ~Object() override { m_Queue.Close(); }
  long ProcessRequest(const AMsgIn* request) override {
    m_Work();
    request->Reply().SetResult(1, {});
    return 1;
  }
  void Ask() {
    AMsgReply reply;
    EXPECT_EQ(m_Queue.Send(AMsgIn("INoxTaskScheduler", "RefreshTaskList", reply)), 1);
  }

 private:
  AMsgQueue m_Queue;
  const std::function<void()> m_Work;
};

class AMsgGroupTest : public testing::Test {
 protected:
  void Note(char event) { m_Files.m_Events += event; }
  const std::string& Events() const { return m_Files.m_Events; }

  WatchedFiles m_Files;
  Object m_Object{5, [this] { Note('o'); }};
};

TEST_F(AMsgGroupTest, WithoutOneARequestIsMadeSafeBeforeItIsSeenAndBeforeItIsAnswered) {
  m_Object.Ask();
  m_Object.Ask();
  EXPECT_EQ(Events(), "sossos");
}

TEST_F(AMsgGroupTest, MakesItsRequestsSafeWhenItEnds) {
  AMsgGroup group;
  m_Object.Ask();
  m_Object.Ask();
  EXPECT_EQ(Events(), "oo");
  group.End();
  EXPECT_EQ(Events(), "oos");
  group.End();
  EXPECT_EQ(Events(), "oos") << "once";
  m_Object.Ask();
  EXPECT_EQ(Events(), "oossos") << "the group is over";
}

TEST_F(AMsgGroupTest, EndsWithTheObject) {
  {
    const AMsgGroup group;
    m_Object.Ask();
  }
  EXPECT_EQ(Events(), "os");
}

TEST_F(AMsgGroupTest, WhatAnObjectSendsMeanwhileIsMadeSafeAsEver) {
  Object outer(6, [this] {
    Note('(');
    m_Object.Ask();
    Note(')');
  });
  AMsgGroup group;
  outer.Ask();
  EXPECT_EQ(Events(), "(sos)");
  group.End();
  EXPECT_EQ(Events(), "(sos)s");
}

TEST_F(AMsgGroupTest, MayBeginWithinARequestAndWithinAnother) {
  Object outer(6, [this] {
    AMsgGroup group;
    m_Object.Ask();
    group.End();
    m_Object.Ask();
  });
  const AMsgGroup all;
  outer.Ask();
  EXPECT_EQ(Events(),
            "os"
            "sos")
      << "the inner group's, then one by itself";
  m_Object.Ask();
  EXPECT_EQ(Events(),
            "os"
            "sos"
            "o")
      << "the outer group goes on";
}

TEST_F(AMsgGroupTest, IsThatOfItsThread) {
  const AMsgGroup group;
  std::thread([this] { m_Object.Ask(); }).join();
  EXPECT_EQ(Events(), "sos");
}

}  // namespace
