// noxctl create, describe and edit, and delete with the job. It is the 15th of June 2026, two in
// the afternoon in Central Europe; the real nox-simulate tells the next runs.
#include "tests/agent/client/ClientFixture.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

namespace NoxAgentTest {

namespace {

class CreateCommand : public Client {
 protected:
  static std::vector<std::string> Line(std::vector<std::string> when,
                                       const std::vector<std::string>& command = {"/bin/true"}) {
    when.insert(when.begin(), "create");
    when.emplace_back("--");
    when.insert(when.end(), command.begin(), command.end());
    return when;
  }

  void ExpectNothingAdded() const {
    for (const FakeRequest& request : m_Agent.Requests()) {
      EXPECT_EQ(std::string::npos, request.m_Target.find("add")) << request.m_Target;
    }
    EXPECT_FALSE(m_Agent.Job("backup"));
  }

  // An edit that failed has told where the files are; they are removed here.
  void ExpectKept(const std::string& file) const {
    const std::string words = "what was edited is in ";
    const std::size_t at = Err().find(words);
    ASSERT_NE(std::string::npos, at) << Err();
    const std::size_t begin = at + words.size();
    const std::string kept = Err().substr(begin, Err().find_first_of("\n\"", begin) - begin);
    EXPECT_TRUE(std::filesystem::exists(kept + "/" + file)) << kept;
    (void)std::filesystem::remove_all(kept);
  }

