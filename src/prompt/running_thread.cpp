#include "prompt/running_thread.h"

#include <cerrno>
#include <csignal>
#include <cstdio>

namespace renewer {

namespace {

// The thread takes no signals: one that ends a wait, as an alarm does, must reach the thread that
// waits.
int create_without_signals(pthread_t *thread, void *(*body)(void *)) {
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    const int error = pthread_create(thread, nullptr, body, nullptr);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return error;
}

} // namespace

int start_running_thread(std::atomic<int> &run, pthread_t &thread, void *(*body)(void *)) {
    end_running_thread(run, thread);
    run = 1;
    const int error = create_without_signals(&thread, body);
    if (error != 0) {
        run = 0;
    }
    return error;
}

void report_unstarted_thread(int error) {
    errno = error;
    perror("====create led_thread_fun error\n");
}

void end_running_thread(std::atomic<int> &run, const pthread_t &thread) {
    if (run.exchange(0) != 0) {
        pthread_join(thread, nullptr);
    }
}

} // namespace renewer
