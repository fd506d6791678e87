// SPDX-License-Identifier: Apache-2.0
//
// The shift-matrix sets: the integer bases of all block types. A row of a set
// holds a strip, four neighbouring samples of a basis.
#include "dct/sets.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "dct/dct_rule.h"
#include "dct/plan.h"

namespace lox {

namespace {

// The orthonormal transform of four points.
constexpr float kFour[16] = {
    0.5F,         0.5F,        0.5F,       0.5F,        0.6532815F, 0.27059805F,
    -0.27059805F, -0.6532815F, 0.5F,       -0.5F,       -0.5F,      0.5F,
    0.27059805F,  -0.6532815F, 0.6532815F, -0.27059805F};

// The basis of `points` points for a strip's four samples, row by row. Samples
// that are ones on the strip's diagonal transform to the basis times the
// inverse of kFour; multiplying by kFour leaves the basis.
void strip_basis(int32_t points, int32_t strip, const ColumnCosines &columns,
                 float *out) {
  constexpr uint8_t kDiagonal[16] = {1, 0, 0, 0, 0, 1, 0, 0,
                                     0, 0, 1, 0, 0, 0, 0, 1};
  float product[16];
  transform_rows(kDiagonal, 4 * strip, smaller(4, points - 4 * strip), points,
                 columns, product);
  MatNxN_float_compute(product, kFour, out, 4);
}

// Rounds entries so that their partial sums are as near as can be. So the
// halves of a symmetric row, and the row, add up to what they should.
class PartialSums {
 public:
  int32_t next(double entry) {
    exact_ += entry;
    const auto sum = static_cast<int32_t>(std::lround(exact_));
    const int32_t rounded = sum - sum_;
    sum_ = sum;
    return rounded;
  }
  // The last entry of a half that adds up to 0.
  int32_t last() const { return -sum_; }
  // The entry in the middle, of a row that adds up to `total`.
  int32_t middle(int32_t total) const { return total - 2 * sum_; }

 private:
  double exact_ = 0;
  int32_t sum_ = 0;
};

// Works out half of a basis and mirrors it. Row 2 is made to add up to 0, as
// the antisymmetric rows 1 and 3 do, so that a flat block has no coefficient
// but the first. Row 0 is one number everywhere (`flat`, for columns, whose
// sums it multiplies), or adds up to the exact sum, which keeps the brightness.
void fill_basis(int16_t *const *rows, int32_t points, int bits, bool flat) {
  // FDCT_BlockXYFn's results are 1024 times the orthonormal ones.
  const double scale = std::ldexp(1.0, bits - 10);
  const auto round = [](double x) {
    return static_cast<int32_t>(std::lround(x));
  };
  const auto put = [&](int u, int32_t i, int32_t entry) {
    rows[i / 4][4 * u + i % 4] = static_cast<int16_t>(entry);
  };
  const int32_t half = points / 2;
  const ColumnCosines columns(4);
  float strip[16];
  PartialSums first;
  PartialSums third;
  double level = 0;
  for (int32_t i = 0; i < (points + 1) / 2; ++i) {
    if (i % 4 == 0) strip_basis(points, i / 4, columns, strip);
    const float *const column = strip + i % 4;
    if (i == 0) level = scale * column[0];
    if (i == half) {
      put(0, i, flat ? round(level) : first.middle(round(level * points)));
      put(2, i, third.middle(0));
      break;
    }
    const int32_t entries[4] = {
        flat ? round(level) : first.next(level), round(scale * column[4]),
        i + 1 == half && points % 2 == 0 ? third.last()
                                         : third.next(scale * column[8]),
        round(scale * column[12])};
    for (int u = 0; u < 4; ++u) {
      put(u, i, entries[u]);
      put(u, points - 1 - i, u % 2 == 0 ? entries[u] : -entries[u]);
    }
  }
}

}  // namespace

int32_t set_entries(const vexo_rsz_new_context *context) {
  return context->types[0] + context->types[1];
}

void free_set(vexo_shift_set set, int32_t count) {
  if (set == nullptr) return;
  for (int32_t i = 0; i < count; ++i) {
    if (set[i] != nullptr) free(set[i][0]);
    free(set[i]);
  }
  free(set);
}

}  // namespace lox

int32_t get_mem3Dint16(vexo_shift_set *set, int32_t count, int32_t n) {
  *set = nullptr;
  if (count < 1 || n < 1) return VEXO_ERR_ARG;
  const auto entries = static_cast<size_t>(count);
  const auto rows = static_cast<size_t>(n);
  auto *const made = static_cast<vexo_shift_set>(calloc(entries, sizeof **set));
  if (made == nullptr) return VEXO_ERR_ARG;
  for (size_t i = 0; i < entries; ++i) {
    made[i] = static_cast<int16_t **>(calloc(rows, sizeof **made));
    if (made[i] != nullptr) {
      made[i][0] = static_cast<int16_t *>(calloc(rows, 16 * sizeof ***made));
    }
    if (made[i] == nullptr || made[i][0] == nullptr) {
      lox::free_set(made, count);
      return VEXO_ERR_ARG;
    }
    for (size_t row = 1; row < rows; ++row) {
      made[i][row] = made[i][0] + 16 * row;
    }
  }
  *set = made;
  return VEXO_OK;
}

void make_shiftmatrix(const vexo_rsz_new_context *context, vexo_shift_set a,
                      vexo_shift_set b) {
  const auto copy = [](int16_t *const *to, int16_t *const *from,
                       int32_t points) {
    const auto rows = static_cast<size_t>((points + 3) / 4);
    memcpy(to[0], from[0], rows * 16 * sizeof **to);
  };
  for (int32_t plane = 0; plane < 2; ++plane) {
    for (int32_t type = 0; type < context->types[plane]; ++type) {
      if (!lox::has_type(context, plane, type)) continue;
      const int32_t entry = lox::set_entry(context, plane, type);
      const int32_t height = context->block_height[plane][type];
      const int32_t width = context->block_width[plane][type];
      // Types 0 and 1 are equally high, 0 and 2 equally wide.
      if (type % 2 == 0) {
        lox::fill_basis(a[entry], height, lox::dct_down_scale(height), true);
      } else {
        copy(a[entry], a[entry - 1], height);
      }
      if (type < 2) {
        lox::fill_basis(b[entry], width, lox::dct_across_scale(width), false);
      } else {
        copy(b[entry], b[entry - 2], width);
      }
    }
  }
}