  std::string JobOf(const std::vector<std::string>& command,
                    std::vector<std::string> options = {}) {
    options.insert(options.begin(), {"job", "now"});
    EXPECT_EQ(0, Run(Line(options, command))) << Err();
    m_Agent.RemoveTask("job");
    return m_Agent.Job("job").value_or("none");
  }
};

/// An editor that is a line of shell; its files are $1 and $2.
class Editor {
 public:
  explicit Editor(const std::string& script) {
    (void)::unsetenv("VISUAL");
    (void)::setenv("EDITOR", ("f() { " + script + "; }; f").c_str(), 1);
  }
  ~Editor() { (void)::unsetenv("EDITOR"); }
  Editor(const Editor&) = delete;
  Editor& operator=(const Editor&) = delete;
};

constexpr const char* DailyAtEight =
    "<Trigger Type=\"1\"><BeginDate>2026/06/16 08:00:00</BeginDate></Trigger>";

}  // namespace

TEST_F(CreateCommand, WritesJobAndTaskAndTellsWhatItUnderstood) {
  ASSERT_EQ(0, Run(Line({"backup", "daily", "at", "02:30"}, {"/usr/bin/backup", "--full"})))
      << Err();
  EXPECT_EQ(
      "backup: daily at 02:30\n"
      "  next runs  2026-06-16 02:30:00 +0200\n"
      "             2026-06-17 02:30:00 +0200\n"
      "             2026-06-18 02:30:00 +0200\n"
      "  command    /usr/bin/backup --full\n"
      "  note       The clocks leave out 02:30 on 2027-03-28: it starts at 03:30 then.\n",
      Out());
  EXPECT_EQ("[Job]\ncommand = /usr/bin/backup\narguments = --full\nretry = never\n",
            m_Agent.Job("backup"));
  EXPECT_EQ(
      "<Task Enabled=\"1\">\n"
      "\t<HandlerCLSID>{7C0A1D52-3B4E-4F6A-9A51-2D8E6C9B4F10}</HandlerCLSID>\n"
      "\t<Schedule>\n"
      "\t\t<Trigger Type=\"1\">\n"
      "\t\t\t<BeginDate>2026/06/16 02:30:00</BeginDate>\n"
      "\t\t\t<DaysInterval>1</DaysInterval>\n"
      "\t\t</Trigger>\n"
      "\t</Schedule>\n"
      "</Task>\n",
      m_Agent.Document("backup"));
}

TEST_F(CreateCommand, AnswersInJson) {
  ASSERT_EQ(0, Run(Line({"backup", "once", "2026-06-16", "09:00", "--json"}))) << Err();
  const Json answer = JsonOut();
  EXPECT_EQ("backup", answer.At("id"));
  EXPECT_EQ("once 2026-06-16 09:00", answer.At("words"));
  EXPECT_EQ("2026-06-16 09:00:00 +0200", answer.At("nextRuns").At(0).At("local"));
}

TEST_F(CreateCommand, TakesTheScheduleAsOneArgument) {
  ASSERT_EQ(0, Run(Line({"backup", "every 10 min from 08:00 until 18:00 on weekdays"}))) << Err();
  EXPECT_EQ(0U, Out().rfind("backup: every 10 min from 08:00 until 18:00 on weekdays\n"
                            "  next runs  2026-06-15 14:10:00 +0200\n",
                            0))
      << Out();
}

TEST_F(CreateCommand, TellsTimesInTheZoneOfTheAgent) {
  m_Agent.SetStatus({{"zone", "EST5EDT,M3.2.0,M11.1.0"}, {"zoneName", "Boston"}});
  ASSERT_EQ(0, Run(Line({"backup", "daily at 02:00"}))) << Err();
  EXPECT_NE(std::string::npos, Out().find("2026-06-16 02:00:00 -0400")) << Out();
  EXPECT_NE(std::string::npos, Out().find("Times are those of the agent's zone, Boston.")) << Out();
}

TEST_F(CreateCommand, AddsItDisabledWithDescriptionAndSpan) {
  ASSERT_EQ(0, Run(Line({"Nightly & more", "daily at 02:30", "--id", "backup", "--disabled",
                         "--from", "2026-07-01", "--until", "2026-07-31"})))
      << Err();
  const std::string document = m_Agent.Document("backup");
  for (const char* const part :
       {"<Task Enabled=\"0\">", "Description=\"Nightly &amp; more\"",
        "<BeginDate>2026/07/01 02:30:00</BeginDate>", "<EndDate>2026/07/31 23:59:59</EndDate>"}) {
    EXPECT_NE(std::string::npos, document.find(part)) << document;
  }
  EXPECT_NE(std::string::npos, Out().find("noxctl enable backup")) << Out();
}

TEST_F(CreateCommand, ADryRunAddsNothingAndNeedsNoAgent) {
  ASSERT_EQ(0, Run(Line({"backup", "daily at 02:30", "--dry-run"}))) << Err();
  EXPECT_NE(std::string::npos, Out().find("\n# backup.job\n[Job]\ncommand = /bin/true\n")) << Out();
  ExpectNothingAdded();
  auto line = Line({"backup", "daily at 02:30", "--dry-run"});
  line.insert(line.begin(), {"--socket", (m_Dir / "none").string()});
  EXPECT_EQ(0, RunAsGiven(line)) << Err();
}

TEST_F(CreateCommand, RefusesWordsItDoesNotUnderstand) {
  EXPECT_EQ(2, Run(Line({"backup", "dialy", "at", "02:30"})));
  ExpectError(
      "\"[dialy] at 02:30\" cannot be read at \"dialy\"; there could stand now, once, daily");
  EXPECT_EQ(2, Run(Line({"backup"})));
  ExpectError("it is not said when");
  EXPECT_EQ(2, Run({"create", "backup", "daily", "at", "02:30"}));
  ExpectError("it is not said what to run; put the command behind --");
  EXPECT_EQ(2, Run(Line({"a/b", "now"})));
  ExpectError("the task cannot be called \"a/b\"");
  ExpectNothingAdded();
}

TEST_F(CreateCommand, DoesNotReplaceATaskUnlessTold) {
  m_Agent.SetTask("backup", {TaskXml(DailyAtEight), true, {}});
  EXPECT_EQ(1, Run(Line({"backup", "daily at 02:30"})));
  ExpectError("there is a task backup already");
  ExpectNothingAdded();
  EXPECT_EQ(0, Run(Line({"backup", "daily at 02:30", "--replace"}))) << Err();
  EXPECT_TRUE(m_Agent.Job("backup"));
}

TEST_F(CreateCommand, TakesTheJobBackWhenTheTaskIsRefused) {
  m_Agent.RefuseToAdd("backup");
  EXPECT_EQ(2, Run(Line({"backup", "now"})));
  ExpectError("no such handler");
  EXPECT_FALSE(m_Agent.Job("backup"));

  m_Agent.FailToAdd("report");
  m_Agent.SetJob("report", "the old one");
  EXPECT_EQ(1, Run(Line({"report", "now"})));
  ExpectError("the disk is full");
  EXPECT_EQ("the old one", m_Agent.Job("report"));
}

TEST_F(CreateCommand, AddsNoTaskWhoseJobItMayNotWrite) {
  m_Agent.KeepJobs();
  EXPECT_EQ(1, Run(Line({"backup", "now"})));
  ExpectError("jobs are for root");
  ExpectNothingAdded();
}

TEST_F(CreateCommand, QuotesWhatTheJobsReaderWouldTakeApart) {
  EXPECT_EQ("[Job]\ncommand = ls\narguments = -l 'a b' \"it's\" '' 'x\"y'\nretry = never\n",
            JobOf({"ls", "-l", "a b", "it's", "", "x\"y"}));
}

TEST_F(CreateCommand, HandsALineOfShellToTheShell) {
  EXPECT_EQ("[Job]\ncommand = /bin/sh\narguments = -c 'cd / && ls > out'\nretry = never\n",
            JobOf({"cd / && ls > out"}));
}

TEST_F(CreateCommand, RefusesWordsThatNeedAShellAndHaveNone) {
  EXPECT_EQ(2, Run(Line({"backup", "now"}, {"cd", "/srv", "&&", "ls", "-l"})));
  ExpectError(
      "\"&&\" is for a shell, and the words behind -- are run without one; write the whole line in "
      "quotes for a shell: -- 'cd /srv && ls -l'");
  for (const char* const word : {"&&", "||", ">", ">>", "2>", "2>&1", "&"}) {
    EXPECT_EQ(2, Run(Line({"backup", "now"}, {"/bin/echo", word, "out"}))) << word;
    ExpectError(std::string("\"") + word + "\" is for a shell");
  }
  EXPECT_EQ(2, Run(Line({"backup", "now"}, {"echo", "it's", "&&", "ls"})));
  ExpectError("write the whole line in quotes for a shell\n");
  EXPECT_EQ(2, Run(Line({"backup", "now"}, {"cd", "/srv"})));
  ExpectError(
      "\"cd\" is a word of the shell's and no program; the directory in which a command "
      "runs is said with --directory");
  EXPECT_EQ(2, Run(Line({"backup", "now"}, {"ulimit", "-n", "64"})));
  ExpectError("write the whole line in quotes for a shell: -- 'ulimit -n 64'");
  ExpectNothingAdded();
}

TEST_F(CreateCommand, LeavesAProgramTheArgumentsThatAreItsOwn) {
  EXPECT_NE(std::string::npos,
            JobOf({"find", "/tmp", "-exec", "rm", "{}", ";"}).find("command = find\n"));
  EXPECT_NE(std::string::npos, JobOf({"grep", "|", "/tmp/table"}).find("command = grep\n"));
  EXPECT_NE(std::string::npos, JobOf({"test", "a", "<", "b"}).find("command = test\n"));
  EXPECT_NE(std::string::npos, JobOf({"echo", "a && b", "R&D"}).find("command = echo\n"));
}

TEST_F(CreateCommand, MakesAPathAbsolute) {
  const std::string here = std::filesystem::current_path().string();
  EXPECT_EQ("[Job]\ncommand = " + here + "/backup.sh\nretry = never\n", JobOf({"./backup.sh"}));
}

TEST_F(CreateCommand, WritesKeysAndVariablesOfTheJob) {
  EXPECT_EQ(
      "[Job]\ncommand = ls\nuser = ada\ntimeout = 30s\nretry = never\noverlap = "
      "queue\n\n[Environment]\nA = b=c\n",
      JobOf({"ls"},
            {"--user", "ada", "--timeout", "30s", "--set", "overlap=queue", "--env", "A=b=c"}));
  EXPECT_EQ(2, Run(Line({"job", "now", "--timeout", "soon"})));
  ExpectError("there can be no such job: job:3: timeout: is to be a number of seconds");
  EXPECT_EQ(2, Run(Line({"job", "now", "--env", "A"})));
  ExpectError("--env \"A\" lacks a name or a value");
  EXPECT_EQ(2, Run(Line({"job", "now"}, {"ls", "a\nb"})));
  ExpectError("a job's values are one line");
}

TEST_F(CreateCommand, TakesATimeoutInTheWordsOfASchedule) {
  for (const char* const timeout : {"1h30m", "1 h 30 min", "90 min", "5400"}) {
    const std::string job = JobOf({"/bin/true"}, {"--timeout", timeout});
    EXPECT_NE(std::string::npos,
              job.find(timeout == std::string("5400") ? "timeout = 5400\n" : "timeout = 90m\n"))
        << timeout << ":\n"
        << job;
  }
  EXPECT_EQ(2, Run(Line({"backup", "now", "--timeout", "1h30"})));
  ExpectError("timeout: is to be a number of seconds");
}

TEST_F(CreateCommand, DescribeSaysADocumentInWords) {
  const std::string file = FileWith(TaskXml(DailyAtEight, "2026-06-15 08:00:00 Ok"));
  EXPECT_EQ(0, Run({"describe", file})) << Err();
  EXPECT_EQ("daily at 08:00\n", Out());
  EXPECT_EQ(0, Run({"describe", "--json", file})) << Err();
  EXPECT_EQ("daily at 08:00", JsonOut().At("words"));
}

TEST_F(CreateCommand, DescribeKnowsThatANewTaskRunsAtOnceWhenItsBeginHasPassed) {
  constexpr const char* Past =
      "<Trigger Type=\"1\"><BeginDate>2026/06/01 08:00:00</BeginDate></Trigger>";
  EXPECT_EQ(0, Run({"describe", FileWith(TaskXml(Past))})) << Err();
  EXPECT_EQ("now and daily at 08:00\n", Out());
  constexpr const char* OnAWednesday =
      "<Trigger Type=\"2\"><BeginDate>2026/06/17 08:00:00</BeginDate>"
      "<DaysOfWeek>2</DaysOfWeek></Trigger>";
  EXPECT_EQ(0, Run({"describe", FileWith(TaskXml(OnAWednesday))})) << Err();
  EXPECT_EQ("mon at 08:00 and once 2026-06-17 08:00\n", Out());
}

TEST_F(CreateCommand, DescribeTellsApartWhatHasNoWords) {
  constexpr const char* Negative =
      "<Trigger Type=\"1\" Interval=\"10\" Duration=\"-5\">"
      "<BeginDate>2026/06/16 08:00:00</BeginDate></Trigger>";
  EXPECT_EQ(0, Run({"describe", FileWith(TaskXml(std::string(Negative) + DeadTrigger))})) << Err();
  EXPECT_NE(std::string::npos,
            Out().find("Trigger 1 has no words in this language: daily at 08:00"))
      << Out();
  EXPECT_NE(std::string::npos, Out().find("Trigger 2: never")) << Out();
}

TEST_F(CreateCommand, DescribeTellsOfTheAgentsTaskAsTheSchedulerHasIt) {
  m_Agent.SetTask("backup", {TaskXml(DailyAtEight), true, {{"t3", "-1"}, {"t5", "0"}}});
  EXPECT_EQ(0, Run({"describe", "backup"})) << Err();
  EXPECT_EQ("daily at 08:00\nThe task is disabled: until it is enabled nothing runs.\n", Out());
}

TEST_F(CreateCommand, EditWritesDocumentAndJob) {
  m_Agent.SetTask("backup", {TaskXml(DailyAtEight), true, {{"t3", "-1"}, {"t5", "1"}}});
  m_Agent.SetJob("backup", "[Job]\ncommand = ls\n");
  const Editor editor("sed -i s/08:00/09:30/ \"$1\"; sed -i s/ls/df/ \"$2\"");
  EXPECT_EQ(0, Run({"edit", "backup"})) << Err();
  EXPECT_EQ("backup: daily at 09:30\n", Out());
  EXPECT_EQ("[Job]\ncommand = df\n", m_Agent.Job("backup"));
}

TEST_F(CreateCommand, EditAsksAgainUntilBothAreRight) {
  m_Agent.SetTask("backup", {TaskXml(DailyAtEight), true, {{"t3", "-1"}, {"t5", "1"}}});
  m_Agent.SetJob("backup", "[Job]\ncommand = ls\n");
  // The second time it is mended.
  const Editor editor(
      "if grep -q comand \"$2\"; then sed -i s/comand/command/ \"$2\";"
      " else sed -i s/command.*/comand=df/ \"$2\"; fi");
  EXPECT_EQ(0, Run({"edit", "backup"}, "y\n")) << Err();
  EXPECT_NE(std::string::npos, Err().find("backup.job:2: unknown key \"comand\"")) << Err();
  EXPECT_EQ("[Job]\ncommand=df\n", m_Agent.Job("backup"));
}

TEST_F(CreateCommand, EditChangesNothingWhenItIsGivenUp) {
  m_Agent.SetTask("backup", {TaskXml(DailyAtEight), true, {}});
  m_Agent.SetJob("backup", "[Job]\ncommand = ls\n");
  const Editor editor("sed -i s/command/comand/ \"$2\"; sed -i s/08:00/09:30/ \"$1\"");
  EXPECT_EQ(2, Run({"edit", "backup"}, "n\n"));
  EXPECT_NE(std::string::npos, Err().find("nothing was changed")) << Err();
  ExpectKept("backup.job");
  EXPECT_EQ("[Job]\ncommand = ls\n", m_Agent.Job("backup"));
  EXPECT_EQ(TaskXml(DailyAtEight), m_Agent.Document("backup"));
}

TEST_F(CreateCommand, EditTellsThatNothingWasChanged) {
  m_Agent.SetTask("backup", {TaskXml(DailyAtEight), true, {}});
  const Editor editor("true");
  EXPECT_EQ(0, Run({"edit", "backup"})) << Err();
  EXPECT_EQ("nothing was changed\n", Out());
  const Editor failing("false");
  EXPECT_EQ(1, Run({"edit", "backup"}));
  ExpectError("failed: nothing was changed");
  EXPECT_EQ(1, Run({"edit", "none"}));
  ExpectError("there is no task none");
}

TEST_F(CreateCommand, DeleteTakesTheJobAlong) {
  for (const char* const id : {"backup", "report"}) {
    m_Agent.SetTask(id, {TaskXml(DailyAtEight), true, {}});
    m_Agent.SetJob(id, "[Job]\ncommand = ls\n");
  }
  EXPECT_EQ(0, Run({"delete", "backup"})) << Err();
  EXPECT_FALSE(m_Agent.Job("backup"));
  EXPECT_EQ(0, Run({"delete", "report", "--keep-job"})) << Err();
  EXPECT_TRUE(m_Agent.Job("report"));
}

TEST_F(CreateCommand, DeleteTellsOfAJobThatItMayNotDelete) {
  m_Agent.SetTask("backup", {TaskXml(DailyAtEight), true, {}});
  m_Agent.KeepJobs();
  EXPECT_EQ(0, Run({"delete", "backup"}));
  EXPECT_EQ("deleted backup\n", Out());
  EXPECT_NE(std::string::npos,
            Err().find("the task is deleted, its job is not: the agent refuses: jobs are for root"))
      << Err();
}

TEST_F(CreateCommand, TellsRunsThatTheTaskAsAWholeLosesWhenTheClocksChange) {
  EXPECT_EQ(0, Run(Line({"a", "sat at 23:30 and sun at 08:00"}))) << Err();
  EXPECT_NE(
      std::string::npos,
      Out().find("On 2027-03-28, about a change of the clocks, the scheduler passes over 08:00:"))
      << Out();
  EXPECT_EQ(0, Run(Line({"b", "weekends at 08:00,23:30"}))) << Err();
  EXPECT_EQ(std::string::npos, Out().find("passes over")) << "a run of the day leads to the others";
}

TEST_F(CreateCommand, TellsARepetitionThatEndsAtAnotherTimeWhenTheClocksChange) {
  EXPECT_EQ(0, Run(Line({"a", "every 10 min from 22:00 until 06:00"}))) << Err();
  EXPECT_NE(std::string::npos,
            Out().find("On 2026-10-25 the clocks are set back while it repeats from 22:00: it ends "
                       "at 05:00 then, not 06:00, as repetitions count real time.\n"))
      << Out();
  EXPECT_EQ(0, Run(Line({"b", "every 10 min from 22:00 until 06:00 from 2026-11-01"}))) << Err();
  EXPECT_NE(std::string::npos,
            Out().find("On 2027-03-28 the clocks are set on while it repeats from 22:00: it goes "
                       "on until 07:00 then, not 06:00, as repetitions count real time.\n"))
      << Out();
  EXPECT_EQ(0, Run(Line({"d", "every 2 h from 22:00 until 06:00"}))) << Err();
  EXPECT_NE(std::string::npos, Out().find("it ends at 05:00 then, not 06:00")) << Out();
  for (const char* const words :
       {"every 10 min", "every 10 min from 03:00 until 23:00", "cron '*/10 22-23,0-5 * * *'"}) {
    EXPECT_EQ(0, Run(Line({"c", words, "--replace"}))) << Err();
    EXPECT_EQ(std::string::npos, Out().find("while it repeats")) << Out();
  }
}

TEST_F(CreateCommand, RefusesOptionsThatHaveNoRuleToBeFor) {
  EXPECT_EQ(2, Run(Line({"backup", "now", "--from", "2027-01-01"})));
  ExpectError("--from is for rules that do not say so themselves");
  EXPECT_EQ(2, Run(Line({"backup", "daily at 08:00 until 2027-01-01", "--until", "2027-06-01"})));
  ExpectError("--until is for rules that do not say so themselves");
  ExpectNothingAdded();
}

TEST_F(CreateCommand, RefusesWhatADocumentOrAJobWouldNotKeep) {
  EXPECT_EQ(2, Run(Line({"backup", "now", "--description",
                         "a\x01"
                         "b"})));
  ExpectError("control characters");
  EXPECT_EQ(2, Run(Line({"backup", "now", "--description", "\xFF"})));
  ExpectError("no UTF-8");
  EXPECT_EQ(2, Run(Line({"backup", "now", "--env", "A="})));
  ExpectError("a job keeps no empty values");
  EXPECT_EQ(2, Run(Line({"backup", "now", "--env", "A= b"})));
  ExpectError("no blanks around them");
  EXPECT_EQ(2, Run(Line({"backup", "now"}, {"A=1", "/bin/true"})));
  ExpectError("set a variable with --env A=1");
  ExpectNothingAdded();
}

TEST_F(CreateCommand, EditKeepsWhatWasTypedWhenTheAgentCannotTakeIt) {
  m_Agent.SetTask("report", {TaskXml(DailyAtEight), true, {}});
  m_Agent.FailToAdd("report");
  const Editor editor("sed -i s/08:00/09:30/ \"$1\"");
  EXPECT_EQ(1, Run({"edit", "report"}));
  ExpectKept("report.xml");
}

TEST_F(CreateCommand, EditOverwritesNoDocumentThatSomebodyElseChangedMeanwhile) {
  const std::string theirs = TaskXml(DailyAtEight, "", "0");
  m_Agent.SetTask("report", {TaskXml(DailyAtEight), true, {}});
  m_Agent.SetJob("report", "[Job]\ncommand = ls\n");
  m_Agent.SetAfterJobRead([&](FakeAgent& agent) { agent.SetTask("report", {theirs, true, {}}); });
  const Editor editor("sed -i s/08:00/09:30/ \"$1\"; sed -i s/ls/df/ \"$2\"");
  EXPECT_EQ(1, Run({"edit", "report", "--json"}));
  EXPECT_EQ("task-changed", Json::Parse(Err()).At("error").At("code"));
  ExpectKept("report.xml");
  EXPECT_EQ(theirs, m_Agent.Document("report"));
  EXPECT_EQ("[Job]\ncommand = ls\n", m_Agent.Job("report")) << "nothing is edited by half";
}

TEST_F(CreateCommand, EditOverwritesNoJobThatSomebodyElseChangedMeanwhile) {
  m_Agent.SetTask("report", {TaskXml(DailyAtEight), true, {{"t3", "-1"}, {"t5", "1"}}});
  m_Agent.SetJob("report", "[Job]\ncommand = ls\n");
  const std::string theirs = "[Job]\ncommand = pwd\n";
  const auto change = [&](FakeAgent& agent) { agent.SetJob("report", theirs); };
  for (const char* const script :
       {"sed -i s/ls/df/ \"$2\"", "sed -i s/ls/df/ \"$2\"; sed -i s/08:00/09:30/ \"$1\""}) {
    m_Agent.SetJob("report", "[Job]\ncommand = ls\n");
    m_Agent.SetAfterJobRead(change);
    const Editor editor(script);
    EXPECT_EQ(1, Run({"edit", "report"})) << script;
    EXPECT_NE(std::string::npos, Err().find("the job of report has changed")) << Err();
    ExpectKept("report.job");
    EXPECT_EQ(theirs, m_Agent.Job("report")) << script;
    EXPECT_EQ(TaskXml(DailyAtEight), m_Agent.Document("report")) << script;
  }
  m_Agent.SetJob("report", "[Job]\ncommand = ls\n");
  m_Agent.SetAfterJobRead(change);
  const Editor editor("sed -i s/08:00/09:30/ \"$1\"");
  EXPECT_EQ(0, Run({"edit", "report"})) << Err();
  EXPECT_EQ(theirs, m_Agent.Job("report")) << "who does not edit the job leaves it alone";
}

}  // namespace NoxAgentTest
