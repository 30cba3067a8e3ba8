// The agent's notifications and the processing gate.
#include "tests/scheduler/SchedulerFixture.h"
#include "tests/scheduler/SchedulerInside.h"

#include <string>
#include <thread>
#include <vector>

namespace {

using BaseSDK::ALogger;
using BaseSDK::AString;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

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
  std::vector<AString> Informations() const { return m_Log.Messages(ALogger::Information); }
  /// The traces but for the monitor's own.
  std::vector<AString> Said() const {
    std::vector<AString> said;
    for (const AString& message : Traces()) {
      if (message.Find(L"Task Thread is sleeping") == AString::npos) said.push_back(message);
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
  EXPECT_THAT(Said(), ElementsAre(L"Agent Startup finished. Enabling task processing"));
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
  EXPECT_THAT(Said(),
              ElementsAre(L"Policy Refresh Started. Task processing is disabled until policy "
                          L"refresh is complete",
                          L"Policy Refresh finished. Enabling task processing"));
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
  EXPECT_THAT(Said(),
              ElementsAre(L"Started plugin one registration", L"Started plugin two registration",
                          L"Finished plugin one registration", L"Finished plugin two registration",
                          L"Enabling task processing"));
  EXPECT_THAT(
      Informations(),
      ElementsAre(L"Number of Install/Uninstall tasks: 1. Task processing is disabled",
                  L"Number of Install/Uninstall tasks: 2. Task processing is disabled",
                  L"Number of Install/Uninstall tasks: 1. Task processing remains disabled"));
}

TEST_F(NotificationsTest, UnregistrationsCountWithRegistrations) {
  Notify(6, 0, L"old");
  Notify(4, 0, L"new");
  Notify(7, 0, L"old");
  EXPECT_FALSE(IsGateOpen());
  Notify(5, 0, L"new");
  EXPECT_TRUE(IsGateOpen());
  EXPECT_THAT(Said(),
              ElementsAre(L"Started plugin old unregistration", L"Started plugin new registration",
                          L"Finished plugin old unregistration",
                          L"Finished plugin new registration", L"Enabling task processing"));
}

TEST_F(NotificationsTest, TheEndOfAPolicyRefreshOnPurposeOpensTheGateWhileAPluginIsInstalled) {
  Notify(4, 0, L"one");
  Notify(2);
  EXPECT_TRUE(IsGateOpen());
  EXPECT_EQ(1U, Count());
  Notify(5, 0, L"one");
  EXPECT_TRUE(IsGateOpen());
  EXPECT_EQ(0U, Count());
}

TEST_F(NotificationsTest, AFinishThatLeavesACountLeavesAnOpenGateOpen) {
  Notify(4, 0, L"one");
  Notify(4, 0, L"two");
  Notify(0);
  m_Log.Clear();
  Notify(5, 0, L"one");
  EXPECT_TRUE(IsGateOpen());
  EXPECT_THAT(
      Informations(),
      ElementsAre(L"Number of Install/Uninstall tasks: 1. Task processing remains disabled"));
  EXPECT_EQ(0U, Iterations());
}

TEST_F(NotificationsTest, AFinishWithoutAStartOnPurposeWrapsTheCount) {
  for (const long kind : {5L, 7L}) {
    m_Log.Clear();
    Notify(kind, 0, L"x");
    EXPECT_EQ(4294967295U, Count());
    EXPECT_FALSE(IsGateOpen()) << "unchanged";
    EXPECT_THAT(Informations(), ElementsAre(L"Number of Install/Uninstall tasks: 4294967295. Task "
                                            L"processing remains disabled"));
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
  EXPECT_THAT(Said(), ElementsAre(L"Received 302 subscribed notification: data"));
}

TEST_F(NotificationsTest, OtherSubscribedCodesAreIgnoredWithoutAWord) {
  for (const long code : {301L, 299L, 303L, 0L, -300L, 100L}) {
    Notify(10, code, L"data");
  }
  EXPECT_FALSE(Flag302());
  EXPECT_FALSE(Flag300());
  EXPECT_THAT(m_Log.Lines(), IsEmpty());
}

TEST_F(NotificationsTest, OtherKindsAreIgnoredWithoutAWord) {
  for (const bool open : {false, true}) {
    if (open) Notify(0);
    m_Log.Clear();
    for (const long kind : {3L, 8L, 9L, 11L, 12L, -1L, 2147483647L, -2147483647L - 1}) {
      Notify(kind, 300, L"data");
      EXPECT_EQ(open, IsGateOpen()) << kind;
    }
    EXPECT_EQ(0U, Count());
    EXPECT_FALSE(Flag300());
    EXPECT_THAT(m_Log.Lines(), IsEmpty());
  }
}

TEST_F(NotificationsTest, NamesOfPluginsAreTextAndNoTemplates) {
  Notify(4, 0, L"%1%2");
  EXPECT_THAT(Said(), ElementsAre(L"Started plugin %1%2 registration"));
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
