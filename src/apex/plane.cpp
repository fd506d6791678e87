// SPDX-License-Identifier: Apache-2.0
//
// Scratch memory and the rows of a plane. Each row of the source is scaled
// across once, and kept as words until the last output that it belongs to has
// been summed. That is done by strips of columns.
#include "apex/plane.h"

#include <cstring>

#include "apex/columns.h"
#include "apex/turned.h"

namespace lox {

namespace {

// Bytes of the words that are kept. On x86 it is about what the first cache
// holds; elsewhere, where sums take longer than the second cache, rows are cut
// less, which costs a call each.
#if defined(__x86_64__) || defined(__i386__)
constexpr int32_t kKept = 40 << 10;
#else
constexpr int32_t kKept = 128 << 10;
#endif
// Sums of a strip: at least, and a multiple of these.
constexpr int32_t kLeastSums = 128;
constexpr int32_t kWholeSums = 64;
// Pixels are repeated by so many bytes.
constexpr int64_t kRepeated = 8;

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
  Plan(const ApexPlane &p, Room &room);

  ApexSample sample;
  ApexPeriod across, down;
  ApexTaps down_taps = {};
  // One of two ways.
  bool turns;
  ApexTurned turned;
  ApexTaps turned_taps = {};
  int16_t *side_by_side = nullptr;  // rows that are turned
  // Whether three parts are scaled as planes of one, whose sums are plane_sums
  // apart, and the parts that are scaled at once.
  bool splits;
  int32_t parts;
  int32_t planes = 1;
  ApexArrangement arrangement;
  // Whether whole rows are copied: overlapping loads bring what is far away at
  // half the speed.
  bool copies;
  ApexArrangement::Tables tables = {};
  // The pixel of a row behind the last that has a weight.
  int64_t needed = 0;
  // Blocks, or else all sums, of a strip and of a row.
  int32_t strip = 1, blocks = 1;
  // Pairs of rows between the directions, `slots` of them in turn, and where
  // they are, twice: from any of them on it is as many.
  int16_t *words;
  const int16_t **pairs;
  int64_t pitch, plane_sums;
  int32_t slots;
  // The ends of rows, to be read beyond, or planes of them, so far apart.
  uint8_t *edges;
  int64_t edge_bytes = 0;
  ptrdiff_t split_bytes = 0;
  uint16_t *multiplied = nullptr;  // rows
  uint8_t *samples = nullptr;      // a row that is not the destination's
};

Plan::Plan(const ApexPlane &p, Room &room)
    : sample(p.alpha < 0 ? p.sample : ApexSample::k14),
      across(p.across),
      down(p.down),
      turned(p.across, sample, p.parts),
      splits(p.parts == 3 && apex_rows().split != nullptr),
      parts(splits ? 1 : p.parts),
      arrangement(p.across, across, sample, parts),
      copies(p.far && !arrangement.fetches()) {
  turns =
      arrangement.may_turn() && ApexTurned::pays(p.across, p.down.src_count);
  if (turns) splits = false;
  if (splits) planes = 3;
  // How many are scaled across at once.
  const int32_t rows = turns ? ApexTurned::rows() : 2;
  // Those of an output; with the last of them come others.
  const int32_t most = apex_pairs(down.taps);
  slots = most + rows / 2 - 1;
  const int64_t row = int64_t{p.across.src_count} * p.parts;
  // One direction's tables are filled after the other's.
  const int64_t firsts =
      across.outputs > down.outputs ? across.outputs : down.outputs;
  const int64_t weights_across = int64_t{across.outputs} * across.taps;
  const int64_t weights_down = int64_t{down.outputs} * down.taps;
  across.first = down.first = room.take<int32_t>(firsts);
  across.weights = down.weights = room.take<int16_t>(
      weights_across > weights_down ? weights_across : weights_down);
  down_taps = {most, room.take<int32_t>(p.down.dst_count),
               room.take<int16_t>(int64_t{p.down.dst_count} * 2 * most)};
  pairs = room.take<const int16_t *>(2 * int64_t{slots} * planes);
  int64_t sums = turned.room();
  if (turns) {
    const int32_t steps = apex_pairs(across.taps);
    turned_taps = {steps, room.take<int32_t>(turned.outputs()),
                   room.take<int16_t>(turned.outputs() * 2 * steps)};
    side_by_side = room.take<int16_t>(turned.words());
    edge_bytes = turned.end_bytes();
  } else {
    tables = {room.take<int32_t>(arrangement.firsts()),
              room.take<uint32_t>(arrangement.places()),
              room.take<int16_t>(arrangement.weights())};
    blocks = arrangement.blocks();
    // Rows that are made for a strip are made whole.
    const int32_t wanted = kKept / 4 / slots / planes;
    const int32_t least =
        (wanted > kLeastSums ? wanted : kLeastSums) / arrangement.sums();
    const int32_t strips = p.alpha < 0 ? (blocks - 1) / least + 1 : 1;
    strip = (blocks - 1) / strips + 1;
    // Whole vectors of all sets.
    const int32_t whole = kWholeSums / arrangement.sums();
    if (whole > 1) strip = (strip + whole - 1) / whole * whole;
    if (strip > blocks) strip = blocks;
    sums = int64_t{strip} * arrangement.sums();
    edge_bytes = 2 * (copies ? arrangement.most(strip) : arrangement.edges()) *
                     apex_bytes(sample) +
                 4 * kRepeated;
    if (splits) {
      split_bytes =
          static_cast<ptrdiff_t>((arrangement.most(strip) + 63) & ~int64_t{63});
      edge_bytes = int64_t{6} * split_bytes;
    }
  }
  sums = (sums + 63) & ~int64_t{63};
  plane_sums = sums;
  pitch = 2 * sums * planes;
  words = room.take<int16_t>(pitch * slots);
  edges = room.take<uint8_t>(edge_bytes);
  if (p.alpha >= 0) multiplied = room.take<uint16_t>(rows * row);
  if (p.alpha >= 0 || p.parts == 3) samples = room.take<uint8_t>(3 * sums);
}

// The same pixel again and again, eight bytes at a time: what follows them is
// written next, or is room for them.
template <class T>
void repeat(const uint8_t *pixel, int64_t bytes, uint8_t *dst) {
  T v;
  std::memcpy(&v, pixel, sizeof v);
  const uint64_t eight = v * (~uint64_t{0} / static_cast<T>(~T{0}));
  for (int64_t at = 0; at < bytes; at += 8) {
    std::memcpy(dst + at, &eight, sizeof eight);
  }
}
void repeat(int32_t size, const uint8_t *pixel, int64_t bytes, uint8_t *dst) {
  switch (size) {
    case 1:
      return repeat<uint8_t>(pixel, bytes, dst);
    case 2:
      return repeat<uint16_t>(pixel, bytes, dst);
    case 4:
      return repeat<uint32_t>(pixel, bytes, dst);
    case 8:
      return repeat<uint64_t>(pixel, bytes, dst);
    default:
      for (; bytes > 0; bytes -= size, dst += size) {
        std::memcpy(dst, pixel, 3);
      }
  }
}
// Whether a piece is read from a copy, or from planes, and what that is made
// of.
struct Copied {
  bool is;
  // Bytes that do not count, of the first pixel repeated, of the row from `at`
  // on, of the last pixel repeated, and all with what these are longer. Of
  // planes those of each, `at` in them, too.
  int64_t skipped, before, at, inside, behind, all;
};

// Pairs of rows of words, made as they are wanted: the columns of a strip.
class Across {
 public:
  Across(const ApexPlane &p, const Plan &plan, int32_t block, int32_t blocks)
      : p_(p), plan_(plan) {
    if (plan.turns) return;
    // Those that take what is before a row, and behind it.
    const ApexArrangement &a = plan.arrangement;
    columns_ = a.columns(plan.tables);
    const int32_t begin = block;
    const int32_t end = begin + blocks + a.loads_before();
    if (plan.splits || plan.copies) {
      add(begin, begin, end, true);
      return;
    }
    const int64_t row_end = int64_t{p.across.src_count} * p.parts;
    int32_t inside = begin;
    while (inside < end && a.begin(plan.tables, inside) < 0) ++inside;
    int32_t behind = end;
    while (behind > inside && a.end(plan.tables, behind - 1) > row_end) {
      --behind;
    }
    // What has been copied is read some time after, if the order is free.
    if (a.streams()) {
      add(begin, begin, inside, true);
      add(begin, inside, behind, false);
    } else {
      add(begin, inside, behind, false);
      add(begin, begin, inside, true);
    }
    add(begin, behind, end, true);
  }

