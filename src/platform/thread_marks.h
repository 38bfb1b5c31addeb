// Annotations for clang's -Wthread-safety, which checks that data is used only while its lock is
// held. They are empty for other compilers.
#pragma once

#if defined(__clang__)
#define ORV_THREAD_MARK(mark) __attribute__((mark))
#else
#define ORV_THREAD_MARK(mark)
#endif

#define CAPABILITY(name) ORV_THREAD_MARK(capability(name))
#define SCOPED_CAPABILITY ORV_THREAD_MARK(scoped_lockable)
#define GUARDED_BY(mutex) ORV_THREAD_MARK(guarded_by(mutex))
#define REQUIRES(mutex) ORV_THREAD_MARK(requires_capability(mutex))
#define ACQUIRE(...) ORV_THREAD_MARK(acquire_capability(__VA_ARGS__))
#define RELEASE(...) ORV_THREAD_MARK(release_capability(__VA_ARGS__))
