#pragma once

#include "agent/library/Json.h"

#include <BaseSDK/AString.h>

#include <initializer_list>
#include <optional>
#include <string>

namespace NoxAgent {

/// The members of a request's body, for requests that are not operations of an interface. Whatever
/// is wrong with a member is thrown as a RequestError that names it.
class RequestBody {
 public:
  /// `names` are the members that may be there; any other one is an error.
  RequestBody(const std::string& body, std::initializer_list<const char*> names);

  /// A whole number in the signed 32-bit range; without a fallback it must be there.
  long Number(const char* name, std::optional<long> fallback = std::nullopt) const;
  BaseSDK::AString Text(const char* name,
                        const std::optional<BaseSDK::AString>& fallback = std::nullopt) const;
  /// A list; it must be there.
  const Json::List& Items(const char* name) const;

 private:
  Json m_Members;
};

}  // namespace NoxAgent
