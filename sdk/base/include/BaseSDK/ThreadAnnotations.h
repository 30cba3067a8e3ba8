#pragma once

/// Which lock guards what, for Clang to check when it compiles (-Wthread-safety). Empty elsewhere.
#if defined(__clang__)
#define NOX_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define NOX_THREAD_ANNOTATION(x)
#endif

/// Marks a class whose objects are locks; `name` is the word for them in messages ("mutex").
#define NOX_CAPABILITY(name) NOX_THREAD_ANNOTATION(capability(name))
/// Marks a class whose objects hold a lock from their construction to their destruction.
#define NOX_SCOPED_CAPABILITY NOX_THREAD_ANNOTATION(scoped_lockable)
/// A member that is read and written only with the lock held.
#define NOX_GUARDED_BY(lock) NOX_THREAD_ANNOTATION(guarded_by(lock))
/// A pointer whose target is read and written only with the lock held.
#define NOX_PT_GUARDED_BY(lock) NOX_THREAD_ANNOTATION(pt_guarded_by(lock))
/// Where two locks are held at the same time, this one is taken before or after those named.
#define NOX_ACQUIRED_BEFORE(...) NOX_THREAD_ANNOTATION(acquired_before(__VA_ARGS__))
#define NOX_ACQUIRED_AFTER(...) NOX_THREAD_ANNOTATION(acquired_after(__VA_ARGS__))
/// The caller holds the lock.
#define NOX_REQUIRES(...) NOX_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
/// The caller does not hold the lock.
#define NOX_EXCLUDES(...) NOX_THREAD_ANNOTATION(locks_excluded(__VA_ARGS__))
/// The call takes the lock; the second form does so when it returns the given value.
#define NOX_ACQUIRE(...) NOX_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define NOX_TRY_ACQUIRE(...) NOX_THREAD_ANNOTATION(try_acquire_capability(__VA_ARGS__))
/// The call gives the lock back.
#define NOX_RELEASE(...) NOX_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
/// The function returns a reference to this lock.
#define NOX_RETURN_CAPABILITY(lock) NOX_THREAD_ANNOTATION(lock_returned(lock))
/// Switches the check off within one function. Say there why it is safe.
#define NOX_NO_THREAD_SAFETY_ANALYSIS NOX_THREAD_ANNOTATION(no_thread_safety_analysis)
