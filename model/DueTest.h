#pragma once

namespace Nox {

// The fixed seconds of a due test.

/// Later than this after its start a run counts as late.
constexpr long PunctualSeconds = 59;
/// The last repetition, at the very end of the active period, may be found this much after it.
constexpr long GraceSeconds = 5;
/// The search for the next run leaves out the minute that is under way.
constexpr long SearchAheadSeconds = 60;

}  // namespace Nox
