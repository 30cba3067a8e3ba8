#pragma once

#include <BaseSDK/AString.h>

#include <optional>

namespace NoxHandler {

/// What a job wants when it comes due while its previous run goes on.
enum class OverlapRule {
  Skip,   ///< the run is left out
  Queue,  ///< it starts when the previous one ends; one waits at most
  Kill,   ///< the previous one is ended first
};

/// "skip", "queue" or "kill"; empty for any other word.
std::optional<OverlapRule> ParseOverlap(const BaseSDK::AString& word);

/// What becomes of a dispatch that finds the task running. The scheduler takes a task that says
/// "Started" for one that never ran each time it reads the task files, and dispatches it once more:
/// a dispatch as "never run" of a running task is that echo and nothing else, whatever the job
/// wants.
OverlapRule DecideOverlap(OverlapRule wanted, bool neverRun);

}  // namespace NoxHandler
