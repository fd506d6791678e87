// SPDX-License-Identifier: Apache-2.0
//
// Scaling one plane, turned on the way out if wanted: the driver that every
// plane scaler and every exported kernel of scaling is a call of.
#pragma once

#include <cstdint>

#include "common/caches.h"
#include "common/copy.h"
#include "common/row_range.h"
#include "rsz/scale_rows.h"

namespace lox {

// What a plane is made of.
struct SampleType {
  int32_t unit;        // bytes of a sample
  bool rgb565;         // words of three components; else every byte is one
  bool words = false;  // or every word
};
inline constexpr SampleType k8b = {1, false};
inline constexpr SampleType k8b8b = {2, false};
inline constexpr SampleType k8b8b8b = {3, false};
inline constexpr SampleType k8b8b8b8b = {4, false};
inline constexpr SampleType k5b6b5b = {2, true};
inline constexpr SampleType k16b = {2, false, true};
inline constexpr SampleType k16b16b = {4, false, true};

enum class Turn : uint8_t { kNone, kLeft, kRight, kHalf };
constexpr bool is_quarter(Turn turn) {
  return turn == Turn::kLeft || turn == Turn::kRight;
}

struct ScaleJob {
  SampleType type;
  Turn turn;
  Axis across, down;  // the source's, before the turn
  RowRange rows;      // of the output, before the turn, too
  // Both directions in one, sums of four: where both shrink. Else rows are
  // scaled across first and rounded to samples before they are blended.
  bool at_once;
  const uint8_t *src;
  int64_t src_step;
  uint8_t *dst;
  int64_t dst_step;
  // Two rows scaled across, or one if the source has one. Not touched when both
  // directions are done at once, or one is left as it is.
  uint8_t *scratch;
};

// The rows of a job before the turn, in the columns that were worked out: one
// after the other, wherever each is wanted.
class StripRows {
 public:
  StripRows() = default;
  StripRows(const ScaleJob &job, const ScaleRows &rows, const Columns &columns)
      : job_(&job),
        rows_(&rows),
        columns_(&columns),
        copied_(job.across.src == job.across.dst),
        bytes_(ptrdiff_t{columns.count} * job.type.unit),
        walk_(job.down, job.rows.begin) {
    if constexpr (kFetchesRows) {
      const auto bytes = [&job](int32_t samples) {
        return static_cast<uint64_t>(samples) *
               static_cast<uint64_t>(job.type.unit);
      };
      // Rows of whole factors are fetched by their kernels, and those of
      // enlargements by the processor: measured, they take longer fetched.
      fetches_ = job.at_once && job.across.scaling == Scaling::kReduce &&
                 bytes(job.across.src) * static_cast<uint64_t>(job.down.src) >=
                     memory_now().far_from;
      if (!fetches_) return;
      to_fetch_ = job.rows.end - job.rows.begin - kRowsAhead;
      ahead_ = Walk(job.down, job.rows.begin + kRowsAhead);
      const Walk first(job.across, columns.first);
      const Walk last(job.across, columns.first + columns.count);
      fetch_from_ = ptrdiff_t{first.at()} * job.type.unit;
      fetch_bytes_ = ptrdiff_t{last.at()} * job.type.unit - fetch_from_;
    }
  }

  [[gnu::always_inline]] void next(uint8_t *dst) {
    const Step step = walk_.next();
    if (kFetchesRows && fetches_ && --to_fetch_ >= 0) fetch(ahead_.next());
    if (step.part == 0) {
      const bool again =
          step.length > 1 && job_->down.scaling >= Scaling::kEnlarge;
      if (copied_ || again || kept_[step.at & 1] == step.at) {
        copy_plane(dst, 0, across(step.at), 0, bytes_, 1);
      } else {
        rows_->columns(source(step.at), dst, columns_);
      }
    } else if (job_->at_once) {
      const uint8_t *const row = source(step.at);
      rows_->box(row, row + job_->src_step, dst, columns_);
    } else {
      rows_->lerp(across(step.at), across(step.at + 1), dst, bytes_, step,
                  job_->down.scaling == Scaling::kEnlargeMod1);
    }
  }

 private:
  const uint8_t *source(int32_t row) const {
    return job_->src + job_->src_step * row;
  }
  // Fetches what an output some rows further down is made of.
  void fetch(Step step) {
    const int32_t end = step.at + (step.part == 0 ? 1 : 2);
    for (int32_t row = step.at < fetched_ ? fetched_ : step.at; row < end;
         ++row) {
      fetch_run(reinterpret_cast<uintptr_t>(job_->src) +
                    static_cast<uintptr_t>(job_->src_step * row + fetch_from_),
                fetch_bytes_);
    }
    if (end > fetched_) fetched_ = end;
  }

  // A row scaled across, kept until the next but one is asked for.
  [[gnu::always_inline]] const uint8_t *across(int32_t row) {
    if (copied_) {
      return source(row) + int64_t{columns_->first} * job_->type.unit;
    }
    const int slot = row & 1;
    uint8_t *const kept = job_->scratch + (slot == 0 ? 0 : bytes_);
    if (kept_[slot] != row) {
      rows_->columns(source(row), kept, columns_);
      kept_[slot] = row;
    }
    return kept;
  }

  const ScaleJob *job_;
  const ScaleRows *rows_;
  const Columns *columns_;
  bool copied_;
  ptrdiff_t bytes_;
  Walk walk_;
  int32_t kept_[2] = {-1, -1};
  static constexpr int32_t kRowsAhead = 2;
  bool fetches_ = false;
  Walk ahead_;
  int32_t to_fetch_ = 0, fetched_ = 0;
  ptrdiff_t fetch_from_ = 0, fetch_bytes_ = 0;
};

// Columns of a job from `first` on, `count` at most, as many as there is room
// for. Returns the kernels of their rows.
const ScaleRows &prepare_columns(const ScaleJob &job, int32_t first,
                                 int32_t count, Columns *columns);

// The same with what is worked out about the columns. Stays where it is.
class PlaneRows {
 public:
  // Returns how many columns there are.
  int32_t start(const ScaleJob &job, int32_t first, int32_t count);
  void next(uint8_t *dst);

 private:
  ScaleJob job_;
  StripRows rows_;
  Columns columns_;
};

// Scales these rows of the plane, whose sizes are 1 or more.
void interpolate_plane(const ScaleJob &job);

}  // namespace lox
