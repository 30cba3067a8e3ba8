#include "agent/handler/job/Overlap.h"

using BaseSDK::AString;

namespace NoxHandler {

std::optional<OverlapRule> ParseOverlap(const AString& word) {
  if (word == AString("skip")) {
    return OverlapRule::Skip;
  }
  if (word == AString("queue")) {
    return OverlapRule::Queue;
  }
  if (word == AString("kill")) {
    return OverlapRule::Kill;
  }
  return word == AString("allow") ? std::optional(OverlapRule::Allow) : std::nullopt;
}

OverlapRule DecideOverlap(OverlapRule wanted, bool neverRun) {
  return neverRun ? OverlapRule::Skip : wanted;
}

}  // namespace NoxHandler
