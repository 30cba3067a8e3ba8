#include "agent/client/NewJob.h"

#include "agent/client/ExitCode.h"
#include "agent/client/ShellWords.h"
#include "agent/handler/job/Duration.h"
#include "agent/handler/job/Job.h"
#include "agent/handler/job/Words.h"
#include "agent/phrase/PhraseValues.h"
#include "agent/phrase/PhraseWords.h"

#include <BaseSDK/AString.h>

#include <filesystem>
#include <utility>

namespace NoxAgent {

using BaseSDK::AString;

namespace {

constexpr const char* Example = "noxctl create backup daily at 02:30 -- /usr/bin/backup --full";

[[noreturn]] void Refuse(const std::string& why) {
  throw CommandError(ExitCode::Usage, why);
}

// The program and its arguments as the system takes them.
std::vector<std::string> RunnableCommand(std::vector<std::string> words) {
  if (words.empty() || words.front().empty()) {
    Refuse(std::string("it is not said what to run; put the command behind --, as in ") + Example);
  }
  const std::string first = words.front();
  std::error_code ignored;
  const bool isShells = words.size() == 1 && !std::filesystem::exists(first, ignored) &&
                        first.find_first_of(" \t|&;<>()$`*?[]~#'\"\\") != std::string::npos;
  if (isShells) {
    return {"/bin/sh", "-c", first};
  }
  if (const std::string fault = FaultOfShellWords(words); !fault.empty()) {
    Refuse(fault);
  }
  if (words.size() > 1 && first.find('=') != std::string::npos) {
    Refuse("\"" + first + "\" is no program; set a variable with --env " + first +
           ", or write the whole line in quotes for the shell");
  }
  if (first.find('/') != std::string::npos) {
    words.front() = std::filesystem::absolute(first).lexically_normal().string();
  }
  return words;
}

// A job's lengths have one unit; as words of a schedule they may have several.
std::string JobDuration(const std::string& text) {
  const std::vector<std::string> words = PhraseWords({text}).Plain();
  const auto seconds = words.size() == 1 ? ReadLength(words.front()) : std::nullopt;
  const bool isWords = !NoxHandler::Duration::Parse(AString::FromUtf8(text)) && seconds;
  return isWords ? NoxHandler::Duration::Text(*seconds).ToUtf8() : text;
}

class JobText {
 public:
  void Add(const std::string& key, const std::string& value) {
    if (value.find_first_of("\n\r") != std::string::npos) {
      Refuse(key + ": a job's values are one line; put the command into a script");
    }
    if (!value.empty()) {
      m_Text += key + " = " + value + '\n';
    }
  }

  // "KEY=VALUE"
  void AddPair(const std::string& option, const std::string& pair) {
    const std::size_t equals = pair.find('=');
    if (equals == std::string::npos || equals == 0) {
      Refuse(option + " \"" + pair + "\" lacks a name or a value; write it like NAME=VALUE");
    }
    const std::string value = pair.substr(equals + 1);
    if (value.empty() || NoxHandler::HasOuterBlanks(value)) {
      Refuse(option + " \"" + pair + "\": a job keeps no empty values and no blanks around them");
    }
    Add(pair.substr(0, equals), value);
  }

  void AddSection(const std::string& name) {
    m_Text += (m_Text.empty() ? "[" : "\n[") + name + "]\n";
  }

  const std::string& Text() const { return m_Text; }

 private:
  std::string m_Text;
};

void RefuseProblems(const std::string& text) {
  std::vector<AString> problems;
  (void)NoxHandler::Job::Parse("job", AString::FromUtf8(text), problems);
  if (!problems.empty()) {
    Refuse("there can be no such job: " + problems.front().ToUtf8());
  }
}

}  // namespace

std::string WriteJob(const NewJob& job) {
  const std::vector<std::string> command = RunnableCommand(job.m_Command);
  JobText text;
  text.AddSection("Job");
  text.Add("command", command.front());
  text.Add("arguments", NoxHandler::JoinWords({command.begin() + 1, command.end()}));
  text.Add("user", job.m_User);
  text.Add("directory", job.m_Directory);
  text.Add("timeout", JobDuration(job.m_Timeout));
  text.Add("overlap", job.m_Overlap);
  text.Add("retry", job.m_Retry);
  for (const std::string& key : job.m_Keys) {
    text.AddPair("--set", key);
  }
  if (!job.m_Variables.empty()) {
    text.AddSection("Environment");
  }
  for (const std::string& variable : job.m_Variables) {
    text.AddPair("--env", variable);
  }
  RefuseProblems(text.Text());
  return text.Text();
}

std::string CommandWords(const NewJob& job) {
  return NoxHandler::JoinWords(RunnableCommand(job.m_Command));
}

}  // namespace NoxAgent
