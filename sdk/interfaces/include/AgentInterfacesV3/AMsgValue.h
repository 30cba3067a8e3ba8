#pragma once

#include <BaseSDK/ALtstr.h>
#include <BaseSDK/AMap.h>
#include <BaseSDK/AString.h>

#include <functional>
#include <map>
#include <string>
#include <variant>

namespace Corvane::AgentInterfacesV3 {

/// A map of texts as it crosses interfaces.
using AStringMap = BaseSDK::Container::AMap<BaseSDK::AString, BaseSDK::AString, BaseSDK::ALtstr>;

/// The type of an argument of a message.
enum class AMsgType {
  Long,      ///< whole number in the signed 32-bit range, at both word sizes
  ULong,     ///< whole number of 0 and up, as wide as the machine's words
  Bool,      ///< truth value
  String,    ///< text
  StringMap  ///< texts by distinct keys
};

/// One argument; its alternatives stand in the order of AMsgType.
using AMsgValue = std::variant<long, unsigned long, bool, BaseSDK::AString, AStringMap>;

/// Arguments by name.
using AMsgArguments = std::map<std::string, AMsgValue, std::less<>>;

/// The type of the alternative that `value` holds.
inline AMsgType TypeOf(const AMsgValue& value) {
  return static_cast<AMsgType>(value.index());
}

/// The word for the type in messages and docs: "Long", "ULong", "Bool", "String" or "StringMap".
const char* NameOf(AMsgType type);

}  // namespace Corvane::AgentInterfacesV3
