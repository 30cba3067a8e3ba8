// The real plug-in, loaded from its shared object, under virtual time.
#include "agent/simulation/Simulation.h"

#include "tests/agent/simulation/TaskText.h"
#include "tests/support/LocalTimes.h"

#include <VirtualTime/Zone.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace NoxAgentTest {

using namespace NoxAgent;
using Kind = SimulationEvent::Kind;
using Strings = std::vector<std::string>;

namespace {

using TestSupport::NewYork;
constexpr long End = 2147483647;

std::string Daily(const std::string& begin, const std::string& attributes = {}) {
  return TriggerText(1, Begin(begin), attributes);
}

SimulationRequest Request(const std::string& xml, const std::string& from, const std::string& to) {
  SimulationRequest request;
  request.m_Documents.push_back({"task", xml});
  request.m_From = Local(from);
  request.m_To = to.empty() ? End : Local(to);
  return request;
}

SimulationRequest NextRequest(const std::string& xml, const std::string& from, unsigned count) {
  SimulationRequest request = Request(xml, from, {});
  request.m_Command = SimulationRequest::Command::Next;
  request.m_Count = count;
  return request;
}

std::string Line(const SimulationEvent& event) {
  std::string line = Show(event.m_Time) + " " + ToJson(event).At("event").Text();
  if (!event.m_State.empty()) {
    line += " " + event.m_State;
  }
  if (event.m_Late) {
    line += " late";
  }
  if (event.m_NeverRun) {
    line += " never-run";
  }
  if (event.m_KillAtEnd) {
    line += " kill";
  }
  return line;
}

// All but notifications.
Strings Lines(const std::vector<SimulationEvent>& events) {
  Strings lines;
  for (const SimulationEvent& event : events) {
    if (event.m_Kind != Kind::Notification) {
      lines.push_back(Line(event));
    }
  }
  return lines;
}

}  // namespace

TEST(Simulate, RunsEachDayAtItsLocalTimeAcrossTheChangeOfTheClock) {
  const VirtualTime::Zone zone(NewYork);
  const auto request = Request(TaskText(Daily("2024/03/09 02:30:00", "KillAtEnd=\"1\"")),
                               "2024-03-09 00:00:00", "2024-03-12 00:00:00");
  EXPECT_EQ(Lines(Simulate(request)), (Strings{"2024-03-09 02:30:00 -0500 run Ok never-run kill",
                                               "2024-03-10 03:30:00 -0400 run Ok kill",
                                               "2024-03-11 02:30:00 -0400 run Ok kill"}));
}

TEST(Simulate, TellsNotificationsAndDeletions) {
  const VirtualTime::Zone zone("UTC0");
  const auto request =
      Request(TaskText(TriggerText(
                  1, Begin("2024/03/01 08:00:00") + "<EndDate>2024-03-01 12:00:00</EndDate>")),
              "2024-03-01 07:30:00", "2024-03-02 00:00:00");
  const auto events = Simulate(request);
  EXPECT_EQ(Lines(events), (Strings{"2024-03-01 08:00:00 +0000 run Ok never-run",
                                    "2024-03-01 12:30:00 +0000 deleted"}));
  bool deleted = false, changed = false;
  for (const SimulationEvent& event : events) {
    deleted = deleted || (event.m_Kind == Kind::Notification && event.m_Code == 101);
    changed = changed || (event.m_Kind == Kind::Notification && event.m_Code == 100);
  }
  EXPECT_TRUE(deleted && changed);
}

TEST(Simulate, ClosedGateHoldsRunsBackUntilItOpens) {
  const VirtualTime::Zone zone("UTC0");
  auto request =
      Request(TaskText(Daily("2024/03/01 08:00:00")), "2024-03-01 07:30:00", "2024-03-01 12:00:00");
  request.m_GateClosed = {{Local("2024-03-01 07:50:00"), Local("2024-03-01 08:10:00")},
                          {Local("2024-03-01 08:05:00"), Local("2024-03-01 08:20:00")}};
  EXPECT_EQ(Lines(Simulate(request)), (Strings{"2024-03-01 07:50:00 +0000 gate closed",
                                               "2024-03-01 08:20:00 +0000 gate opened",
                                               "2024-03-01 08:20:00 +0000 run Ok late never-run"}));
}

TEST(Simulate, GateClosedFromTheBeginningOpensLater) {
  const VirtualTime::Zone zone("UTC0");
  auto request =
      Request(TaskText(TriggerText(-1, {})), "2024-03-01 08:00:00", "2024-03-01 09:00:00");
  request.m_GateClosed = {{Local("2024-03-01 07:00:00"), Local("2024-03-01 08:30:00")}};
  EXPECT_EQ(Lines(Simulate(request)), (Strings{"2024-03-01 08:00:00 +0000 gate closed",
                                               "2024-03-01 08:30:00 +0000 gate opened",
                                               "2024-03-01 08:30:00 +0000 run Ok never-run"}));
}

