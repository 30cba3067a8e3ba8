#include "Timeline.h"

#include <BaseSDK/ThreadHooks.h>

// Found before those of the base library, because they are the executable's own.
namespace BaseSDK::Platform {

void OnThreadStart() {
  VirtualTime::Timeline::Instance().AddThread();
}

void OnThreadEnter() {
  VirtualTime::Timeline::NoteOwnThread();
}

void OnThreadEnd() {
  VirtualTime::Timeline::Instance().RemoveThread();
}

}  // namespace BaseSDK::Platform
