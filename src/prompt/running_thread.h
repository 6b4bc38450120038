#pragma once

#include <atomic>
#include <pthread.h>

// The thread of the running indication, which a set of prompts keeps from `updating` to the result:
// `run` is not 0 while there is a thread to be joined, and it is to go on. One of each set.
namespace renewer {

// Ends a thread that still runs, sets `run` and starts `body` with default attributes.
//
// Returns 0, or pthread_create's error number with `run` cleared and nothing started.
int start_running_thread(std::atomic<int> &run, pthread_t &thread, void *(*body)(void *));

// Reports on standard error that the thread could not be started.
void report_unstarted_thread(int error);

// Clears `run` and joins the thread, if there is one.
void end_running_thread(std::atomic<int> &run, const pthread_t &thread);

} // namespace renewer
