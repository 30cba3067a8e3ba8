#include "agent/daemon/control/EnumerationHandles.h"

#include "agent/daemon/control/RequestError.h"

#include <AgentInterfacesV3/AMsgIn.h>

#include <sys/random.h>

#include <array>
#include <vector>

using BaseSDK::AMutexGuard;
using BaseSDK::AString;
using Corvane::AgentInterfacesV3::AMsgIn;
using Corvane::AgentInterfacesV3::AMsgReply;

namespace NoxAgent {
namespace {

// 128 random bits: not to be guessed, and never the same twice.
std::string MakeToken() {
  std::array<unsigned char, 16> bytes{};
  if (::getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
    throw RequestError(HttpStatus::Internal, "no-random-numbers",
                       "the system gives no random numbers");
  }
  static constexpr char Digits[] = "0123456789abcdef";
  std::string token;
  for (const unsigned char byte : bytes) {
    token += Digits[byte >> 4];
    token += Digits[byte & 15];
  }
  return token;
}

}  // namespace

EnumerationHandles::Reservation::Reservation(EnumerationHandles& handles, long client)
    : m_Handles(handles), m_Client(client) {
  AMutexGuard guard(m_Handles.m_Lock);
  if (m_Handles.CountOf(client) >= MaxOfOneClient) {
    throw RequestError(HttpStatus::Unavailable, "too-many-enumerations",
                       AString("this client (process %1) has %2 enumerations open, as many as one "
                               "may: end them with FindClose, or try again in a minute")
                           .Arg(AString().SetNum(client, 'd'),
                                AString().SetNum(static_cast<unsigned long>(MaxOfOneClient), 'u')));
  }
  if (m_Handles.m_Entries.size() + m_Handles.m_Reserved.size() >= MaxOpen) {
    throw RequestError(HttpStatus::Unavailable, "too-many-enumerations",
                       "too many enumerations are open: end them with FindClose, or try again in "
                       "a minute");
  }
  m_Handles.m_Reserved.insert(client);
}

EnumerationHandles::Reservation::~Reservation() {
  if (!m_Filled) {
    AMutexGuard guard(m_Handles.m_Lock);
    m_Handles.m_Reserved.extract(m_Client);
  }
}

std::string EnumerationHandles::Reservation::Fill(std::shared_ptr<Plugin> plugin,
                                                  unsigned long handle, Clock::time_point now) {
  std::string token = MakeToken();
  AMutexGuard guard(m_Handles.m_Lock);
  m_Handles.m_Entries[token] = {std::move(plugin), handle, now, false, m_Client};
  m_Handles.m_Reserved.extract(m_Client);
  m_Filled = true;
  return token;
}

EnumerationHandles::Use::Use(EnumerationHandles& handles, const Plugin& plugin, std::string token,
                             Clock::time_point now)
    : m_Handles(handles), m_Token(std::move(token)) {
  AMutexGuard guard(m_Handles.m_Lock);
  const auto found = m_Handles.m_Entries.find(m_Token);
  if (found == m_Handles.m_Entries.end() || found->second.m_Plugin.get() != &plugin) {
    throw RequestError(HttpStatus::NotFound, "unknown-handle",
                       "no enumeration has this handle: it was never opened, or is closed by now; "
                       "start again with FindFirstTask");
  }
  Entry& entry = found->second;
  if (entry.m_InUse) {
    throw RequestError(HttpStatus::Conflict, "handle-in-use",
                       "another request uses this enumeration right now: open one for each user");
  }
  entry.m_InUse = true;
  entry.m_LastUse = now;
  m_Handle = entry.m_Handle;
}

EnumerationHandles::Use::~Use() {
  AMutexGuard guard(m_Handles.m_Lock);
  if (m_Forget) {
    m_Handles.m_Entries.erase(m_Token);
  } else {
    m_Handles.m_Entries[m_Token].m_InUse = false;
  }
}

std::size_t EnumerationHandles::CountOf(long client) const {
  if (client == 0) {
    return 0;
  }
  std::size_t count = m_Reserved.count(client);
  for (const auto& [token, entry] : m_Entries) {
    count += entry.m_Client == client ? 1U : 0U;
  }
  return count;
}

void EnumerationHandles::CloseIdle(Clock::time_point now) {
  CloseThose(
      [](const Entry& entry, Clock::time_point time) { return time - entry.m_LastUse >= MaxIdle; },
      now);
}

void EnumerationHandles::CloseAll() {
  CloseThose([](const Entry&, Clock::time_point) { return true; }, {});
}

std::size_t EnumerationHandles::Count() const {
  AMutexGuard guard(m_Lock);
  return m_Entries.size();
}

void EnumerationHandles::CloseThose(bool (*choose)(const Entry&, Clock::time_point),
                                    Clock::time_point now) {
  std::vector<Entry> closing;
  {
    AMutexGuard guard(m_Lock);
    std::erase_if(m_Entries, [&](const auto& item) {
      const bool chosen = !item.second.m_InUse && choose(item.second, now);
      if (chosen) {
        closing.push_back(item.second);
      }
      return chosen;
    });
  }
  for (const Entry& entry : closing) {
    Close(entry);
  }
}

void EnumerationHandles::Close(const Entry& entry) {
  AMsgReply reply;
  AMsgIn request("INoxTaskScheduler", "FindClose", reply);
  request.Set("handle", entry.m_Handle);
  entry.m_Plugin->Send(request);
}

}  // namespace NoxAgent
