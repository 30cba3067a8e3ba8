#include "agent/handler/job/Job.h"

#include "agent/handler/job/JobFile.h"
#include "agent/handler/job/Words.h"

#include <BaseSDK/AIniText.h>
#include <BaseSDK/AUtf8Encoding.h>

#include <array>
#include <optional>

using BaseSDK::AIniText;
using BaseSDK::AString;

namespace NoxHandler {

namespace {

constexpr long MaxTimeoutSeconds = 10L * 365 * 86400;

// "90" and "90s" are seconds, "5m" minutes, "2h" hours. A number that is too large becomes the
// greatest allowed one plus 1.
std::optional<long> ParseSeconds(const AString& text) {
  long factor = 1;
  AString digits = text;
  if (const wchar_t unit = text.IsEmpty() ? L'\0' : text[text.Length() - 1];
      unit == L's' || unit == L'm' || unit == L'h') {
    factor = unit == L'h' ? 3600 : unit == L'm' ? 60 : 1;
    digits = text.Left(text.Length() - 1);
  }
  const bool isNumber =
      !digits.IsEmpty() && digits.Str().find_first_not_of(L"0123456789") == std::wstring::npos;
  const long number = digits.ToLong();
  if (!isNumber) {
    return std::nullopt;
  }
  return number > MaxTimeoutSeconds / factor ? MaxTimeoutSeconds + 1 : number * factor;
}

bool IsVariableName(const AString& name) {
  constexpr const wchar_t* Letters = L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_";
  const std::wstring rest = std::wstring(Letters) + L"0123456789";
  return !name.IsEmpty() && std::wstring(Letters).find(name[0]) != std::wstring::npos &&
         name.Str().find_first_not_of(rest) == std::wstring::npos;
}

// One key at a time into the job; the reason when the value will not do, else empty.
class JobReader {
 public:
  AString Take(const AString& section, const AIniText::Entry& entry) {
    if (section == AString("Environment")) {
      return TakeVariable(entry);
    }
    if (section != AString("Job")) {
      return AString("unknown section \"%1\" (known: Job, Environment)").Arg(section);
    }
    for (const auto& [name, take] : Keys) {
      if (entry.m_Key == AString(name)) {
        m_Job.m_Lines[name] = entry.m_Line;
        const AString reason = (this->*take)(entry.m_Value);
        return reason.IsEmpty() ? reason : AString("%1: %2").Arg(entry.m_Key, reason);
      }
    }
    return AString(
               "unknown key \"%1\" (known: command, arguments, user, directory, timeout, "
               "overlap)")
        .Arg(entry.m_Key);
  }

  Job m_Job;

 private:
  using TakeValue = AString (JobReader::*)(const AString&);
  struct Key {
    const char* m_Name;
    TakeValue m_Take;
  };
  static const std::array<Key, 6> Keys;

  AString TakeCommand(const AString& value) {
    m_Job.m_Command = value.ToUtf8();
    const bool isPath = m_Job.m_Command.find('/') != std::string::npos;
    if (value.IsEmpty() || (isPath && value[0] != L'/')) {
      return "is to be an absolute path or the bare name of a program";
    }
    return AString();
  }

  AString TakeArguments(const AString& value) {
    auto words = SplitWords(value.ToUtf8());
    if (!words) {
      return "a quote is not closed, or the text ends with a backslash";
    }
    m_Job.m_Arguments = std::move(*words);
    return AString();
  }

  AString TakeUser(const AString& value) {
    m_Job.m_User = value.ToUtf8();
    return value.IsEmpty() ? AString("a user's name is missing") : AString();
  }

  AString TakeDirectory(const AString& value) {
    m_Job.m_Directory = value.ToUtf8();
    return value[0] == L'/' ? AString() : AString("is to be an absolute path");
  }

  AString TakeTimeout(const AString& value) {
    const auto seconds = ParseSeconds(value);
    m_Job.m_TimeoutSeconds = seconds.value_or(0);
    if (!seconds) {
      return "is to be a number of seconds, or a number with s, m or h after it";
    }
    return *seconds <= MaxTimeoutSeconds
               ? AString()
               : AString("is to be at most %1 seconds, which are %2h")
                     .Arg(AString().SetNum(MaxTimeoutSeconds, 'd'),
                          AString().SetNum(MaxTimeoutSeconds / 3600, 'd'));
  }

  AString TakeOverlap(const AString& value) {
    const auto overlap = ParseOverlap(value);
    m_Job.m_Overlap = overlap.value_or(OverlapRule::Skip);
    return overlap ? AString() : AString("is to be skip, queue or kill");
  }

  AString TakeVariable(const AIniText::Entry& entry) {
    m_Job.m_Environment[entry.m_Key.ToUtf8()] = entry.m_Value.ToUtf8();
    return IsVariableName(entry.m_Key)
               ? AString()
               : AString("\"%1\" is no name for a variable").Arg(entry.m_Key);
  }
};

const std::array<JobReader::Key, 6> JobReader::Keys{{{"command", &JobReader::TakeCommand},
                                                     {"arguments", &JobReader::TakeArguments},
                                                     {"user", &JobReader::TakeUser},
                                                     {"directory", &JobReader::TakeDirectory},
                                                     {"timeout", &JobReader::TakeTimeout},
                                                     {"overlap", &JobReader::TakeOverlap}}};

Job ReadJob(const AIniText& ini, std::vector<AString>& problems) {
  JobReader reader;
  reader.m_Job.m_FileName = ini.FileName();
  for (const AIniText::Section& section : ini.Sections()) {
    for (const AIniText::Entry& entry : section.m_Entries) {
      if (const AString reason = reader.Take(section.m_Name, entry); !reason.IsEmpty()) {
        problems.push_back(AString(ini.ErrorAt(entry.m_Line, reason).what()));
      }
    }
  }
  if (!reader.m_Job.m_Lines.contains("command")) {
    problems.push_back(AString("%1: the section \"Job\" has no \"command\"").Arg(ini.FileName()));
  }
  return reader.m_Job;
}

}  // namespace

Job Job::Parse(const AString& fileName, const AString& text) {
  std::vector<AString> problems;
  const Job job = Parse(fileName, text, problems);
  if (!problems.empty()) {
    throw JobError(problems.front());
  }
  return job;
}

Job Job::Parse(const AString& fileName, const AString& text, std::vector<AString>& problems) {
  try {
    return ReadJob(AIniText(fileName, text), problems);
  } catch (const BaseSDK::AIniError& error) {
    problems.emplace_back(error.what());
    return Job();
  }
}

Job Job::Load(const AString& fileName) {
  const std::optional<std::string> bytes = JobFile::Read(fileName);
  if (!bytes.has_value()) {
    throw JobError(AString("there is no job file %1").Arg(fileName));
  }
  return Parse(fileName, BaseSDK::AUtf8Encoding().Decode(*bytes));
}

JobError Job::ErrorAt(const char* key, const AString& reason) const {
  const auto line = m_Lines.find(key);
  const AString place = line == m_Lines.end()
                            ? m_FileName
                            : AString("%1:%2").Arg(m_FileName, AString().SetNum(line->second, 'u'));
  return JobError(AString("%1: %2: %3").Arg(place, key, reason));
}

}  // namespace NoxHandler
