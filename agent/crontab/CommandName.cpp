#include "agent/crontab/CommandName.h"

#include "agent/crontab/ShellCommands.h"

#include <algorithm>
#include <array>
#include <span>
#include <vector>

namespace NoxAgent {

namespace {

using CommandWords = std::span<const std::string>;

// They stand before a command.
constexpr std::array<std::string_view, 11> Keywords = {
    "if", "then", "else", "elif", "while", "until", "do", "{", "!", "}", "time"};

// A line is seldom about them.
constexpr std::array<std::string_view, 34> Helpers = {
    "[",      "[[",     "test",   "cd",    "pushd", "true",   "false", ":",    "exit",
    "return", "export", "set",    "unset", "umask", "ulimit", "sleep", ".",    "source",
    "which",  "type",   "hash",   "for",   "case",  "esac",   "fi",    "done", "trap",
    "wait",   "echo",   "printf", "date",  "mkdir", "touch",  "read"};

/// A program that runs what the next word names.
struct Runner {
  std::string_view m_Name;
  std::string_view m_Valued = {};     ///< its options of one letter that take a word
  int m_Operands = 0;                 ///< how many words of its own it has
  std::string_view m_ShellCode = {};  ///< the options before a line for the shell
  std::string_view m_OtherCode = {};  ///< the options before text in another language
};
constexpr std::array<Runner, 31> Runners = {{{"nice", "n"},
                                             {"ionice", "cnp"},
                                             {"env", "uC"},
                                             {"sudo", "ugCphRrtU"},
                                             {"doas", "uC"},
                                             {"nohup"},
                                             {"setsid"},
                                             {"exec"},
                                             {"command", "", 0, "", "vV"},
                                             {"chronic"},
                                             {"timeout", "ks", 1},
                                             {"flock", "wE", 1, "c"},
                                             {"chrt", "", 1},
                                             {"taskset", "", 1},
                                             {"stdbuf", "ioe"},
                                             {"systemd-cat", "tp"},
                                             {"su", "sg", 1, "c"},
                                             {"runuser", "usg", 0, "c"},
                                             {"busybox"},
                                             {"run-parts"},
                                             {"sh", "o", 0, "c"},
                                             {"bash", "o", 0, "c"},
                                             {"dash", "o", 0, "c"},
                                             {"ksh", "o", 0, "c"},
                                             {"zsh", "o", 0, "c"},
                                             {"perl", "", 0, "", "eE"},
                                             {"python", "WX", 0, "", "c"},
                                             {"python3", "WX", 0, "", "c"},
                                             {"php", "cd", 0, "", "r"},
                                             {"ruby", "", 0, "", "e"},
                                             {"node", "", 0, "", "ep"}}};

std::string_view BaseName(std::string_view path) {
  const std::size_t last = path.find_last_not_of('/');
  path = path.substr(0, last == std::string_view::npos ? 0 : last + 1);
  return path.substr(path.find_last_of('/') + 1);
}

bool IsAssignment(std::string_view word) {
  const std::size_t equals = word.find('=');
  return equals != 0 && equals != std::string_view::npos &&
         word.substr(0, equals).find_first_of("/-.") == std::string_view::npos;
}

CommandWords WithoutPrefix(CommandWords words) {
  while (!words.empty() &&
         (IsAssignment(words.front()) ||
          std::find(Keywords.begin(), Keywords.end(), words.front()) != Keywords.end())) {
    words = words.subspan(1);
  }
  return words;
}

// Takes off the words that are the runner's own. False when what it runs is not told by a next
// word; then `name` has the answer, empty when nothing is to be found.
bool TakeOwnWords(const Runner& runner, CommandWords& words, std::string& name) {
  int operands = runner.m_Operands;
  for (; !words.empty(); words = words.subspan(1)) {
    const std::string& word = words.front();
    if (!word.starts_with('-')) {
      if (!IsAssignment(word) && operands-- == 0) {
        return true;
      }
      continue;
    }
    const char letter = word.size() > 1 && word[1] != '-' ? word.back() : '-';
    if (runner.m_ShellCode.find(letter) != std::string_view::npos) {
      name = words.size() > 1 ? NameOfCommand(words[1]) : std::string();
      return false;
    }
    if (runner.m_OtherCode.find(letter) != std::string_view::npos) {
      name.clear();
      return false;
    }
    const bool takesNext =
        word.size() == 2 && runner.m_Valued.find(letter) != std::string_view::npos;
    words = words.subspan(takesNext && words.size() > 1 ? 1 : 0);
  }
  name = runner.m_Name;
  return false;
}

// Empty for what a line is seldom about.
std::string NameOfWords(CommandWords words) {
  for (;;) {
    words = WithoutPrefix(words);
    if (words.empty()) {
      return {};
    }
    const std::string_view program = BaseName(words.front());
    if (std::find(Helpers.begin(), Helpers.end(), program) != Helpers.end()) {
      return {};
    }
    const auto runner = std::find_if(Runners.begin(), Runners.end(),
                                     [&](const Runner& each) { return each.m_Name == program; });
    words = words.subspan(1);
    std::string name(program);
    if (runner == Runners.end() || !TakeOwnWords(*runner, words, name)) {
      return name;
    }
  }
}

}  // namespace

std::string NameOfCommand(std::string_view line) {
  const auto commands = ListShellCommands(line);
  for (const auto& words : commands) {
    if (std::string name = NameOfWords(words); !name.empty()) {
      return name;
    }
  }
  for (const auto& words : commands) {
    if (const CommandWords rest = WithoutPrefix(words); !rest.empty()) {
      return std::string(BaseName(rest.front()));
    }
  }
  return {};
}

}  // namespace NoxAgent
