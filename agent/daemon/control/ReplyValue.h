#pragma once

#include <AgentInterfacesV3/AMsgReply.h>

#include <string_view>
#include <variant>

namespace NoxAgent {

/// An out argument of the reply; null when it has none of this name and type.
template <typename T>
const T* FindOut(const Corvane::AgentInterfacesV3::AMsgReply& reply, std::string_view name) {
  const auto found = reply.Out().find(name);
  return found == reply.Out().end() ? nullptr : std::get_if<T>(&found->second);
}

/// The same; an empty one, or 0, when the reply has none.
template <typename T>
T Out(const Corvane::AgentInterfacesV3::AMsgReply& reply, std::string_view name) {
  const T* const value = FindOut<T>(reply, name);
  return value != nullptr ? *value : T();
}

}  // namespace NoxAgent