TEST(Simulate, ClockSetOverAStartRunsItLate) {
  const VirtualTime::Zone zone("UTC0");
  auto request = Request(TaskText(Daily("2024/02/01 08:00:00"), "2024-02-29 08:00:00 Ok"),
                         "2024-03-01 07:30:00", "2024-03-01 12:00:00");
  request.m_ClockSteps = {{Local("2024-03-01 07:45:00"), 3600}};
  EXPECT_EQ(Lines(Simulate(request)), (Strings{"2024-03-01 08:45:00 +0000 clock set",
                                               "2024-03-01 08:45:00 +0000 run Ok late"}));
}

TEST(Simulate, ClockSetBackDoesNotRunAStartAgain) {
  const VirtualTime::Zone zone("UTC0");
  auto request =
      Request(TaskText(Daily("2024/03/01 08:00:00")), "2024-03-01 07:30:00", "2024-03-01 12:00:00");
  request.m_ClockSteps = {{Local("2024-03-01 08:10:00"), -1800}};
  EXPECT_EQ(Lines(Simulate(request)), (Strings{"2024-03-01 08:00:00 +0000 run Ok never-run",
                                               "2024-03-01 07:40:00 +0000 clock set"}));
}

TEST(Simulate, RunsTakeTheirTimeAndAreNotStartedTwice) {
  const VirtualTime::Zone zone("UTC0");
  auto request =
      Request(TaskText(Daily("2024/03/01 08:00:00")), "2024-03-01 07:30:00", "2024-03-02 00:00:00");
  request.m_RunSeconds = 5400;
  EXPECT_EQ(Lines(Simulate(request)),
            (Strings{"2024-03-01 08:00:00 +0000 run never-run",
                     "2024-03-01 08:30:00 +0000 still running late never-run",
                     "2024-03-01 09:30:00 +0000 finished Ok"}));
}

TEST(Simulate, FirstRunFromTheMomentOnFailsAndIsTriedAgainAtTheHourlyReading) {
  const VirtualTime::Zone zone("UTC0");
  auto request =
      Request(TaskText(Daily("2024/03/01 08:00:00")), "2024-03-01 07:30:00", "2024-03-02 12:00:00");
  request.m_FailAt = {Local("2024-03-01 12:00:00")};
  EXPECT_EQ(
      Lines(Simulate(request)),
      (Strings{"2024-03-01 08:00:00 +0000 run never-run", "2024-03-01 08:00:00 +0000 finished Ok",
               "2024-03-02 08:00:00 +0000 run", "2024-03-02 08:00:00 +0000 finished Failed",
               "2024-03-02 08:30:00 +0000 run late never-run",
               "2024-03-02 08:30:00 +0000 finished Ok"}));
}

TEST(Simulate, HandlerThatIsNoClassIdentifierIsToldOf) {
  const VirtualTime::Zone zone("UTC0");
  auto request = Request(
      "<Task><HandlerCLSID>none</HandlerCLSID><Schedule><Trigger Type=\"-1\"/></Schedule></Task>",
      "2024-03-01 08:00:00", "2024-03-01 08:30:00");
  EXPECT_EQ(Lines(Simulate(request)), (Strings{"2024-03-01 08:00:00 +0000 no handler"}));
}

TEST(Simulate, SameRequestSameAnswer) {
  const VirtualTime::Zone zone(NewYork);
  auto request = Request(TaskText(Daily("2024/03/01 08:00:00", "Interval=\"20\" Duration=\"180\"")),
                         "2024-03-01 00:00:00", "2024-04-01 00:00:00");
  request.m_Documents.push_back({"other", TaskText(Daily("2024/03/01 08:20:00"))});
  request.m_RunSeconds = 1800;
  request.m_ClockSteps = {{Local("2024-03-05 08:10:00"), -600}};
  const auto first = Simulate(request);
  EXPECT_GT(first.size(), 300U);
  EXPECT_EQ(first, Simulate(request));
}

TEST(SimulationRequest, SurvivesTheWayToTheProgram) {
  SimulationRequest request;
  request.m_Documents = {{"a", "<Task/>"}, {"b", "<Task/>", {{10, false}}}};
  request.m_Reading = 11;
  request.m_Moment = 12;
  request.m_From = 1;
  request.m_To = 2;
  request.m_Count = 3;
  request.m_GateClosed = {{4, 5}};
  request.m_ClockSteps = {{6, -7}};
  request.m_RunSeconds = 8;
  request.m_FailAt = {9};
  const auto json = ToJson(request);
  EXPECT_EQ(json, ToJson(SimulationRequestFrom(json)));
}

struct NextRow {
  const char* m_Name;
  const char* m_Zone;
  std::string m_Xml;
  const char* m_From;
  Strings m_Runs;  // as many as are asked for, or all there are
  bool m_Ends;
};

class FindNext : public testing::TestWithParam<NextRow> {};

