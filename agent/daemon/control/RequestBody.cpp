#include "agent/daemon/control/RequestBody.h"

#include "agent/daemon/control/JsonMessage.h"
#include "agent/daemon/control/RequestError.h"

#include <algorithm>

using BaseSDK::AString;

namespace NoxAgent {
namespace {

RequestError Missing(const char* name) {
  return RequestError(HttpStatus::BadRequest, "missing-argument",
                      AString("\"%1\" is missing").Arg(name));
}

}  // namespace

RequestBody::RequestBody(const std::string& body, std::initializer_list<const char*> names)
    : m_Members(JsonMessage::ParseObject(body)) {
  for (const auto& [key, value] : m_Members.Members()) {
    if (std::find(names.begin(), names.end(), key) == names.end()) {
      throw RequestError(HttpStatus::BadRequest, "unexpected-argument",
                         AString("there is no \"%1\" here").Arg(AString::FromUtf8(key)));
    }
  }
}

long RequestBody::Number(const char* name, std::optional<long> fallback) const {
  const Json* const found = m_Members.Find(name);
  if (found == nullptr) {
    if (!fallback.has_value()) {
      throw Missing(name);
    }
    return *fallback;
  }
  const std::optional<long> number = JsonMessage::WholeNumber(*found);
  if (!number.has_value()) {
    throw RequestError(
        HttpStatus::BadRequest, "mistyped-argument",
        AString("\"%1\" is to be a whole number in the signed 32-bit range").Arg(name));
  }
  return *number;
}

AString RequestBody::Text(const char* name, const std::optional<AString>& fallback) const {
  const Json* const found = m_Members.Find(name);
  if (found == nullptr) {
    if (!fallback.has_value()) {
      throw Missing(name);
    }
    return *fallback;
  }
  if (!found->IsText()) {
    throw RequestError(HttpStatus::BadRequest, "mistyped-argument",
                       AString("\"%1\" is to be a string").Arg(name));
  }
  return AString::FromUtf8(found->Text());
}

const Json::List& RequestBody::Items(const char* name) const {
  const Json* const found = m_Members.Find(name);
  if (found == nullptr) {
    throw Missing(name);
  }
  if (!found->IsList()) {
    throw RequestError(HttpStatus::BadRequest, "mistyped-argument",
                       AString("\"%1\" is to be a list").Arg(name));
  }
  return found->Items();
}

}  // namespace NoxAgent
