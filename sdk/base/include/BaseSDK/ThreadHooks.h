#pragma once

namespace BaseSDK::Platform {

/// AThread calls these so that a library which owns time (VirtualTime) knows the threads that take
/// part. They do nothing here; such a library defines them again and is found first by the linker.

/// On the starting thread, before the new one is created. When that fails, OnThreadEnd follows on
/// the same thread.
void OnThreadStart();

/// On the new thread, before its Run: from here on the thread that calls is known to take part.
void OnThreadEnter();

/// On the ending thread, after its Run has returned and IsRunning says so.
void OnThreadEnd();

}  // namespace BaseSDK::Platform
