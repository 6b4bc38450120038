#pragma once

#include <cerrno>
#include <pthread.h>

// Counts the threads that the project's libraries join, and refuses to start them. For one source
// file of a test that is linked with -Wl,--wrap=pthread_create,--wrap=pthread_join.
inline bool threads_can_start = true;
inline int joins = 0;

extern "C" int __real_pthread_create(pthread_t *, const pthread_attr_t *, void *(*)(void *),
                                     void *);
extern "C" int __wrap_pthread_create(pthread_t *thread, const pthread_attr_t *attributes,
                                     void *(*body)(void *), void *argument) {
    return threads_can_start ? __real_pthread_create(thread, attributes, body, argument) : EAGAIN;
}

extern "C" int __real_pthread_join(pthread_t, void **);
extern "C" int __wrap_pthread_join(pthread_t thread, void **result) {
    ++joins;
    return __real_pthread_join(thread, result);
}
