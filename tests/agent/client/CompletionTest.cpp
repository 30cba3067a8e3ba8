// What noxctl proposes on the command line, and what the shells make of it.
#include "tests/agent/client/ClientFixture.h"
#include "tests/support/Texts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>

namespace NoxAgentTest {

using TestSupport::Texts;

namespace {

Texts Lines(const std::string& text) {
  Texts lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) {
    lines.push_back(line);
  }
  return lines;
}

Texts Missing(Texts wanted, const Texts& proposed) {
  std::erase_if(wanted, [&](const std::string& word) {
    return std::find(proposed.begin(), proposed.end(), word) != proposed.end();
  });
  return wanted;
}

class Completion : public Client {
 protected:
  Completion() {
    m_Agent.SetTask("backup", {"<Task/>", true, {}});
    m_Agent.SetTask("report", {"<Task/>", true, {}});
  }

  std::string Socket() const { return (m_Dir / "s").string(); }

  /// Of a line on which the agent's socket is named first.
  Texts Of(Texts words) {
    words.insert(words.begin(), {"__complete", "--socket", Socket()});
    EXPECT_EQ(0, RunAsGiven(words)) << Err();
    EXPECT_EQ("", Err());
    return Lines(Out());
  }

  /// What the shell prints that runs the script.
  Texts Ask(const std::string& shell, const std::string& script) {
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
  Texts Bash(const std::string& words) {
    return Ask("bash --norc",
               "source " + std::string(NOX_COMPLETION) +
                   "/noxctl.bash\nCOMP_WORDS=('" NOX_CLIENT "' " + words +
                   ")\nCOMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n_noxctl_complete\n"
                   "((${#COMPREPLY[@]} == 0)) || printf '%s\\n' \"${COMPREPLY[@]}\"\n");
  }

  /// What zsh proposes; its own functions are stood in for.
  Texts Zsh(const std::string& words, const std::string& prefix) {
    return Ask("zsh -f",
               "compset() { PREFIX=${PREFIX#*=}; }\n_files() { print -r -- files $PREFIX; }\n"
               "compadd() { print -rl -- $candidates; }\nwords=('" NOX_CLIENT "' " +
                   words + " '" + prefix + "')\nCURRENT=$#words\nPREFIX='" + prefix + "'\nsource " +
                   std::string(NOX_COMPLETION) + "/_noxctl\n");
  }

  Texts Fish(const std::string& line) {
    return Ask("fish --no-config", "source " + std::string(NOX_COMPLETION) +
                                       "/noxctl.fish\nset -x PATH (dirname '" NOX_CLIENT
                                       "') $PATH\ncomplete --do-complete \"noxctl " +
                                       line + "\"\n");
  }
};

}  // namespace

TEST_F(Completion, ProposesCommandsAndThenTheirArguments) {
  EXPECT_EQ(Of({"re"}), Texts{"refresh"});
  EXPECT_EQ(Missing({"add", "list", "explain", "notify"}, Of({""})), Texts());
  EXPECT_EQ(Of({"add", ""}), Texts{":files"});
  EXPECT_EQ(Of({"add", "task.xml", ""}), Texts{":files"});
  EXPECT_EQ(Of({"next", "task.xml", ""}), Texts()) << "it takes one";
  EXPECT_EQ(Of({"show", ""}), (Texts{"backup", "report"}));
  EXPECT_EQ(Of({"delete", "backup", "r"}), Texts{"report"});
  EXPECT_EQ(Of({"next", "b"}), (Texts{"backup", ":files"}));
  EXPECT_EQ(Of({"set-state", "backup", ""}), (Texts{"Ok", "Failed"}));
  EXPECT_EQ(Of({"notify", "1"}), (Texts{"1", "10"}));
  EXPECT_EQ(Of({"list", ""}), Texts());
  EXPECT_EQ(Of({"fly", ""}), Texts());
}

TEST_F(Completion, ProposesOptionsAndTheirValues) {
  EXPECT_EQ(Of({"--s"}), Texts{"--socket"});
  EXPECT_EQ(Of({"add", "--"}), (Texts{"--help", "--socket", "--runtime-dir", "--json", "--version",
                                      "--id", "--force"}));
  EXPECT_EQ(Of({"add", "--i"}), Texts{"--id"});
  EXPECT_EQ(Of({"add", "--id", "b"}), Texts{"backup"});
  EXPECT_EQ(Of({"add", "--id=b"}), Texts{"backup"});
  EXPECT_EQ(Of({"add", "--id", "backup", ""}), Texts{":files"});
  EXPECT_EQ(Of({"add", "--id=backup", "--force", ""}), Texts{":files"});
  EXPECT_EQ(Of({"--runtime-dir", ""}), Texts{":directories"});
  EXPECT_EQ(Of({"list", "--socket=/"}), Texts{":files"});
  EXPECT_EQ(Of({"simulate", "--run-time", ""}), Texts());
  EXPECT_EQ(Of({"next", "-n", "3", "r"}), (Texts{"report", ":files"}));
}

TEST_F(Completion, ProposesTheWordsOfASchedule) {
  EXPECT_EQ(Of({"create", "x", "daily", ""}), (Texts{"in", "at"}));
  EXPECT_EQ(Of({"import", ""}), Texts{"crontab"});
  EXPECT_EQ(Of({"import", "crontab", ""}), Texts{":files"});
  EXPECT_EQ(Of({"create", "x", "w"}), (Texts{"wed", "weekdays", "weekends"}));
  EXPECT_EQ(Of({"create", "x", "--timeout", "5m", "every", "2", ""}), (Texts{"days", "weeks"}));
  EXPECT_EQ(Of({"create", "x", "yearly", ""}), Texts());
  EXPECT_EQ(Of({"create", "x", "now", "--", "--"}), Texts{":files"});
}

TEST_F(Completion, LooksForTheAgentWhereTheLineSays) {
  const auto ask = [this](const Texts& words) {
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
  const Texts help = Lines(Out().substr(Out().find("Subcommands:\n") + 13));
  Texts commands;
  for (auto line = help.begin(); line != help.end() && !line->empty(); ++line) {
    commands.emplace_back();
    std::istringstream(*line) >> commands.back();
  }
  EXPECT_EQ(Of({""}), commands);
  for (const std::string& command : commands) {
    ASSERT_EQ(0, RunAsGiven({command, "--help"}));
    Texts options;
    for (const std::string& line : Lines(Out())) {
      const std::size_t at = line.find("--");
      if (line.rfind("  -", 0) == 0 && at != std::string::npos) {
        options.push_back(line.substr(at, line.find_first_of(" ,", at) - at));
      }
    }
    EXPECT_EQ(Missing(options, Of({command, "--"})), Texts()) << command;
  }
}

TEST_F(Completion, WorksInBash) {
  const std::string socket = "--socket = '" + Socket() + "' ";
  EXPECT_EQ(Bash("ref"), Texts{"refresh"});
  EXPECT_EQ(Bash("--socket '" + Socket() + "' show ''"), (Texts{"backup", "report"}));
  EXPECT_EQ(Bash(socket + "show b"), Texts{"backup"}) << "as --socket=PATH is divided";
  EXPECT_EQ(Bash(socket + "add --id ="), (Texts{"backup", "report"}));
  EXPECT_EQ(Bash(socket + "add --id = b"), Texts{"backup"});
  EXPECT_EQ(Bash("--socket='" + Socket() + "' add --id=b"), Texts{"--id=backup"})
      << "with = taken out of COMP_WORDBREAKS";
  std::filesystem::create_directory(m_Dir / "sub");
  m_Dir.Write("sub/file", "");
  EXPECT_EQ(Bash("check '" + (m_Dir / "sub").string() + "/'"),
            Texts{(m_Dir / "sub/file").string()});
  EXPECT_EQ(Bash("--runtime-dir = '" + (m_Dir / "su").string() + "'"),
            Texts{(m_Dir / "sub").string()});
}

TEST_F(Completion, WorksInZsh) {
  const std::string socket = "'--socket=" + Socket() + "'";
  EXPECT_EQ(Zsh("", "ref"), Texts{"refresh"});
  EXPECT_EQ(Zsh(socket + " show", ""), (Texts{"backup", "report"}));
  EXPECT_EQ(Zsh(socket + " add", "--id=b"), Texts{"backup"});
  EXPECT_EQ(Missing({"files /t"}, Zsh("check", "/t")), Texts());
}

TEST_F(Completion, WorksInFish) {
  const std::string socket = "--socket=" + Socket();
  const auto first = [](Texts lines) {
    for (std::string& line : lines) {
      line = line.substr(0, line.find('\t'));
    }
    return lines;
  };
  EXPECT_EQ(first(Fish("ref")), Texts{"refresh"});
  EXPECT_EQ(first(Fish(socket + " show ")), (Texts{"backup", "report"}));
  EXPECT_EQ(first(Fish(socket + " add --id=b")), Texts{"--id=backup"});
}

}  // namespace NoxAgentTest
