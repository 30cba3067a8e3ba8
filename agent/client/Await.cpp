#include "agent/client/Await.h"

#include <BaseSDK/AEvent.h>

using BaseSDK::AEvent;

namespace NoxAgent {

namespace {

constexpr unsigned long MillisecondsBetweenLooks = 100;

}  // namespace

void Await(const std::function<bool()>& isSo) {
  AEvent pause(AEvent::AutoReset);  // nobody sets it
  while (!isSo()) {
    (void)pause.Wait(MillisecondsBetweenLooks, BaseSDK::ClockSkewIgnore);
  }
}

}  // namespace NoxAgent
