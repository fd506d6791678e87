// SPDX-License-Identifier: Apache-2.0
// Scaling by the rule in doubles, which the library is near: its calls are made
// and what they leave is compared.
#include <orumlox/unprefixed.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "cases/dct_geometry.h"
#include "rules/dct_rule.h"
#include "rules/rules.h"

namespace lox_test {
namespace {

// Of the samples compared so far how many agree, and by how much the library's
// are larger in all.
struct Agreement {
  int64_t compared = 0, equal = 0, excess = 0;

  // Sets of 16 bits move a few samples over an edge, up or down alike.
  void check() {
    if (compared < 100000) return;
    if (100 * equal < 97 * compared || 50 * std::abs(excess) > compared) {
      std::printf("of %lld samples %lld agree, %lld too bright\n",
                  static_cast<long long>(compared),
                  static_cast<long long>(equal),
                  static_cast<long long>(excess));
      std::abort();
    }
    *this = {};
  }
};

// Ends the program unless written bytes are as near as they should and the
// others untouched.
void check_near(const Function &function, const vexo_img &img,
                const Canvas &canvas) {
  thread_local Agreement agreement;
  for (int p = 0; p < 3; ++p) {
    for (size_t i = 0; i < canvas.bytes[p].size(); ++i) {
      const int32_t is = img.plane[p][i], should = canvas.bytes[p][i];
      const bool written = canvas.written[p][i];
      if (std::abs(is - should) > (written ? canvas.tolerance[p] : 0)) {
        std::printf("%s: plane %d, byte %zu is %d, expected %d%s\n",
                    function.name, p, i, is, should,
                    written ? "" : ", untouched");
        std::abort();
      }
      if (!written || canvas.tolerance[p] == kAny) continue;
      ++agreement.compared;
      agreement.excess += is - should;
      agreement.equal += is == should ? 1 : 0;
    }
  }
  agreement.check();
}

bool is_clear(const vexo_rsz_new_context &c) {
  const vexo_rsz_new_context clear{};
  return std::memcmp(&c, &clear, sizeof c) == 0;
}

// The plan by which the library is about to scale: none if it could not make
// one.
void draw_planned(const vexo_img &src, const vexo_img &dst,
                  const vexo_rsz_new_context &c, bool chroma_alone,
                  Canvas &canvas) {
  if (is_clear(c)) return;
  const vexo_img pair[] = {src, dst};
  Plan plan(pair, c.prescale);
  plan.planned = c.dst_stride[0] != 0;
  draw(plan, src, dst, chroma_alone, canvas);
}

int32_t scale(const Function &f, const vexo_img *src, const vexo_img *dst,
              vexo_rsz_new_context *context, vexo_shift_set a,
              vexo_shift_set b) {
  Canvas canvas(*dst);
  draw_planned(*src, *dst, *context, false, canvas);
  const int32_t status = vexo_rsz_new(src, dst, context, a, b);
  check_near(f, *dst, canvas);
  return status;
}

void *chroma(const Function &f, void *argument) {
  const auto &w = *static_cast<const vexo_rsz_new_worker *>(argument);
  Canvas canvas(*w.dst);
  draw_planned(*w.src, *w.dst, *w.context, true, canvas);
  Function entry = f;
  entry.rule = nullptr;
  void *const result = on_thread(entry, argument);
  check_near(f, *w.dst, canvas);
  return result;
}

// What a plane is when turned.
Plane turned(const Plane &from, int32_t w, int32_t h, uint32_t rotation) {
  Plane to(is_quarter(rotation) ? h : w, is_quarter(rotation) ? w : h);
  to.tolerance = from.tolerance;
  for (int32_t y = 0; y < h; ++y) {
    for (int32_t x = 0; x < w; ++x) {
      const Point place = rotated(rotation, {w, h}, x, y);
      to.at(place.x, place.y) = static_cast<uint8_t>(from.sample(x, y));
    }
  }
  return to;
}

int32_t thumbnail(const Function &f, const vexo_img *pair, vexo_img *result,
                  const vexo_img *intermediate, vexo_rsz_new_context *context,
                  vexo_shift_set a, vexo_shift_set b, int32_t rotation) {
  const vexo_img &scaled_img = pair[1];
  const bool pairs = scaled_img.format == VEXO_FMT_NV12;
  const bool made = rotation != 0 &&
                    (pairs || scaled_img.format == VEXO_FMT_YUV420) &&
                    !is_clear(*context) && intermediate->plane[0] != nullptr;
  const vexo_img expected =
      made ? turned_geometry(scaled_img, *result, rotation) : *result;
  std::array<Plane, 3> planes;
  if (made) planes = scaled(Plan(pair, context->prescale), pair[0], scaled_img);
  std::array<int64_t, 3> sizes{};
  for (int i = 0; i < 3 && made && rotation < 6; ++i) {
    const int p = pairs ? std::min(i, 1) : i;
    const int32_t w = scaled_img.width[p], h = scaled_img.height[p];
    // Nobody has written it.
    if (planes[i].samples.empty()) planes[i] = Plane(w, h);
    planes[i] = turned(planes[i], std::max(w, 0), std::max(h, 0),
                       static_cast<uint32_t>(rotation));
    const int64_t row = planes[i].width * (pairs && p == 1 ? 2 : 1);
    sizes[p] = planes[i].height < 1 || row < 1
                   ? 0
                   : row + int64_t{planes[i].height - 1} * expected.stride[p];
  }
  Canvas canvas = rotation == 0 ? Canvas(*result) : Canvas(*result, sizes);
  if (rotation == 0) {
    // Planned of the pair, whatever the selector of the result.
    vexo_img planned = *result;
    planned.color_std = scaled_img.color_std;
    draw_planned(pair[0], planned, *context, false, canvas);
  }
  for (int i = 0; i < 3; ++i) {
    const int p = pairs ? std::min(i, 1) : i;
    if (sizes[p] == 0) continue;
    canvas.put(planes[i], p, expected.stride[p], planes[i].height,
               pairs && i > 0 ? 2 : 1, pairs && i == 2 ? 1 : 0);
  }
  const int32_t status =
      vexo_txc_new(pair, result, intermediate, context, a, b, rotation);
  if (std::memcmp(result, &expected, sizeof expected) != 0) std::abort();
  check_near(f, *result, canvas);
  return status;
}

// The planar forms first, then the pixels, which are put together of them.
int32_t pixels(const Function &f, const vexo_img *quartet,
               vexo_rsz_new_context *context, vexo_shift_set a,
               vexo_shift_set b) {
  const vexo_img &from = quartet[0], &to = quartet[1];
  Canvas apart(quartet[2]), planes(quartet[3]), pixels(to);
  const Axis across(from.width[0], to.width[0]);
  const Axis down(from.height[0], to.height[0]);
  for (int p = 0; p < 3 && !is_clear(*context); ++p) {
    const Plane plane(from.plane[0], from.stride[0], from.width[0],
                      from.height[0], 4, p);
    apart.put(plane, p, quartet[2].stride[p], plane.height);
    planes.put(scaled(plane, across, down), p, quartet[3].stride[p],
               quartet[3].buf_height[p]);
  }
  const int32_t status = vexo_rsz_new_rgba8888(quartet, context, a, b);
  check_near(f, quartet[2], apart);
  check_near(f, quartet[3], planes);
  const bool made = across.count * down.count > 0 && !is_clear(*context);
  for (int32_t i = 0; i < 4 && made; ++i) {
    Plane component(to.width[0], to.height[0]);
    if (i < 3) {
      component = Plane(quartet[3].plane[i], quartet[3].stride[i], to.width[0],
                        to.height[0]);
    } else {
      std::fill(component.samples.begin(), component.samples.end(), 255);
    }
    pixels.put(component, 0, to.stride[0], to.height[0], 4, i);
  }
  check_near(f, to, pixels);
  return status;
}

// 1024 times the orthonormal DCT-II, in single precision.
void coefficients(const Function &, const uint8_t *block, float *out,
                  int32_t height, int32_t width) {
  FDCT_BlockXYFn(block, out, height, width);
  const Plane plane(block, width, width, height);
  const Coefficients expected = transform(plane, 0, 0, width, height);
  for (int i = 0; i < 16; ++i) {
    const bool none = (i % 4 > 0 && width == 1) || (i / 4 > 0 && height == 1);
    const double off = std::abs(out[i] - 1024 * expected[i]);
    if (!none && off > 0.1 * std::sqrt(width * height) * 255) std::abort();
  }
}
void product(const Function &, const float *a, const float *b, float *out,
             int32_t n) {
  for (int32_t i = 0; i < n * n; ++i) {
    out[i] = 0;
    for (int32_t k = 0; k < n; ++k)
      out[i] += a[i / n * n + k] * b[k * n + i % n];
  }
}
void whole_block(const Function &, uint8_t *dst, int32_t row, int32_t column,
                 int32_t stride, const int32_t *c, const int32_t *weights) {
  std::array<int16_t, 16> w;
  for (int i = 0; i < 16; ++i) w[i] = weighted(c[i] >> 16, weights[i]);
  const Block block = inverse(w);
  for (int32_t i = 0; i < 16; ++i) {
    dst[(row + i / 4) * stride + column + i % 4] = block[i];
  }
}
void cut_block(const Function &, uint8_t *dst, int32_t row, int32_t column,
               const int16_t *w, int32_t stride, int32_t rows) {
  std::array<int16_t, 16> all;
  std::copy_n(w, 16, all.begin());
  const Block block = inverse(all);
  for (int32_t i = 0; i < 16; ++i) {
    const int32_t x = column + i % 4, y = row + i / 4;
    if (x < stride && y < rows) dst[y * stride + x] = block[i];
  }
}

}  // namespace

std::vector<Rule> dct_rules() {
  return rules_for(
      vexo_rsz_new, scale, vexo_txc_new, thumbnail, vexo_rsz_new_rgba8888,
      pixels, vexo_new_rsz_thread_prsz_2, chroma, vexo_new_rsz_thread_prsz_4,
      chroma, FDCT_BlockXYFn, coefficients, MatNxN_float_compute, product,
      vexo_idct_block4x4, whole_block, vexo_idct_blocknxn_float, cut_block);
}

}  // namespace lox_test
