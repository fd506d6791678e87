// SPDX-License-Identifier: Apache-2.0
//
// What is done with pictures, on threads.
#pragma once

#include <glib.h>
#include <orumlox/picture.h>

namespace lox_gst {

// Runs jobs. Bytes do not depend on the number of threads.
class Runner {
 public:
  Runner();
  ~Runner();
  Runner(const Runner &) = delete;
  Runner &operator=(const Runner &) = delete;

  // 0: as many as there are processors.
  void set_threads(guint threads);
  // Converts, and where sizes or the rotation want it scales and turns.
  int32_t run(const vexo_img &src, const vexo_img &dst,
              const vexo_picture_options &options);
  int32_t thumbnail(const vexo_img &src, const vexo_img &dst,
                    const vexo_picture_options &options);
  // Calls on_rows(rows, data) for ranges of rows, which begin at even ones.
  using RowsWork = void(const vexo_img &rows, const void *data);
  void for_rows(const vexo_img &img, RowsWork *on_rows, const void *data);

 private:
  enum class Work { kScale, kTurn, kConvert, kInterpolate, kRows };
  static constexpr guint kMostThreads = 64;

  static void work_on(gpointer, gpointer self);
  void work();
  int32_t make_context(guint index);
  bool divide(const vexo_img &src, const vexo_img &dst,
              const vexo_picture_options &options, int32_t *status);
  int32_t make_between(int32_t i, int32_t format, int32_t width,
                       int32_t height);
  int32_t run_stage(Work work, const vexo_img &src, const vexo_img &dst);
  int32_t run_part(guint index);

  guint threads_ = 1;
  GThreadPool *pool_ = nullptr;
  GMutex mutex_;
  GCond done_;
  // The stage that the threads are at, under the mutex, and its parts.
  Work work_ = Work::kConvert;
  const vexo_img *src_ = nullptr;
  const vexo_img *dst_ = nullptr;
  RowsWork *rows_work_ = nullptr;
  const void *rows_data_ = nullptr;
  vexo_picture_options options_ = {};
  guint next_ = 0;
  guint finished_ = 0;
  int32_t status_ = VEXO_OK;
  vexo_picture_context *contexts_[kMostThreads] = {};
  vexo_img between_[2] = {};
};

}  // namespace lox_gst
