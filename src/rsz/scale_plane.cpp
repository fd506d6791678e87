// SPDX-License-Identifier: Apache-2.0
//
// Scales a plane from top to bottom, a wide one in strips of columns. What is
// worked out about a strip's columns is on the stack. The rows between the
// passes are two at most and stay in the nearest cache. The destination is
// never read.
#include "rsz/scale_plane.h"

#include <cstddef>
#include <type_traits>

#include "common/strip.h"
#include "rot/rotate_rows.h"
#include "rsz/scale_words_rows.h"

namespace lox {

namespace {

// Sinks say where a strip's rows go. A row is computed at to() of its number,
// and reported by done() before the next one is computed.
class Straight {
 public:
  static StripSize next(const ScaleJob &, int32_t left) { return {left, 1}; }
  Straight(const ScaleJob &job, int32_t first, int32_t, int32_t)
      : dst_(job.dst + int64_t{first} * job.type.unit), step_(job.dst_step) {}
  uint8_t *to(int32_t row) { return dst_ + step_ * row; }
  void done(int32_t) {}

 private:
  uint8_t *dst_;
  int64_t step_;
};

class HalfTurn {
 public:
  using Line = Strip<4096>;
  static StripSize next(const ScaleJob &job, int32_t left) {
    return Line::next(left, job.type.unit, 1);
  }
  HalfTurn(const ScaleJob &job, int32_t first, int32_t count, int32_t)
      : dst_(job.dst + int64_t{job.across.dst - first - count} * job.type.unit),
        step_(job.dst_step),
        last_(job.down.dst - 1),
        count_(count),
        reverse_(rotate_rows().reverse[job.type.unit - 1]),
        line_({count, 1}, job.type.unit, last_) {}
  uint8_t *to(int32_t) { return line_.row(); }
  void done(int32_t row) {
    line_.made(row, [&](int32_t, int32_t, const uint8_t *bytes, ptrdiff_t) {
      reverse_(bytes, dst_ + step_ * (last_ - row), count_);
    });
  }

 private:
  uint8_t *dst_;
  int64_t step_;
  int32_t last_;
  int32_t count_;
  std::remove_extent_t<decltype(RotateRows::reverse)> reverse_;
  Line line_;
};

// Turns 64 rows at once: a cache line of each destination row.
class QuarterTurn {
 public:
  static StripSize next(const ScaleJob &job, int32_t left) {
    return Strip<>::next(left, job.type.unit, 64);
  }
  QuarterTurn(const ScaleJob &job, int32_t first, int32_t count, int32_t rows)
      : job_(job),
        count_(count),
        left_(job.turn == Turn::kLeft),
        // Where the strip's first column goes, and its next one from there.
        dst_(job.dst + job.dst_step * (left_ ? job.across.dst - 1 - first
                                             : int64_t{first})),
        step_(static_cast<ptrdiff_t>(left_ ? -job.dst_step : job.dst_step)),
        transpose_((is_past(job) ? rotate_rows().transpose_past
                                 : rotate_rows().transpose)[job.type.unit - 1]),
        // To the right the last rows come first in the destination's.
        strip_({count, rows}, job.type.unit, job.down.dst - 1, !left_) {}
  uint8_t *to(int32_t) { return strip_.row(); }
  void done(int32_t row) {
    const int32_t last = job_.down.dst - 1;
    strip_.made(row, [&](int32_t first, int32_t rows, const uint8_t *bytes,
                         ptrdiff_t pitch) {
      if (left_) {
        transpose_(bytes, pitch, at(first), step_, count_, rows);
      } else {
        transpose_(bytes + pitch * (rows - 1), -pitch,
                   at(last - (first + rows - 1)), step_, count_, rows);
      }
    });
  }

 private:
  static bool is_past(const ScaleJob &job) {
    return streams_columns(job.across.dst, job.down.dst, job.type.unit);
  }
  // A place in the destination row of the strip's first column.
  uint8_t *at(int32_t column) const {
    return dst_ + int64_t{column} * job_.type.unit;
  }
  const ScaleJob &job_;
  int32_t count_;
  bool left_;
  uint8_t *dst_;
  ptrdiff_t step_;
  std::remove_extent_t<decltype(RotateRows::transpose)> transpose_;
  Strip<> strip_;
};

// Apart from the other turns: what a row needs stays in registers, or near.
template <class Sink>
[[gnu::noinline]] void scale_by_strips(const ScaleJob &job) {
  Columns columns;
  for (int32_t first = 0; first < job.across.dst; first += columns.count) {
    const StripSize strip = Sink::next(job, job.across.dst - first);
    const ScaleRows &rows =
        prepare_columns(job, first, strip.columns, &columns);
    StripRows source(job, rows, columns);
    Sink sink(job, first, columns.count, strip.rows);
    for (int32_t y = job.rows.begin; y < job.rows.end; ++y) {
      source.next(sink.to(y));
      sink.done(y);
    }
  }
}

}  // namespace

const ScaleRows &prepare_columns(const ScaleJob &job, int32_t first,
                                 int32_t count, Columns *columns) {
  const ScaleRows &rows = job.type.words    ? scale_words_rows()
                          : job.type.rgb565 ? scale_rows().rgb565
                                            : scale_rows().bytes;
  columns->axis = job.across;
  columns->unit = job.type.unit;
  columns->first = first;
  columns->count = count;
  if (job.across.src != job.across.dst) rows.prepare(columns);
  return rows;
}

int32_t PlaneRows::start(const ScaleJob &job, int32_t first, int32_t count) {
  job_ = job;
  const ScaleRows &rows = prepare_columns(job_, first, count, &columns_);
  rows_ = StripRows(job_, rows, columns_);
  return columns_.count;
}

void PlaneRows::next(uint8_t *dst) { rows_.next(dst); }

void interpolate_plane(const ScaleJob &job) {
  if (job.rows.begin >= job.rows.end) return;
  switch (job.turn) {
    case Turn::kNone:
      return scale_by_strips<Straight>(job);
    case Turn::kHalf:
      return scale_by_strips<HalfTurn>(job);
    default:
      return scale_by_strips<QuarterTurn>(job);
  }
}

}  // namespace lox
