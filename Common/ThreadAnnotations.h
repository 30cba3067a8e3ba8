#pragma once

/// Which lock guards what, for Clang to check when it compiles (-Wthread-safety). Empty elsewhere.
/// Against a host whose AMutex is no capability to Clang, build without that warning.
#if defined(__clang__)
#define PLUGIN_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define PLUGIN_THREAD_ANNOTATION(x)
#endif

/// A member that is read and written only with the lock held.
#define PLUGIN_GUARDED_BY(lock) PLUGIN_THREAD_ANNOTATION(guarded_by(lock))
/// The caller holds the lock.
#define PLUGIN_REQUIRES(...) PLUGIN_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
/// The caller does not hold the lock.
#define PLUGIN_EXCLUDES(...) PLUGIN_THREAD_ANNOTATION(locks_excluded(__VA_ARGS__))
