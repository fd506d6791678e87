// SPDX-License-Identifier: Apache-2.0
//
// Scales a plane from top to bottom, a wide one in strips of columns. What is
// worked out about a strip's columns is on the stack. The rows between the
// passes are two at most and stay in the nearest cache. The destination is
// never read.
#include "rsz/scale_plane.h"

#include <cstddef>
#include <type_traits>

#include "common/copy.h"
#include "rot/rotate_rows.h"
#include "rsz/scale_rows.h"

namespace lox {

namespace {

bool is_unscaled(const Axis &axis) { return axis.src == axis.dst; }

// The rows of a strip, scaled across when they are asked for.
class AcrossRows {
 public:
  AcrossRows(const ScaleJob &job, const ScaleRows &rows, const Columns &columns)
      : job_(job),
        rows_(rows),
        columns_(columns),
        copied_(is_unscaled(job.across)),
        bytes_(ptrdiff_t{columns.count} * job.type.unit) {}

  const uint8_t *source(int32_t row) const {
    return job_.src + job_.src_step * row;
  }
  // A row is kept until the next but one is asked for.
  const uint8_t *get(int32_t row) {
    if (copied_) return strip_of_source(row);
    const int slot = row & 1;
    uint8_t *const kept = job_.scratch + (slot == 0 ? 0 : bytes_);
    if (kept_[slot] != row) {
      rows_.columns(source(row), kept, &columns_);
      kept_[slot] = row;
    }
    return kept;
  }
  void put(const Step &step, uint8_t *dst) {
    const bool again =
        step.length > 1 && job_.down.scaling >= Scaling::kEnlarge;
    if (copied_ || again || kept_[step.at & 1] == step.at) {
      copy_plane(dst, 0, get(step.at), 0, bytes_, 1);
    } else {
      rows_.columns(source(step.at), dst, &columns_);
    }
  }
  ptrdiff_t bytes() const { return bytes_; }

 private:
  const uint8_t *strip_of_source(int32_t row) const {
    return source(row) + int64_t{columns_.first} * job_.type.unit;
  }

  const ScaleJob &job_;
  const ScaleRows &rows_;
  const Columns &columns_;
  bool copied_;
  ptrdiff_t bytes_;
  int32_t kept_[2] = {-1, -1};
};

// Sinks say where a strip's rows go. A row is computed at to() of its number,
// and reported by done() before the next one is computed.
class Straight {
 public:
  Straight(const ScaleJob &job, const Columns &c)
      : dst_(job.dst + int64_t{c.first} * job.type.unit), step_(job.dst_step) {}
  uint8_t *to(int32_t row) { return dst_ + step_ * row; }
  void done(int32_t) {}

 private:
  uint8_t *dst_;
  int64_t step_;
};

// Bytes of a strip's row that is turned by 180 degrees, and of one for a
// quarter turn, of which 64 rows are turned at once: a cache line of each
// destination row.
constexpr int32_t kTurnedLine = 4096;
constexpr int32_t kTurnedStrip = 640;
constexpr int32_t kTurnedRows = 64;

class HalfTurn {
 public:
  HalfTurn(const ScaleJob &job, const Columns &c)
      : dst_(job.dst +
             int64_t{job.across.dst - c.first - c.count} * job.type.unit),
        step_(job.dst_step),
        last_(job.down.dst - 1),
        count_(c.count),
        reverse_(rotate_rows().reverse[job.type.unit - 1]) {}
  uint8_t *to(int32_t) { return line_; }
  void done(int32_t row) {
    reverse_(line_, dst_ + step_ * (last_ - row), count_);
  }

