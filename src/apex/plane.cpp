// SPDX-License-Identifier: Apache-2.0
//
// Scratch memory and the rows of a plane. Each row of the source is scaled
// across once, and kept as words until the last output that it belongs to has
// been summed.
#include "apex/plane.h"

#include <cstring>

#include "apex/columns.h"
#include "apex/turned.h"

namespace lox {

namespace {

// What a plane has in scratch memory, in whole lines; sizes are counted before
// there is any.
class Room {
 public:
  static constexpr int64_t kLine = 64;

  explicit Room(uint8_t *bytes) : bytes_(bytes) {}
  template <class T>
  T *take(int64_t count) {
    T *const at =
        bytes_ == nullptr ? nullptr : reinterpret_cast<T *>(bytes_ + used_);
    used_ += (count * static_cast<int64_t>(sizeof(T)) + kLine - 1) & -kLine;
    return at;
  }
  int64_t used() const { return used_; }

 private:
  uint8_t *bytes_;
  int64_t used_ = 0;
};

// Where everything is.
struct Plan {
  ApexArrangement arrangement;
  ApexTurned turned;
  bool turns;
  ApexTaps across, down;
  int16_t *period;  // of either
  int32_t *first;
  uint32_t *places;
  int16_t *weights;
  const int16_t **pairs;  // of rows: what is summed
  // Pairs of rows between the directions, `slots` of them in turn.
  int16_t *words;
  int64_t pitch;
  int32_t slots;
  uint8_t *tail;          // the ends of rows, to be read beyond
  int16_t *side_by_side;  // rows that are turned
  uint16_t *multiplied;   // rows
  uint8_t *samples;       // a row that is not the destination's
};

ApexSample sample_of(const ApexPlane &p) {
  return p.alpha < 0 ? p.sample : ApexSample::k14;
}

bool turns(const ApexPlane &p) {
  return ApexTurned::pays(p.across, p.down.src_count);
}

Plan lay_out(const ApexPlane &p, Room &room) {
  const ApexArrangement a(p.across, sample_of(p), p.parts);
  const ApexTurned t(p.across, sample_of(p), p.parts);
  const bool many = turns(p);
  // How many are scaled across at once.
  const int32_t rows = many ? ApexTurned::rows() : 2;
  const int32_t taps = p.down.taps();
  // Those of an output, whose first may be the second of a pair; with the last
  // of them come others.
  const int32_t pairs = taps / 2 + 1;
  const int32_t slots = pairs + rows / 2 - 1;
  const int64_t parts = int64_t{p.across.src_count} * p.parts;
  const int64_t period_across = int64_t{p.across.period()} * p.across.taps();
  const int64_t period_down = int64_t{p.down.period()} * taps;
  const int64_t sums = many ? t.room() : a.room();
  const int64_t pitch = (2 * sums + 31) & ~int64_t{31};
  return {
      a,
      t,
      many,
      {room.take<int32_t>(p.across.dst_count),
       room.take<int16_t>(int64_t{p.across.dst_count} * a.pitch()), a.pitch()},
      {room.take<int32_t>(p.down.dst_count),
       room.take<int16_t>(int64_t{p.down.dst_count} * 2 * pairs), 2 * pairs},
      room.take<int16_t>(period_across > period_down ? period_across
                                                     : period_down),
      room.take<int32_t>(many ? t.outputs() : a.firsts()),
      room.take<uint32_t>(many ? 0 : a.places()),
      room.take<int16_t>(many ? t.weights() : a.weights()),
      room.take<const int16_t *>(pairs),
      room.take<int16_t>(pitch * slots),
      pitch,
      slots,
      room.take<uint8_t>(many ? t.end_bytes() : 4 * (parts + a.beyond())),
      room.take<int16_t>(many ? t.words() : 0),
      room.take<uint16_t>(p.alpha < 0 ? 0 : rows * parts),
      room.take<uint8_t>(p.alpha < 0 && p.parts != 3 ? 0 : 2 * sums)};
}

// Pairs of rows of words, made as they are wanted.
class Across {
 public:
  Across(const ApexPlane &p, const Plan &plan)
      : p_(p), plan_(plan), sample_(sample_of(p)) {
    if (plan.turns) {
      plan.turned.fill(plan.across, plan.first, plan.weights);
      return;
    }
    columns_ = plan.arrangement.columns(plan.across, plan.first, plan.places,
                                        plan.weights);
    tail_bytes_ = (int64_t{p.across.src_count} * p.parts - columns_.begin) *
                  apex_bytes(sample_);
    tail_pitch_ = tail_bytes_ + 2 * plan.arrangement.beyond();
    std::memset(plan.tail, 0, static_cast<size_t>(2 * tail_pitch_));
  }

