#include "agent/handler/job/JobReader.h"

#include "agent/handler/job/Duration.h"
#include "agent/handler/job/FileMode.h"
#include "agent/handler/job/InputText.h"
#include "agent/handler/job/VariableName.h"
#include "agent/handler/job/WholeNumber.h"
#include "agent/handler/job/Words.h"

using BaseSDK::AIniText;
using BaseSDK::AString;

namespace NoxHandler {

namespace {

constexpr const char* BrokenWords = "a quote is not closed, or the text ends with a backslash";

bool IsProgram(const std::string& name) {
  return !name.empty() && (name.front() == '/' || name.find('/') == std::string::npos);
}

AString TakeCommand(Job& job, const AString& value) {
  job.m_Command = value.ToUtf8();
  return IsProgram(job.m_Command)
             ? AString()
             : AString("is to be an absolute path or the bare name of a program");
}

AString TakeArguments(Job& job, const AString& value) {
  auto words = SplitWords(value.ToUtf8());
  if (!words) {
    return BrokenWords;
  }
  job.m_Arguments = std::move(*words);
  return AString();
}

AString ReadBeside(const AString& value, std::vector<std::string>& command) {
  auto words = SplitWords(value.ToUtf8());
  if (!words) {
    return BrokenWords;
  }
  if (words->empty() || !IsProgram(words->front())) {
    return "is to begin with an absolute path or the bare name of a program";
  }
  command = std::move(*words);
  return AString();
}

AString TakeCondition(Job& job, const AString& value) {
  return ReadBeside(value, job.m_Condition);
}

AString TakeOnFailure(Job& job, const AString& value) {
  return ReadBeside(value, job.m_OnFailure);
}

AString TakeOnRecovery(Job& job, const AString& value) {
  return ReadBeside(value, job.m_OnRecovery);
}

AString TakeAfter(Job& job, const AString& value) {
  const auto after = ParseWhole(value, 1, Job::MostFailures);
  job.m_After = after.value_or(job.m_After);
  return after ? AString()
               : AString("is to be a number of runs from 1 to %1")
                     .Arg(AString().SetNum(Job::MostFailures, 'd'));
}

AString TakeUser(Job& job, const AString& value) {
  job.m_User = value.ToUtf8();
  return value.IsEmpty() ? AString("a user's name is missing") : AString();
}

AString TakeDirectory(Job& job, const AString& value) {
  job.m_Directory = value.ToUtf8();
  return value[0] == L'/' ? AString() : AString("is to be an absolute path");
}

AString TakeTimeout(Job& job, const AString& value) {
  return Duration::Read(value, 0, Duration::MaxSeconds, job.m_TimeoutSeconds);
}

AString TakeOverlap(Job& job, const AString& value) {
  const auto overlap = ParseOverlap(value);
  job.m_Overlap = overlap.value_or(OverlapRule::Skip);
  return overlap ? AString() : AString("is to be skip, queue, kill or allow");
}

AString TakeRetry(Job& job, const AString& value) {
  return RetryRule::Read(value, job.m_Retry);
}

AString TakeSuccess(Job& job, const AString& value) {
  return ReadExitStatuses(value, job.m_Success);
}

AString TakeInput(Job& job, const AString& value) {
  return ReadInputText(value, job.m_Input);
}

AString TakeEnvironmentFile(Job& job, const AString& value) {
  return EnvironmentFile::Read(value, job.m_EnvironmentFile);
}

AString TakeUmask(Job& job, const AString& value) {
  const auto mode = ParseFileMode(value);
  job.m_Umask = mode.value_or(job.m_Umask);
  return mode ? AString() : AString("is to be permission bits in octal from 0 to 777, such as 027");
}

// From a minute on: up to 59 seconds the scheduler does not say that a run is late.
AString TakeMaxLate(Job& job, const AString& value) {
  return Duration::Read(value, Job::LeastLateSeconds, Job::MostLateSeconds, job.m_MaxLateSeconds);
}

AString TakeSplay(Job& job, const AString& value) {
  return Duration::Read(value, 0, Job::MostSplaySeconds, job.m_SplaySeconds);
}

AString TakeNice(Job& job, const AString& value) {
  return job.m_Limits.ReadNice(value);
}

AString TakeIonice(Job& job, const AString& value) {
  return job.m_Limits.ReadIoPriority(value);
}

AString TakeMemory(Job& job, const AString& value) {
  return job.m_Limits.ReadMemory(value);
}

AString TakeCpuTime(Job& job, const AString& value) {
  return job.m_Limits.ReadCpuTime(value);
}

AString TakeFiles(Job& job, const AString& value) {
  return job.m_Limits.ReadFiles(value);
}

AString TakeOomScore(Job& job, const AString& value) {
  return job.m_Limits.ReadOomScore(value);
}

struct Key {
  const char* m_Name;
  AString (*m_Take)(Job& job, const AString& value);
};

constexpr Key Keys[] = {{"command", TakeCommand},
                        {"arguments", TakeArguments},
                        {"user", TakeUser},
                        {"directory", TakeDirectory},
                        {"timeout", TakeTimeout},
                        {"overlap", TakeOverlap},
                        {"retry", TakeRetry},
                        {"success", TakeSuccess},
                        {"input", TakeInput},
                        {"environment_file", TakeEnvironmentFile},
                        {"umask", TakeUmask},
                        {"max_late", TakeMaxLate},
                        {"splay", TakeSplay},
                        {"nice", TakeNice},
                        {"ionice", TakeIonice},
                        {"memory", TakeMemory},
                        {"cpu_time", TakeCpuTime},
                        {"files", TakeFiles},
                        {"oom_score", TakeOomScore},
                        {"on_failure", TakeOnFailure},
                        {"on_recovery", TakeOnRecovery},
                        {"after", TakeAfter},
                        {"condition", TakeCondition}};

AString KnownKeys() {
  AString names;
  for (const Key& key : Keys) {
    names += names.IsEmpty() ? AString(key.m_Name) : AString(", ") + key.m_Name;
  }
  return names;
}

}  // namespace

AString JobReader::Take(const AString& section, const AIniText::Entry& entry) {
  if (section == AString("Environment")) {
    return TakeVariable(entry);
  }
  if (section != AString("Job")) {
    return AString("unknown section \"%1\" (known: Job, Environment)").Arg(section);
  }
  for (const Key& key : Keys) {
    if (entry.m_Key == AString(key.m_Name)) {
      m_Job.m_Lines[key.m_Name] = entry.m_Line;
      const AString reason = key.m_Take(m_Job, entry.m_Value);
      return reason.IsEmpty() ? reason : AString("%1: %2").Arg(entry.m_Key, reason);
    }
  }
  return AString("unknown key \"%1\" (known: %2)").Arg(entry.m_Key, KnownKeys());
}

std::vector<AString> JobReader::Missing() const {
  std::vector<AString> problems;
  const auto& lines = m_Job.m_Lines;
  if (!lines.contains("command")) {
    problems.push_back(AString("%1: the section \"Job\" has no \"command\"").Arg(m_Job.m_FileName));
  }
  for (const char* key : {"on_recovery", "after"}) {
    if (lines.contains(key) && !lines.contains("on_failure")) {
      problems.push_back(m_Job.ErrorAt(key, "is of use only with on_failure").Message());
    }
  }
  return problems;
}

// What is no name may be the torn rest of another variable's value, and is not quoted.
AString JobReader::TakeVariable(const AIniText::Entry& entry) {
  m_Job.m_Environment[entry.m_Key.ToUtf8()] = entry.m_Value.ToUtf8();
  return IsVariableName(entry.m_Key.ToUtf8())
             ? AString()
             : AString("what stands before the \"=\" is no name for a variable");
}

}  // namespace NoxHandler
