#pragma once

#include <csignal>
#include <pthread.h>

namespace renewer {

// Starts a thread with default attributes that takes no signals: a signal that ends a wait, as an
// alarm does, is then taken by the thread that waits.
//
// Returns 0, or pthread_create's error number with nothing started.
inline int start_thread(pthread_t *thread, void *(*body)(void *)) {
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    const int error = pthread_create(thread, nullptr, body, nullptr);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return error;
}

} // namespace renewer
