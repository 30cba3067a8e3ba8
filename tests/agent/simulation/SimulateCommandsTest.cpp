// noxctl simulate, next and explain as people call them; the real nox-simulate answers.
#include "agent/client/Client.h"
#include "agent/client/ExitCode.h"
#include "agent/client/RunCalendar.h"
#include "agent/client/TimeArgument.h"
#include "tests/agent/simulation/TaskText.h"
#include "tests/support/LocalTimes.h"
#include "tests/support/TempDir.h"

#include <VirtualTime/Zone.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>

namespace NoxAgentTest {

using namespace NoxAgent;

namespace {

class SimulateCommands : public testing::Test {
 protected:
  int Run(const std::vector<std::string>& arguments) {
    std::istringstream in;
    m_Out.str("");
    m_Err.str("");
    return RunClient(arguments, in, m_Out, m_Err);
  }

  std::string FileWith(const std::string& name, const std::string& text) const {
    m_Dir.Write(name, text);
    return (m_Dir / name).string();
  }

  std::string DailyFile() const {
    return FileWith("backup.xml", TaskText(TriggerText(1, Begin("2024/03/09 02:30:00"))));
  }

  VirtualTime::Zone m_Zone{"UTC0"};
  TestSupport::TempDir m_Dir;
  std::ostringstream m_Out, m_Err;
};

using TestSupport::NewYork;

}  // namespace

TEST_F(SimulateCommands, SimulateListsRunsWithTheirLocalTime) {
  const std::string file = DailyFile();
  const std::string before = m_Dir.Read("backup.xml");
  ASSERT_EQ(Run({"simulate", file, "--from", "2024-03-10", "--to", "2024-03-11T12:00", "--zone",
                 NewYork}),
            0)
      << m_Err.str();
  EXPECT_NE(m_Out.str().find("2024-03-10 00:00:00 -0500  backup  run"), std::string::npos)
      << m_Out.str();
  EXPECT_NE(m_Out.str().find("2024-03-10 03:30:00 -0400  backup  run"), std::string::npos)
      << m_Out.str();
  EXPECT_NE(m_Out.str().find("late, never run"), std::string::npos) << m_Out.str();
  EXPECT_EQ(before, m_Dir.Read("backup.xml"));
}

TEST_F(SimulateCommands, WithoutAZoneInTheEnvironmentTheMachinesIsTaken) {
  const std::vector<std::string> arguments = {"simulate",   DailyFile(), "--from",
                                              "2024-03-08", "--to",      "2024-04-08"};
  const auto tell = [&](const char* zone) {
    const VirtualTime::Zone machine(zone);
    if (*zone == '\0') {
      (void)::unsetenv("TZ");
    }
    EXPECT_EQ(Run(arguments), 0) << m_Err.str();
    return m_Out.str();
  };
  EXPECT_EQ(tell(""), tell(":/etc/localtime"));
}

TEST_F(SimulateCommands, CalendarShowsTheRunsOfEachDay) {
  ASSERT_EQ(Run({"simulate", DailyFile(), "--from", "2024-03-08", "--to", "2024-03-13 01:00",
                 "--calendar"}),
            0)
      << m_Err.str();
  EXPECT_EQ(m_Out.str(),
            "March 2024\n"
            "     Sun     Mon     Tue     Wed     Thu     Fri     Sat\n"
            "                                          1       2\n"
            "  3       4       5       6       7       8    .  9    1\n"
            " 10    1 11    1 12    1 13    . 14      15      16\n"
            " 17      18      19      20      21      22      23\n"
            " 24      25      26      27      28      29      30\n"
            " 31\n"
            "\n"
            "4 runs\n");
}

TEST_F(SimulateCommands, OptionsMayStandBeforeTheFilesAndSeveralTimes) {
  ASSERT_EQ(Run({"simulate", "--gate-closed", "2024-03-09 01:00..2024-03-09 03:00", "--gate-closed",
                 "2024-03-09 05:00..2024-03-09 06:00", "--clock-step", "2024-03-09 04:00=+60",
                 "--fail-at", "2024-03-09", DailyFile(), "--from", "2024-03-09", "--to",
                 "2024-03-09 07:00", "--json"}),
            0)
      << m_Err.str();
  std::vector<std::string> events;
  const Json answer = Json::Parse(m_Out.str());
  for (const Json& event : answer.Items()) {
    if (event["event"] != "notification") {
      events.push_back(event["time"].Text().substr(11, 8) + " " + event["event"].Text());
    }
  }
  EXPECT_EQ(events, (std::vector<std::string>{
                        "01:00:00 gate closed", "03:00:00 gate opened", "03:00:00 run",
                        "03:00:00 finished", "04:01:00 clock set", "04:01:00 run",
                        "04:01:00 finished", "05:00:00 gate closed", "06:00:00 gate opened"}));
}

TEST_F(SimulateCommands, WrongArgumentsAreNamed) {
  const std::string file = DailyFile();
  const auto error = [&](std::vector<std::string> more) {
    more.insert(more.begin(), {"simulate", file, "--to", "2024-03-11"});
    EXPECT_EQ(Run(more), 2) << testing::PrintToString(more);
    return m_Err.str();
  };
  EXPECT_NE(error({"--from", "tomorrow"}).find("--from \"tomorrow\""), std::string::npos);
  EXPECT_NE(error({"--from", "2024-03-12"}).find("--to lies before --from"), std::string::npos);
  EXPECT_NE(error({"--from", "2024-03-01", "--zone", "Mars"}).find("\"Mars\""), std::string::npos);
  EXPECT_NE(error({"--from", "2024-03-01", "--zone", "Europe"}).find("\"Europe\""),
            std::string::npos);
  EXPECT_NE(error({"--from", "1960-03-01"}).find("from 1970 to January 2038"), std::string::npos);
  EXPECT_NE(error({"--from", "2024-03-01", "--calendar", "--json"}).find("--calendar"),
            std::string::npos);
  EXPECT_NE(error({"--from", "2024-03-01", "--clock-step", "2024-03-02"}).find("--clock-step"),
            std::string::npos);
  EXPECT_NE(error({"--from", "2024-03-01", "--gate-closed", "2024-03-03..2024-03-02"})
                .find("ends before it begins"),
            std::string::npos);
  EXPECT_NE(error({"--from", "2024-03-01", file}).find("already"), std::string::npos);
}

TEST_F(SimulateCommands, DocumentThatIsNoneIsRefused) {
  EXPECT_EQ(Run({"next", FileWith("broken.xml", "<Task>")}), 2);
  EXPECT_NE(m_Err.str().find("broken.xml: line 1"), std::string::npos) << m_Err.str();
}

TEST_F(SimulateCommands, NextTellsTheRunsAndWhenThereAreNone) {
  ASSERT_EQ(Run({"next", DailyFile(), "-n", "2", "--from", "2024-03-10", "--zone", NewYork}), 0)
      << m_Err.str();
  EXPECT_NE(m_Out.str().find("2024-03-10 00:00:00 -0500"), std::string::npos) << m_Out.str();
  EXPECT_NE(m_Out.str().find("2024-03-10 03:30:00 -0400"), std::string::npos) << m_Out.str();
  ASSERT_EQ(
      Run({"next", FileWith("never.xml", TaskText(TriggerText(6, {}))), "--from", "2010-01-01"}),
      0);
  EXPECT_EQ(m_Out.str(), "never: trigger 1 has a type that never fires\n");
}

TEST_F(SimulateCommands, SimulateOfASpanWithoutEventsSaysSo) {
  ASSERT_EQ(Run({"simulate", DailyFile(), "--from", "2001-01-01", "--to", "2001-01-02"}), 0);
  EXPECT_EQ(m_Out.str(), "nothing happens in that time; noxctl explain tells why\n");
  ASSERT_EQ(Run({"simulate", DailyFile(), "--from", "2001-01-01", "--to", "2001-01-02", "--json"}),
            0);
  EXPECT_EQ(m_Out.str(), "[]\n");
}

TEST_F(SimulateCommands, NoLineEndsInABlank) {
  ASSERT_EQ(Run({"next", DailyFile(), "--from", "2024-03-10", "--zone", NewYork}), 0);
  EXPECT_EQ(m_Out.str().find(" \n"), std::string::npos) << m_Out.str();
}

TEST_F(SimulateCommands, NextNamesTheMomentWhereTimeEndsWhenThatIsNear) {
  ASSERT_EQ(Run({"next", DailyFile(), "-n", "9", "--from", "2038-01-17", "--zone", "UTC0"}), 0);
  EXPECT_NE(m_Out.str().find("none after that until 2038-01-19 03:14:07 +0000; noxctl explain"),
            std::string::npos)
      << m_Out.str();
}

TEST_F(SimulateCommands, NextOfNeitherAFileNorATaskNamesBoth) {
  EXPECT_EQ(Run({"next", "nowhere.xml", "--socket", "/none"}), 3);
  EXPECT_EQ(m_Err.str().find("noxctl: there is no file nowhere.xml, and noxctl cannot connect"), 0U)
      << m_Err.str();
}

TEST_F(SimulateCommands, ExplainTellsThatTheGateOfAFileIsAssumed) {
  ASSERT_EQ(Run({"explain", DailyFile(), "--at", "2024-03-10 12:00"}), 0) << m_Err.str();
  EXPECT_NE(m_Out.str().find("assumed to be open"), std::string::npos) << m_Out.str();
  EXPECT_NE(m_Out.str().find("The task runs"), std::string::npos) << m_Out.str();
}

TEST(TimeArgument, TakesTheFormsOfLocalTime) {
  const VirtualTime::Zone zone("UTC0");
  for (const char* const text : {"2024-03-10 00:00:00", "2024-03-10T00:00:00", "2024-03-10 00:00",
                                 "2024-03-10T00:00", "2024-03-10"}) {
    EXPECT_EQ(ReadTime("--at", text), 1710028800) << text;
  }
  for (const char* const text : {"", "10:00", "2024-3-1", "2024-02-30", "2024-03-10 24:00"}) {
    EXPECT_THROW((void)ReadTime("--at", text), CommandError) << text;
  }
  EXPECT_EQ(ReadClockStep("--clock-step", "2024-03-10=-60").m_Seconds, -60);
  EXPECT_THROW((void)ReadClockStep("--clock-step", "2024-03-10=60"), CommandError);
}

}  // namespace NoxAgentTest
