// SPDX-License-Identifier: Apache-2.0
//
// A thread that does part of a call's work beside the calling one.
#pragma once

#include <pthread.h>
#include <sched.h>
#include <semaphore.h>
#include <stdio.h>
#include <stdlib.h>

namespace lox {

// Whether a thread can run beside the calling one. Where that has one processor
// only, starting and joining is all that a thread adds.
inline bool threads_gain() {
  cpu_set_t set;
  return sched_getaffinity(0, sizeof set, &set) != 0 || CPU_COUNT(&set) > 1;
}

// Worker is one of the worker records, Work what is to be done with it.
template <class Worker, void (*Work)(const Worker &)>
class HelperThread {
 public:
  // Starts the thread on a copy of the record with semaphores of its own.
  // Quirk: a thread that cannot be started is reported on standard output and
  // by no status, because the work is done all the same.
  void start(const Worker &what) {
    what_ = what;
    if (!threads_gain()) return;
    worker_ = static_cast<Worker *>(malloc(sizeof *worker_));
    if (worker_ == nullptr) return;
    sem_init(&start_, 0, 0);
    sem_init(&done_, 0, 0);
    *worker_ = what;
    worker_->start = &start_;
    worker_->done = &done_;
    started_ = pthread_create(&thread_, nullptr, run, worker_) == 0;
    if (!started_) printf(" err \n ");
  }
  // Lets the thread begin.
  void go() {
    if (started_) sem_post(&start_);
  }
  // The work is done when this returns: by this thread if there is no other.
  void finish() {
    if (started_) {
      wait(&done_);
      pthread_join(thread_, nullptr);
    } else {
      Work(what_);
    }
    if (worker_ != nullptr) {
      sem_destroy(&start_);
      sem_destroy(&done_);
      free(worker_);
    }
  }

  // What a thread runs. It returns: to end by pthread_exit some C libraries
  // load a compiler's run-time library.
  static void *run(void *argument) {
    const auto &worker = *static_cast<const Worker *>(argument);
    wait(worker.start);
    Work(worker);
    sem_post(worker.done);
    return nullptr;
  }

 private:
  static void wait(sem_t *semaphore) {
    while (sem_wait(semaphore) != 0) {
    }
  }

  Worker what_ = {};
  Worker *worker_ = nullptr;
  bool started_ = false;
  pthread_t thread_ = {};
  sem_t start_ = {};
  sem_t done_ = {};
};

}  // namespace lox
