// A caller changes the file first, without the state lock, and the task in memory after that. What
// a run brings about that is recorded in between, as docs/threads-and-locks.md tells.
#include "model/Task.h"
#include "tests/scheduler/SchedulerFixture.h"
#include "tests/scheduler/SchedulerInside.h"

#include <functional>
#include <semaphore>
#include <string>
#include <thread>

namespace {

using BaseSDK::AString;

class FileBeforeMemoryTest : public SchedulerFixture {
 protected:
  FileBeforeMemoryTest() {
    Store("T1", Task(Daily("2030-01-01 08:00:00")));
    StartWithOpenGate();
  }

  /// Lets `call` come as far as to its notification `code`, records a run of the task that is in
  /// memory then, as a pass of the monitor would, and lets the call go on.
  void RecordARunWithin(long code, const std::function<void()>& call) {
    std::binary_semaphore fileChanged(0);
    m_Host.Observe([&](const TestSupport::FakeHost::Notification& notification) {
      if (notification.m_Code == code) {
        fileChanged.release();
      }
    });
    std::thread caller;
    {
      BaseSDK::AMutex& stateLock = SCHEDULER_INSIDE(*m_Scheduler, m_StateLock);
      const BaseSDK::AMutexGuard guard(stateLock);
      caller = std::thread(call);
      fileChanged.acquire();
      m_Host.Observe({});
      SCHEDULER_INSIDE(*m_Scheduler, m_Tasks).Find(L"T1")->RegisterRun();
    }
    caller.join();
    Clock().Settle();
  }
  bool IsStored(const std::string& text) { return Stored("T1").find(text) != std::string::npos; }
};

TEST_F(FileBeforeMemoryTest, ADeletedTaskIsBackAtTheNextLoadWhenARunWasRecordedMeanwhileOnPurpose) {
  RecordARunWithin(101, [this] { EXPECT_EQ(1, m_Scheduler->DeleteTask(L"T1")); });
  EXPECT_FALSE(Knows(L"T1"));
  EXPECT_EQ("2005-03-01 08:00:00 Started", StoredRun("T1"));
  RunUntil(Begin + Hour);
  EXPECT_TRUE(Knows(L"T1"));
}

TEST_F(FileBeforeMemoryTest,
       AReplacedDocumentIsInMemoryAloneWhenARunWasRecordedMeanwhileOnPurpose) {
  const std::string document = Task(Daily("2031-01-01 08:00:00"));
  RecordARunWithin(100, [&] {
    AString id;
    EXPECT_EQ(1, m_Scheduler->AddTask(L"T1", AString::FromUtf8(document), id));
  });
  EXPECT_TRUE(IsStored("2030-01-01")) << "the file has the document before, and its run";
  TaskSchedulerObject_i::AttributeMap attributes;
  EXPECT_EQ(1, m_Scheduler->GetTaskAttributes(L"T1", attributes, nullptr));
  EXPECT_EQ(AString(L"1925020800"), attributes[L"t6"]) << "2031-01-01 08:00:00";
  RunUntil(Begin + Hour);
  attributes.clear();
  EXPECT_EQ(1, m_Scheduler->GetTaskAttributes(L"T1", attributes, nullptr));
  EXPECT_NE(AString(L"1925020800"), attributes[L"t6"]) << "the load reads the file";
}

}  // namespace
