#include "RequestEncoding.h"

#include <BaseSDK/ALogger.h>

namespace Corvane::AgentInterfacesV3 {

void WarnNotDelivered(const AMsgIn& request) {
  using BaseSDK::ALogger;
  using BaseSDK::AString;
  ALOG(ALogger::GetLogger("Corvane::Agent::Interfaces"), ALogger::Warning, "RequestEncoding",
       AString("Call of %1::%2 was not delivered: %3")
           .Arg(AString::FromUtf8(request.Interface()), AString::FromUtf8(request.Operation()),
                request.Reply().ErrorText()));
}

}  // namespace Corvane::AgentInterfacesV3
