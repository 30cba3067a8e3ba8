#include "agent/handler/run/Leftovers.h"

#include "agent/handler/HandlerSettings.h"
#include "agent/handler/Log.h"
#include "agent/handler/process/Session.h"
#include "agent/handler/run/RunRecords.h"

#include <poll.h>

#include <algorithm>
#include <csignal>
#include <map>
#include <optional>
#include <string>

using BaseSDK::ALogger;
using BaseSDK::AString;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

namespace NoxHandler {

namespace {

// New processes may be started between two looks.
constexpr auto LookAgain = 100ms;

// The processes of a recorded run; nothing when its number cannot be theirs any more.
std::optional<Session> SessionOf(const RunRecord& record) {
  if (record.m_BootId != ProcessTable::BootId()) {
    return std::nullopt;
  }
  if (const auto leader = ProcessTable::Find(record.m_Pid)) {
    // The system gives no number out again while a session has it. So either this is the same
    // process and the session is that of the run, or the run is over.
    return leader->m_StartTicks == record.m_StartTicks ? std::optional<Session>(record.m_Pid)
                                                       : std::nullopt;
  }
  return Session(record.m_Pid, record.m_Token);
}

struct Leftover {
  AString m_TaskId;
  Session m_Session;
};
using Remaining = std::map<std::string, Leftover>;  // by the run's token

void DropEnded(Remaining& remaining, RunRecords& records) {
  for (auto it = remaining.begin(); it != remaining.end();) {
    if (it->second.m_Session.Refresh()) {
      ++it;
    } else {
      records.Remove(it->first);
      it = remaining.erase(it);
    }
  }
}

void WaitForOneToEnd(const Remaining& remaining, Clock::duration limit) {
  std::vector<pollfd> handles;
  for (const auto& [token, leftover] : remaining) {
    for (const FileDescriptor& process : leftover.m_Session.EndHandles()) {
      handles.push_back({process.Get(), POLLIN, 0});
    }
  }
  const auto milliseconds = std::chrono::ceil<std::chrono::milliseconds>(limit).count();
  (void)poll(handles.data(), handles.size(), static_cast<int>(milliseconds));
}

void WaitUntil(Clock::time_point deadline, Remaining& remaining, RunRecords& records, bool kill) {
  for (auto now = Clock::now(); !remaining.empty() && now < deadline; now = Clock::now()) {
    for (const auto& [token, leftover] : remaining) {
      if (kill) {
        leftover.m_Session.Signal(SIGKILL);
      }
    }
    WaitForOneToEnd(remaining, std::min<Clock::duration>(deadline - now, LookAgain));
    DropEnded(remaining, records);
  }
}

}  // namespace

void Leftovers::End(RunRecords& records, std::chrono::milliseconds grace) {
  Remaining remaining;
  for (const NamedRunRecord& named : records.All()) {
    auto session = SessionOf(named.m_Record);
    if (session && session->Refresh()) {
      ALOG(HandlerLog(), ALogger::Warning, HandlerSource,
           AString("Ending the run of task '%1' that an earlier agent left behind (process %2)")
               .Arg(named.m_TaskId, DecimalText(named.m_Record.m_Pid)));
      session->Terminate();
      remaining.emplace(named.m_Record.m_Token, Leftover{named.m_TaskId, std::move(*session)});
    } else {
      records.Remove(named.m_Record.m_Token);
    }
  }
  WaitUntil(Clock::now() + grace, remaining, records, false);
  WaitUntil(Clock::now() + HandlerSettings::AfterKill, remaining, records, true);
  for (const auto& [token, leftover] : remaining) {
    ALOG(HandlerLog(), ALogger::Error, HandlerSource,
         AString("Cannot end the earlier run of task '%1': end its processes by hand")
             .Arg(leftover.m_TaskId));
  }
}

}  // namespace NoxHandler
