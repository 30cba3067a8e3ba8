#pragma once

#include "agent/daemon/control/RequestError.h"
#include "agent/daemon/store/StoreFileSystem.h"
#include "agent/daemon/store/WriteFailures.h"

#include <AgentInterfacesV3/AMsgIn.h>

#include <map>
#include <string>

namespace NoxAgent {

/// The scheduler ignores that it cannot write a file: it goes on with what is in memory, and the
/// change is undone at the next reading of the files. This tells the client instead: it throws
/// RequestError (not-written) when what the answered request has changed is not on the disk.
/// `result` is the scheduler's answer; `failures` has collected while it answered.
void ThrowIfNotWritten(const Corvane::AgentInterfacesV3::AMsgIn& request, long result,
                       const WriteFailures& failures, const StoreFileSystem& store);

/// The same error for changes that were found not to be on the disk later: `errors` has an errno
/// for each file name, at least one.
RequestError NotWrittenError(const std::map<std::string, int>& errors,
                             const StoreFileSystem& store);

}  // namespace NoxAgent
