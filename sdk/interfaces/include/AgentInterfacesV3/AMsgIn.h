#pragma once

#include <AgentInterfacesV3/AMsgReply.h>
#include <AgentInterfacesV3/AMsgValue.h>

#include <string>
#include <string_view>

namespace Corvane::AgentInterfacesV3 {

/// One request to an object: which operation of which interface, with which arguments, and where
/// the answer goes. For instance:
///
///   AMsgReply reply;
///   AMsgIn request("INoxTaskScheduler", "DeleteTask", reply);
///   request.Set("taskId", AString("backup"));
///   queue.Send(request);
///
/// AInterfaceTable says which operations and arguments there are. Nothing is checked here: the
/// object does that when it answers. One thread at a time.
class AMsgIn {
 public:
  /// `reply` is borrowed and outlives the request.
  AMsgIn(std::string_view interfaceName, std::string_view operation, AMsgReply& reply);

  /// Adds an argument, or replaces the one of that name. Returns *this.
  AMsgIn& Set(std::string_view name, AMsgValue value);

  const std::string& Interface() const { return m_Interface; }
  const std::string& Operation() const { return m_Operation; }
  const AMsgArguments& Arguments() const { return m_Arguments; }
  /// Null when there is no such argument; valid until the request is changed.
  const AMsgValue* Find(std::string_view name) const;
  /// Where the answer goes. A const request gives it out for writing too, because objects answer
  /// const requests.
  AMsgReply& Reply() const { return m_Reply; }

 private:
  std::string m_Interface;
  std::string m_Operation;
  AMsgArguments m_Arguments;
  AMsgReply& m_Reply;
};

}  // namespace Corvane::AgentInterfacesV3
