// The agent's notifications and the processing gate.
#include "tests/scheduler/EventWatch.h"
#include "tests/scheduler/SchedulerFixture.h"
#include "tests/scheduler/SchedulerInside.h"
#include "tests/support/LockState.h"

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

namespace {

using BaseSDK::ALogger;
using BaseSDK::AMutex;
using BaseSDK::AString;

class NotificationsTest : public SchedulerFixture {
 protected:
  NotificationsTest() {
    Start();
    m_Log.Clear();
  }

  unsigned Count() { return SCHEDULER_INSIDE(*m_Scheduler, m_InstallTaskCount); }
  bool Flag302() { return SCHEDULER_INSIDE(*m_Scheduler, m_Notification302); }
  bool Flag300() { return SCHEDULER_INSIDE(*m_Scheduler, m_Notification300); }
  bool IsRefreshRequested() {
    return THREAD_INSIDE(SCHEDULER_INSIDE(*m_Scheduler, m_MonitorThread), m_Refresh);
  }
  Texts Informations() const { return m_Log.Messages(ALogger::Information); }
  /// The traces but for the monitor's own.
  Texts Said() const {
    Texts said;
    for (const std::string& message : Traces()) {
      if (message.find("Task Thread is sleeping") == std::string::npos) {
        said.push_back(message);
      }
    }
    return said;
  }
};

TEST_F(NotificationsTest, TheGateIsClosedBeforeAnyNotification) {
  EXPECT_FALSE(IsGateOpen());
  EXPECT_EQ(0U, Count());
}

TEST_F(NotificationsTest, TheEndOfTheStartUpOpensTheGateAndRouses) {
  Notify(0);
  EXPECT_TRUE(IsGateOpen());
  EXPECT_EQ(Said(), Texts{"Agent Startup finished. Enabling task processing"});
  EXPECT_EQ(1U, Iterations());
  EXPECT_TRUE(IsRefreshRequested());
}

TEST_F(NotificationsTest, APolicyRefreshClosesTheGateAndItsEndOpensIt) {
  Notify(0);
  m_Log.Clear();
  Notify(1);
  EXPECT_FALSE(IsGateOpen());
  EXPECT_EQ(0U, Iterations()) << "closing rouses nobody";
  Notify(2);
  EXPECT_TRUE(IsGateOpen());
  EXPECT_EQ(1U, Iterations());
  EXPECT_EQ(Said(), (Texts{"Policy Refresh Started. Task processing is disabled until policy "
                           "refresh is complete",
                           "Policy Refresh finished. Enabling task processing"}));
}

TEST_F(NotificationsTest, RegistrationsCloseTheGateUntilTheLastIsFinished) {
  Notify(0);
  m_Log.Clear();
  Notify(4, 0, L"one");
  EXPECT_FALSE(IsGateOpen());
  Notify(4, 0, L"two");
  Notify(5, 0, L"one");
  EXPECT_FALSE(IsGateOpen());
  EXPECT_EQ(1U, Count());
  EXPECT_EQ(0U, Iterations());
  Notify(5, 0, L"two");
  EXPECT_TRUE(IsGateOpen());
  EXPECT_EQ(0U, Count());
  EXPECT_EQ(1U, Iterations());
  EXPECT_EQ(Said(), (Texts{"Started plugin one registration", "Started plugin two registration",
                           "Finished plugin one registration", "Finished plugin two registration",
                           "Enabling task processing"}));
  EXPECT_EQ(Informations(),
            (Texts{"Number of Install/Uninstall tasks: 1. Task processing is disabled",
                   "Number of Install/Uninstall tasks: 2. Task processing is disabled",
                   "Number of Install/Uninstall tasks: 1. Task processing remains disabled"}));
}

TEST_F(NotificationsTest, UnregistrationsCountWithRegistrations) {
  Notify(6, 0, L"old");
  Notify(4, 0, L"new");
  Notify(7, 0, L"old");
  EXPECT_FALSE(IsGateOpen());
  Notify(5, 0, L"new");
  EXPECT_TRUE(IsGateOpen());
  EXPECT_EQ(Said(), (Texts{"Started plugin old unregistration", "Started plugin new registration",
                           "Finished plugin old unregistration", "Finished plugin new registration",
                           "Enabling task processing"}));
}

TEST_F(NotificationsTest, TheEndOfAPolicyRefreshOnPurposeOpensTheGateWhileAPluginIsInstalled) {
  Notify(4, 0, L"one");
  Notify(2);
  EXPECT_TRUE(IsGateOpen());
  EXPECT_EQ(1U, Count());
  m_Log.Clear();
  Notify(5, 0, L"one");
  EXPECT_TRUE(IsGateOpen());
  EXPECT_EQ(0U, Count());
  EXPECT_EQ(Said(), (Texts{"Finished plugin one registration", "Enabling task processing"}))
      << "it is opened again";
  EXPECT_EQ(1U, Iterations());
}

// In what order things happen

TEST_F(NotificationsTest, WhoeverRousesTheMonitorRaisesTheRefreshFlagFirst) {
  const struct {
    long m_Kind;
    long m_Code;
  } rows[] = {{0, 0}, {2, 0}, {5, 0}, {7, 0}, {10, 300}, {10, 302}};
  for (const auto& row : rows) {
    SCHEDULER_INSIDE(*m_Scheduler, m_InstallTaskCount) = 1;
    THREAD_INSIDE(SCHEDULER_INSIDE(*m_Scheduler, m_MonitorThread), m_Refresh) = false;
    std::vector<bool> seen;
    const EventWatch watch([&] { seen.push_back(IsRefreshRequested()); });
    Notify(row.m_Kind, row.m_Code);
    EXPECT_EQ(std::vector<bool>{true}, seen) << row.m_Kind << ", " << row.m_Code;
  }
}

TEST_F(NotificationsTest, TheGateMovesBeforeOrAfterTheLogAsItsKindWants) {
  struct Row {
    long m_Kind;
    std::uint32_t m_Count;
    bool m_Before;
    std::vector<bool> m_AtLines;  ///< whether the gate is open when each line is logged
  };
  const Row rows[] = {{0, 0, false, {true}},         {2, 0, false, {true}},
                      {1, 0, true, {true}},          {4, 0, true, {false, false}},
                      {6, 0, true, {false, false}},  {5, 1, false, {false, false}},
                      {7, 1, false, {false, false}}, {5, 2, true, {true, true}}};
  for (const Row& row : rows) {
    SCHEDULER_INSIDE(*m_Scheduler, m_InstallTaskCount) = row.m_Count;
    std::atomic<bool>& gate = SCHEDULER_INSIDE(*m_Scheduler, m_ProcessingEnabled);
    gate = row.m_Before;
    std::vector<bool> seen;
    m_Log.Observe([&](const TestSupport::LogCapture::Line& line) {
      if (line.m_Message.Find(L"sleeping") == AString::npos) {
        seen.push_back(gate);
      }
    });
    Notify(row.m_Kind);
    m_Log.Observe({});
    EXPECT_EQ(row.m_AtLines, seen) << row.m_Kind;
  }
}

TEST_F(NotificationsTest, ARegistrationIsToldOfBeforeTheNumberOfThem) {
  for (const long kind : {4L, 5L}) {
    SCHEDULER_INSIDE(*m_Scheduler, m_InstallTaskCount) = 4;
    m_Log.Clear();
    Notify(kind, 0, L"one");
    ASSERT_EQ(2U, m_Log.Lines().size());
    EXPECT_EQ(ALogger::Trace, m_Log.Lines()[0].m_Level);
    EXPECT_EQ(ALogger::Information, m_Log.Lines()[1].m_Level);
  }
}

TEST_F(NotificationsTest, AreCountedBeforeTheyAreToldOf) {
  const struct {
    long m_Kind;
    std::uint32_t m_Count;
  } rows[] = {{4, 8}, {6, 8}, {5, 6}, {7, 6}};
  for (const auto& row : rows) {
    SCHEDULER_INSIDE(*m_Scheduler, m_InstallTaskCount) = 7;
    std::vector<unsigned> seen;
    m_Log.Observe([&](const TestSupport::LogCapture::Line&) { seen.push_back(Count()); });
    Notify(row.m_Kind);
    m_Log.Observe({});
    EXPECT_EQ(std::vector<unsigned>(2, row.m_Count), seen) << row.m_Kind;
  }
}

// Which locks are taken

TEST_F(NotificationsTest, RegistrationsAreToldOfUnderTheCountLockAlone) {
  AMutex& countLock = SCHEDULER_INSIDE(*m_Scheduler, m_CountLock);
  AMutex& stateLock = SCHEDULER_INSIDE(*m_Scheduler, m_StateLock);
  for (const long kind : {4L, 6L, 5L, 7L}) {
    SCHEDULER_INSIDE(*m_Scheduler, m_InstallTaskCount) = 5;
    unsigned lines = 0;
    m_Log.Observe([&](const TestSupport::LogCapture::Line&) {
      ++lines;
      EXPECT_FALSE(TestSupport::IsFree(countLock)) << kind;
      EXPECT_TRUE(TestSupport::IsFree(stateLock)) << kind;
    });
    Notify(kind);
    m_Log.Observe({});
    EXPECT_EQ(2U, lines) << kind;
  }
}

TEST_F(NotificationsTest, TheLastRegistrationRousesUnderTheCountLockAndAnEventUnderTheStateLock) {
  const auto isFree = [this](bool count) {
    return TestSupport::IsFree(count ? SCHEDULER_INSIDE(*m_Scheduler, m_CountLock)
                                     : SCHEDULER_INSIDE(*m_Scheduler, m_StateLock));
  };
  for (const long kind : {5L, 7L, 10L}) {
    SCHEDULER_INSIDE(*m_Scheduler, m_InstallTaskCount) = 1;
    const EventWatch watch([&] {
      EXPECT_EQ(kind == 10, isFree(true)) << kind;
      EXPECT_EQ(kind != 10, isFree(false)) << kind;
    });
    Notify(kind, 300);
  }
}

TEST_F(NotificationsTest, NeedNoLockThatIsNotTheirs) {
  const struct {
    long m_Kind;
    bool m_NeedsCount;
    bool m_NeedsState;
  } rows[] = {{0, false, false}, {1, false, false}, {2, false, false},
              {3, false, false}, {4, true, false},  {5, true, false},
              {6, true, false},  {7, true, false},  {10, false, true}};
  for (const auto& row : rows) {
    const auto notify = [&] { EXPECT_EQ(0, m_Scheduler->NotifyObject(row.m_Kind, 300, L"x")); };
    if (!row.m_NeedsCount) {
      EXPECT_TRUE(TestSupport::RunsWhileHeld(SCHEDULER_INSIDE(*m_Scheduler, m_CountLock), notify))
          << row.m_Kind;
    }
    if (!row.m_NeedsState) {
      EXPECT_TRUE(TestSupport::RunsWhileHeld(SCHEDULER_INSIDE(*m_Scheduler, m_StateLock), notify))
          << row.m_Kind;
    }
    Clock().Settle();
  }
}

TEST_F(NotificationsTest, AFinishThatLeavesACountLeavesAnOpenGateOpen) {
  Notify(4, 0, L"one");
  Notify(4, 0, L"two");
  Notify(0);
  m_Log.Clear();
  Notify(5, 0, L"one");
  EXPECT_TRUE(IsGateOpen());
  EXPECT_EQ(Informations(),
            Texts{"Number of Install/Uninstall tasks: 1. Task processing remains disabled"});
  EXPECT_EQ(0U, Iterations());
}

TEST_F(NotificationsTest, AFinishWithoutAStartOnPurposeWrapsTheCount) {
  for (const long kind : {5L, 7L}) {
    m_Log.Clear();
    Notify(kind, 0, L"x");
    EXPECT_EQ(4294967295U, Count());
    EXPECT_FALSE(IsGateOpen()) << "unchanged";
    EXPECT_EQ(Informations(), Texts{"Number of Install/Uninstall tasks: 4294967295. Task "
                                    "processing remains disabled"});
    Notify(4, 0, L"x");
    EXPECT_EQ(0U, Count());
    EXPECT_FALSE(IsGateOpen());
  }
}

TEST_F(NotificationsTest, AWrappedCountOnPurposeKeepsTheGateShutButForTheAgentsOwnNotifications) {
  Notify(5);
  Notify(4);
  Notify(5);
  EXPECT_FALSE(IsGateOpen());
  Notify(2);
  EXPECT_TRUE(IsGateOpen());
}

TEST_F(NotificationsTest, ASubscribedNotificationSetsItsFlagAndRouses) {
  const struct {
    long m_Code;
    bool m_Flag302;
    bool m_Flag300;
  } rows[] = {{300, false, true}, {302, true, true}};
  for (const auto& row : rows) {
    m_Log.Clear();
    Notify(10, row.m_Code, L"data");
    EXPECT_EQ(row.m_Flag302, Flag302()) << row.m_Code;
    EXPECT_EQ(row.m_Flag300, Flag300()) << row.m_Code;
    EXPECT_EQ(1U, Iterations()) << row.m_Code;
    EXPECT_FALSE(IsGateOpen());
  }
  EXPECT_EQ(Said(), Texts{"Received 302 subscribed notification: data"});
}

TEST_F(NotificationsTest, OtherSubscribedCodesAreIgnoredWithoutAWord) {
  for (const long code : {301L, 299L, 303L, 0L, -300L, 100L}) {
    Notify(10, code, L"data");
  }
  EXPECT_FALSE(Flag302());
  EXPECT_FALSE(Flag300());
  EXPECT_EQ(m_Log.Lines(), Lines());
}

TEST_F(NotificationsTest, OtherKindsAreIgnoredWithoutAWord) {
  for (const bool open : {false, true}) {
    if (open) {
      Notify(0);
    }
    m_Log.Clear();
    for (const long kind : {3L, 8L, 9L, 11L, 12L, -1L, 2147483647L, -2147483647L - 1}) {
      Notify(kind, 300, L"data");
      EXPECT_EQ(open, IsGateOpen()) << kind;
    }
    EXPECT_EQ(0U, Count());
    EXPECT_FALSE(Flag300());
    EXPECT_EQ(m_Log.Lines(), Lines());
  }
}

TEST_F(NotificationsTest, NamesOfPluginsAreTextAndNoTemplates) {
  Notify(4, 0, L"%1%2");
  EXPECT_EQ(Said(), Texts{"Started plugin %1%2 registration"});
}

TEST_F(NotificationsTest, AreTakenFromManyThreadsAtOnce) {
  constexpr int Rounds = 200;
  const auto install = [this] {
    for (int i = 0; i < Rounds; ++i) {
      (void)m_Scheduler->NotifyObject(4, 0, L"x");
      (void)m_Scheduler->NotifyObject(10, i % 2 == 0 ? 300 : 302, L"x");
      (void)m_Scheduler->NotifyObject(5, 0, L"x");
    }
  };
  std::thread first(install);
  std::thread second(install);
  first.join();
  second.join();
  EXPECT_EQ(0U, Count());
  EXPECT_TRUE(IsGateOpen());
}

}  // namespace
