#include "agent/handler/process/Session.h"

#include "agent/handler/system/ProcessHandle.h"

#include <csignal>

namespace NoxHandler {

// A process that starts another and ends while the list is read may leave neither in it. So that
// there are none is not believed the first time.
bool Session::Refresh() {
  return Look() || Look();
}

bool Session::Look() {
  m_Processes.clear();
  for (const ProcessTable::Process& process : ProcessTable::OfSession(m_Id)) {
    FileDescriptor handle = ProcessHandle::Open(process.m_Pid);
    // Asked again now that the handle is open: another process could have got the number before.
    const auto now = ProcessTable::Find(process.m_Pid);
    if (handle && now && now->m_StartTicks == process.m_StartTicks && Belongs(process)) {
      m_Processes.push_back(std::move(handle));
    }
  }
  return !m_Processes.empty();
}

void Session::Signal(int number) const {
  for (const FileDescriptor& process : m_Processes) {
    ProcessHandle::Signal(process, number);
  }
}

void Session::Terminate() const {
  Signal(SIGTERM);
  Signal(SIGCONT);
}

bool Session::Belongs(const ProcessTable::Process& process) const {
  return m_Token.empty() || ProcessTable::HasVariable(process.m_Pid, "NOX_RUN_ID=" + m_Token);
}

}  // namespace NoxHandler
