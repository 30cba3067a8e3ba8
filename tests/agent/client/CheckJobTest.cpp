// Whole runs of noxctl check-job.
#include "tests/agent/client/ClientFixture.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace NoxAgentTest {

TEST_F(Client, CheckJobSaysNothingOfAGoodJobAndNeedsNoAgent) {
  const std::string file = FileWith("[Job]\ncommand = true\n");
  EXPECT_EQ(0, Run({"check-job", file}));
  EXPECT_EQ("", Out() + Err());
  EXPECT_EQ(0, Run({"check-job", "-", file}, "[Job]\ncommand = /bin/true\ntimeout = 5m\n"));
  EXPECT_EQ("", Out() + Err());
  EXPECT_TRUE(m_Agent.Requests().empty());
}

TEST_F(Client, CheckJobTellsAllProblemsOfAllJobs) {
  const std::string good = FileWith("[Job]\ncommand = true\n");
  EXPECT_EQ(2,
            Run({"check-job", "-", good}, "[Job]\ncommand = bin/x\ntimeout = 87601h\nuse = ada\n"));
  const std::string first =
      "-:2: command: is to be an absolute path or the bare name of a program\n"
      "-:3: timeout: is to be at most 87600h\n"
      "-:4: unknown key \"use\" (known: command, arguments, ";
  EXPECT_EQ(first, Out().substr(0, first.size()));
  EXPECT_EQ("", Err());
  EXPECT_EQ(2, Run({"check-job", "-"}, "command = x\n"));
  EXPECT_EQ("-:1: the key \"command\" stands before the first [Section]\n", Out());
}

TEST_F(Client, CheckJobAnswersInJson) {
  const std::string good = FileWith("[Job]\ncommand = true\n");
  EXPECT_EQ(2, Run({"check-job", "--json", good, "-"}, ""));
  EXPECT_EQ(
      JsonOut(),
      (Json::List{
          {{"file", good}, {"problems", Json::List{}}},
          {{"file", "-"},
           {"problems", Json::List{{{"message", "-: the section \"Job\" has no \"command\""}}}}}}));
}

TEST_F(Client, CheckJobRefusesWhatItCannotRead) {
  EXPECT_EQ(2, Run({"check-job", "/nonexistent/a.job"}));
  ExpectError("cannot read /nonexistent/a.job");
  EXPECT_EQ(2, Run({"check-job", "-"}, "[Job]\ncommand=true\n" + std::string(64 * 1024, '#')));
  EXPECT_EQ("-: the job file is larger than 64 KiB\n", Out());
}

TEST_F(Client, CheckJobFindsNoFaultWithTheExamples) {
  std::vector<std::string> arguments{"check-job"};
  for (const auto& entry : std::filesystem::directory_iterator(NOX_EXAMPLE_JOBS)) {
    if (entry.path().extension() == ".job") {
      arguments.push_back(entry.path().string());
    }
  }
  ASSERT_GT(arguments.size(), 1U);
  EXPECT_EQ(0, Run(arguments)) << Out();
}

TEST_F(Client, AddTellsWhatTheAgentFindsWrongWithTheJob) {
  m_Agent.AnswerAlways(
      200, R"({"tasks":[{"taskId":"t","warnings":[{"line":1,"column":2,"message":"m","effect":"e",)"
           R"("mend":"x"},{"message":"no job","effect":"fails","mend":"write it"}]}]})");
  EXPECT_EQ(0, Run({"add", "-"}, TaskXml("<Trigger Type=\"-1\"/>")));
  EXPECT_EQ("t\n", Out());
  EXPECT_EQ("noxctl: warning: no job; fails; write it\n", Err());
}

}  // namespace NoxAgentTest