TEST_P(FindNext, TellsTheComingRuns) {
  const NextRow& row = GetParam();
  const VirtualTime::Zone zone(row.m_Zone);
  const auto count = static_cast<unsigned>(row.m_Runs.size() + (row.m_Ends ? 1 : 0));
  const NextRuns answer = FindNextRuns(NextRequest(row.m_Xml, row.m_From, count));
  Strings runs;
  for (const SimulationEvent& event : answer.m_Runs) {
    runs.push_back(Show(event.m_Time));
  }
  EXPECT_EQ(runs, row.m_Runs) << row.m_Name << ' ' << row.m_Zone << ' ' << row.m_Xml;
  EXPECT_TRUE(!row.m_Ends || answer.m_SearchedUntil == End) << answer.m_SearchedUntil;
}

const std::string Ran = "2024-03-01 12:00:00 Ok";

std::vector<NextRow> NextRows() {
  return {{"AcrossSpring",
           NewYork,
           TaskText(Daily("2024/03/01 02:30:00"), "2024-03-08 02:30:00 Ok"),
           "2024-03-08 12:00:00",
           {"2024-03-09 02:30:00 -0500", "2024-03-10 03:30:00 -0400", "2024-03-11 02:30:00 -0400"},
           false},
          {"AcrossAutumn",
           NewYork,
           TaskText(Daily("2024/03/01 01:30:00"), "2024-11-02 01:30:00 Ok"),
           "2024-11-02 12:00:00",
           {"2024-11-03 01:30:00 -0400", "2024-11-04 01:30:00 -0500"},
           false},
          {"Repetitions",
           "UTC0",
           TaskText(Daily("2024/03/01 08:00:00", "Interval=\"30\" Duration=\"60\""), Ran),
           "2024-03-02 07:00:00",
           {"2024-03-02 08:00:00 +0000", "2024-03-02 08:30:00 +0000", "2024-03-02 09:00:00 +0000",
            "2024-03-03 08:00:00 +0000"},
           false},
          {"LeapDays",
           "UTC0",
           TaskText(TriggerText(3, Begin("2024/01/01 08:00:00") + Element("DaysOfMonth", 1L << 28) +
                                       Element("MonthsOfYear", 2)),
                    Ran),
           "2024-03-02 07:00:00",
           {"2028-02-29 08:00:00 +0000", "2032-02-29 08:00:00 +0000"},
           false},
          {"ThirtiethOfFebruary",
           "UTC0",
           TaskText(TriggerText(3, Begin("2024/01/01 08:00:00") + Element("DaysOfMonth", 1L << 29) +
                                       Element("MonthsOfYear", 2)),
                    Ran),
           "2024-03-02 07:00:00",
           {},
           true},
          {"NeverRunIsDueAtOnce",
           "UTC0",
           TaskText(Daily("2024/03/01 08:00:00")),
           "2024-03-02 07:00:00",
           {"2024-03-02 07:00:00 +0000", "2024-03-02 08:00:00 +0000"},
           false},
          {"OnceInTheFuture",
           "UTC0",
           TaskText(TriggerText(0, Begin("2026/03/01 08:00:00"))),
           "2024-03-02 07:00:00",
           {"2026-03-01 08:00:00 +0000"},
           true},
          {"AsSoonAsPossible",
           "UTC0",
           TaskText(TriggerText(-1, {})),
           "2024-03-02 07:00:00",
           {"2024-03-02 07:00:00 +0000"},
           true},
          {"Disabled",
           "UTC0",
           TaskText(Daily("2024/03/01 08:00:00"), {}, false),
           "2024-03-02 07:00:00",
           {},
           true},
          // Whatever the scheduler runs is told, also what its own search for the next run misses.
          {"JustAfterMidnight",
           "UTC0",
           TaskText(Daily("2024/03/01 00:00:10"), Ran),
           "2024-03-01 23:59:30",
           {"2024-03-02 00:00:10 +0000", "2024-03-03 00:00:10 +0000"},
           false}};
}

INSTANTIATE_TEST_SUITE_P(Rows, FindNext, testing::ValuesIn(NextRows()),
                         [](const auto& row) { return row.param.m_Name; });

TEST(FindNextRuns, AgreesWithTheSimulationOfAllTime) {
  const VirtualTime::Zone zone(NewYork);
  const std::string xml =
      TaskText(TriggerText(2, Begin("2024/01/03 23:30:00") + Element("WeeksInterval", 2) +
                                  Element("DaysOfWeek", 9)),
               "2024-01-03 23:30:00 Ok");
  const auto request = Request(xml, "2024-01-04 12:00:00", "2024-05-01 00:00:00");
  Strings simulated, found;
  for (const auto& event : Simulate(request)) {
    if (event.m_Kind == Kind::Run) {
      simulated.push_back(Line(event));
    }
  }
  auto next = NextRequest(xml, "2024-01-04 12:00:00", static_cast<unsigned>(simulated.size()));
  for (const auto& event : FindNextRuns(next).m_Runs) {
    found.push_back(Line(event));
  }
  EXPECT_GT(simulated.size(), 10U);
  EXPECT_EQ(simulated, found);
}

}  // namespace NoxAgentTest
