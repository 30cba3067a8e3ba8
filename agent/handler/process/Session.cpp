#include "agent/handler/process/Session.h"

#include <csignal>

#include "agent/handler/system/ProcessHandle.h"

bool CSession::Refresh() {
  m_Processes.clear();
  for (const CProcessTable::CProcess& process : CProcessTable::OfSession(m_Id)) {
    CFileDescriptor handle = CProcessHandle::Open(process.m_Pid);
    // Asked again with the handle open: the number could have changed hands in between.
    const auto now = CProcessTable::Find(process.m_Pid);
    if (handle && now && now->m_StartTicks == process.m_StartTicks && Belongs(process)) {
      m_Processes.push_back(std::move(handle));
    }
  }
  return !m_Processes.empty();
}

void CSession::Signal(int number) const {
  for (const CFileDescriptor& process : m_Processes) {
    CProcessHandle::Signal(process, number);
  }
}

void CSession::Terminate() const {
  Signal(SIGTERM);
  Signal(SIGCONT);
}

bool CSession::Belongs(const CProcessTable::CProcess& process) const {
  return m_Token.empty() || CProcessTable::HasVariable(process.m_Pid, "NOX_RUN_ID=" + m_Token);
}