 private:
  uint8_t *dst_;
  int64_t step_;
  int32_t last_;
  int32_t count_;
  std::remove_extent_t<decltype(RotateRows::reverse)> reverse_;
  alignas(64) uint8_t line_[kTurnedLine];
};

class QuarterTurn {
 public:
  QuarterTurn(const ScaleJob &job, const Columns &c)
      : job_(job),
        count_(c.count),
        pitch_(ptrdiff_t{c.count} * job.type.unit),
        left_(job.turn == Turn::kLeft),
        // Where the strip's first column goes, and its next one from there.
        dst_(job.dst + job.dst_step * (left_ ? job.across.dst - 1 - c.first
                                             : int64_t{c.first})),
        step_(static_cast<ptrdiff_t>(left_ ? -job.dst_step : job.dst_step)),
        transpose_(rotate_rows().transpose[job.type.unit - 1]) {}
  uint8_t *to(int32_t row) { return block_ + row % kTurnedRows * pitch_; }
  void done(int32_t row) {
    const int32_t rows = row % kTurnedRows + 1;
    const int32_t last = job_.down.dst - 1;
    if (rows < kTurnedRows && row < last) return;
    if (left_) {
      transpose_(block_, pitch_, at(row - (rows - 1)), step_, count_, rows);
    } else {
      transpose_(block_ + pitch_ * (rows - 1), -pitch_, at(last - row), step_,
                 count_, rows);
    }
  }

 private:
  // A place in the destination row of the strip's first column.
  uint8_t *at(int32_t column) const {
    return dst_ + int64_t{column} * job_.type.unit;
  }
  const ScaleJob &job_;
  int32_t count_;
  ptrdiff_t pitch_;
  bool left_;
  uint8_t *dst_;
  ptrdiff_t step_;
  std::remove_extent_t<decltype(RotateRows::transpose)> transpose_;
  alignas(64) uint8_t block_[ptrdiff_t{kTurnedRows} * kTurnedStrip];
};

template <class Sink>
void scale_strip(const ScaleJob &job, const ScaleRows &rows,
                 const Columns &columns) {
  const bool mod1 = job.down.scaling == Scaling::kEnlargeMod1;
  AcrossRows across(job, rows, columns);
  Sink sink(job, columns);
  if (job.rows.begin >= job.rows.end) return;
  Walk walk(job.down, job.rows.begin);
  for (int32_t y = job.rows.begin; y < job.rows.end; ++y) {
    const Step step = walk.next();
    uint8_t *const to = sink.to(y);
    if (step.part == 0) {
      across.put(step, to);
    } else if (job.at_once) {
      rows.box(across.source(step.at), across.source(step.at + 1), to,
               &columns);
    } else {
      rows.lerp(across.get(step.at), across.get(step.at + 1), to,
                across.bytes(), step, mod1);
    }
    sink.done(y);
  }
}

// How many of the `left` columns the next strip takes: strips of nearly the
// same width, of whole vectors.
int32_t turned_count(const ScaleJob &job, int32_t left) {
  if (job.turn == Turn::kNone) return left;
  const int32_t bytes = is_quarter(job.turn) ? kTurnedStrip : kTurnedLine;
  const int32_t most = bytes / job.type.unit;
  const int32_t strips = (left - 1) / most + 1;
  const int32_t even = strips == 1 ? left : (left - 1) / strips / 64 * 64 + 64;
  return even < most ? even : most;
}

}  // namespace

void interpolate_plane(const ScaleJob &job) {
  const ScaleTables &tables = scale_rows();
  const ScaleRows &rows = job.type.rgb565 ? tables.rgb565 : tables.bytes;
  Columns columns;
  columns.axis = job.across;
  columns.unit = job.type.unit;
  int32_t left = job.across.dst;
  for (columns.first = 0; left > 0;) {
    columns.count = turned_count(job, left);
    if (!is_unscaled(job.across)) rows.prepare(&columns);
    switch (job.turn) {
      case Turn::kNone:
        scale_strip<Straight>(job, rows, columns);
        break;
      case Turn::kHalf:
        scale_strip<HalfTurn>(job, rows, columns);
        break;
      default:
        scale_strip<QuarterTurn>(job, rows, columns);
        break;
    }
    left -= columns.count;
    columns.first += columns.count;
  }
}

}  // namespace lox
