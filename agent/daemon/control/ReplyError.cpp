#include "agent/daemon/control/ReplyError.h"

#include "agent/daemon/control/RequestError.h"

#include <AgentInterfacesV3/AMsgError.h>

using Corvane::AgentInterfacesV3::AMsgError;

namespace NoxAgent {
namespace {

unsigned StatusOf(AMsgError error) {
  switch (error) {
    case AMsgError::UnknownInterface:
    case AMsgError::UnknownOperation:
      return HttpStatus::NotFound;
    case AMsgError::MissingArgument:
    case AMsgError::MistypedArgument:
    case AMsgError::UnexpectedArgument:
      return HttpStatus::BadRequest;
    case AMsgError::NoObject:
    case AMsgError::QueueClosed:
      return HttpStatus::Unavailable;
    case AMsgError::OperationFailed:
      break;
  }
  return HttpStatus::Internal;
}

}  // namespace

void ThrowIfError(const Corvane::AgentInterfacesV3::AMsgReply& reply) {
  if (reply.IsError()) {
    throw RequestError(StatusOf(reply.ErrorCode()),
                       Corvane::AgentInterfacesV3::InfoOf(reply.ErrorCode()).m_Name,
                       reply.ErrorText());
  }
}

}  // namespace NoxAgent
