#include "agent/daemon/store/WriteTrouble.h"

#include "agent/daemon/process/AgentLog.h"

#include <cstring>
#include <utility>

using BaseSDK::ALogger;
using BaseSDK::AMutexGuard;
using BaseSDK::AString;

namespace NoxAgent {
namespace {

constexpr const char* WriteTroubleSource = "WriteTrouble";

}  // namespace

int WriteTrouble::ErrorOf(const std::string& name) const {
  AMutexGuard guard(m_Lock);
  const auto found = m_Stale.find(name);
  return found != m_Stale.end() ? found->second : 0;
}

void WriteTrouble::Forget(const std::string& name) {
  AMutexGuard guard(m_Lock);
  m_Stale.erase(name);
}

void WriteTrouble::ForgetFiles() {
  AMutexGuard guard(m_Lock);
  m_Stale.clear();
}

bool WriteTrouble::NoteFailure(const std::string& name, int error) {
  m_Stale[name] = error;
  ++m_Failed;
  return std::exchange(m_Error, error) != error;
}

/// One file that cannot be written among many that can is told of once: that others can be written
/// is no news.
bool WriteTrouble::NoteSuccess(const std::string& name) {
  const bool isOver = m_Stale.erase(name) > 0 || m_Stale.empty();
  return isOver && std::exchange(m_Error, 0) != 0;
}

void WriteTrouble::Note(const std::string& name, int error) {
  bool isNews = false;
  unsigned long failed = 0;
  {
    AMutexGuard guard(m_Lock);
    isNews = error == 0 ? NoteSuccess(name) : NoteFailure(name, error);
    failed = error == 0 && isNews ? std::exchange(m_Failed, 0) : m_Failed;
  }
  if (!isNews) {
    return;
  }
  if (error != 0) {
    ALOG(
        AgentLog(), ALogger::Warning, WriteTroubleSource,
        AString("The task file %1 cannot be written: %2. The scheduler goes on with the task as it "
                "is in memory; what the file tells counts again at the next reading at %3. Other "
                "files that cannot be written are not told of")
            .Arg(AString::FromUtf8(name), std::strerror(error), m_Readings.NextText()));
  } else {
    ALOG(AgentLog(), ALogger::Notice, WriteTroubleSource,
         AString("Task files can be written again; writing failed %1 times")
             .Arg(AString().SetNum(failed, 'u')));
  }
}

}  // namespace NoxAgent
