#pragma once

#include "agent/daemon/control/Api.h"
#include "agent/daemon/control/ControlPatience.h"
#include "agent/daemon/control/PeerCheck.h"
#include "agent/daemon/plugins/NotificationCenter.h"

#include <cstddef>
#include <memory>

namespace NoxAgent {

/// Serves HTTP/1.1 on the control socket; a connection takes one request after the other. One
/// thread does all input and output and never waits for a client. A few other threads answer
/// requests. So a client that stalls costs one connection for a few seconds, and nothing else.
class ControlServer {
 public:
  // Bounds on what clients can take up.
  static constexpr std::size_t MaxHeaderBytes = 8 * 1024;
  static constexpr std::size_t MaxBodyBytes = 3 * 512 * 1024;
  static constexpr unsigned MaxConnections = 64;
  static constexpr unsigned MaxStreams = 16;
  /// With more connections than this, each is closed after its answer: so clients that keep a
  /// connection without using it never lock others out.
  static constexpr unsigned MaxKeptConnections = MaxConnections / 2;
  /// On one connection; it is closed after the last answer.
  static constexpr unsigned MaxRequests = 1000;
  /// How many bytes the client of a stream may lag behind before it is dropped: a burst of
  /// thousands of tasks makes lines faster than a client shows them.
  static constexpr std::size_t MaxStreamBacklog = 1024 * 1024;
  /// How many requests are answered at the same time; further ones wait.
  static constexpr unsigned Workers = 4;

  /// For the status; the first three count since the start.
  struct Counters {
    unsigned long m_Requests = 0;
    unsigned long m_Errors = 0;   ///< answered with 4xx or 5xx
    unsigned long m_Dropped = 0;  ///< streams whose client was too slow
    unsigned m_Connections = 0;   ///< now
    unsigned m_Streams = 0;       ///< now
  };

  /// For the listening socket `fd`, which stays the caller's. The references are borrowed and
  /// outlive the server. Throws std::system_error when the system has no threads to give.
  ControlServer(int fd, const PeerCheck& peers, Api& api, NotificationCenter& notifications,
                const ControlPatience& patience = {});
  ControlServer(const ControlServer&) = delete;
  ControlServer& operator=(const ControlServer&) = delete;
  /// REQUIRES: Stop has returned true, or Start was never called.
  ~ControlServer();

  /// Serves clients from now on, also those that have connected already. Call it once.
  void Start();

  /// Takes no more requests, ends streams, cuts answers that are made in parts, and waits until all
  /// other requests under way have been answered, for `milliseconds` at most; false when one has
  /// not come back by then.
  bool Stop(unsigned long milliseconds);

  Counters Count() const;

 private:
  class Turn;
  struct Impl;
  const std::unique_ptr<Impl> m_Impl;
};

}  // namespace NoxAgent
