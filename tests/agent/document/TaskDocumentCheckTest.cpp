#include "agent/document/TaskDocumentCheck.h"

#include "tests/agent/document/Samples.h"
#include "tests/support/LocalTimes.h"

#include <VirtualTime/Zone.h>

#include <gtest/gtest.h>

namespace NoxAgentTest {

using BaseSDK::AString;
using NoxAgent::CheckTaskDocument;
using NoxAgent::TaskDocumentProblem;
using NoxAgent::TaskDocumentSeverity;

namespace {

using TestSupport::NewYork;
constexpr long June2026 = 1781524800;  // 2026-06-15 12:00:00 UTC
constexpr const char* Handler =
    "<HandlerCLSID>{7C0A1D52-3B4E-4F6A-9A51-2D8E6C9B4F10}</HandlerCLSID>";

std::string TaskWith(const std::string& triggers) {
  return std::string("<Task>") + Handler + "<Schedule>" + triggers + "</Schedule></Task>";
}

std::vector<TaskDocumentProblem> Check(const std::string& xml, long now = June2026) {
  const auto calendar = NoxAgent::CalendarForCheck(now);
  return CheckTaskDocument(AString::FromUtf8(xml), now, &calendar);
}

const char* NameOf(TaskDocumentSeverity severity) {
  switch (severity) {
    case TaskDocumentSeverity::Warning:
      return "warning";
    case TaskDocumentSeverity::NeverRuns:
      return "never runs";
    default:
      return "error";
  }
}

std::string Describe(const std::string& name, const std::vector<TaskDocumentProblem>& problems) {
  if (problems.empty()) {
    return name + ": no problems\n";
  }
  std::string text;
  for (const TaskDocumentProblem& problem : problems) {
    text += name + ": " + NameOf(problem.m_Severity) + ": " +
            NoxAgent::DescribeTaskDocumentProblem(problem).ToUtf8() + "\n";
  }
  return text;
}

bool Mentions(const std::vector<TaskDocumentProblem>& problems, const char* words) {
  return Describe("", problems).find(words) != std::string::npos;
}

}  // namespace

TEST(TaskDocumentCheck, AnswersTheSamplesWordForWord) {
  const VirtualTime::Zone zone(NewYork);
  std::istringstream expected(ReadWhole(std::filesystem::path(NOX_SAMPLES_DIR) / "problems.txt"));
  std::string found;
  for (const auto& path : SamplePaths()) {
    found += Describe(path.filename().string(), Check(ReadWhole(path)));
  }
  std::istringstream answers(found);
  std::string expectedLine, answer;
  while (std::getline(expected, expectedLine)) {
    answer.clear();
    std::getline(answers, answer);
    EXPECT_EQ(expectedLine, answer);
  }
  EXPECT_FALSE(std::getline(answers, answer)) << answer;
}

TEST(TaskDocumentCheck, SamplesHaveProblemsAsTheirNamesSay) {
  const VirtualTime::Zone zone(NewYork);
  for (const auto& path : SamplePaths()) {
    EXPECT_EQ(NameBegins(path, "good-"), Check(ReadWhole(path)).empty()) << path;
  }
}

TEST(TaskDocumentCheck, FindsNoFaultWithTheExampleOfTheManual) {
  const VirtualTime::Zone zone(NewYork);
  const std::string page = ReadWhole(NOX_DOCUMENT_PAGE);
  const std::size_t begin = page.find("<Task ");
  const std::size_t end = page.find("</Task>", begin);
  ASSERT_NE(std::string::npos, end);
  const auto problems = Check(page.substr(begin, end + 7 - begin));
  EXPECT_TRUE(problems.empty()) << Describe("", problems);
}

TEST(TaskDocumentCheck, TellsAllProblemsAtOnceInTheOrderOfTheirPlaces) {
  const VirtualTime::Zone zone(NewYork);
  const auto problems = Check(
      "<Task Enabled=\"yes\" Owner=\"me\">\n"
      "  <Schedule>\n"
      "    <Trigger Type=\"2\"\n"
      "             Interval=\"x\">\n"
      "      <DaysOfWeek>300</DaysOfWeek>\n"
      "    </Trigger>\n"
      "  </Schedule>\n"
      "</Task>");
  std::vector<std::pair<unsigned, unsigned>> places;
  for (const auto& problem : problems) {
    places.emplace_back(problem.m_Line, problem.m_Column);
  }
  const std::vector<std::pair<unsigned, unsigned>> expected = {{1, 1}, {1, 7},  {1, 21},
                                                               {3, 5}, {4, 14}, {5, 7}};
  EXPECT_EQ(expected, places) << Describe("", problems);
}

TEST(TaskDocumentCheck, CountsColumnsInCharacters) {
  const auto problems = Check("<Task a=\"\xC3\xA9\xE2\x82\xAC\" b=\"1\"/>");
  ASSERT_EQ(4U, problems.size());
  EXPECT_EQ(14U, problems[3].m_Column) << Describe("", problems);
}

TEST(TaskDocumentCheck, CountsColumnsOnLongLinesToo) {
  std::string name;
  for (int i = 0; i < 500; ++i) {
    name += "\xC3\xA9";
  }
  const auto problems = Check("<Task a=\"" + name + "\" b=\"1\"/>");
  ASSERT_EQ(4U, problems.size());
  EXPECT_EQ(512U, problems[3].m_Column) << Describe("", problems);
}

TEST(TaskDocumentCheck, FindsAttributesAfterValuesWithQuotesBracketsAndLineEnds) {
  const VirtualTime::Zone zone(NewYork);
  const auto problems =
      Check(TaskWith("<Trigger Description='a \"b\" > c'\n\t Type = \"-1\"\n  Intervall=\"1\" />"));
  ASSERT_EQ(1U, problems.size()) << Describe("", problems);
  EXPECT_EQ(3U, problems[0].m_Line);
  EXPECT_EQ(3U, problems[0].m_Column);
}

TEST(TaskDocumentCheck, DeadTriggerBesideALivingOneIsAWarning) {
  const VirtualTime::Zone zone(NewYork);
  const std::string dead = "<Trigger Type=\"6\"/>";
  const std::string living = "<Trigger Type=\"-1\"/>";
  const auto both = Check(TaskWith(dead + living));
  ASSERT_EQ(1U, both.size());
  EXPECT_EQ(TaskDocumentSeverity::Warning, both[0].m_Severity);
  const auto alone = Check(TaskWith(dead + dead));
  ASSERT_EQ(2U, alone.size());
  EXPECT_EQ(TaskDocumentSeverity::NeverRuns, alone[0].m_Severity);
}

TEST(TaskDocumentCheck, SaysDeletedOnlyWhenAllTriggersHaveEnded) {
  const VirtualTime::Zone zone(NewYork);
  const std::string ended =
      "<Trigger Type=\"1\"><BeginDate>2026/01/05 08:00:00</BeginDate>"
      "<EndDate>2026/01/31 08:00:00</EndDate></Trigger>";
  EXPECT_TRUE(Mentions(Check(TaskWith(ended + ended)), "deleted at once"));
  EXPECT_FALSE(Mentions(Check(TaskWith(ended + "<Trigger Type=\"6\"/>")), "deleted at once"));
  EXPECT_FALSE(Mentions(Check(TaskWith(ended + "<Trigger Disabled=\"1\"/>")), "deleted at once"));
}

TEST(TaskDocumentCheck, TriggerEndsAfterTheSecondOfItsEndDate) {
  const VirtualTime::Zone zone("UTC0");
  const std::string xml = TaskWith(
      "<Trigger Type=\"1\"><BeginDate>2026/01/05 08:00:00</BeginDate>"
      "<EndDate>2026/06/15 12:00:00</EndDate></Trigger>");
  EXPECT_FALSE(Mentions(Check(xml, June2026), "ended"));
  EXPECT_TRUE(Mentions(Check(xml, June2026 + 1), "ended on 2026-06-15 12:00:00"));
}

TEST(TaskDocumentCheck, RefusesDocumentsBeyondTheirSize) {
  const std::string xml = TaskWith("<Trigger Type=\"-1\"/>");
  const std::size_t padding = NoxAgent::MaxTaskDocumentBytes - xml.size();
  EXPECT_TRUE(Check(xml + std::string(padding, ' ')).empty());
  const auto problems = Check(xml + std::string(padding + 1, ' '));
  ASSERT_EQ(1U, problems.size());
  EXPECT_EQ(TaskDocumentSeverity::Error, problems[0].m_Severity);
}

TEST(TaskDocumentCheck, RefusesWhatCannotBeWrittenInAscii) {
  const auto problems = Check("<Task><!-- \xC3\xA9 --></Task>");
  EXPECT_TRUE(HasTaskDocumentProblem(problems, TaskDocumentSeverity::Error));
  EXPECT_TRUE(Mentions(problems, "line 1, column 12: a character outside ASCII in a comment"));
}

TEST(TaskDocumentCheck, SurvivesNestingBeyondTheParsersBounds) {
  std::string deep;
  for (int i = 0; i < 100000; ++i) {
    deep += "<a>";
  }
  const auto problems = Check("<Task>" + deep);
  ASSERT_EQ(1U, problems.size());
  EXPECT_EQ(TaskDocumentSeverity::Error, problems[0].m_Severity);
}

struct SkippedStartRow {
  const char* m_Zone;
  const char* m_Trigger;
  const char* m_Expected;  // part of the problem; empty for no problem
};

class TaskDocumentCheckSkippedStart : public testing::TestWithParam<SkippedStartRow> {};

TEST_P(TaskDocumentCheckSkippedStart, IsFoundOnDaysOnWhichTheTriggerFires) {
  const SkippedStartRow& row = GetParam();
  const VirtualTime::Zone zone(row.m_Zone);
  const auto problems = Check(TaskWith(row.m_Trigger));
  if (*row.m_Expected == '\0') {
    EXPECT_TRUE(problems.empty()) << row.m_Zone << row.m_Trigger << Describe("", problems);
  } else {
    EXPECT_TRUE(Mentions(problems, row.m_Expected))
        << row.m_Zone << row.m_Trigger << Describe("", problems);
  }
}

using TestSupport::Berlin;
constexpr const char* MidnightGap = "<+00>0<+01>,M3.4.0/0,M10.4.0/1";

const SkippedStartRow SkippedStartRows[] = {
    {"UTC0", "<Trigger Type='1'><BeginDate>2026/07/06 02:30:00</BeginDate></Trigger>", ""},
    {Berlin, "<Trigger Type='1'><BeginDate>2026/07/06 02:30:00</BeginDate></Trigger>",
     "there is no 2027-03-28 02:30:00"},
    {Berlin, "<Trigger Type='1'><BeginDate>2026/07/06 03:00:00</BeginDate></Trigger>", ""},
    {Berlin,
     "<Trigger Type='1'><BeginDate>2026/07/06 02:30:00</BeginDate>"
     "<EndDate>2027-03-28 00:00:00</EndDate></Trigger>",
     ""},
    // The clocks go forward on Sundays, so a weekly trigger on Mondays never meets it.
    {Berlin,
     "<Trigger Type='2'><BeginDate>2026/07/06 02:30:00</BeginDate>"
     "<DaysOfWeek>2</DaysOfWeek></Trigger>",
     ""},
    {Berlin,
     "<Trigger Type='2'><BeginDate>2026/07/06 02:30:00</BeginDate>"
     "<DaysOfWeek>1</DaysOfWeek></Trigger>",
     "there is no 2027-03-28 02:30:00"},
    {Berlin,
     "<Trigger Type='3'><BeginDate>2026/07/01 02:30:00</BeginDate>"
     "<DaysOfMonth>1</DaysOfMonth><MonthsOfYear>4095</MonthsOfYear></Trigger>",
     ""},
    {Berlin,
     "<Trigger Type='4'><BeginDate>2026/07/06 02:30:00</BeginDate><Week>5</Week>"
     "<DaysOfWeek>1</DaysOfWeek><MonthsOfYear>4</MonthsOfYear></Trigger>",
     "there is no 2027-03-28 02:30:00"},
    {Berlin, "<Trigger Type='0'><BeginDate>2027/03/28 02:30:00</BeginDate></Trigger>",
     "there is no 2027-03-28 02:30:00"},
    {Berlin, "<Trigger Type='1'><BeginDate>2026/3/29 2:30:00</BeginDate></Trigger>",
     "every start has that time of day"},
    {MidnightGap, "<Trigger Type='1'><BeginDate>2026-07-06</BeginDate></Trigger>",
     "there is no 2027-03-28 00:00:00"}};

INSTANTIATE_TEST_SUITE_P(Rows, TaskDocumentCheckSkippedStart, testing::ValuesIn(SkippedStartRows));

struct ValueRow {
  const char* m_Trigger;
  const char* m_Expected;
};

class TaskDocumentCheckValue : public testing::TestWithParam<ValueRow> {};

TEST_P(TaskDocumentCheckValue, IsToldAsTheSchedulerReadsIt) {
  const VirtualTime::Zone zone(NewYork);
  const auto problems = Check(TaskWith(GetParam().m_Trigger));
  EXPECT_TRUE(Mentions(problems, GetParam().m_Expected))
      << GetParam().m_Trigger << Describe("", problems);
}

const ValueRow ValueRows[] = {
    {"<Trigger Type='-1' KillAtEnd='1 '/>", "no problems"},
    {"<Trigger Type='-1' KillAtEnd='1x'/>", "\"1x\" is not a number; it is read as 0"},
    {"<Trigger Type='-1' KillAtEnd='4294967297'/>", "it is read as 2147483647"},
    {"<Trigger Type='-1' Disabled='nope'/>", "the trigger is not disabled"},
    {"<Trigger Type='-1'><BeginDate>2026-07-06</BeginDate></Trigger>",
     "BeginDate has no part in a trigger of type -1"},
    {"<Trigger Type='1' Duration='-5'><BeginDate>2026-07-06</BeginDate></Trigger>",
     "the Duration is negative; the trigger does not repeat"},
    {"<Trigger Type='1'><BeginDate>2026-01-05</BeginDate>"
     "<EndDate>2026-01-05</EndDate></Trigger>",
     "EndDate is the same as BeginDate"},
    {"<Trigger Type='1'><BeginDate>2040-01-05</BeginDate></Trigger>",
     "BeginDate \"2040-01-05\" cannot be read"},
    {"<Trigger Type='4'><BeginDate>2026-01-05</BeginDate><Week>5</Week>"
     "<DaysOfWeek>0</DaysOfWeek></Trigger>",
     "MonthsOfYear selects nothing"},
    {"<Trigger Type='3'><BeginDate>2026-01-05</BeginDate><DaysOfMonth>1073741824"
     "</DaysOfMonth><MonthsOfYear>1320</MonthsOfYear></Trigger>",
     "none of the months in MonthsOfYear has a day of DaysOfMonth"},
    {"<Trigger Type='3'><BeginDate>2027-01-31</BeginDate><DaysOfMonth>1073741824"
     "</DaysOfMonth><MonthsOfYear>1321</MonthsOfYear></Trigger>",
     "no problems"},
    {"<Group><Trigger Type='-1'/></Group>", "a Trigger inside \"Group\""}};

INSTANTIATE_TEST_SUITE_P(Rows, TaskDocumentCheckValue, testing::ValuesIn(ValueRows));

}  // namespace NoxAgentTest
