#include "agent/library/CommandLine.h"

#include <gtest/gtest.h>

#include <sstream>

namespace NoxAgentTest {

using NoxAgent::CommandLine;
using NoxAgent::CommandLineError;

namespace {

/// A program with two commands and an option of its own.
struct Program {
  Program() {
    m_Line.Version("tool 1.0");
    m_Line.Footer("Footer of the commands.");
    m_Line.Flag("--json", m_Json, "answer in JSON");
    CommandLine& add = m_Line.Command("add", "Add something");
    add.Argument("FILE", m_File, "what to add").Required();
    add.Option("--id", m_Id, "its name").Takes("ID");
    add.OnUse([this] { m_Used = "add"; });
    CommandLine& count = m_Line.Command("count", "Count");
    count.Option("-n,--number", m_Number, "how many").Takes("N").Between(1, 9);
    count.Option("--seconds", m_Seconds, "how long");
    count.Option("--word", m_Words, "a word").Check([](const std::string& word) {
      return word == "bad" ? "it is bad" : "";
    });
    count.Argument("ID", m_Ids, "names");
    count.OnUse([this] { m_Used = "count"; });
  }

  /// Why the words are refused; empty when they are not.
  std::string WhyNot(const std::vector<std::string>& words) {
    try {
      m_Answered = !m_Line.Parse(words, m_Out);
      return {};
    } catch (const CommandLineError& error) {
      return error.what();
    }
  }

  CommandLine m_Line{"tool", "A tool."};
  std::ostringstream m_Out;
  bool m_Answered = false;
  bool m_Json = false;
  std::string m_File, m_Id, m_Used;
  unsigned m_Number = 5;
  std::optional<long> m_Seconds;
  std::vector<std::string> m_Words, m_Ids;
};

TEST(CommandLine, PutsValuesWhereTheyBelong) {
  Program program;
  EXPECT_EQ(program.WhyNot({"add", "--id", "a", "file.xml", "--json"}), "");
  EXPECT_EQ(program.m_Used, "add");
  EXPECT_EQ(program.m_File, "file.xml");
  EXPECT_EQ(program.m_Id, "a");
  EXPECT_TRUE(program.m_Json) << "options of the program may stand behind a command";
}

TEST(CommandLine, TakesListsAndNumbers) {
  Program program;
  EXPECT_EQ(program.WhyNot({"count", "-n", "7", "--word", "x", "a", "--word", "y", "b"}), "");
  EXPECT_EQ(program.m_Number, 7U);
  EXPECT_EQ(program.m_Seconds, std::nullopt);
  EXPECT_EQ(program.m_Words, (std::vector<std::string>{"x", "y"}));
  EXPECT_EQ(program.m_Ids, (std::vector<std::string>{"a", "b"}));
}

TEST(CommandLine, AnEqualsSignWithNothingBehindItGivesAnEmptyValue) {
  Program program;
  EXPECT_EQ(program.WhyNot({"count", "--word=", "a", "--word=x="}), "");
  EXPECT_EQ(program.m_Words, (std::vector<std::string>{"", "x="}));
  EXPECT_EQ(program.m_Ids, (std::vector<std::string>{"a"}));
}

TEST(CommandLine, TellsWhyItCannotBeReadAndWhereItIsExplained) {
  const struct {
    std::vector<std::string> m_Words;
    std::string m_Told;
  } rows[] = {
      {{"fly"}, "there is no command or option \"fly\"; see tool --help"},
      {{"--fly"}, "there is no command or option \"--fly\"; see tool --help"},
      {{}, "A subcommand is required; see tool --help"},
      {{"add"}, "FILE is required; see tool add --help"},
      {{"count", "-n", "12"}, "--number: Value 12 not in range 1 to 9; see tool count --help"},
      {{"count", "--word", "bad"}, "--word: it is bad; see tool count --help"},
  };
  for (const auto& row : rows) {
    Program program;
    EXPECT_EQ(program.WhyNot(row.m_Words), row.m_Told);
    EXPECT_EQ(program.m_Used, "");
  }
}

TEST(CommandLine, SpeaksOfOptionsAloneWhereThereAreNoCommands) {
  CommandLine line("tool", "A tool.");
  bool flag = false;
  line.Flag("--flag", flag, "a flag");
  std::ostringstream out;
  try {
    (void)line.Parse({"--fly"}, out);
    FAIL() << "must be refused";
  } catch (const CommandLineError& error) {
    EXPECT_STREQ(error.what(), "there is no option \"--fly\"; see tool --help");
  }
}

TEST(CommandLine, AnswersHelpAndVersionByItself) {
  Program version;
  EXPECT_EQ(version.WhyNot({"--version"}), "");
  EXPECT_TRUE(version.m_Answered);
  EXPECT_EQ(version.m_Out.str(), "tool 1.0\n");
  Program help;
  EXPECT_EQ(help.WhyNot({"add", "--help"}), "");
  EXPECT_TRUE(help.m_Answered);
  EXPECT_EQ(help.m_Used, "");
  EXPECT_NE(help.m_Out.str().find("Footer of the commands."), std::string::npos);
}

TEST(CommandLine, LetsThroughWhatACommandThrows) {
  CommandLine line("tool", "A tool.");
  line.Command("go", "Go").OnUse([] { throw std::out_of_range("far"); });
  std::ostringstream out;
  EXPECT_THROW((void)line.Parse({"go"}, out), std::out_of_range);
}

}  // namespace

TEST(CommandLine, TellsWhatMayStandOnIt) {
  const Program program;
  EXPECT_EQ((std::vector<std::string>{"add", "count"}), program.m_Line.Commands());
  EXPECT_EQ(nullptr, program.m_Line.FindCommand("none"));
  const CommandLine* const count = program.m_Line.FindCommand("count");
  ASSERT_NE(nullptr, count);
  std::string text;
  for (const auto& option : count->Options()) {
    for (const std::string& name : option.m_Names) {
      text += name + " ";
    }
    text += option.m_Takes + "; ";
  }
  EXPECT_EQ("-h --help ; -n --number N; --seconds INT; --word TEXT; ", text);
  ASSERT_EQ(1U, count->Arguments().size());
  EXPECT_EQ("ID", count->Arguments()[0].m_Name);
  EXPECT_TRUE(count->Arguments()[0].m_IsMany);
  EXPECT_FALSE(program.m_Line.FindCommand("add")->Arguments()[0].m_IsMany);
}

TEST(CommandLine, HandsWhatIsBehindTwoDashesToTheCommandThatTakesIt) {
  CommandLine line("tool", "A tool.");
  CommandLine& run = line.Command("run", "Run a program");
  CommandLine& show = line.Command("show", "Show files");
  std::vector<std::string> files, program;
  std::string option;
  run.Option("--option", option, "an option");
  run.Tail("PROGRAM", program, "what runs");
  show.Argument("FILE", files, "files");
  std::ostringstream out;
  EXPECT_TRUE(line.Parse({"run", "--option", "x", "--", "ls", "--option", "--", ""}, out));
  EXPECT_EQ(program, (std::vector<std::string>{"ls", "--option", "--", ""}));
  EXPECT_EQ(option, "x");
  EXPECT_TRUE(line.Parse({"show", "--", "-file"}, out));
  EXPECT_EQ(files, std::vector<std::string>{"-file"});
  EXPECT_TRUE(run.HasTail());
  EXPECT_FALSE(show.HasTail());
  EXPECT_FALSE(line.Parse({"run", "--help"}, out));
  EXPECT_NE(out.str().find("-- PROGRAM  what runs"), std::string::npos) << out.str();
}

}  // namespace NoxAgentTest
