// Failures as requests are answered with them.
#pragma once

#include "agent/daemon/control/RequestError.h"
#include "agent/library/Json.h"

#include <BaseSDK/AString.h>

namespace NoxAgent {

/// The error that the exception being handled stands for; one that is no fault of the client's is
/// logged as that of `request`. REQUIRES: a std::exception is being handled. [any thread]
RequestError CaughtError(const BaseSDK::AString& request);

/// The "error" of an answer: {"code", "message", ...}.
Json ErrorJson(const RequestError& error);

}  // namespace NoxAgent
