#pragma once

#include "agent/daemon/plugins/Plugin.h"

#include <BaseSDK/AMutex.h>

#include <chrono>
#include <map>
#include <memory>
#include <set>
#include <string>

namespace NoxAgent {

/// Stands between clients and the enumerations of plug-ins. A plug-in trusts each handle that it is
/// given, so clients never see one: they get a token, and only tokens that were given out lead to a
/// handle. Enumerations that clients leave open are closed for them. [any thread]
class EnumerationHandles {
 public:
  using Clock = std::chrono::steady_clock;

  /// How many may be open at the same time, of all clients.
  static constexpr std::size_t MaxOpen = 64;
  /// How many one client may have open; so a client that never closes any leaves some to others.
  static constexpr std::size_t MaxOfOneClient = 16;
  /// CloseIdle closes what was not used for this long.
  static constexpr Clock::duration MaxIdle = std::chrono::seconds(60);

  /// A place for one more enumeration, taken before the plug-in is asked to open it and given back
  /// if it is not filled. Throws RequestError when there is no place. `client` is the process that
  /// asks, 0 when that is not known.
  class Reservation {
   public:
    Reservation(EnumerationHandles& handles, long client);
    Reservation(const Reservation&) = delete;
    Reservation& operator=(const Reservation&) = delete;
    ~Reservation();
    /// Fills the place with what the plug-in opened and gives the token for it.
    std::string Fill(std::shared_ptr<Plugin> plugin, unsigned long handle, Clock::time_point now);

   private:
    EnumerationHandles& m_Handles;
    const long m_Client;
    bool m_Filled = false;
  };

  /// One enumeration, kept from others while it is in use. Throws RequestError when the plug-in has
  /// none of this token, or when another request uses it.
  class Use {
   public:
    Use(EnumerationHandles& handles, const Plugin& plugin, std::string token,
        Clock::time_point now);
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;
    ~Use();
    unsigned long Handle() const { return m_Handle; }
    /// The caller closes the enumeration: the token becomes invalid when this object ends.
    void Forget() { m_Forget = true; }

   private:
    EnumerationHandles& m_Handles;
    const std::string m_Token;
    unsigned long m_Handle = 0;
    bool m_Forget = false;
  };

  /// Closes what has not been used for MaxIdle. [any thread]
  void CloseIdle(Clock::time_point now) NOX_EXCLUDES(m_Lock);
  /// Closes all that are not in use right now. [any thread]
  void CloseAll() NOX_EXCLUDES(m_Lock);
  std::size_t Count() const NOX_EXCLUDES(m_Lock);

 private:
  struct Entry {
    std::shared_ptr<Plugin> m_Plugin;
    unsigned long m_Handle = 0;
    Clock::time_point m_LastUse;
    bool m_InUse = false;
    long m_Client = 0;
  };

  std::size_t CountOf(long client) const NOX_REQUIRES(m_Lock);
  void CloseThose(bool (*choose)(const Entry&, Clock::time_point), Clock::time_point now)
      NOX_EXCLUDES(m_Lock);
  static void Close(const Entry& entry);

  mutable BaseSDK::AMutex m_Lock;
  std::map<std::string, Entry> m_Entries NOX_GUARDED_BY(m_Lock);
  std::multiset<long> m_Reserved NOX_GUARDED_BY(m_Lock);  ///< the clients
};

}  // namespace NoxAgent
