#pragma once

#include <AgentInterfacesV3/AMsgReply.h>

namespace NoxAgent {

/// Throws the RequestError that stands for the reply's error; does nothing when the reply is none.
void ThrowIfError(const Corvane::AgentInterfacesV3::AMsgReply& reply);

}  // namespace NoxAgent
