// When the state lock is held and when it is free, seen from within.
#include "tests/scheduler/EventWatch.h"
#include "tests/scheduler/SchedulerFixture.h"
#include "tests/scheduler/SchedulerInside.h"
#include "tests/support/ForwardingFileSystem.h"
#include "tests/support/LockState.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace {

using BaseSDK::AFileSystem;
using BaseSDK::AString;

/// The system's files; tells of every read of a directory and every write of a file.
class WatchedFiles : public TestSupport::ForwardingFileSystem {
 public:
  explicit WatchedFiles(std::function<void(const char*)> tell)
      : ForwardingFileSystem(AFileSystem::Current()), m_Tell(std::move(tell)) {
    m_Before = AFileSystem::Replace(this);
  }
  ~WatchedFiles() override { (void)AFileSystem::Replace(m_Before); }

  int ReadDirectory(unsigned long handle, const char*& name) override {
    m_Tell("read directory");
    return ForwardingFileSystem::ReadDirectory(handle, name);
  }
  int Write(int fd, const void* data, std::size_t size, std::size_t& written) override {
    m_Tell("write");
    return ForwardingFileSystem::Write(fd, data, size, written);
  }

 private:
  AFileSystem* m_Before;
  std::function<void(const char*)> m_Tell;
};

class StateLockTest : public SchedulerFixture {
 protected:
  bool IsFree() { return TestSupport::IsFree(SCHEDULER_INSIDE(*m_Scheduler, m_StateLock)); }
  void Look() { m_Seen.push_back(IsFree()); }

  std::vector<bool> m_Seen;
};

TEST_F(StateLockTest, IsHeldThroughoutALoad) {
  Store("T1", Task(Daily("2030-01-01 08:00:00")));
  {
    const WatchedFiles files([this](const char*) { Look(); });
    Start();
  }
  EXPECT_GE(m_Seen.size(), 2U);
  EXPECT_EQ(std::vector<bool>(m_Seen.size(), false), m_Seen);
}

TEST_F(StateLockTest, IsHeldThroughoutAPass) {
  Store("T1", Task(AsSoonAsPossible()));
  Store("T2", Task(Ended()));
  Start();
  m_Handler.AnswerAlways(-10000, -10000);
  m_Host.Observe([this](const TestSupport::FakeHost::Notification&) { Look(); });
  OpenGate();
  EXPECT_GE(m_Seen.size(), 2U) << "a run recorded, an expired task deleted";
  EXPECT_EQ(std::vector<bool>(m_Seen.size(), false), m_Seen);
}

TEST_F(StateLockTest, IsFreeWhileAHandlerIsCalledAndWhileTheMonitorSleeps) {
  Store("T1", Task(AsSoonAsPossible()));
  Start();
  EXPECT_TRUE(IsFree());
  m_Handler.Observe([this](const TestSupport::FakeHandler::Call&) { Look(); });
  OpenGate();
  EXPECT_GE(m_Seen.size(), 1U);
  EXPECT_EQ(std::vector<bool>(m_Seen.size(), true), m_Seen);
  EXPECT_TRUE(IsFree());
}

TEST_F(StateLockTest, IsNotNeededToRefreshToReadAndToEnumerate) {
  Store("T1", Task(Daily("2030-01-01 08:00:00")));
  Start();
  BaseSDK::AMutex& lock = SCHEDULER_INSIDE(*m_Scheduler, m_StateLock);
  AString text;
  unsigned long handle = 0;
  EXPECT_TRUE(TestSupport::RunsWhileHeld(lock, [&] { (void)m_Scheduler->RefreshTaskList(); }));
  EXPECT_TRUE(
      TestSupport::RunsWhileHeld(lock, [&] { (void)m_Scheduler->GetTaskXML(L"T1", text); }));
  EXPECT_TRUE(
      TestSupport::RunsWhileHeld(lock, [&] { (void)m_Scheduler->FindFirstTask(handle, text); }));
  EXPECT_TRUE(
      TestSupport::RunsWhileHeld(lock, [&] { (void)m_Scheduler->FindNextTask(handle, text); }));
  EXPECT_TRUE(TestSupport::RunsWhileHeld(lock, [&] { (void)m_Scheduler->FindClose(handle); }));
  Clock().Settle();
}

TEST_F(StateLockTest, IsHeldWhileAChangedTaskRousesTheMonitorAndFreeWhenEnabledOnesDo) {
  Start();
  {
    const EventWatch watch([this] { Look(); });
    AString id;
    EXPECT_EQ(1, m_Scheduler->AddTask(L"T1", AString::FromUtf8(Task(AsSoonAsPossible())), id));
    EXPECT_EQ(1, m_Scheduler->EnableTask(L"T1", false));
    EXPECT_EQ(1, m_Scheduler->RefreshTaskList());
    EXPECT_EQ(1, m_Scheduler->DeleteTask(L"T1"));
  }
  EXPECT_EQ((std::vector<bool>{false, true, true, false}), m_Seen);
}

TEST_F(StateLockTest, IsFreeWhileACallerStoresADocumentAndHeldWhileATaskWritesItsOwn) {
  Start();
  AString id;
  const WatchedFiles files([this](const char*) { Look(); });
  EXPECT_EQ(1, m_Scheduler->AddTask(L"T1", AString::FromUtf8(Task(AsSoonAsPossible())), id));
  EXPECT_EQ(
      1, m_Scheduler->AddTask(
             L"T1", AString::FromUtf8(Task(AsSoonAsPossible(), History("2005-02-28 08:00:00 Ok"))),
             id));
  EXPECT_EQ(std::vector<bool>(2, true), m_Seen);
  m_Seen.clear();
  EXPECT_EQ(0, m_Scheduler->SetRunState(L"T1", L"Failed"));
  EXPECT_EQ(1, m_Scheduler->EnableTask(L"T1", false));
  EXPECT_EQ(std::vector<bool>(2, false), m_Seen);
  Stop();
}

}  // namespace
