#include "agent/crontab/CrontabFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

namespace NoxAgentTest {

using namespace NoxAgent;
using ::testing::ElementsAre;
using ::testing::Pair;

namespace {

const CrontabOrigin Ada{false, "ada", "Europe/Berlin"};
const CrontabOrigin System{true, "", "Europe/Berlin"};

std::string Written(const CrontabEntry& entry) {
  if (const auto* const setting = std::get_if<CrontabSetting>(&entry.m_Content)) {
    return "set " + setting->m_Name + "=" + setting->m_Value;
  }
  if (const auto* const task = std::get_if<CrontabTask>(&entry.m_Content)) {
    return task->m_Times + " | " + task->m_User + " | " + task->m_Command +
           (task->m_Input ? " | " + *task->m_Input : "");
  }
  if (const auto* const refusal = std::get_if<CronRefusal>(&entry.m_Content)) {
    return "refused: " + refusal->m_Reason;
  }
  return "comment";
}

std::vector<std::string> ReadLines(const std::string& text, const CrontabOrigin& origin = Ada) {
  std::vector<std::string> lines;
  for (const CrontabEntry& entry : ReadCrontab(text, origin)) {
    lines.push_back(Written(entry));
  }
  return lines;
}

const CrontabTask& TaskOf(const CrontabEntry& entry) {
  return std::get<CrontabTask>(entry.m_Content);
}

}  // namespace

TEST(CrontabFile, AccountsForEachLine) {
  const auto entries =
      ReadCrontab("# all\n\n  \t\nA=1\n0 5 * * * run\n99 * * * * x\n@daily y", Ada);
  ASSERT_EQ(7U, entries.size());
  for (std::size_t i = 0; i < entries.size(); ++i) {
    EXPECT_EQ(i + 1, entries[i].m_Line);
  }
  EXPECT_EQ("# all", entries[0].m_Text);
  EXPECT_EQ("99 * * * * x", entries[5].m_Text);
  EXPECT_THAT(ReadLines("# all\n\n  \t\nA=1\n0 5 * * * run\n99 * * * * x\n@daily y"),
              ElementsAre("comment", "comment", "comment", "set A=1", "0 5 * * * | ada | run",
                          "refused: the minute \"99\" in column 1: 99 is not between 0 and 59",
                          "@daily | ada | y"));
}

TEST(CrontabFile, IsReadToItsEndWithOrWithoutALineEnd) {
  EXPECT_THAT(ReadLines(""), ElementsAre());
  EXPECT_THAT(ReadLines("\n"), ElementsAre("comment"));
  EXPECT_THAT(ReadLines("@hourly a\n"), ElementsAre("@hourly | ada | a"));
  EXPECT_THAT(ReadLines("@hourly a"), ElementsAre("@hourly | ada | a"));
}

TEST(CrontabFile, TakesTheUserOfTheLineInASystemsCrontab) {
  EXPECT_THAT(ReadLines("17 *\t* * *\troot    cd / && run-parts --report /etc/cron.hourly\n"
                        "@weekly www-data  /usr/bin/php x\n",
                        System),
              ElementsAre("17 *\t* * * | root | cd / && run-parts --report /etc/cron.hourly",
                          "@weekly | www-data | /usr/bin/php x"));
}

TEST(CrontabFile, TellsThatThereIsNoUserInASystemsCrontab) {
  EXPECT_THAT(ReadLines("0 5 * * * /usr/bin/backup --full\n0 0 5 * * * root backup\n", System),
              ElementsAre("refused: \"/usr/bin/backup\" is no name of a user",
                          "refused: \"*\" is no name of a user"));
}

TEST(CrontabFile, WantsACommand) {
  EXPECT_THAT(
      ReadLines("0 5 * * *\n0 5 * * *  \n@daily\n0 5 * *\n0 5 * * * %x\n"),
      ElementsAre("refused: there is no command", "refused: there is no command",
                  "refused: there is no command", "refused: there are 4 fields instead of five",
                  "refused: there is no command"));
  EXPECT_THAT(ReadLines("0 5 * * * root\n", System), ElementsAre("refused: there is no command"));
}

TEST(CrontabFile, NamesColumnsOfTheLine) {
  EXPECT_THAT(ReadLines("  0 5 * x * run"),
              ElementsAre("refused: the month \"x\" in column 9: \"x\" is neither a number nor a "
                          "name of three letters, such as feb"));
}

TEST(CrontabFile, ReadsSettings) {
  EXPECT_THAT(
      ReadLines("A=1\n  B = two words  \nC=\" kept \"\nD='it is \"x\"'\n\"E\"=5\nF=\n"
                "G=\"\"\nH=a=b\nI=$A ~ %\nJ=it's\n"),
      ElementsAre("set A=1", "set B=two words", "set C= kept ", "set D=it is \"x\"", "set E=5",
                  "set F=", "set G=", "set H=a=b", "set I=$A ~ %", "set J=it's"));
}

TEST(CrontabFile, RefusesSettingsThatCannotBe) {
  EXPECT_THAT(ReadLines("A=\"open\nB=\"a\" b\n1X=2\n=3\n\"A B\"=4\nA-B=5"),
              ElementsAre("refused: the value of A has a quote that is not closed",
                          "refused: the value of B goes on behind its closing quote",
                          "refused: \"1X\" is no name for a variable",
                          "refused: \"\" is no name for a variable",
                          "refused: \"A B\" is no name for a variable",
                          "refused: \"A-B\" is no name for a variable"));
}

TEST(CrontabFile, TakesSettingsForTheLinesBelowThem) {
  const auto entries = ReadCrontab(
      "@daily a\nPATH=/bin\nMAILTO=root\n@daily b\nPATH=/usr/bin\nLOGNAME=eve\n@daily c\n", Ada);
  EXPECT_THAT(TaskOf(entries[0]).m_Environment, ElementsAre());
  EXPECT_THAT(TaskOf(entries[3]).m_Environment,
              ElementsAre(Pair("MAILTO", "root"), Pair("PATH", "/bin")));
  EXPECT_THAT(TaskOf(entries[6]).m_Environment,
              ElementsAre(Pair("MAILTO", "root"), Pair("PATH", "/usr/bin")));
}

TEST(CrontabFile, NotesWhatASettingDoesNotBring) {
  const struct {
    const char* m_Line;
    bool m_HasNote;
  } rows[] = {{"MAILTO=root", true},     {"MAILTO=\"\"", false}, {"RANDOM_DELAY=30", true},
              {"RANDOM_DELAY=0", false}, {"LOGNAME=x", true},    {"SHELL=/bin/bash", false}};
  for (const auto& row : rows) {
    const auto entries = ReadCrontab(row.m_Line, Ada);
    EXPECT_EQ(row.m_HasNote, !std::get<CrontabSetting>(entries[0].m_Content).m_Note.empty())
        << row.m_Line;
  }
}

TEST(CrontabFile, SplitsOffTheInput) {
  EXPECT_THAT(ReadLines("@daily mail root%Dear all,%%it is late.\n@daily date +\\%F\n"
                        "@daily cat%100\\% \\a%\n@daily cat%\n@daily printf '\\n\\\\%x'\n"),
              ElementsAre("@daily | ada | mail root | Dear all,\n\nit is late.\n",
                          "@daily | ada | date +%F", "@daily | ada | cat | 100% \\a\n",
                          "@daily | ada | cat | ", "@daily | ada | printf '\\n\\%x'"));
}

TEST(CrontabFile, RefusesTasksOfAnotherZone) {
  EXPECT_THAT(
      ReadLines(
          "CRON_TZ=Europe/Berlin\n@daily a\nCRON_TZ=Asia/Tokyo\n@daily b\nCRON_TZ=\n@daily c\n"),
      ElementsAre("set CRON_TZ=Europe/Berlin", "@daily | ada | a", "set CRON_TZ=Asia/Tokyo",
                  "refused: line 3 sets CRON_TZ to Asia/Tokyo, and tasks run by the machine's "
                  "zone, Europe/Berlin",
                  "set CRON_TZ=", "@daily | ada | c"));
}

TEST(CrontabFile, KnowsTheZoneOfMachinesWithoutOne) {
  EXPECT_THAT(ReadLines("CRON_TZ=UTC\n@daily a", {false, "ada", "Etc/UTC"}),
              ElementsAre("set CRON_TZ=UTC", "@daily | ada | a"));
}

TEST(CrontabFile, RefusesWhatIsNoText) {
  EXPECT_THAT(
      ReadLines("@daily a\r\n\r\n# c\r\n@daily a\x01\n@daily caf\xe9\n@daily caf\xc3\xa9\n"),
      ElementsAre("refused: the line ends with a carriage return, which the command would be given",
                  "comment", "comment", "refused: a control character in column 9",
                  "refused: the line is not UTF-8", "@daily | ada | caf\xc3\xa9"));
}

TEST(CrontabFile, OfRandomBytesIsReadToItsEnd) {
  const std::string alphabet = "*/-,%\\\"'= \t\n\n@#09aZ$_.\x80\xff\r";
  std::mt19937 random(11);
  for (int round = 0; round < 3000; ++round) {
    std::string text = round % 2 == 0 ? "" : "* * * * * ";
    for (int i = 0; i < 60; ++i) {
      text += alphabet[random() % alphabet.size()];
    }
    const auto entries = ReadCrontab(text, round % 3 == 0 ? System : Ada);
    std::string joined;
    for (const CrontabEntry& entry : entries) {
      joined += entry.m_Text + "\n";
    }
    ASSERT_EQ(text.ends_with('\n') ? text : text + "\n", joined);
  }
}

}  // namespace NoxAgentTest
