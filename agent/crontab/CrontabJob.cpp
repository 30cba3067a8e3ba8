#include "agent/crontab/CrontabJob.h"

#include "agent/crontab/CrontabWords.h"
#include "agent/handler/job/Words.h"

#include <algorithm>
#include <array>
#include <optional>

namespace NoxAgent {

namespace {

constexpr const char* DefaultShell = "/bin/sh";
constexpr std::size_t LargestJob = 64 * 1024;

// Words of nothing else mean the same to a shell as they do in a job.
constexpr std::string_view PlainCharacters =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789/._-+:,@%= \t";

// No programs, or not the same ones.
constexpr std::array<std::string_view, 61> ShellWords = {
    ".",      ":",      "alias",   "bg",      "bind",     "break",  "builtin",  "caller",  "case",
    "cd",     "chdir",  "command", "compgen", "continue", "coproc", "declare",  "dirs",    "disown",
    "do",     "done",   "echo",    "elif",    "else",     "enable", "esac",     "eval",    "exec",
    "exit",   "export", "false",   "fg",      "fi",       "for",    "function", "getopts", "hash",
    "help",   "if",     "jobs",    "kill",    "let",      "local",  "printf",   "pwd",     "read",
    "return", "select", "set",     "shift",   "source",   "test",   "then",     "time",    "times",
    "trap",   "true",   "type",    "ulimit",  "umask",    "unset",  "wait"};

std::string_view LastOfPath(std::string_view path) {
  return path.substr(path.find_last_of('/') + 1);
}

// Whether no file that a shell reads at its start, nor the shell itself, makes the command another.
bool IsUsualShell(const CrontabTask& task, const std::string& shell) {
  constexpr std::array<std::string_view, 3> UsualShells = {"sh", "dash", "bash"};
  return std::find(UsualShells.begin(), UsualShells.end(), LastOfPath(shell)) !=
             UsualShells.end() &&
         !task.m_Environment.contains("ENV") && !task.m_Environment.contains("BASH_ENV");
}

bool IsPlain(const std::string& command) {
  const std::string_view program = CrontabWords(command).Next().m_Text;
  return command.find_first_not_of(PlainCharacters) == std::string::npos &&
         program.find('=') == std::string_view::npos &&
         (program[0] == '/' || program.find('/') == std::string_view::npos) &&
         std::find(ShellWords.begin(), ShellWords.end(), program) == ShellWords.end();
}

// As the value of the job's key "input".
std::string WrittenInput(const std::string& input) {
  std::string written;
  for (const char character : input) {
    switch (character) {
      case '\n':
        written += "\\n";
        break;
      case '\t':
        written += "\\t";
        break;
      case '\\':
        written += "\\\\";
        break;
      default:
        written += character;
    }
  }
  return written;
}

bool IsProgram(std::string_view name) {
  return !name.empty() && (name[0] == '/' || name.find('/') == std::string_view::npos);
}

std::optional<CronRefusal> FaultOfSettings(const CrontabTask& task) {
  for (const auto& [name, value] : task.m_Environment) {
    if (NoxHandler::HasOuterBlanks(value)) {
      return CronRefusal{
          "the value of " + name + " begins or ends with blanks, which a job does not keep",
          "set it in the command itself"};
    }
    if (name == "HOME" && !value.starts_with('/')) {
      return CronRefusal{"HOME is \"" + value + "\", and a job's directory is an absolute path",
                         "write the whole path"};
    }
    if (name == "SHELL" && !IsProgram(value)) {
      return CronRefusal{"SHELL is \"" + value + "\", and no job can run that",
                         "write the whole path of a shell"};
    }
  }
  // A tab stop is written as "\t", and so it stays.
  if (task.m_Input && task.m_Input->starts_with(' ')) {
    return CronRefusal{"the input behind \"%\" begins with a blank, which a job does not keep",
                       "take the blank away"};
  }
  return std::nullopt;
}

std::string CommandLines(const CrontabTask& task) {
  const auto setting = task.m_Environment.find("SHELL");
  const std::string shell = setting == task.m_Environment.end() ? DefaultShell : setting->second;
  if (!IsUsualShell(task, shell) || !IsPlain(task.m_Command)) {
    return "command = " + shell + "\narguments = " + NoxHandler::JoinWords({"-c", task.m_Command}) +
           "\n";
  }
  CrontabWords words(task.m_Command);
  std::string lines = "command = " + std::string(words.Next().m_Text) + "\n";
  if (const std::string_view arguments = words.Rest().m_Text; !arguments.empty()) {
    lines += "arguments = " + std::string(arguments) + "\n";
  }
  return lines;
}

}  // namespace

std::variant<std::string, CronRefusal> MakeCrontabJob(const CrontabTask& task) {
  if (const auto fault = FaultOfSettings(task)) {
    return *fault;
  }
  std::string text = "[Job]\n" + CommandLines(task);
  if (!task.m_User.empty()) {
    text += "user = " + task.m_User + "\n";
  }
  if (const auto home = task.m_Environment.find("HOME"); home != task.m_Environment.end()) {
    text += "directory = " + home->second + "\n";
  }
  if (task.m_Input && !task.m_Input->empty()) {
    text += "input = " + WrittenInput(*task.m_Input) + "\n";
  }
  text += "retry = never\n";
  text += task.m_Environment.empty() ? "" : "\n[Environment]\n";
  for (const auto& [name, value] : task.m_Environment) {
    text.append(name).append(" = ").append(value).append("\n");
  }
  if (text.size() > LargestJob) {
    return CronRefusal{"its job would be larger than 64 KiB", "put the command into a script"};
  }
  return text;
}

}  // namespace NoxAgent
