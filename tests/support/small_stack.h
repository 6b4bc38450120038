#pragma once

#include <functional>
#include <pthread.h>

// Runs something in a thread with the stack that small C libraries give by default.
inline void on_small_stack(std::function<void()> run) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, 128 * 1024);
    const auto body = [](void *task) -> void * {
        (*static_cast<std::function<void()> *>(task))();
        return nullptr;
    };
    pthread_t thread;
    pthread_create(&thread, &attributes, body, &run);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}
