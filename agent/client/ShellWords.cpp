#include "agent/client/ShellWords.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace NoxAgent {

namespace {

// A "|", "<" or ";" is not among them: as an argument of grep, test or find it is right.
bool IsOperator(std::string_view word) {
  static constexpr std::array<std::string_view, 8> All{"&&", "||", "&",  ">",
                                                       ">>", "2>", "&>", "2>&1"};
  return std::find(All.begin(), All.end(), word) != All.end();
}

// Commands that change the shell itself, and marks of its language.
bool IsShellsOwn(std::string_view word) {
  static constexpr std::array<std::string_view, 24> All{
      "cd",    "export", "source", ".",     "eval", "exec", "set",   "unset",
      "umask", "ulimit", "alias",  "trap",  "exit", "wait", "shift", "return",
      "if",    "for",    "while",  "until", "case", "{",    "(",     "[["};
  return std::find(All.begin(), All.end(), word) != All.end();
}

// The words as one argument; empty when a shell would read marks in them that stand for themselves
// now.
std::string QuotedLine(const std::vector<std::string>& words) {
  std::string line;
  for (const std::string& word : words) {
    const bool isPlain = word.find_first_of(" \t\n\"'`$\\!*?[]{}()~#&|;<>") == std::string::npos;
    if (!IsOperator(word) && !isPlain) {
      return {};
    }
    line += (line.empty() ? "" : " ") + word;
  }
  return "'" + line + "'";
}

std::string LineAdvice(const std::vector<std::string>& words) {
  const std::string line = QuotedLine(words);
  return "; write the whole line in quotes for a shell" + (line.empty() ? "" : ": -- " + line);
}

std::string FaultOfOperators(const std::vector<std::string>& words) {
  const auto found = std::find_if(words.begin(), words.end(),
                                  [](const std::string& word) { return IsOperator(word); });
  return found == words.end()
             ? ""
             : "\"" + *found + "\" is for a shell, and the words behind -- are run without one" +
                   LineAdvice(words);
}

std::string FaultOfCommand(const std::vector<std::string>& words) {
  if (!IsShellsOwn(words.front())) {
    return {};
  }
  const std::string fault = "\"" + words.front() + "\" is a word of the shell's and no program";
  if (words.front() == "cd") {
    return fault + "; the directory in which a command runs is said with --directory";
  }
  return fault + (words.size() == 1 ? "" : LineAdvice(words));
}

}  // namespace

std::string FaultOfShellWords(const std::vector<std::string>& words) {
  const std::string fault = words.size() > 1 ? FaultOfOperators(words) : "";
  return fault.empty() ? FaultOfCommand(words) : fault;
}

}  // namespace NoxAgent
