#include "agent/handler/run/RunRecords.h"

#include "agent/handler/Log.h"
#include "agent/handler/system/FileDescriptor.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>

using BaseSDK::ALogger;
using BaseSDK::AString;

namespace NoxHandler {

namespace {

constexpr const char* Extension = ".run";

bool ReadRecord(const std::filesystem::path& path, RunRecord& record) {
  std::ifstream file(path);
  std::string end;
  file >> record.m_Pid >> record.m_StartTicks >> record.m_BootId >> record.m_Token >> end;
  return file && record.m_Pid > 1 && end == "end";
}

}  // namespace

int RunRecords::Write(const AString& taskId, const RunRecord& record) const {
  std::ostringstream text;
  // The last word tells a whole record from one that a full disk cut short.
  text << record.m_Pid << ' ' << record.m_StartTicks << ' ' << record.m_BootId << ' '
       << record.m_Token << " end\n";
  const std::string bytes = text.str();
  const FileDescriptor file(open(FileName(taskId).ToUtf8().c_str(),
                                 O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0600));
  if (!file) {
    return errno;
  }
  const ssize_t written = write(file.Get(), bytes.data(), bytes.size());
  if (written == static_cast<ssize_t>(bytes.size())) {
    return 0;
  }
  const int error = written < 0 ? errno : ENOSPC;
  Remove(taskId);
  return error;
}

void RunRecords::Remove(const AString& taskId) const {
  (void)unlink(FileName(taskId).ToUtf8().c_str());
}

std::vector<RunRecords::Named> RunRecords::All() const {
  std::vector<Named> records;
  std::error_code error;
  std::filesystem::directory_iterator entry(m_Directory.ToUtf8(), error);
  for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
    const std::filesystem::path path = entry->path();
    if (path.extension() != Extension) {
      continue;
    }
    Named named{AString(path.stem().c_str()), {}};
    if (ReadRecord(path, named.m_Record)) {
      records.push_back(std::move(named));
    } else {
      ALOG(HandlerLog(), ALogger::Warning, HandlerSource,
           AString("Deleting the unreadable run record %1").Arg(AString(path.c_str())));
      Remove(named.m_TaskId);
    }
  }
  return records;
}

AString RunRecords::FileName(const AString& taskId) const {
  return AString("%1/%2%3").Arg(m_Directory, taskId, Extension);
}

}  // namespace NoxHandler
