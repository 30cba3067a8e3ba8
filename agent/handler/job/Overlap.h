#pragma once

#include <BaseSDK/AString.h>

#include <optional>

namespace NoxHandler {

/// What a job wants when it comes due while its previous run goes on.
enum class OverlapRule {
  Skip,   ///< the run is left out
  Queue,  ///< it starts when the previous one ends; one waits at most
  Kill,   ///< the previous one is ended first
  Allow,  ///< it starts beside the previous one
};

/// "skip", "queue", "kill" or "allow"; empty for any other word.
std::optional<OverlapRule> ParseOverlap(const BaseSDK::AString& word);

/// Decides what becomes of a task that is handed over while its run goes on; `wanted` is the rule
/// of its job. A task handed over as "never run" is always left out: each time the scheduler reads
/// the task files, it takes a task that says "Started" for one that never ran and hands it over
/// again, although no new start is due.
OverlapRule DecideOverlap(OverlapRule wanted, bool neverRun);

}  // namespace NoxHandler
