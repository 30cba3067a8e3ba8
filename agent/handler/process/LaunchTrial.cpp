#include "agent/handler/process/LaunchTrial.h"

#include "agent/handler/process/Launch.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

using BaseSDK::AString;

namespace NoxHandler {

namespace {

enum class Finding { Missing, Unusable, Usable, Unknown };

bool MayExecute(const std::string& path, const struct stat& info, const Account& account) {
  const bool anybodyMay = (info.st_mode & (S_IXUSR | S_IXGRP | S_IXOTH)) != 0;
  return anybodyMay &&
         (account.m_Switch || faccessat(AT_FDCWD, path.c_str(), X_OK, AT_EACCESS) == 0);
}

// For a job of another user the agent only sees what is plain to everybody.
Finding LookAt(const std::string& path, mode_t type, const Account& account) {
  struct stat info {};
  if (stat(path.c_str(), &info) != 0) {
    return errno == ENOENT || errno == ENOTDIR ? Finding::Missing : Finding::Unknown;
  }
  if ((info.st_mode & S_IFMT) != type) {
    return Finding::Unusable;
  }
  return MayExecute(path, info, account) ? Finding::Usable : Finding::Unusable;
}

void CheckDirectory(const Job& job, const Account& account) {
  if (job.m_Directory.empty()) {
    return;
  }
  const AString name(job.m_Directory.c_str());
  switch (LookAt(job.m_Directory, S_IFDIR, account)) {
    case Finding::Missing:
      throw job.ErrorAt("directory", AString("there is no directory %1").Arg(name));
    case Finding::Unusable:
      throw job.ErrorAt("directory",
                        AString("%1 is not a directory that may be entered").Arg(name));
    case Finding::Usable:
    case Finding::Unknown:
      break;
  }
}

void CheckProgram(const Job& job, const char* key, const Launch& launch) {
  bool isThere = false;
  for (const std::string& candidate : launch.m_Candidates) {
    const Finding finding = LookAt(candidate, S_IFREG, launch.m_Account);
    if (finding == Finding::Usable || finding == Finding::Unknown) {
      return;
    }
    isThere = isThere || finding == Finding::Unusable;
  }
  const bool isPath = job.m_Command.find('/') != std::string::npos;
  const char* const missing =
      isPath ? "there is no program %1" : "there is no program %1 in the job's PATH";
  throw job.ErrorAt(
      key, AString(isThere ? "%1 may not be executed" : missing).Arg(job.m_Command.c_str()));
}

void CheckBeside(const Job& job, const char* key, const std::vector<std::string>& words) {
  if (!words.empty()) {
    const Job beside = job.Beside(words);
    CheckProgram(beside, key, Launch(beside, {}, {}, 1));
  }
}

}  // namespace

void LaunchTrial::Check(const Job& job) {
  const Launch launch(job, {}, {}, 1);
  CheckDirectory(job, launch.m_Account);
  CheckProgram(job, "command", launch);
  CheckBeside(job, "condition", job.m_Condition);
  CheckBeside(job, "on_failure", job.m_OnFailure);
  CheckBeside(job, "on_recovery", job.m_OnRecovery);
}

}  // namespace NoxHandler
