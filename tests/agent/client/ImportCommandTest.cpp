// Crontabs brought over. It is the 15th of June 2026, two in the afternoon in Central Europe.
#include "tests/agent/client/ClientFixture.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace NoxAgentTest {

namespace {

constexpr const char* Crontab =
    "# a comment\n"
    "MAILTO=ada\n"
    "\n"
    "30 2 * * * /usr/bin/backup --full\n"
    "*/10 8-17 * * 1-5 /usr/bin/poll > /dev/null\n"
    "@reboot /usr/bin/startup\n"
    "0 3 */2 * 1 /usr/bin/odd\n"
    "0 5 * 1,7 1 /usr/bin/monday\n";

class ImportCommand : public Client {
 protected:
  int Import(const std::string& crontab, std::vector<std::string> options = {}) {
    options.insert(options.begin(), {"import", "crontab", "-"});
    return Run(options, crontab);
  }

  void ExpectOut(const std::string& words) const {
    EXPECT_NE(std::string::npos, Out().find(words)) << "\"" << words << "\" in\n" << Out();
  }
};

}  // namespace

TEST_F(ImportCommand, MakesTasksAndJobsAndAccountsForEachLine) {
  EXPECT_EQ(1, Import(Crontab)) << "two lines are refused";
  EXPECT_EQ("", Err());
  ExpectOut(
      "LINE  TASK    STATE            RUNS\n"
      "4     backup  added, disabled  daily at 02:30\n"
      "5     poll    added, disabled  every 10 min from 08:00 until 17:50 on weekdays\n"
      "8     monday  added, disabled  mon in jan,jul at 05:00\n");
  ExpectOut("line 6 is refused: @reboot is no time");
  ExpectOut("    @reboot /usr/bin/startup\n");
  ExpectOut("line 7 is refused: the day of the month and the weekday must both match");
  ExpectOut("line 2: nothing is mailed");
  ExpectOut("8 lines: 3 tasks, 2 refused, 1 settings, 2 comments and blank lines.\n");
  EXPECT_EQ(
      "[Job]\ncommand = /usr/bin/backup\narguments = --full\nretry = never\n\n"
      "[Environment]\nMAILTO = ada\n",
      m_Agent.Job("backup"));
  EXPECT_EQ(0U, m_Agent.Document("backup").rfind("<Task Enabled=\"0\">", 0));
}

TEST_F(ImportCommand, ProvesTheRunsOfTwoYears) {
  EXPECT_EQ(0, Import("30 2 * * * a\n0 8 * * * b\n30 23 * * * c\n")) << Err();
  ExpectOut(
      "a: the line names 731 runs in two years, and so does the task, but for these:\n"
      "    2026-10-25 02:30:00 +0100 does not come\n"
      "    2027-03-28 03:30:00 +0200 comes in addition\n");
  ExpectOut("b: the line names 731 runs in two years, and so does the task\n");
  ExpectOut(
      "c: the line names 731 runs in two years, and so does the task, but for these:\n"
      "    2027-03-28 23:30:00 +0200 does not come\n");
}

TEST_F(ImportCommand, ADryRunAddsNothingAndNeedsNoAgent) {
  EXPECT_EQ(0, Import("@daily /bin/true\n", {"--dry-run"})) << Err();
  ExpectOut("1     true  not added  daily at 00:00\n");
  EXPECT_FALSE(m_Agent.Job("true"));
  EXPECT_EQ(
      0, RunAsGiven({"--socket", (m_Dir / "none").string(), "import", "crontab", "-", "--dry-run"},
                    "@daily /bin/true\n"))
      << Err();
}

TEST_F(ImportCommand, EnablesTheTasksWhenTold) {
  EXPECT_EQ(0, Import("@daily /bin/true\n", {"--enable"})) << Err();
  ExpectOut("1     true  added  daily at 00:00\n");
  EXPECT_EQ(0U, m_Agent.Document("true").rfind("<Task Enabled=\"1\">", 0));
}

TEST_F(ImportCommand, LeavesAloneWhatWasImportedBefore) {
  EXPECT_EQ(0, Import("@daily /bin/true\n"));
  const std::string before = m_Agent.Document("true");
  EXPECT_EQ(0, Import("@daily /bin/true\n0 3 * * * /bin/true -x\n", {"--enable"}));
  ExpectOut(
      "1     true    is there already  daily at 00:00\n"
      "2     true-2  added             daily at 03:00\n");
  EXPECT_EQ(before, m_Agent.Document("true"));
}

TEST_F(ImportCommand, TakesANameThatIsFree) {
  m_Agent.SetTask("true", {"<Task/>", true, {}});
  EXPECT_EQ(0, Import("@daily /bin/true\n"));
  ExpectOut("1     true-2  added, disabled  daily at 00:00\n");
  EXPECT_EQ("<Task/>", m_Agent.Document("true"));
}

TEST_F(ImportCommand, KnowsTheColumnOfUsersByThePlaceOfTheFile) {
  std::filesystem::create_directory(m_Dir / "cron.d");
  m_Dir.Write("cron.d/backup", "30 2 * * * ada /usr/bin/backup\n");
  EXPECT_EQ(0, Run({"import", "crontab", (m_Dir / "cron.d/backup").string()})) << Err();
  EXPECT_EQ("[Job]\ncommand = /usr/bin/backup\nuser = ada\nretry = never\n", m_Agent.Job("backup"));
  EXPECT_EQ(0, Import("30 2 * * * ada /usr/bin/poll\n", {"--system"}));
  EXPECT_EQ("[Job]\ncommand = /usr/bin/poll\nuser = ada\nretry = never\n", m_Agent.Job("poll"));
  EXPECT_EQ(0, Import("30 2 * * * /usr/bin/report\n", {"--user", "ada"}));
  EXPECT_EQ("[Job]\ncommand = /usr/bin/report\nuser = ada\nretry = never\n", m_Agent.Job("report"));
}

TEST_F(ImportCommand, TellsATaskThatCannotBeAddedAndGoesOn) {
  m_Agent.FailToAdd("a");
  EXPECT_EQ(1, Import("@daily a\n@daily b\n"));
  ExpectOut("line 1 is refused: the agent refuses: the disk is full\n    @daily a\n");
  EXPECT_FALSE(m_Agent.Job("a"));
  EXPECT_TRUE(m_Agent.Job("b"));
}

TEST_F(ImportCommand, IsForThoseWhoMayWriteJobs) {
  m_Agent.KeepJobs();
  EXPECT_EQ(1, Import("@daily a\n@daily b\n"));
  ExpectError("jobs are for root");
}

TEST_F(ImportCommand, ADryRunIsAlsoForThoseWhoMayNotReadJobs) {
  m_Agent.SetTask("true", {"<Task/>", true, {}});
  m_Agent.KeepJobs();
  EXPECT_EQ(0, Import("@daily /bin/true\n", {"--dry-run"})) << Err();
  ExpectOut("1     true-2  not added  daily at 00:00\n");
}

TEST_F(ImportCommand, RefusesOtherFormatsAndFilesThatAreNotThere) {
  EXPECT_EQ(2, Run({"import", "calendar", "-"}));
  ExpectError("\"calendar\" cannot be imported; crontab can");
  EXPECT_EQ(2, Run({"import", "crontab", (m_Dir / "none").string()}));
  ExpectError("cannot read");
}

}  // namespace NoxAgentTest
