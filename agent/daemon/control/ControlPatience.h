#pragma once

namespace NoxAgent {

/// How long the control server waits for its clients, and how long it lets a request wait, in
/// seconds.
struct ControlPatience {
  unsigned m_ToRead = 5;   ///< a request
  unsigned m_ToWrite = 5;  ///< an answer, or what a stream's client lags behind
  /// How long a request waits for one of the threads that answer, before it is answered with an
  /// error. All of them may be busy with requests that plug-ins do not come back from.
  unsigned m_ToWait = 5;
  unsigned m_ToThink = 5;  ///< between an answer and the next request on the same connection
};

}  // namespace NoxAgent
