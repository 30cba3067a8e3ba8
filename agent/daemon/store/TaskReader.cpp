#include "agent/daemon/store/TaskReader.h"

#include "agent/daemon/process/AgentLog.h"

#include <AgentInterfacesV3/AMsgQueue.h>
#include <BaseSDK/AFile.h>
#include <BaseSDK/AFileCalls.h>

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <ctime>

using BaseSDK::AFileCalls;
using BaseSDK::AFileSystem;
using BaseSDK::ALogger;
using BaseSDK::AString;
using Corvane::AgentInterfacesV3::AMsgQueue;

namespace NoxAgent {
namespace {

constexpr const char* TaskReaderSource = "TaskReader";
// A file that has changed at so many looks in a row is being written over and over.
constexpr int MaxLooks = 3;

KnownFiles::Reader ReaderOfNow() {
  return AMsgQueue::IsAnswering() ? KnownFiles::Reader::Client : KnownFiles::Reader::Scheduler;
}

// "T1.vsk:3:7: not well formed"
AString Describe(const std::string& name, const Refusal& refusal) {
  return AString("%1:%2:%3: %4")
      .Arg(AString::FromUtf8(name), AString().SetNum(refusal.m_Line, 'u'),
           AString().SetNum(refusal.m_Column, 'u'), refusal.m_Reason);
}

}  // namespace

// What was found at a path.
struct TaskReader::Look {
  FileIdentity m_Identity;
  bool m_IsRegular = true;
  std::optional<Refusal> m_Refusal;
};

int TaskReader::Open(const std::string& name, const std::string& path, int flags, int& fd) {
  int error = ESTALE;
  for (int look = 0; error == ESTALE && look < MaxLooks; ++look) {
    error = TryToOpen(name, path, flags, fd);
  }
  if (error != 0 && error != ENOENT && error != EINTR) {
    ReportUnreadable(name, path, error);
  }
  return error;
}

int TaskReader::TryToOpen(const std::string& name, const std::string& path, int flags, int& fd) {
  if (const int error = m_Parts.m_Files.Open(path.c_str(), flags, 0, fd); error != 0) {
    return error;
  }
  Look look;
  int result = ENOMEM;
  try {
    result = LookAt(name, fd, look);
  } catch (const std::bad_alloc&) {
    // The result stays ENOMEM: the descriptor is closed below, and the caller gets the error.
  }
  if (result == 0 && !look.m_Refusal) {
    return 0;
  }
  (void)m_Parts.m_Files.Close(fd);
  fd = -1;
  return result != 0 ? result : PutAway(name, path, look);
}

int TaskReader::LookAt(const std::string& name, int fd, Look& look) {
  if (m_Parts.m_Open.IsBeingMade(name)) {
    return 0;
  }
  AFileSystem::Info info;
  if (const int error = m_Parts.m_Files.GetOpenInfo(fd, info); error != 0) {
    return error;
  }
  look.m_Identity = FileIdentity(info);
  look.m_IsRegular = S_ISREG(info.m_Mode);
  if (!look.m_IsRegular) {
    look.m_Refusal = Refusal{S_ISDIR(info.m_Mode) ? "it is a directory" : "it is no regular file"};
    return 0;
  }
  return m_Parts.m_Known.IsAccepted(name, look.m_Identity, ReaderOfNow()) ? 0
                                                                          : Judge(name, fd, look);
}

int TaskReader::Judge(const std::string& name, int fd, Look& look) {
  std::string bytes;
  const int error = AFileCalls::ReadAll(m_Parts.m_Files, fd, BaseSDK::AFile::MaxReadBytes, bytes);
  if (error != 0 && error != EFBIG) {
    return error;
  }
  AFileSystem::Info after;
  if (m_Parts.m_Files.GetOpenInfo(fd, after) != 0 || FileIdentity(after) != look.m_Identity) {
    return ESTALE;
  }
  look.m_Refusal = error == EFBIG ? Refusal{"it is larger than 16 MiB"} : JudgeDocument(bytes);
  if (!look.m_Refusal) {
    m_Parts.m_Open.AddJudged(fd, std::move(bytes));
    m_Parts.m_Known.Accept(name, look.m_Identity, look.m_Identity.IsSettled(std::time(nullptr)),
                           ReaderOfNow());
  }
  return 0;
}

int TaskReader::PutAway(const std::string& name, const std::string& path, const Look& look) {
  AFileSystem::Info info;
  if (m_Parts.m_Files.GetInfo(path.c_str(), info) != 0) {
    return ENOENT;
  }
  if (!look.m_IsRegular || S_ISLNK(info.m_Mode)) {
    LeaveInPlace(name, look,
                 S_ISLNK(info.m_Mode) ? "a symbolic link is not moved" : "only files are moved");
    return ENOENT;
  }
  const RefusedFolder::Taken taken = m_Parts.m_Refused.Take(path, name, look.m_Identity);
  switch (taken.m_Outcome) {
    case RefusedFolder::Taken::Outcome::Changed:
      return ESTALE;
    case RefusedFolder::Taken::Outcome::Failed:
      LeaveInPlace(name, look, taken.m_Problem);
      return ENOENT;
    case RefusedFolder::Taken::Outcome::Moved:
      break;
  }
  m_Parts.m_Known.Forget(name);
  ALOG(AgentLog(), ALogger::Warning, TaskReaderSource,
       AString("The task file %1: the scheduler can make no task of it. It is now %2; noxctl files "
               "takes it back when it is mended")
           .Arg(Describe(name, *look.m_Refusal), AString::FromUtf8(taken.m_Path)));
  return ENOENT;
}

void TaskReader::LeaveInPlace(const std::string& name, const Look& look, const AString& why) {
  if (m_Parts.m_Known.Refuse(name, look.m_Identity, *look.m_Refusal)) {
    ALOG(
        AgentLog(), ALogger::Warning, TaskReaderSource,
        AString("The task file %1: the scheduler can make no task of it. It stays where it is (%2) "
                "and counts as missing")
            .Arg(Describe(name, *look.m_Refusal), why));
  }
}

void TaskReader::ReportUnreadable(const std::string& name, const std::string& path, int error) {
  AFileSystem::Info info;
  (void)m_Parts.m_Files.GetInfo(path.c_str(),
                                info);  // without it the reason alone tells whether it is news
  const AString reason = error == ESTALE
                             ? AString("somebody writes to it")
                             : AString("it cannot be read: %1").Arg(std::strerror(error));
  if (m_Parts.m_Known.Refuse(name, FileIdentity(info), Refusal{reason})) {
    ALOG(AgentLog(), ALogger::Warning, TaskReaderSource,
         AString("The task file %1 counts as missing until the next reading at %2: %3")
             .Arg(AString::FromUtf8(name), m_Parts.m_Readings.NextText(), reason));
  }
}

}  // namespace NoxAgent
