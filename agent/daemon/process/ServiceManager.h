#pragma once

#include "agent/daemon/process/Environment.h"

#include <optional>
#include <string>

namespace NoxAgent {

/// Tells the service manager that started the agent, if there is one, how the agent is: datagrams
/// of a few lines to the socket that NOTIFY_SOCKET names. Without one, nothing happens.
class ServiceManager {
 public:
  explicit ServiceManager(const Environment& environment);
  ServiceManager(const ServiceManager&) = delete;
  ServiceManager& operator=(const ServiceManager&) = delete;
  ~ServiceManager();

  /// The start, or what Reloading announced, is done.
  void Ready() const;
  /// A refresh has begun; Ready follows when it is done.
  void Reloading() const;
  void Stopping() const;
  /// The sign of life that the watchdog waits for.
  void KeepAlive() const;

  /// How often KeepAlive is due, in milliseconds: half of what the service manager allows. Nothing
  /// when it does not ask.
  std::optional<unsigned long> KeepAliveInterval() const { return m_KeepAliveInterval; }

 private:
  void Send(const std::string& message, int flags = 0) const;

  std::string m_Address;
  int m_Fd = -1;
  std::optional<unsigned long> m_KeepAliveInterval;
};

}  // namespace NoxAgent