  // Those of an output's rows.
  const int16_t *const *find(int32_t first, int32_t count) {
    if (next_ < first) next_ = first;
    while (next_ < first + count) {
      if (plan_.turns) {
        make_many();
      } else {
        make_two();
      }
    }
    return plan_.pairs + first % plan_.slots;
  }

 private:
  void add(int32_t strip, int32_t begin, int32_t end, bool copied) {
    if (begin == end) return;
    const ApexArrangement &a = plan_.arrangement;
    const int64_t first = copied ? a.begin(plan_.tables, begin) : 0;
    pieces_[count_] = a.piece(begin, end - begin, first, strip);
    Copied &c = copied_[count_++];
    c.is = copied;
    const int64_t first_pixel = first / plan_.parts;
    const int64_t end_pixel =
        (a.end(plan_.tables, end - 1) - 1) / plan_.parts + 1;
    const int64_t count = p_.across.src_count;
    const int32_t bytes = plan_.splits ? 1 : pixel();
    const int32_t begun = plan_.across.first[0] < 0 ? plan_.across.first[0] : 0;
    const int64_t from = first_pixel < begun ? begun : first_pixel;
    const int64_t to = end_pixel < plan_.needed ? end_pixel : plan_.needed;
    const int64_t inside = from < 0 ? 0 : from < count ? from : count;
    const int64_t last = to < count ? to : count;
    const int64_t behind = to - (last > from ? last : from);
    c.skipped = (from - first_pixel) * bytes;
    c.before = from < 0 ? (inside - from) * bytes : 0;
    c.at = inside * bytes;
    c.inside = inside < last ? (last - inside) * bytes : 0;
    c.behind = behind * bytes;
    c.all = (end_pixel - first_pixel) * bytes + kRepeated;
  }
  int32_t pixel() const { return p_.parts * apex_bytes(plan_.sample); }
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
    plan_.turned.make(rows, plan_.turned_taps, plan_.side_by_side, plan_.edges,
                      pairs);
    next_ += count / 2;
  }
  void make_two() {
    const ApexRows &rows = apex_rows();
    int16_t *const words = slot(next_);
    const uint8_t *const above = row(0);
    const uint8_t *const below = row(1);
    // The next two rows, but for premultiplied ones, which are near.
    const bool fetches =
        p_.far && p_.alpha < 0 && int64_t{2} * next_ + 3 < p_.down.src_count;
    const ptrdiff_t ahead = fetches ? ptrdiff_t{2} * p_.src_stride : 0;
    uint8_t *to = plan_.edges;
    if (plan_.splits) {
      uint8_t *const second = to + 3 * plan_.split_bytes;
      split(above, copied_[0], ahead, to);
      split(below, copied_[0], ahead, second);
      for (int32_t part = 0; part < 3; ++part) {
        pieces_[0].row = to + part * plan_.split_bytes;
        pieces_[0].below = second + part * plan_.split_bytes;
        rows.across(plan_.sample, columns_, pieces_, 1,
                    words + 2 * plan_.plane_sums * part);
      }
      ++next_;
      return;
    }
    for (int32_t k = 0; k < count_; ++k) {
      ApexPiece &piece = pieces_[k];
      piece.row = above;
      piece.below = below;
      piece.ahead = ahead;
      if (copied_[k].is) {
        piece.ahead = 0;
        piece.row = to;
        to = copy(above, copied_[k], to);
        piece.below = to;
        to = copy(below, copied_[k], to);
      }
    }
    rows.across(plan_.sample, columns_, pieces_, count_, words);
    ++next_;
  }

