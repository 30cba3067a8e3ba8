#pragma once

#include "scheduler/TaskSchedulerObject.h"
#include "tests/support/FakeHandler.h"
#include "tests/support/FakeHost.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TempDir.h"
#include "tests/support/Texts.h"

#include <BaseSDK/AString.h>
#include <VirtualTime/VirtualClock.h>
#include <VirtualTime/Zone.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

/// A scheduler object between a fake agent and a directory of its own, in virtual time: Tuesday,
/// 1 March 2005, 08:00:00 in a zone without changes. Nothing runs until Start.
class SchedulerFixture : public ::testing::Test {
 protected:
  using Texts = TestSupport::Texts;
  using Moments = std::vector<long>;
  using Lines = std::vector<TestSupport::LogCapture::Line>;

  static constexpr long Begin = 1109664000;  ///< 2005-03-01 08:00:00
  static constexpr long Minute = 60;
  static constexpr long Hour = 3600;
  static constexpr char Handler[] = "{00000000-0000-0000-0000-00000000000A}";
  static constexpr char OtherHandler[] = "{00000000-0000-0000-0000-00000000000B}";

  explicit SchedulerFixture(const char* zone = "UTC0") : m_Zone(zone) {
    Clock().Start(Begin);
    Configure("task_storage_path", m_Directory.Path());
    Configure("task_file_extension", ".vsk");
    m_Host.AddHandler(Handler, m_Handler);
    m_Scheduler = std::make_unique<TaskSchedulerObject_i>();
  }
  ~SchedulerFixture() override {
    // What a test has observed with is gone by now, and stopping still logs.
    m_Host.Observe({});
    m_Handler.Observe({});
    m_Log.Observe({});
    Stop();
  }

  static VirtualTime::VirtualClock& Clock() { return VirtualTime::VirtualClock::Instance(); }

  void Configure(const char* key, const std::string& value) {
    m_Host.SetConfig(L"Configuration", key, BaseSDK::AString::FromUtf8(value));
  }

  // The agent's side

  /// Starts the plug-in; the monitor has loaded the tasks and sleeps.
  void Start() {
    ASSERT_EQ(1, m_Scheduler->Initialize());
    Clock().Settle();
  }
  void Stop() { EXPECT_EQ(1, m_Scheduler->Uninitialize(1)); }
  /// The agent's start-up is finished; the monitor has made its next round and sleeps.
  void OpenGate() { Notify(0); }
  void Notify(long kind, long code = 0, const wchar_t* text = L"") {
    EXPECT_EQ(0, m_Scheduler->NotifyObject(kind, code, text));
    Clock().Settle();
  }
  void StartWithOpenGate() {
    Start();
    OpenGate();
  }
  void RunUntil(long moment) { Clock().RunUntil(moment); }

  // Documents

  static std::string Task(const std::string& triggers, const std::string& history = "",
                          const std::string& handler = Handler) {
    return "<Task><HandlerCLSID>" + handler + "</HandlerCLSID><Schedule>" + triggers +
           "</Schedule>" + history + "</Task>";
  }
  static std::string History(const std::string& entry) {
    return "<TaskHistory>\n\t\t<RunTime>" + entry + "</RunTime>\n\t</TaskHistory>";
  }
  static std::string Trigger(int type, const std::string& begin, const std::string& more = "") {
    return "<Trigger Type=\"" + std::to_string(type) + "\"><BeginDate>" + begin + "</BeginDate>" +
           more + "</Trigger>";
  }
  static std::string Daily(const std::string& begin) { return Trigger(1, begin); }
  static std::string AsSoonAsPossible() { return "<Trigger Type=\"-1\"/>"; }
  static std::string Ended() {
    return Trigger(1, "2005-01-01 08:00:00", "<EndDate>2005-01-02 08:00:00</EndDate>");
  }

  void Store(const std::string& taskID, const std::string& document) {
    m_Directory.Write(taskID + ".vsk", document);
  }
  std::string Stored(const std::string& taskID) const { return m_Directory.Read(taskID + ".vsk"); }
  /// The run entry in the task's file; empty without one.
  std::string StoredRun(const std::string& taskID) const {
    const std::string document = Stored(taskID);
    const std::size_t begin = document.find("<RunTime>");
    if (begin == std::string::npos) {
      return std::string();
    }
    return document.substr(begin + 9, document.find("</RunTime>") - begin - 9);
  }

  // What is to be seen

  BaseSDK::AString Report() {
    BaseSDK::AString report;
    EXPECT_EQ(1, m_Scheduler->ObjectDebugInfo(report));
    return report;
  }
  /// Whether the task is in memory.
  bool Knows(const wchar_t* taskID) {
    return Report().Find(BaseSDK::AString(L" ") + taskID + L"\n") != BaseSDK::AString::npos;
  }
  bool IsGateOpen() { return Report().Find(L"enabled") != BaseSDK::AString::npos; }
  /// How often the monitor has gone to sleep, which is once in an iteration.
  unsigned Iterations() const { return m_Log.CountContaining(L"Task Thread is sleeping for "); }
  unsigned Loads() const { return m_Log.Count(BaseSDK::ALogger::Trace, L"REFRESH TASK LIST!\n"); }
  bool Logged(BaseSDK::ALogger::Level level, const wchar_t* message) const {
    return m_Log.Has(level, message);
  }
  Texts Traces() const { return m_Log.Messages(BaseSDK::ALogger::Trace); }
  /// The seconds of every sleep so far, in order.
  Texts Sleeps() const {
    Texts sleeps;
    for (const std::string& text : Traces()) {
      const std::string head = "Task Thread is sleeping for ";
      if (text.starts_with(head)) {
        sleeps.push_back(text.substr(head.size(), text.find(" seconds.") - head.size()));
      }
    }
    return sleeps;
  }
  /// When a handler was called, in order.
  Moments CallTimes() const {
    Moments times;
    for (const TestSupport::FakeHandler::Call& call : m_Handler.Calls()) {
      times.push_back(call.m_Time);
    }
    return times;
  }
  Texts Batches() const { return m_Handler.Batches(); }

  VirtualTime::Zone m_Zone;
  TestSupport::TempDir m_Directory;
  TestSupport::FakeHost m_Host;
  TestSupport::FakeHandler m_Handler;
  TestSupport::LogCapture m_Log;
  std::unique_ptr<TaskSchedulerObject_i> m_Scheduler;
};
