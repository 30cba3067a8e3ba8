#include <BaseSDK/ThreadHooks.h>

// Nothing else belongs into this file: a library that owns time defines the same functions, and
// takes the place of this file as a whole.
namespace BaseSDK::Platform {

void OnThreadStart() {}

void OnThreadEnter() {}

void OnThreadEnd() {}

}  // namespace BaseSDK::Platform
