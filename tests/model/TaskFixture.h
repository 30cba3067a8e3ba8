#pragma once

#include "model/Task.h"
#include "tests/model/Moment.h"
#include "tests/model/TriggerTable.h"
#include "tests/support/scheduler/TestScheduler.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

/// One task of a scheduler whose gate is closed: nobody but the test touches it. The zone is New
/// York's, the clock shows noon of Tuesday, 2005-03-01.
class TaskFixture : public testing::Test {
 protected:
  static constexpr const char* Noon = "2005-03-01 12:00:00";
  static inline const TestSupport::TriggerXml Daily =
      TestSupport::TriggerXml::Daily("2005/03/01 08:00:00");

  TaskFixture() { EXPECT_TRUE(m_Scheduler.Start()); }
  /// What a test has observed with is gone by now, and taking the scheduler down still logs.
  ~TaskFixture() override {
    m_Scheduler.Host().Observe({});
    m_Scheduler.Log().Observe({});
  }

  CTask& Make(const std::string& document, const char* id = "t") {
    m_Task =
        std::make_unique<CTask>(&m_Scheduler.Object(), id, BaseSDK::AString::FromUtf8(document));
    return *m_Task;
  }
  CTask& Make(const TestSupport::TaskXml& document) { return Make(document.Utf8()); }

  /// Moves the clock and asks the task; the answers are in the members.
  bool IsDueAt(const std::string& localTime) {
    m_Scheduler.Clock().Start(m_Scheduler.Local(localTime));
    return m_Task->IsDue(false, false, m_Sleep, m_IsLate, m_NeverRun, m_AllExpired, m_DeleteTask,
                         m_KillAtEnd);
  }

  unsigned Changes() { return m_Scheduler.Host().CountNotifications(100, "t"); }
  bool Logged(BaseSDK::ALogger::Level level, const char* message) {
    return m_Scheduler.Log().Has(level, message);
  }

  TestSupport::TestScheduler m_Scheduler{NewYork, Noon};
  std::unique_ptr<CTask> m_Task;
  long m_Sleep = 86400;
  bool m_IsLate = false;
  bool m_NeverRun = false;
  bool m_AllExpired = false;
  bool m_DeleteTask = false;
  bool m_KillAtEnd = false;
};
