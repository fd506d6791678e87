// SPDX-License-Identifier: Apache-2.0
//
// Rows of blocks. The portable form does one block after the other by the rule.
// The vector forms first sum the columns of as many blocks as the nearest cache
// holds: bases are symmetric, so the sums and differences of a row and its
// mirror image are weighed, not the rows; then each block's rows, and the
// inverse of as many blocks together as a register has lanes.
#include "dct/dct_rows.h"

#include "dct/dct_rule.h"
#include "simd/simd.h"

#if defined(LOX_SET_neon)
#include "dct/dct_neon.h"
#elif LOX_VECTORS
#include "dct/dct_x86.h"
#endif

namespace lox::LOX_SET {

namespace {

void plain_blocks(const DctJob *job) {
  for (ptrdiff_t i = 0; i < job->count; ++i) dct_block(*job, i);
}

#if LOX_VECTORS

using Layout = DctOps<Narrow>;

// Sums and inverses are proven to fit their elements for these sides.
bool has_vector_form(const DctKind &kind) {
  return kind.width >= 4 && kind.width <= kDctMostSide && kind.height >= 4 &&
         kind.height <= kDctMostSide;
}

void prepare_down(int16_t (*rows)[8], const DctKind &kind) {
  const int32_t pairs = kind.height / 2;
  const auto entry = [&](int u, int32_t y) {
    return static_cast<int16_t>(dct_entry(kind.down, u, y));
  };
  for (int32_t y = 0; y < pairs + 1; y += 2, ++rows) {
    for (int u = 1; u < 4; ++u) {
      int16_t *const two = *rows + ptrdiff_t{2} * (u - 1);
      two[0] = y < pairs ? entry(u, y) : int16_t{0};
      // Left over is a row without a mirror image.
      two[1] = y + 1 < pairs          ? entry(u, y + 1)
               : kind.height % 2 != 0 ? entry(u, pairs)
                                      : int16_t{0};
    }
  }
}

void prepare(DctTables *tables, const DctKind *kinds) {
  tables->usable = true;
  auto *words = reinterpret_cast<int16_t *>(tables + 1);
  for (int type = 0; type < 4; ++type) {
    const DctKind &kind = kinds[type];
    if (kind.down == nullptr) continue;
    if (!has_vector_form(kind)) {
      tables->usable = false;
      return;
    }
    for (int odd = 0; odd < Layout::kColumns; ++odd) {
      DctTables::Kind &made = tables->kinds[type][odd];
      if (type < 2) {
        made.across = words;
        made.count = Layout::put_across(
            words, kind.width, odd, [&](int v, int32_t x) LOX_INLINE_LAMBDA {
              return dct_entry(kind.across, v, x);
            });
        words += dct_across_words(kind.width);
      } else {  // as wide as kind 0 or 1
        made.across = tables->kinds[type - 2][odd].across;
        made.count = tables->kinds[type - 2][odd].count;
      }
      made.shift = dct_row_shift(kind.width, kind.height);
      for (int u = 0; u < 4; ++u) {
        for (int v = 0; v < 4; ++v) {
          const int at = Layout::place(u, v);
          made.weights[at] = kind.weights[4 * u + v];
          made.most[at] = u + v == 0 ? dct_most_dc(kind.weights[0]) : INT32_MAX;
        }
      }
    }
  }
  for (int type = 0; type < 4; type += 2) {
    if (kinds[type].down == nullptr) continue;
    tables->down[type / 2] = reinterpret_cast<int16_t(*)[8]>(words);
    prepare_down(tables->down[type / 2], kinds[type]);
    words += 8 * dct_down_rows(kinds[type].height);
  }
  tables->rows = reinterpret_cast<const uint8_t **>(words);
}

// What a row of blocks has in common. The rows of the blocks are listed where
// some are repeated or they are many (`rows`), else `stride` apart from `first`
// on.
struct Down {
  const uint8_t *const *rows;
  const uint8_t *first;
  ptrdiff_t stride;
  const int16_t (*weights)[8];
  const int16_t *const *basis;
  int32_t height;
  int shift;

  LOX_INLINE const uint8_t *row(int32_t y) const {
    return rows != nullptr ? rows[y] : first + y * stride;
  }
  // How far the next row of blocks is.
  LOX_INLINE ptrdiff_t ahead() const { return height * stride; }
};

// Steps of four rows whose sums of bytes fit 16 bits, with some more rows that
// are left over.
constexpr int32_t kMostSteps = 60;

// Rows from the top and from the bottom of blocks, to their middle.
struct MovingRows {
  static constexpr bool kAnyHeight = false;
  const uint8_t *top_row, *bottom_row;
  ptrdiff_t stride;

