// SPDX-License-Identifier: Apache-2.0
//
// The entry points of tone mapping, and the bands of rows that four threads
// share, or this one does alone.
#include <stdlib.h>

#include "hdr/band.h"
#include "hdr/context.h"
#include "orumlox/unprefixed.h"

namespace lox {

namespace {

constexpr int kBandRows = 4;
constexpr int kWorkers = 3;

// Pictures of fewer pixels are mapped sooner than three threads are started and
// joined: measured, 60 to 100 us where a pixel takes 1.4 ns. On ARM a pixel
// takes ten times as long.
#if defined(__x86_64__) || defined(__i386__)
constexpr int64_t kSharedFrom = int64_t{128} * 1024;
#else
constexpr int64_t kSharedFrom = int64_t{32} * 1024;
#endif

// The first row behind a band, without overflow.
int32_t behind(int32_t band) {
  return band > INT32_MAX - kBandRows ? INT32_MAX : band + kBandRows;
}

// A call's threads and records. All memory is allocated before anything is
// written.
class Job {
 public:
  Job()
      : context_(static_cast<vexo_hdr_context *>(malloc(sizeof *context_))),
        scheduler_(
            static_cast<vexo_hdr_scheduler *>(malloc(sizeof *scheduler_))) {
    for (vexo_hdr_worker *&worker : workers_) {
      worker = static_cast<vexo_hdr_worker *>(malloc(sizeof *worker));
    }
  }
  ~Job() {
    for (vexo_hdr_worker *worker : workers_) free(worker);
    free(scheduler_);
    free(context_);
  }
  Job(const Job &) = delete;
  Job &operator=(const Job &) = delete;

  bool ok() const {
    for (const vexo_hdr_worker *worker : workers_) {
      if (worker == nullptr) return false;
    }
    return scheduler_ != nullptr && context_ != nullptr;
  }

  vexo_hdr_context *context() { return context_; }

  // Hands out all rows to this thread and three more. The first four bands are
  // given without asking, so a picture may be lower than they are. This thread
  // does those of a thread that is not there.
  void run() {
    scheduler_->next = (kWorkers + 1) * kBandRows;
    scheduler_->limit = context_->height;
    pthread_mutex_init(&scheduler_->mutex, nullptr);
    const bool shared =
        int64_t{context_->width} * context_->height >= kSharedFrom;
    pthread_t threads[kWorkers];
    bool started[kWorkers];
    for (int i = 0; i < kWorkers; ++i) {
      *workers_[i] = {context_, scheduler_, (i + 1) * kBandRows};
      started[i] = shared &&
                   pthread_create(&threads[i], nullptr, work, workers_[i]) == 0;
    }
    do_bands({context_, scheduler_, 0});
    for (int i = 0; i < kWorkers; ++i) {
      if (started[i]) {
        pthread_join(threads[i], nullptr);
      } else {
        do_band(*workers_[i]);
      }
    }
    pthread_mutex_destroy(&scheduler_->mutex);
  }

  // Where bands lie over each other, does those whose pixels remain: the last
  // whole band and what follows it, on this thread.
  void run_last_bands() {
    const int32_t height = context_->height;
    const int32_t whole = height - height % kBandRows;
    const int32_t first = whole > 0 ? whole - kBandRows : 0;
    for (int32_t row = first; row < height; row = behind(row)) {
      do_band({context_, scheduler_, row});
    }
  }

  // What a thread runs. It returns: to end by pthread_exit some C libraries
  // load a compiler's run-time library.
  static void *work(void *worker) {
    do_bands(*static_cast<const vexo_hdr_worker *>(worker));
    return nullptr;
  }

 private:
  // A band, and all that follow until none is left.
  static void do_bands(vexo_hdr_worker worker) {
    do {
      do_band(worker);
      worker.first = getStart(worker.scheduler);
    } while (worker.first >= 0);
  }

  static void do_band(const vexo_hdr_worker &worker) {
    _vexo_hdr10_to_sdr8(worker.context, worker.first, behind(worker.first));
  }

  vexo_hdr_context *context_;
  vexo_hdr_scheduler *scheduler_;
  vexo_hdr_worker *workers_[kWorkers];
};

int32_t tone_map(vexo_img *src, const vexo_img *dst, int32_t variant,
                 int32_t hlg) {
  Job job;
  if (!job.ok()) return VEXO_ERR_ARG;
  build_hdr_context(job.context(), src, dst, choose_final_nit(src), variant,
                    hlg);
  if (src->width[0] < 1 || src->height[0] < 1) return VEXO_OK;
  if (bands_overlap(dst->format)) {
    job.run_last_bands();
  } else {
    job.run();
  }
  return VEXO_OK;
}

}  // namespace

}  // namespace lox

int32_t vexo_hdr_to_sdr(vexo_img *src, const vexo_img *dst, int32_t kind) {
  switch (kind) {
    case VEXO_HDR_HDR10:
      vexo_hdr10_to_sdr8(src, dst, 0);
      return VEXO_OK;
    case VEXO_HDR_HDR10_MILD:
      vexo_hdr10_to_sdr8(src, dst, 1);
      return VEXO_OK;
    case VEXO_HDR_HLG:
      vexo_hlg_to_sdr8(src, dst);
      return VEXO_OK;
    default:
      return VEXO_ERR_ARG;
  }
}

int32_t vexo_hdr10_to_sdr8(vexo_img *src, const vexo_img *dst,
                           int32_t variant) {
  return lox::tone_map(src, dst, variant != 0 ? 1 : 0, 0);
}

int32_t vexo_hlg_to_sdr8(vexo_img *src, const vexo_img *dst) {
  return lox::tone_map(src, dst, 0, 1);
}

int32_t getStart(vexo_hdr_scheduler *scheduler) {
  int32_t first = -1;
  pthread_mutex_lock(&scheduler->mutex);
  if (scheduler->next < scheduler->limit) {
    first = scheduler->next;
    scheduler->next = lox::behind(first);
  }
  pthread_mutex_unlock(&scheduler->mutex);
  return first;
}

void *thread_vexo_hdr10_to_sdr8(void *worker) {
  pthread_exit(lox::Job::work(worker));
}
