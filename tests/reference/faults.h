// SPDX-License-Identifier: Apache-2.0
// Memory and threads that cannot be had, and what is held of them. For one file
// of a program that the linker is given --wrap for: malloc, calloc, free,
// pthread_create, pthread_join.
#pragma once

#include <pthread.h>

#include <atomic>
#include <cerrno>
#include <cstddef>

// The linker leads the library's calls here.
static std::atomic<int> failing_allocation;  // how many allocations later; or 0
static std::atomic<int> held;                // blocks
static std::atomic<unsigned> failing_starts;  // a bit for each, the next lowest
static std::atomic<int> starts, joins;        // of threads, those that succeed
static std::atomic<int> failed_starts;

static void *allocated(void *block) {
  if (block != nullptr) ++held;
  return block;
}
static bool allocation_fails() {
  return failing_allocation != 0 && --failing_allocation == 0;
}

extern "C" {
void *__real_malloc(size_t size);
void *__wrap_malloc(size_t size) {
  return allocation_fails() ? nullptr : allocated(__real_malloc(size));
}
void *__real_calloc(size_t count, size_t size);
void *__wrap_calloc(size_t count, size_t size) {
  return allocation_fails() ? nullptr : allocated(__real_calloc(count, size));
}
void __real_free(void *block);
void __wrap_free(void *block) {
  if (block != nullptr) --held;
  __real_free(block);
}
int __real_pthread_create(pthread_t *thread, const pthread_attr_t *attributes,
                          void *(*entry)(void *), void *argument);
int __wrap_pthread_create(pthread_t *thread, const pthread_attr_t *attributes,
                          void *(*entry)(void *), void *argument) {
  const bool fails = (failing_starts & 1) != 0;
  failing_starts = failing_starts >> 1;
  if (fails) ++failed_starts;
  if (fails) return EAGAIN;
  ++starts;
  return __real_pthread_create(thread, attributes, entry, argument);
}
int __real_pthread_join(pthread_t thread, void **result);
int __wrap_pthread_join(pthread_t thread, void **result) {
  ++joins;
  return __real_pthread_join(thread, result);
}
}
