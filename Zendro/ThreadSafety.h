#pragma once

// Names for clang's thread-safety analysis (-Wthread-safety); other compilers see nothing.
#if defined(__clang__)
#define VARNEX_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define VARNEX_THREAD_ANNOTATION(x)
#endif

/// A class whose objects are locks.
#define VARNEX_CAPABILITY(name) VARNEX_THREAD_ANNOTATION(capability(name))
/// A class that holds a lock from its construction to its destruction.
#define VARNEX_SCOPED_CAPABILITY VARNEX_THREAD_ANNOTATION(scoped_lockable)
/// A member that is only touched while the named lock is held.
#define VARNEX_GUARDED_BY(lock) VARNEX_THREAD_ANNOTATION(guarded_by(lock))
/// An operation that is called with the named lock held.
#define VARNEX_REQUIRES(...) VARNEX_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
/// An operation that is called without the named lock, because it takes it.
#define VARNEX_EXCLUDES(...) VARNEX_THREAD_ANNOTATION(locks_excluded(__VA_ARGS__))
/// A lock that is always taken before the named ones.
#define VARNEX_ACQUIRED_BEFORE(...) VARNEX_THREAD_ANNOTATION(acquired_before(__VA_ARGS__))
/// An operation that returns with the lock taken.
#define VARNEX_ACQUIRE(...) VARNEX_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
/// An operation that gives the lock back.
#define VARNEX_RELEASE(...) VARNEX_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