  // Pixels of a row, those at its ends for what is beyond and counts. Returns
  // where the next ones go.
  uint8_t *copy(const uint8_t *row, const Copied &c, uint8_t *dst) const {
    const int32_t bytes = pixel();
    uint8_t *to = dst + c.skipped;
    repeat(bytes, row, c.before, to);
    to += c.before;
    std::memcpy(to, row + c.at, static_cast<size_t>(c.inside));
    const int64_t last = (int64_t{p_.across.src_count} - 1) * bytes;
    repeat(bytes, row + last, c.behind, to + c.inside);
    return dst + c.all;
  }

  // The same by planes.
  void split(const uint8_t *row, const Copied &c, ptrdiff_t ahead,
             uint8_t *dst) const {
    const uint8_t *const last = row + 3 * (int64_t{p_.across.src_count} - 1);
    uint8_t *to = dst + c.skipped;
    if (c.inside > 0) {
      apex_rows().split(row + 3 * c.at, ahead, static_cast<ptrdiff_t>(c.inside),
                        plan_.split_bytes, to + c.before);
    }
    for (int32_t part = 0; part < 3; ++part, to += plan_.split_bytes) {
      std::memset(to, row[part], static_cast<size_t>(c.before));
      if (c.behind > 0) {
        std::memset(to + c.before + c.inside, last[part],
                    static_cast<size_t>(c.behind));
      }
    }
  }

