#pragma once

// Names for clang's thread-safety analysis (-Wthread-safety); other compilers see nothing.
#if defined(__clang__)
#define ZENDRO_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define ZENDRO_THREAD_ANNOTATION(x)
#endif

/// A class whose objects are locks.
#define VARNEX_CAPABILITY(name) ZENDRO_THREAD_ANNOTATION(capability(name))
/// A class that holds a lock from its construction to its destruction.
#define VARNEX_SCOPED_CAPABILITY ZENDRO_THREAD_ANNOTATION(scoped_lockable)
/// A member that is only touched while the named lock is held.
#define VARNEX_GUARDED_BY(lock) ZENDRO_THREAD_ANNOTATION(guarded_by(lock))
/// An operation that is called with the named lock held.
#define VARNEX_REQUIRES(...) ZENDRO_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
/// An operation that is called without the named lock, because it takes it.
#define VARNEX_EXCLUDES(...) ZENDRO_THREAD_ANNOTATION(locks_excluded(__VA_ARGS__))
/// A lock that is always taken before the named ones.
#define VARNEX_ACQUIRED_BEFORE(...) ZENDRO_THREAD_ANNOTATION(acquired_before(__VA_ARGS__))
/// An operation that returns with the lock taken.
#define VARNEX_ACQUIRE(...) ZENDRO_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
/// An operation that gives the lock back.
#define VARNEX_RELEASE(...) ZENDRO_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
