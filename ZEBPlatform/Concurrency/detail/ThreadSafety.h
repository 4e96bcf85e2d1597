#pragma once

/// Annotations for clang's thread-safety analysis: which data a lock guards, and which functions
/// expect it to be held. The build with clang reports every violation as an error; other compilers
/// ignore them.
#if defined(__clang__)
#define ZEB_THREAD_ATTRIBUTE(attribute) __attribute__((attribute))
#else
#define ZEB_THREAD_ATTRIBUTE(attribute)
#endif

/// The class is a lock, or an object that holds one while it lives.
#define ZEB_CAPABILITY(name) ZEB_THREAD_ATTRIBUTE(capability(name))
#define ZEB_SCOPED_CAPABILITY ZEB_THREAD_ATTRIBUTE(scoped_lockable)
/// The member is used only while the lock is held.
#define ZEB_GUARDED_BY(lock) ZEB_THREAD_ATTRIBUTE(guarded_by(lock))
/// The caller holds the lock, or must not hold it.
#define ZEB_REQUIRES(...) ZEB_THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))
#define ZEB_EXCLUDES(...) ZEB_THREAD_ATTRIBUTE(locks_excluded(__VA_ARGS__))
/// The function acquires the lock and keeps it, releases it, or acquires it if it returns the first
/// argument.
#define ZEB_ACQUIRES(...) ZEB_THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define ZEB_RELEASES(...) ZEB_THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))
#define ZEB_TRY_ACQUIRES(...) ZEB_THREAD_ATTRIBUTE(try_acquire_capability(__VA_ARGS__))
/// For code whose locking the analysis cannot follow; a comment beside it says why it is right.
#define ZEB_UNCHECKED_LOCKING ZEB_THREAD_ATTRIBUTE(no_thread_safety_analysis)
