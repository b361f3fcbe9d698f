// A system that grants no thread but the first, whoever asks: to be preloaded.
#include <pthread.h>

#include <cerrno>

extern "C" int pthread_create(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*) {
    return EAGAIN;
}