  LOX_INLINE MovingRows(const Down &down, ptrdiff_t x)
      : top_row(down.first + x),
        bottom_row(down.first + (down.height - 1) * down.stride + x),
        stride(down.stride) {}
  LOX_INLINE const uint8_t *top() {
    const uint8_t *const row = top_row;
    top_row += stride;
    keep_pointer(top_row);
    return row;
  }
  LOX_INLINE const uint8_t *bottom() {
    const uint8_t *const row = bottom_row;
    bottom_row -= stride;
    keep_pointer(bottom_row);
    return row;
  }
};
struct ListedRows {
  static constexpr bool kAnyHeight = true;
  const uint8_t *const *top_row, *const *bottom_row;
  ptrdiff_t x;

  LOX_INLINE ListedRows(const Down &down, ptrdiff_t column)
      : top_row(down.rows),
        bottom_row(down.rows + down.height - 1),
        x(column) {}
  LOX_INLINE const uint8_t *top() { return *top_row++ + x; }
  LOX_INLINE const uint8_t *bottom() { return *bottom_row-- + x; }
};

// The sums t of one column, by the rule.
void sum_column(const Down &down, ptrdiff_t x, int16_t *t, ptrdiff_t i) {
  for (int u = 0; u < 4; ++u) {
    int32_t sum = 1 << (down.shift - 1);
    for (int32_t y = 0; y < down.height; ++y) {
      sum += dct_entry(down.basis, u, y) * down.row(y)[x];
    }
    t[Layout::column(i, u)] = static_cast<int16_t>(
        (sum >> down.shift) - (u == 0 ? Layout::kTaken : 0));
  }
}

// One of D::kHalves of the D::n columns from x on, to place i, which is even.
template <class D, int kHalf, class Rows>
LOX_INLINE void sum_half(const Down &down, ptrdiff_t x, int16_t *t,
                         ptrdiff_t i) {
  auto sums = D::no_sums(down.shift);
  Rows rows(down, x);
  const int16_t(*w)[8] = down.weights;
  const int w0 = dct_entry(down.basis, 0, 0);
  const ptrdiff_t ahead = down.ahead();
  const auto step = [&]() LOX_INLINE_LAMBDA {
    const uint8_t *const top0 = rows.top();
    const uint8_t *const bottom0 = rows.bottom();
    const uint8_t *const top1 = rows.top();
    const uint8_t *const bottom1 = rows.bottom();
    if constexpr (kHalf == 0) {
      prefetch(top0, ahead);
      prefetch(bottom0, ahead);
      prefetch(top1, ahead);
      prefetch(bottom1, ahead);
    }
    D::template add_pairs<kHalf>(sums, top0, bottom0, top1, bottom1, *w++);
  };
  int32_t steps = down.height / 4;
  if constexpr (Rows::kAnyHeight) {
    for (; steps > kMostSteps; steps -= kMostSteps) {
      for (int32_t n = kMostSteps; n != 0; --n) step();
      D::weigh_first(sums, w0);
    }
  }
  for (; steps != 0; --steps) step();
  const int32_t left = down.height % 4;
  if (left >= 2) {
    const uint8_t *const top = rows.top();
    const uint8_t *const bottom = rows.bottom();
    if (left == 2) {
      D::template add_pair<kHalf>(sums, top, bottom, *w);
    } else {
      D::template add_pair_and_row<kHalf>(sums, top, bottom, rows.top(), *w);
    }
  } else if (left == 1) {
    D::template add_row<kHalf>(sums, rows.top(), *w);
  }
  D::template put<kHalf>(sums, w0, down.shift, t + Layout::column(i, 0));
}
template <class D, class Rows>
LOX_INLINE void sum_vector(const Down &down, ptrdiff_t x, int16_t *t,
                           ptrdiff_t i) {
  sum_half<D, 0, Rows>(down, x, t, i);
  if constexpr (D::kHalves == 2) sum_half<D, 1, Rows>(down, x, t, i);
}

template <class D, class Rows>
LOX_INLINE ptrdiff_t sum_vectors_of(const Down &down, ptrdiff_t x, ptrdiff_t n,
                                    int16_t *t) {
  // Places are even: of an odd number of columns the last one is left.
  const ptrdiff_t even = n & ~ptrdiff_t{1};
  ptrdiff_t i = 0;
  if (even >= D::n) {
    for_units<D::n, 1>(
        even,
        [&]() LOX_INLINE_LAMBDA {
          sum_vector<D, Rows>(down, x + i, t, i);
          i += D::n;
        },
        taken<1>(i));
  }
  return i;
}

template <class D>
LOX_INLINE ptrdiff_t sum_vectors(const Down &down, ptrdiff_t x, ptrdiff_t n,
                                 int16_t *t) {
  return down.rows == nullptr ? sum_vectors_of<D, MovingRows>(down, x, n, t)
                              : sum_vectors_of<D, ListedRows>(down, x, n, t);
}

// The sums of n columns from x on; those beyond the plane's width, and
// kDctBeyond beyond n, are those of its last column.
void sum_columns(const Down &down, const DctJob &job, ptrdiff_t x, ptrdiff_t n,
                 int16_t *t) {
  ptrdiff_t inside = job.width - x < n ? job.width - x : n;
  if (inside < 1) {
    x = job.width - 1;
    inside = 1;
  }
  ptrdiff_t i = sum_vectors<DctOps<Wide>>(down, x, inside, t);
  if (kNarrower && i == 0) {
    i = sum_vectors<DctOps<Narrow>>(down, x, inside, t);
  }
  for (; i < inside; ++i) sum_column(down, x + i, t, i);
  for (; i < n + kDctBeyond; ++i) {
    for (int u = 0; u < 4; ++u) {
      t[Layout::column(i, u)] = t[Layout::column(inside - 1, u)];
    }
  }
}

// D::blocks blocks, of which the first is at place i; their columns begin at
// `begin` in t.
template <class D>
LOX_INLINE void inverse(const typename D::Constants &constants,
                        const DctTables *tables, const DctJob *job,
                        int32_t begin, ptrdiff_t i) {
  typename D::Group group;
#pragma GCC unroll 4
  for (int block = 0; block < D::blocks; ++block) {
    const auto x = static_cast<size_t>(job->columns[i + block] - begin);
    const size_t odd = x % D::kColumns;
    D::sum_rows(group, block, tables->sums + 4 * (x - odd),
                tables->kinds[job->types[i + block]][odd]);
  }
  D::put_blocks(group, constants, job->dst + 4 * i, job->dst_stride);
}

void vector_blocks(DctTables *tables, const DctJob *job) {
  const DctKind &kind = job->kinds[job->types[0]];
  Down down = {nullptr,
               job->row(0),
               job->stride,
               tables->down[job->types[0] / 2],
               kind.down,
               kind.height,
               dct_column_shift(kind.height)};
  if (int64_t{job->first_row} + kind.height > job->rows ||
      kind.height / 4 > kMostSteps) {
    for (int32_t y = 0; y < kind.height; ++y) tables->rows[y] = job->row(y);
    down.rows = tables->rows;
  }

  using D = DctOps<Wide>;
  using Single = DctOps<Narrow>;
  const D::Constants constants = D::constants();
  // Wide blocks, if there are any, are kind 1.
  const ptrdiff_t together =
      kDctColumns / (job->kinds[0].width + (job->kinds[1].width > 0 ? 1 : 0));
  for (ptrdiff_t i = 0; i < job->count;) {
    const ptrdiff_t last =
        job->count - i > together ? i + together : job->count;
    const int32_t begin = job->columns[i];
    sum_columns(
        down, *job, begin,
        job->columns[last - 1] - begin + job->kinds[job->types[last - 1]].width,
        tables->sums);
    const bool whole = last - i >= D::blocks;
    for (; i + D::blocks <= last; i += D::blocks) {
      inverse<D>(constants, tables, job, begin, i);
    }
    if (whole && i < last) {
      inverse<D>(constants, tables, job, begin, last - D::blocks);
      i = last;
    }
    for (; i < last; ++i) {
      inverse<Single>(Single::constants(), tables, job, begin, i);
    }
  }
}

#else

void prepare(DctTables *, const DctKind *) {}

#endif

void blocks([[maybe_unused]] DctTables *tables, const DctJob *job) {
#if LOX_VECTORS
  if (tables->usable && job->count > 0) {
    vector_blocks(tables, job);
    return;
  }
#endif
  plain_blocks(job);
}

}  // namespace

constinit const DctRows dct_rows = {.prepare = prepare, .blocks = blocks};

}  // namespace lox::LOX_SET