  // Points plan.pairs to those of an output's rows.
  void find(int32_t first, int32_t count) {
    if (next_ < first) next_ = first;
    while (next_ < first + count) {
      if (plan_.turns) {
        make_many();
      } else {
        make_two();
      }
    }
    for (int32_t k = 0; k < count; ++k) plan_.pairs[k] = slot(first + k);
  }

 private:
  int16_t *slot(int32_t pair) const {
    return plan_.words + pair % plan_.slots * plan_.pitch;
  }
  // Row i of those that are made next. Beyond the last it is that one, which
  // weighs nothing there.
  const uint8_t *row(int32_t i) const {
    const int64_t last = p_.down.src_count - 1;
    const int64_t wanted = int64_t{2} * next_ + i;
    const uint8_t *const own =
        p_.src + ptrdiff_t{p_.src_stride} *
                     static_cast<ptrdiff_t>(wanted < last ? wanted : last);
    if (p_.alpha < 0) return own;
    uint16_t *const to =
        plan_.multiplied + int64_t{4} * p_.across.src_count * i;
    apex_rows().premultiply(own, p_.alpha, p_.across.src_count, to);
    return reinterpret_cast<const uint8_t *>(to);
  }
  void make_many() {
    const uint8_t *rows[kMostTurnedRows];
    int16_t *pairs[kMostTurnedRows / 2];
    const int32_t count = ApexTurned::rows();
    for (int32_t i = 0; i < count; ++i) rows[i] = row(i);
    for (int32_t i = 0; i < count / 2; ++i) pairs[i] = slot(next_ + i);
    plan_.turned.make(rows, plan_.first, plan_.weights, plan_.side_by_side,
                      plan_.tail, pairs);
    next_ += count / 2;
  }
  void make_two() {
    const ApexRows &rows = apex_rows();
    int16_t *const words = slot(next_);
    const uint8_t *both[2];
    uint8_t *tail[2];
    for (int32_t i = 0; i < 2; ++i) {
      both[i] = row(i);
      tail[i] = plan_.tail + tail_pitch_ * i;
      std::memcpy(tail[i], both[i] + columns_.begin * apex_bytes(sample_),
                  static_cast<size_t>(tail_bytes_));
    }
    if (columns_.body.count > 0) {
      rows.across(sample_, both[0], both[1], columns_.body, words);
    }
    if (columns_.tail.count > 0) {
      rows.across(
          sample_, tail[0], tail[1], columns_.tail,
          words + int64_t{2} * columns_.tail_output * apex_sums(p_.parts));
    }
    ++next_;
  }

  const ApexPlane &p_;
  const Plan &plan_;
  ApexSample sample_;
  ApexArrangement::Columns columns_ = {};
  int64_t tail_bytes_ = 0, tail_pitch_ = 0;
  int32_t next_ = 0;  // pair
};

}  // namespace

int64_t apex_scratch(const ApexPlane &p) {
  Room room(nullptr);
  lay_out(p, room);
  return room.used() + Room::kLine;
}

void apex_scale(const ApexPlane &p, uint8_t *scratch) {
  const auto past =
      static_cast<int64_t>(reinterpret_cast<uintptr_t>(scratch) % Room::kLine);
  Room room(scratch + (Room::kLine - past) % Room::kLine);
  const Plan plan = lay_out(p, room);
  fill_taps(p.down, plan.period, plan.down);
  fill_taps(p.across, plan.period, plan.across);
  Across across(p, plan);
  const ApexRows &rows = apex_rows();
  const int32_t count = p.across.dst_count;
  const bool apart = p.alpha >= 0 || p.parts == 3;
  for (int32_t y = 0; y < p.down.dst_count; ++y) {
    uint8_t *const dst = p.dst + ptrdiff_t{p.dst_stride} * y;
    // Weights of pairs: an odd first row is the second of one.
    int16_t *const weights = plan.down.weights + int64_t{y} * plan.down.pitch;
    const int32_t first = plan.down.first[y];
    const int32_t left = p.down.src_count - first;
    const int32_t taps = p.down.taps() < left ? p.down.taps() : left;
    if (first % 2 != 0) {
      std::memmove(weights + 1, weights,
                   static_cast<size_t>(taps) * sizeof *weights);
      weights[0] = 0;
    }
    const int32_t pairs = (first % 2 + taps + 1) / 2;
    across.find(first / 2, pairs);
    rows.down(sample_of(p), plan.pairs, weights, pairs,
              ptrdiff_t{count} * apex_sums(p.parts),
              apart ? plan.samples : dst);
    if (p.alpha >= 0) {
      rows.divide(reinterpret_cast<const uint16_t *>(plan.samples), p.alpha,
                  count, dst);
    } else if (p.parts == 3) {
      rows.close(plan.samples, count, dst);
    }
  }
}

}  // namespace lox
