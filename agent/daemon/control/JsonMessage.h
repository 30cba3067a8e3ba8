#pragma once

#include "agent/library/Json.h"

#include <AgentInterfacesV3/AInterfaceTable.h>
#include <AgentInterfacesV3/AMsgIn.h>

#include <optional>
#include <string>
#include <string_view>

namespace NoxAgent {

/// The JSON form of messages, by the interfaces' tables: a request's body is an object with the in
/// arguments by name, an answer's an object {"result": n, "out": {...}}.
///
/// Long and ULong are whole numbers, Bool is true or false, String a string, StringMap an object of
/// strings. The one exception: an enumeration's handle, which is a number to plug-ins, is a string
/// here, a token of EnumerationHandles.
struct JsonMessage {
  using Operation = Corvane::AgentInterfacesV3::AInterfaceTable::AOperation;
  using Argument = Corvane::AgentInterfacesV3::AInterfaceTable::AArgument;

  /// Whether the argument is an enumeration's handle.
  static bool IsHandle(const Argument& argument);

  /// A body as an object; an empty one is an empty object. Nesting is bounded. Throws RequestError.
  static Json ParseObject(std::string_view body);

  /// Sets the request's arguments from the object, all but handles. Throws RequestError for an
  /// argument that is missing, of another type, out of range or not known to the operation.
  static void Decode(const Json& object, const Operation& operation,
                     Corvane::AgentInterfacesV3::AMsgIn& request);
  /// A whole number in the signed 32-bit range; nothing for any other value.
  static std::optional<long> WholeNumber(const Json& value);
  /// The token given for the argument `name`, empty when it is left out or 0, which is no handle to
  /// plug-ins either. Throws RequestError when it is anything else but a string.
  static std::string DecodeToken(const Json& object, std::string_view name);

  /// The answer to a request that has a result. A handle among the out arguments is left out.
  static Json Encode(const Operation& operation,
                     const Corvane::AgentInterfacesV3::AMsgReply& reply);

  /// A StringMap.
  static Json EncodeMap(const Corvane::AgentInterfacesV3::AStringMap& map);

  /// Texts in JSON are UTF-8; bytes of a file name that are none become U+FFFD.
  static std::string Dump(const Json& value);
};

}  // namespace NoxAgent
