// What noxctl proposes on the command line, and what the shells make of it.
#include "tests/agent/client/ClientFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <filesystem>

namespace NoxAgentTest {

using Strings = std::vector<std::string>;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsSupersetOf;

namespace {

Strings Lines(const std::string& text) {
  Strings lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) {
    lines.push_back(line);
  }
  return lines;
}

class Completion : public Client {
 protected:
  Completion() {
    m_Agent.SetTask("backup", {"<Task/>", true, {}});
    m_Agent.SetTask("report", {"<Task/>", true, {}});
  }

  std::string Socket() const { return (m_Dir / "s").string(); }

  /// Of a line on which the agent's socket is named first.
  Strings Of(Strings words) {
    words.insert(words.begin(), {"__complete", "--socket", Socket()});
    EXPECT_EQ(0, RunAsGiven(words)) << Err();
    EXPECT_EQ("", Err());
    return Lines(Out());
  }

  /// What the shell prints that runs the script.
  Strings Ask(const std::string& shell, const std::string& script) {
    m_Dir.Write("script", script);
    const std::string command = shell + " '" + (m_Dir / "script").string() + "' 2>&1";
    std::FILE* const pipe = ::popen(command.c_str(), "r");
    std::string text;
    std::array<char, 4096> piece{};
    for (std::size_t got; (got = std::fread(piece.data(), 1, piece.size(), pipe)) > 0;) {
      text.append(piece.data(), got);
    }
    EXPECT_EQ(0, ::pclose(pipe)) << text;
    return Lines(text);
  }

  /// What bash proposes for these words, as it divides them.
  Strings Bash(const std::string& words) {
    return Ask("bash --norc",
               "source " + std::string(NOX_COMPLETION) +
                   "/noxctl.bash\nCOMP_WORDS=('" NOX_CLIENT "' " + words +
                   ")\nCOMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n_noxctl_complete\n"
                   "((${#COMPREPLY[@]} == 0)) || printf '%s\\n' \"${COMPREPLY[@]}\"\n");
  }

  /// What zsh proposes; its own functions are stood in for.
  Strings Zsh(const std::string& words, const std::string& prefix) {
    return Ask("zsh -f",
               "compset() { PREFIX=${PREFIX#*=}; }\n_files() { print -r -- files $PREFIX; }\n"
               "compadd() { print -rl -- $candidates; }\nwords=('" NOX_CLIENT "' " +
                   words + " '" + prefix + "')\nCURRENT=$#words\nPREFIX='" + prefix + "'\nsource " +
                   std::string(NOX_COMPLETION) + "/_noxctl\n");
  }

  Strings Fish(const std::string& line) {
    return Ask("fish --no-config", "source " + std::string(NOX_COMPLETION) +
                                       "/noxctl.fish\nset -x PATH (dirname '" NOX_CLIENT
                                       "') $PATH\ncomplete --do-complete \"noxctl " +
                                       line + "\"\n");
  }
};

}  // namespace

TEST_F(Completion, ProposesCommandsAndThenTheirArguments) {
  EXPECT_THAT(Of({"re"}), ElementsAre("refresh"));
  EXPECT_THAT(Of({""}), IsSupersetOf({"add", "list", "explain", "notify"}));
  EXPECT_THAT(Of({"add", ""}), ElementsAre(":files"));
  EXPECT_THAT(Of({"add", "task.xml", ""}), IsEmpty()) << "it takes one";
  EXPECT_THAT(Of({"check", "task.xml", ""}), ElementsAre(":files"));
  EXPECT_THAT(Of({"show", ""}), ElementsAre("backup", "report"));
  EXPECT_THAT(Of({"delete", "backup", "r"}), ElementsAre("report"));
  EXPECT_THAT(Of({"next", "b"}), ElementsAre("backup", ":files"));
  EXPECT_THAT(Of({"set-state", "backup", ""}), ElementsAre("Ok", "Failed"));
  EXPECT_THAT(Of({"notify", "1"}), ElementsAre("1", "10"));
  EXPECT_THAT(Of({"list", ""}), IsEmpty());
  EXPECT_THAT(Of({"fly", ""}), IsEmpty());
}

