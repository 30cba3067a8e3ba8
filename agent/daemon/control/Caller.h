#pragma once

namespace NoxAgent {

/// Who sends requests on a connection to the control socket, and what is open to him beyond what is
/// open to everybody who may use the socket.
struct Caller {
  long m_Process = 0;  ///< the process that has connected, 0 when that is not known
  /// He may read jobs and change them: whoever writes a job has the rights that it runs with.
  bool m_MayUseJobs = false;
};

}  // namespace NoxAgent
