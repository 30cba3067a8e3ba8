#include "agent/handler/process/Launch.h"

#include <BaseSDK/ASystemZone.h>

#include <cstdlib>
#include <map>

namespace NoxHandler {

namespace {

constexpr const char* DefaultPath = "/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin";
constexpr const char* DefaultLanguage = "C.UTF-8";

using Variables = std::map<std::string, std::string>;

Variables BaseEnvironment(const Account& account) {
  Variables variables{{"PATH", DefaultPath}, {"LANG", DefaultLanguage}};
  // The agent's own TZ stands for a file, which not every program understands.
  if (const char* zone = std::getenv("TZ"); zone != nullptr && !BaseSDK::ASystemZone::IsHeld()) {
    variables["TZ"] = zone;
  }
  variables["HOME"] = account.m_Home.empty() ? "/" : account.m_Home;
  variables["SHELL"] = account.m_Shell.empty() ? "/bin/sh" : account.m_Shell;
  if (!account.m_Name.empty()) {
    variables["USER"] = variables["LOGNAME"] = account.m_Name;
  }
  return variables;
}

Account FindAccount(const Job& job) {
  try {
    return Account::Find(job.m_User);
  } catch (const JobError& error) {
    throw job.ErrorAt("user", error.Message());
  }
}

EnvironmentFile::Variables VariablesFromFile(const Job& job) {
  try {
    return job.m_EnvironmentFile.Load();
  } catch (const JobError& error) {
    throw job.ErrorAt("environment_file", error.Message());
  }
}

std::vector<std::string> CandidatesFor(const std::string& command, const std::string& path) {
  if (command.find('/') != std::string::npos) {
    return {command};
  }
  std::vector<std::string> candidates;
  std::size_t begin = 0;
  while (begin <= path.size()) {
    const std::size_t end = std::min(path.find(':', begin), path.size());
    // An empty entry would stand for the working directory: not for a service.
    if (end > begin) {
      candidates.push_back(path.substr(begin, end - begin) + "/" + command);
    }
    begin = end + 1;
  }
  return candidates;
}

}  // namespace

Launch::Launch(const Job& job, const TaskBatch::Entry& entry, const std::string& token,
               unsigned attempt)
    : m_Account(FindAccount(job)),
      m_Arguments{job.m_Command},
      m_Input(job.m_Input),
      m_Umask(job.m_Umask),
      m_Limits(job.m_Limits),
      m_Directory(job.m_Directory),
      m_MustEnterDirectory(!job.m_Directory.empty()) {
  m_Arguments.insert(m_Arguments.end(), job.m_Arguments.begin(), job.m_Arguments.end());
  Variables variables = BaseEnvironment(m_Account);
  for (const auto& [name, value] : VariablesFromFile(job)) {
    variables[name] = value;
  }
  for (const auto& [name, value] : job.m_Environment) {
    variables[name] = value;
  }
  variables["NOX_TASK_ID"] = entry.m_TaskId.ToUtf8();
  variables["NOX_LATE"] = entry.m_Late ? "1" : "0";
  variables["NOX_RUN_ID"] = token;
  variables["NOX_ATTEMPT"] = std::to_string(attempt);
  for (const auto& [name, value] : variables) {
    m_Environment.push_back(name + "=" + value);
  }
  m_Candidates = CandidatesFor(job.m_Command, variables["PATH"]);
  if (m_Directory.empty()) {
    m_Directory = variables["HOME"];
  }
}

}  // namespace NoxHandler
