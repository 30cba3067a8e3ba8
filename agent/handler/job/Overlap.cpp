#include "agent/handler/job/Overlap.h"

using BaseSDK::AString;

std::optional<EOverlap> ParseOverlap(const AString& word) {
  if (word == AString("skip")) {
    return EOverlap::Skip;
  }
  if (word == AString("queue")) {
    return EOverlap::Queue;
  }
  return word == AString("kill") ? std::optional(EOverlap::Kill) : std::nullopt;
}

EOverlap DecideOverlap(EOverlap wanted, bool neverRun) {
  return neverRun ? EOverlap::Skip : wanted;
}
