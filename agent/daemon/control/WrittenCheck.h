#pragma once

#include "agent/daemon/store/StoreFileSystem.h"
#include "agent/daemon/store/WriteFailures.h"

#include <AgentInterfacesV3/AMsgIn.h>

namespace NoxAgent {

/// The scheduler takes no notice of files that it cannot write: it goes on with what is in memory,
/// and at the next reading of its files the change is undone. Whoever has asked for the change is
/// told instead: throws RequestError (not-written) when what the answered request has changed is
/// not on the disk. `failures` has been collected meanwhile.
void ThrowIfNotWritten(const Corvane::AgentInterfacesV3::AMsgIn& request, long result,
                       const WriteFailures& failures, const StoreFileSystem& store);

}  // namespace NoxAgent
