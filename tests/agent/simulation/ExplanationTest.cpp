#include "agent/client/Explanation.h"

#include "agent/document/DocumentSource.h"
#include "agent/document/ProblemList.h"
#include "agent/simulation/Simulation.h"
#include "tests/agent/simulation/TaskText.h"
#include "tests/support/LocalTimes.h"

#include <VirtualTime/Zone.h>

#include <gtest/gtest.h>

#include <algorithm>

namespace NoxAgentTest {

using namespace NoxAgent;
using Kind = SimulationEvent::Kind;
using Strings = std::vector<std::string>;

namespace {

using TestSupport::Berlin;
using TestSupport::Day;

RuleWords WordsOf(const std::string& trigger) {
  const DocumentSource source(TaskText(trigger));
  ProblemList problems;
  return RuleWords(
      ReadTriggerFields(source, source.Document().select_node("//Trigger").node(), problems));
}

TaskFacts FactsAt(const std::string& xml, long moment) {
  SimulationRequest request;
  request.m_Command = SimulationRequest::Command::Explain;
  request.m_Documents = {{"task", xml}};
  request.m_From = moment;
  return FindTaskFacts(request);
}

Explanation Explained(const std::string& xml, const std::string& at,
                      Explanation::Gate gate = Explanation::Gate::Open) {
  return Explanation({"task", xml}, FactsAt(xml, Local(at)), gate);
}

std::string Text(const Explanation& explanation) {
  std::ostringstream out;
  explanation.Print(out);
  return out.str();
}

// The local days from `from` on whose starts the scheduler runs.
Strings DaysRun(const std::string& trigger, long from, int days) {
  SimulationRequest request;
  // A run just before keeps the task from being due because it never ran.
  const std::string lastRun =
      BaseSDK::ADateTime(from - 1).ToString("%Y-%m-%d %H:%M:%S Ok").ToUtf8();
  request.m_Documents = {{"task", TaskText(trigger, lastRun)}};
  request.m_From = from;
  request.m_To = from + days * Day - 1;
  Strings runs;
  for (const SimulationEvent& event : Simulate(request)) {
    if (event.m_Kind == Kind::Run) {
      runs.push_back(Show(event.m_Time));
    }
  }
  return runs;
}

Strings DaysInWords(const RuleWords& words, long from, int days) {
  Strings starts;
  for (int day = 0; day < days; ++day) {
    const long noon = from + day * Day + Day / 2;
    if (words.ReasonsAgainst(noon).empty()) {
      starts.push_back(Show(words.StartOnDayOf(noon)));
    }
  }
  return starts;
}

struct RuleRow {
  std::string m_Trigger;
  std::string m_Words;
};

const std::vector<RuleRow>& RuleRows() {
  const std::string start = Begin("2005/03/01 08:00:00");
  static const std::vector<RuleRow> Rows = {
      {TriggerText(1, start), "daily at 08:00:00"},
      {TriggerText(1, start + Element("DaysInterval", 3)),
       "every 3rd day counted from 2005-03-01 at 08:00:00"},
      {TriggerText(2, start + Element("DaysOfWeek", 62)),
       "weekly on Monday, Tuesday, Wednesday, Thursday and Friday at 08:00:00"},
      {TriggerText(2, start + Element("WeeksInterval", 2) + Element("DaysOfWeek", 34)),
       "weekly, every 2nd week counted from the week of 2005-02-27, on Monday and Friday at "
       "08:00:00"},
      {TriggerText(2, start), "weekly on no weekday at all at 08:00:00"},
      {TriggerText(3, start + Element("DaysOfMonth", 16385) + Element("MonthsOfYear", 4095)),
       "monthly on days 1 and 15 of every month at 08:00:00"},
      {TriggerText(3, start + Element("DaysOfMonth", 2) + Element("MonthsOfYear", 5)),
       "monthly on day 2 of January and March at 08:00:00"},
      {TriggerText(4, start + Element("DaysOfWeek", 2) + Element("MonthsOfYear", 4095)),
       "monthly on Monday of week 1 (days 1 to 6) of every month at 08:00:00"},
      {TriggerText(
           4, start + Element("DaysOfWeek", 127) + Element("Week", 5) + Element("MonthsOfYear", 4)),
       "monthly on every weekday of week 5 (days 28 to 31) of March at 08:00:00"},
      {TriggerText(0, Begin("2005/03/20 08:00:00")), "once, on 2005-03-20 at 08:00:00"},
      {TriggerText(-2, start), "daily at 08:00:00"},
  };
  return Rows;
}

}  // namespace

TEST(RuleWords, TellTheRule) {
  const VirtualTime::Zone zone(Berlin);
  for (const RuleRow& row : RuleRows()) {
    EXPECT_EQ(WordsOf(row.m_Trigger).Rule(), row.m_Words) << row.m_Trigger;
  }
}

TEST(RuleWords, TellTheRepetition) {
  const VirtualTime::Zone zone(Berlin);
  const auto rule = [](const std::string& attributes) {
    return WordsOf(TriggerText(1, Begin("2005/03/01 08:00:00"), attributes)).Rule();
  };
  EXPECT_EQ(rule("Interval=\"30\" Duration=\"120\""),
            "daily at 08:00:00, repeated every 30 minutes for 2 hours");
  EXPECT_EQ(rule("Interval=\"1\" IntervalUnit=\"SECOND\" Duration=\"1\""),
            "daily at 08:00:00, repeated every second for 1 minute");
  EXPECT_EQ(rule("Duration=\"60\""), "daily at 08:00:00, with an active period of 1 hour");
}

TEST(RuleWords, TellWhatNeverFires) {
  EXPECT_EQ(WordsOf(TriggerText(6, {})).Rule(), "never: type 6 is none that a document can have");
  EXPECT_EQ(WordsOf(TriggerText(1, {})).Rule(), "never: it has no readable begin date");
  EXPECT_EQ(WordsOf(TriggerText(1, {}, "Disabled=\"y\"")).Rule(), "never: the trigger is disabled");
  EXPECT_EQ(WordsOf(TriggerText(-1, {})).Rule(),
            "as soon as possible, while the task has no finished run");
}

// The words are a second telling of the schedule: here they are held against the first.
TEST(RuleWords, AgreeWithTheSchedulerOnTheDays) {
  for (const char* const zoneName : {Berlin, "EST5EDT,M3.2.0,M11.1.0", "UTC0"}) {
    const VirtualTime::Zone zone(zoneName);
    for (const RuleRow& row : RuleRows()) {
      constexpr int Days = 40;
      const long from = Local("2005-03-10 00:00:00");
      EXPECT_EQ(DaysInWords(WordsOf(row.m_Trigger), from, Days), DaysRun(row.m_Trigger, from, Days))
          << zoneName << ' ' << row.m_Trigger;
    }
  }
}

TEST(RuleWords, TellWhyNoStartComesAnyMore) {
  const VirtualTime::Zone zone("UTC0");
  const std::string begin = Begin("2024/01/03 08:00:00");
  const auto why = [](const std::string& trigger) {
    return WordsOf(trigger).WhyNever(Local("2024-02-01 00:00:00"));
  };
  const std::string days = Element("DaysOfWeek", 2), months = Element("MonthsOfYear", 2);
  EXPECT_EQ(why(TriggerText(2, begin)), "names no weekday");
  EXPECT_EQ(why(TriggerText(4, begin + months)), "names no weekday");
  EXPECT_EQ(why(TriggerText(4, begin + days)), "names no month");
  EXPECT_EQ(why(TriggerText(3, begin + months)), "names no day of the month");
  EXPECT_EQ(why(TriggerText(3, begin + Element("DaysOfMonth", 1))), "names no month");
  EXPECT_EQ(
      why(TriggerText(3, begin + Element("DaysOfMonth", 1 << 30) + Element("MonthsOfYear", 8))),
      "April never has day 31");
  EXPECT_EQ(why(TriggerText(3, begin + Element("DaysOfMonth", 1 << 28) + months)), "")
      << "there is a 29th of February";
  EXPECT_EQ(why(TriggerText(4, begin + days + months + Element("Week", 5))), "");
  EXPECT_EQ(why(TriggerText(0, begin)), "starts once, and that was at 2024-01-03 08:00:00 +0000");
  EXPECT_EQ(why(TriggerText(1, begin)), "");
  EXPECT_EQ(why(TriggerText(1, {})), "has no readable begin date");
  EXPECT_EQ(why(TriggerText(1, begin, "Disabled=\"y\"")), "is disabled");
  EXPECT_EQ(WhyNever(ReadTriggers(TaskText("")), 0), "it has no trigger");
}

TEST(RuleWords, TellEveryReasonAgainstADay) {
  const VirtualTime::Zone zone("UTC0");
  const std::string begin = Begin("2024/01/03 08:00:00");
  const auto reasons = [](const std::string& trigger, const std::string& day) {
    return WordsOf(trigger).ReasonsAgainst(Local(day + " 12:00:00"));
  };
  EXPECT_EQ(reasons(TriggerText(4, begin + Element("DaysOfWeek", 2) + Element("MonthsOfYear", 1)),
                    "2024-02-07"),
            (Strings{"February is none of its months", "Wednesday is none of its weekdays",
                     "day 7 lies in week 2 (days 7 to 13), not in week 1"}));
  EXPECT_EQ(reasons(TriggerText(1, begin + Element("DaysInterval", 2)), "2024-01-04"),
            (Strings{"days elapsed since the begin: 1, no multiple of 2"}));
  EXPECT_EQ(
      reasons(TriggerText(2, begin + Element("WeeksInterval", 2) + Element("DaysOfWeek", 127)),
              "2024-01-07"),
      (Strings{"weeks counted from that of the begin: 1, no multiple of 2"}));
  EXPECT_EQ(reasons(TriggerText(1, begin), "2024-01-02"), (Strings{"it lies before the begin"}));
  EXPECT_EQ(reasons(TriggerText(0, begin), "2024-01-04"),
            (Strings{"it is not the day of the begin"}));
}

TEST(Explanation, TellsWhyADailyTaskIsNotDue) {
  const VirtualTime::Zone zone(Berlin);
  const auto explanation =
      Explained(TaskText(TriggerText(1, Begin("2024/03/01 08:00:00")), "2024-03-04 08:00:00 Ok"),
                "2024-03-04 12:00:00");
  EXPECT_EQ(Text(explanation),
            "Task task at 2024-03-04 12:00:00 +0100\n"
            "The gate is open: the agent lets tasks run.\n"
            "The task is enabled.\n"
            "Its last run began at 2024-03-04 08:00:00 and is finished.\n"
            "Trigger 1: daily at 08:00:00.\n"
            "  It begins at 2024-03-01 08:00:00 +0100 and has no end.\n"
            "  2024-03-04, a Monday, is one of its days.\n"
            "  Its start that day, 2024-03-04 08:00:00 +0100, has had its run.\n"
            "  It is not due then. Its next run is at 2024-03-05 08:00:00 +0100, 20 h later.\n"
            "The task does not run: nothing is due; the next run is at 2024-03-05 08:00:00 +0100, "
            "20 h later.\n");
}

TEST(Explanation, TellsOfADueTask) {
  const VirtualTime::Zone zone(Berlin);
  const std::string xml =
      TaskText(TriggerText(1, Begin("2024/03/01 08:00:00")), "2024-03-03 08:00:00 Ok");
  EXPECT_EQ(Explained(xml, "2024-03-04 08:00:00").Verdict(), "The task runs: a trigger is due.");
  EXPECT_EQ(Explained(xml, "2024-03-04 09:00:00").Verdict(),
            "The task runs: a trigger is due. It is late: its time passed more than 59 seconds "
            "before.");
  EXPECT_EQ(Explained(xml, "2024-03-04 09:00:00", Explanation::Gate::Closed).Verdict(),
            "The task is due, but does not run while the gate is closed; it will when it opens.");
}

TEST(Explanation, UnfinishedRunCountsAsNeverRun) {
  const VirtualTime::Zone zone(Berlin);
  const auto explanation = Explained(
      TaskText(TriggerText(1, Begin("2024/03/01 08:00:00")), "2024-03-04 08:00:00 Started"),
      "2024-03-04 12:00:00");
  EXPECT_NE(Text(explanation).find("its state is \"Started\", not \"Ok\": unless that changes"),
            std::string::npos);
  EXPECT_NE(explanation.Verdict().find("no finished run"), std::string::npos);
}

TEST(Explanation, RunAtOrAfterTheMomentIsSaidToBeSo) {
  const VirtualTime::Zone zone(Berlin);
  const std::string xml =
      TaskText(TriggerText(1, Begin("2024/03/01 08:00:00")), "2024-03-04 08:00:00 Ok");
  EXPECT_NE(Text(Explained(xml, "2024-03-04 08:00:00")).find("the task did run"),
            std::string::npos);
  EXPECT_EQ(Explained(xml, "2024-03-04 08:00:00").Verdict(),
            "The task ran. Otherwise nothing is due; the next run is at 2024-03-05 08:00:00 +0100, "
            "1 d later.");
  EXPECT_NE(Text(Explained(xml, "2024-03-02 08:00:00")).find("earlier runs are not kept"),
            std::string::npos);
}

TEST(Explanation, TellsWhatKeepsATaskFromRunningForGood) {
  const VirtualTime::Zone zone(Berlin);
  const std::string trigger = TriggerText(1, Begin("2024/03/01 08:00:00"));
  EXPECT_EQ(Explained(TaskText(trigger, {}, false), "2024-03-04 12:00:00").Verdict(),
            "The task does not run: it is disabled.");
  EXPECT_EQ(Explained(TaskText(TriggerText(6, {})), "2024-03-04 12:00:00").Verdict(),
            "The task does not run: it has no trigger that can fire.");
  const std::string ended =
      TriggerText(1, Begin("2024/03/01 08:00:00") + "<EndDate>2024-03-02 08:00:00</EndDate>");
  EXPECT_EQ(
      Explained(TaskText(ended), "2024-03-04 12:00:00").Verdict(),
      "The task does not run: nothing is due, and nothing will be: trigger 1 ended at 2024-03-02 "
      "08:00:00 +0100. The scheduler then deletes it, for no trigger will fire again.");
}

TEST(Explanation, DueInWordsAndInJsonIsWhatTheSchedulerSays) {
  const VirtualTime::Zone zone(Berlin);
  const std::string xml =
      TaskText(TriggerText(1, Begin("2024/03/01 08:00:00"), "Interval=\"30\" Duration=\"120\""),
               "2024-03-04 08:00:10 Ok");
  const auto at = [&xml](const char* time) { return Explained(xml, time).ToJson(); };
  EXPECT_EQ(at("2024-03-04 08:29:59")["due"], false);
  EXPECT_EQ(at("2024-03-04 08:29:59")["nextRun"], Local("2024-03-04 08:30:00"));
  EXPECT_EQ(at("2024-03-04 08:30:02")["due"], true);
  EXPECT_EQ(at("2024-03-04 08:30:02")["triggers"].At(0)["due"], true);
  EXPECT_EQ(at("2024-03-04 08:30:02")["run"]["late"], false);
}

}  // namespace NoxAgentTest