TEST_F(Completion, ProposesOptionsAndTheirValues) {
  EXPECT_THAT(Of({"--s"}), ElementsAre("--socket"));
  EXPECT_THAT(Of({"add", "--"}), ElementsAre("--help", "--socket", "--runtime-dir", "--json",
                                             "--version", "--id", "--force"));
  EXPECT_THAT(Of({"add", "--i"}), ElementsAre("--id"));
  EXPECT_THAT(Of({"add", "--id", "b"}), ElementsAre("backup"));
  EXPECT_THAT(Of({"add", "--id=b"}), ElementsAre("backup"));
  EXPECT_THAT(Of({"add", "--id", "backup", ""}), ElementsAre(":files"));
  EXPECT_THAT(Of({"add", "--id=backup", "--force", ""}), ElementsAre(":files"));
  EXPECT_THAT(Of({"--runtime-dir", ""}), ElementsAre(":directories"));
  EXPECT_THAT(Of({"list", "--socket=/"}), ElementsAre(":files"));
  EXPECT_THAT(Of({"simulate", "--run-time", ""}), IsEmpty());
  EXPECT_THAT(Of({"next", "-n", "3", "r"}), ElementsAre("report", ":files"));
}

TEST_F(Completion, LooksForTheAgentWhereTheLineSays) {
  const auto ask = [this](const Strings& words) {
    EXPECT_EQ(0, RunAsGiven(words));
    EXPECT_EQ("", Err());
    return Out();
  };
  EXPECT_EQ("", ask({"__complete", "--socket", "/none", "show", ""}));
  EXPECT_EQ("backup\nreport\n", ask({"__complete", "show", "--socket=" + Socket(), ""}));
}

// Every command and option is proposed, so that there is no list to forget one on.
TEST_F(Completion, ProposesAllThatTheHelpTells) {
  ASSERT_EQ(0, RunAsGiven({"--help"}));
  const Strings help = Lines(Out().substr(Out().find("Subcommands:\n") + 13));
  Strings commands;
  for (auto line = help.begin(); line != help.end() && !line->empty(); ++line) {
    commands.emplace_back();
    std::istringstream(*line) >> commands.back();
  }
  EXPECT_THAT(Of({""}), testing::ContainerEq(commands));
  for (const std::string& command : commands) {
    ASSERT_EQ(0, RunAsGiven({command, "--help"}));
    Strings options;
    for (const std::string& line : Lines(Out())) {
      const std::size_t at = line.find("--");
      if (line.rfind("  -", 0) == 0 && at != std::string::npos) {
        options.push_back(line.substr(at, line.find_first_of(" ,", at) - at));
      }
    }
    EXPECT_THAT(Of({command, "--"}), IsSupersetOf(options)) << command;
  }
}

TEST_F(Completion, WorksInBash) {
  const std::string socket = "--socket = '" + Socket() + "' ";
  EXPECT_THAT(Bash("ref"), ElementsAre("refresh"));
  EXPECT_THAT(Bash("--socket '" + Socket() + "' show ''"), ElementsAre("backup", "report"));
  EXPECT_THAT(Bash(socket + "show b"), ElementsAre("backup")) << "as --socket=PATH is divided";
  EXPECT_THAT(Bash(socket + "add --id ="), ElementsAre("backup", "report"));
  EXPECT_THAT(Bash(socket + "add --id = b"), ElementsAre("backup"));
  EXPECT_THAT(Bash("--socket='" + Socket() + "' add --id=b"), ElementsAre("--id=backup"))
      << "with = taken out of COMP_WORDBREAKS";
  std::filesystem::create_directory(m_Dir / "sub");
  m_Dir.Write("sub/file", "");
  EXPECT_THAT(Bash("check '" + (m_Dir / "sub").string() + "/'"),
              ElementsAre((m_Dir / "sub/file").string()));
  EXPECT_THAT(Bash("--runtime-dir = '" + (m_Dir / "su").string() + "'"),
              ElementsAre((m_Dir / "sub").string()));
}

TEST_F(Completion, WorksInZsh) {
  const std::string socket = "'--socket=" + Socket() + "'";
  EXPECT_THAT(Zsh("", "ref"), ElementsAre("refresh"));
  EXPECT_THAT(Zsh(socket + " show", ""), ElementsAre("backup", "report"));
  EXPECT_THAT(Zsh(socket + " add", "--id=b"), ElementsAre("backup"));
  EXPECT_THAT(Zsh("check", "/t"), testing::Contains("files /t"));
}

TEST_F(Completion, WorksInFish) {
  const std::string socket = "--socket=" + Socket();
  const auto first = [](Strings lines) {
    for (std::string& line : lines) {
      line = line.substr(0, line.find('\t'));
    }
    return lines;
  };
  EXPECT_THAT(first(Fish("ref")), ElementsAre("refresh"));
  EXPECT_THAT(first(Fish(socket + " show ")), ElementsAre("backup", "report"));
  EXPECT_THAT(first(Fish(socket + " add --id=b")), ElementsAre("--id=backup"));
}

}  // namespace NoxAgentTest
