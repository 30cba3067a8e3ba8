#pragma once

namespace NoxAgent {

/// How long the control server waits for its clients and they for it, in seconds.
struct ControlPatience {
  unsigned m_ToRead = 5;   ///< a request
  unsigned m_ToWrite = 5;  ///< an answer, or what a stream's client lags behind
  /// For one of the threads that answer. Requests that plug-ins do not come back from hold these,
  /// and the others are to hear of it.
  unsigned m_ToWait = 5;
  unsigned m_ToThink = 5;  ///< between an answer and the next request on the same connection
};

}  // namespace NoxAgent
