// SPDX-License-Identifier: Apache-2.0
//
// A plane is scaled from top to bottom, wide ones in strips of columns: what is
// worked out about the columns is on the stack, the rows between the passes,
// never more than two, stay in the nearest cache, and the destination is only
// ever written.
#include "rsz/scale_plane.h"

#include <cstddef>
#include <type_traits>

#include "common/copy.h"
#include "rsz/rsz_tables.h"
#include "rsz/turn_tables.h"

namespace lox::rsz {

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

// Where a strip's rows go: each has a place to be computed at, to() of its
// number, and is done() before the next.
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

// Strips and blocks of rows to be turned.
constexpr int32_t kTurnedStrip = 512;
constexpr int32_t kTurnedRows = 32;

class HalfTurn {
 public:
  HalfTurn(const ScaleJob &job, const Columns &c)
      : dst_(job.dst +
             int64_t{job.across.dst - c.first - c.count} * job.type.unit),
        step_(job.dst_step),
        last_(job.down.dst - 1),
        count_(c.count),
        reverse_(turn_rows().reverse[job.type.unit - 1]) {}
  uint8_t *to(int32_t) { return line_; }
  void done(int32_t row) {
    reverse_(line_, dst_ + step_ * (last_ - row), count_);
  }

 private:
  uint8_t *dst_;
  int64_t step_;
  int32_t last_;
  int32_t count_;
  std::remove_extent_t<decltype(TurnRows::reverse)> reverse_;
  alignas(64) uint8_t line_[kTurnedStrip];
};

class QuarterTurn {
 public:
  QuarterTurn(const ScaleJob &job, const Columns &c)
      : job_(job),
        c_(c),
        pitch_(ptrdiff_t{c.count} * job.type.unit),
        transpose_(turn_rows().transpose[job.type.unit - 1]) {}
  uint8_t *to(int32_t row) { return block_ + row % kTurnedRows * pitch_; }
  void done(int32_t row) {
    const int32_t rows = row % kTurnedRows + 1;
    if (rows < kTurnedRows && row + 1 < job_.down.dst) return;
    const int64_t unit = job_.type.unit;
    const int32_t first = row + 1 - rows;
    if (job_.turn == Turn::kLeft) {
      transpose_(block_, pitch_,
                 job_.dst + job_.dst_step * (job_.across.dst - 1 - c_.first) +
                     unit * first,
                 static_cast<ptrdiff_t>(-job_.dst_step), c_.count, rows);
    } else {
      transpose_(block_ + pitch_ * (rows - 1), -pitch_,
                 job_.dst + job_.dst_step * c_.first +
                     unit * (job_.down.dst - 1 - row),
                 static_cast<ptrdiff_t>(job_.dst_step), c_.count, rows);
    }
  }

 private:
  const ScaleJob &job_;
  const Columns &c_;
  ptrdiff_t pitch_;
  std::remove_extent_t<decltype(TurnRows::transpose)> transpose_;
  alignas(64) uint8_t block_[ptrdiff_t{kTurnedRows} * kTurnedStrip];
};

template <class Sink>
void scale_strip(const ScaleJob &job, const ScaleRows &rows,
                 const Columns &columns) {
  const bool mod1 = job.down.scaling == Scaling::kEnlargeMod1;
  AcrossRows across(job, rows, columns);
  Sink sink(job, columns);
  Walk walk(job.down, 0);
  for (int32_t y = 0; y < job.down.dst; ++y) {
    const Step step = walk.next();
    uint8_t *const to = sink.to(y);
    if (step.part == 0) {
      across.put(step, to);
    } else if (job.at_once) {
      rows.cells(across.source(step.at), across.source(step.at + 1), to,
                 &columns);
    } else {
      rows.blend(across.get(step.at), across.get(step.at + 1), to,
                 across.bytes(), step, mod1);
    }
    sink.done(y);
  }
}

}  // namespace

void scale_plane(const ScaleJob &job) {
  const ScaleTables &tables = scale_rows();
  const ScaleRows &rows = job.type.rgb565 ? tables.rgb565 : tables.bytes;
  Columns columns;
  columns.axis = job.across;
  columns.unit = job.type.unit;
  int32_t left = job.across.dst;
  for (columns.first = 0; left > 0;) {
    columns.count = left;
    if (job.turn != Turn::kNone && left > kTurnedStrip / job.type.unit) {
      columns.count = kTurnedStrip / job.type.unit;
    }
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

}  // namespace lox::rsz