  const ApexPlane &p_;
  const Plan &plan_;
  ApexColumns columns_ = {};
  ApexPiece pieces_[3] = {};
  Copied copied_[3] = {};
  int32_t count_ = 0;
  int32_t next_ = 0;  // pair
};

// The columns of a strip: so many from output `begin` on.
void scale_strip(const ApexPlane &p, const Plan &plan, Across &across,
                 int32_t begin, int32_t count) {
  const ApexRows &rows = apex_rows();
  const bool apart = p.alpha >= 0 || p.parts == 3;
  const int32_t pixel = p.parts * apex_bytes(p.sample);
  for (int32_t y = 0; y < p.down.dst_count; ++y) {
    uint8_t *const dst =
        p.dst + ptrdiff_t{p.dst_stride} * y + ptrdiff_t{begin} * pixel;
    const int16_t *const weights =
        plan.down_taps.weights + int64_t{y} * 2 * plan.down_taps.pairs;
    const int32_t first = plan.down_taps.first[y];
    const int32_t left = p.down.src_count / 2 + p.down.src_count % 2 - first;
    int32_t pairs = plan.down_taps.pairs < left ? plan.down_taps.pairs : left;
    // The last one counts where the first sample is a pair's second.
    if (pairs > 1 && (weights[2 * pairs - 2] | weights[2 * pairs - 1]) == 0) {
      --pairs;
    }
    const int16_t *const *from = across.find(first, pairs);
    if (plan.splits) {
      for (int32_t part = 0; part < 3;
           ++part, from += ptrdiff_t{2} * plan.slots) {
        rows.down(plan.sample, from, weights, pairs, count,
                  plan.samples + plan.plane_sums * part);
      }
      rows.join(plan.samples, count, static_cast<ptrdiff_t>(plan.plane_sums),
                dst);
      continue;
    }
    rows.down(plan.sample, from, weights, pairs,
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

}  // namespace

int64_t apex_scratch(const ApexPlane &p) {
  Room room(nullptr);
  const Plan plan(p, room);
  return room.used() + Room::kLine;
}

void apex_scale(const ApexPlane &p, uint8_t *scratch) {
  const auto past =
      static_cast<int64_t>(reinterpret_cast<uintptr_t>(scratch) % Room::kLine);
  Room room(scratch + (Room::kLine - past) % Room::kLine);
  Plan plan(p, room);
  plan.down.fill(p.down);
  fill_taps(p.down, plan.down, p.down.dst_count, plan.down_taps);
  plan.across.fill(p.across);
  if (plan.turns) {
    fill_taps(p.across, plan.across, plan.turned.outputs(), plan.turned_taps);
  } else {
    plan.arrangement.fill(plan.across, plan.tables);
    plan.needed =
        plan.across.first_of(p.across.dst_count - 1) + plan.across.taps;
    // What is loaded beyond that counts for nothing.
    std::memset(plan.edges, 0, static_cast<size_t>(plan.edge_bytes));
  }
  const int16_t **pair = plan.pairs;
  for (int32_t plane = 0; plane < plan.planes; ++plane) {
    for (int32_t i = 0; i < 2 * plan.slots; ++i) {
      *pair++ = plan.words + i % plan.slots * plan.pitch +
                2 * plan.plane_sums * plane;
    }
  }
  const int64_t outputs =
      plan.turns ? p.across.dst_count : plan.arrangement.outputs();
  for (int32_t block = 0; block < plan.blocks; block += plan.strip) {
    const int32_t left = plan.blocks - block;
    const int32_t blocks = plan.strip < left ? plan.strip : left;
    Across across(p, plan, block, blocks);
    const int64_t begin = block * outputs;
    const int64_t end = begin + blocks * outputs;
    scale_strip(
        p, plan, across, static_cast<int32_t>(begin),
        static_cast<int32_t>(
            (end < p.across.dst_count ? end : p.across.dst_count) - begin));
  }
}

}  // namespace lox
