#include "agent/daemon/returns/TaskReturns.h"

#include "agent/daemon/control/RequestError.h"
#include "agent/daemon/process/AgentLog.h"

#include <algorithm>
#include <cstring>

using BaseSDK::ALogger;
using BaseSDK::AMutexGuard;
using BaseSDK::AString;

namespace NoxAgent {

TaskReturns::TaskReturns(std::function<void()> onPut) : m_OnPut(std::move(onPut)) {}

void TaskReturns::Open(const std::string& path) {
  AMutexGuard guard(m_Lock);
  m_File.emplace(path);
  m_Moments = m_File->Read();
}

std::optional<long> TaskReturns::Find(const std::string& taskId) const {
  AMutexGuard guard(m_Lock);
  const auto found = m_Moments.find(taskId);
  return found == m_Moments.end() ? std::nullopt : std::optional(found->second);
}

TaskReturns::Ids TaskReturns::Due(long now) const {
  AMutexGuard guard(m_Lock);
  Ids due;
  for (const auto& [id, moment] : m_Moments) {
    if (moment <= now) {
      due.push_back(id);
    }
  }
  return due;
}

std::optional<long> TaskReturns::Next() const {
  AMutexGuard guard(m_Lock);
  const auto first = std::min_element(
      m_Moments.begin(), m_Moments.end(),
      [](const auto& left, const auto& right) { return left.second < right.second; });
  return first == m_Moments.end() ? std::nullopt : std::optional(first->second);
}

void TaskReturns::Put(const Ids& taskIds, long moment) {
  if (taskIds.empty()) {
    return;
  }
  {
    AMutexGuard guard(m_Lock);
    ReturnsFile::Moments moments = m_Moments;
    for (const std::string& id : taskIds) {
      moments[id] = moment;
    }
    if (moments.size() > ReturnsFile::MaxEntries) {
      throw RequestError(HttpStatus::Unavailable, "too-many-returns",
                         "too many disabled tasks are to come back by themselves; nothing was "
                         "disabled");
    }
    if (const int error = Write(moments); error != 0) {
      throw RequestError(HttpStatus::NotWritten, "not-written",
                         AString("nothing was disabled, because when the tasks are to come back "
                                 "cannot be written: %1")
                             .Arg(std::strerror(error)));
    }
    m_Moments.swap(moments);
  }
  m_OnPut();
}

void TaskReturns::Cancel(const Ids& taskIds) {
  AMutexGuard guard(m_Lock);
  std::size_t cancelled = 0;
  for (const std::string& id : taskIds) {
    cancelled += m_Moments.erase(id);
  }
  if (cancelled == 0) {
    return;
  }
  if (const int error = Write(m_Moments); error != 0) {
    ALOG(AgentLog(), ALogger::Warning, "TaskReturns",
         AString("Cannot write which disabled tasks come back: %1. After a restart of the agent "
                 "some may come back that are not to")
             .Arg(std::strerror(error)));
  }
}

int TaskReturns::Write(const ReturnsFile::Moments& moments) const {
  return m_File.has_value() ? m_File->Write(moments) : 0;
}

}  // namespace NoxAgent
