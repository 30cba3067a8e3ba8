#pragma once

namespace BaseSDK::Platform {

// AThread calls these functions at the turns of a thread's life. They do nothing here. A library
// that owns time (VirtualTime) has to know which threads take part: it defines the functions again,
// and the linker finds those first.

/// Called on the starting thread, before the new one is created. If that fails, OnThreadEnd is
/// called on the starting thread as well.
void OnThreadStart();

/// Called on the new thread, before its Run: from now on this thread is known to take part.
void OnThreadEnter();

/// Called on the ending thread, after Run has returned and IsRunning is false.
void OnThreadEnd();

}  // namespace BaseSDK::Platform
