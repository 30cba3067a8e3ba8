#pragma once

/// How many allocations of this process, its libraries and its plug-ins are not yet freed. Comes
/// with operators new and delete of its own that count. Always 0 under a
/// sanitizer.
long LiveAllocations();
