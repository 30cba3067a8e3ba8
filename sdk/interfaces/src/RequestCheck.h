#pragma once

#include <AgentInterfacesV3/AInterfaceTable.h>
#include <AgentInterfacesV3/AMsgIn.h>

namespace Corvane::AgentInterfacesV3 {

/// The row of the operation that `request` asks for, when all its arguments are there, of their
/// types, and no others; otherwise null, and the reply says what is wrong.
const AInterfaceTable::AOperation* CheckRequest(const AInterfaceTable& table,
                                                const AMsgIn& request);

/// Answers with the error that the object does not serve the request's interface, and returns -1.
long RefuseInterface(const AMsgIn& request);

}  // namespace Corvane::AgentInterfacesV3
