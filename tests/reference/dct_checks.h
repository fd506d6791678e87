// SPDX-License-Identifier: Apache-2.0
// The calls that scale pictures, each of which looks at what it leaves: models
// of the cases, as near the rule as they are promised to be.
#pragma once

#include <gtest/gtest.h>
#include <orumlox/unprefixed.h>
#include <pthread.h>

#include <cstdlib>
#include <cstring>

#include "cases/dct_geometry.h"
#include "dct_model.h"
#include "models.h"

namespace lox_test {

// Of the samples compared so far how many agree, and by how much the library's
// are larger in all.
struct Agreement {
  int64_t compared, equal, excess;
};
inline Agreement agreement;

// Sets of 16 bits move a few samples over an edge, up or down alike.
inline void expect_agreement() {
  const auto all = static_cast<double>(agreement.compared);
  EXPECT_GE(static_cast<double>(agreement.equal), 0.97 * all);
  EXPECT_NEAR(static_cast<double>(agreement.excess), 0, 0.02 * all);
  agreement = {};
}

// Whether written bytes are as near as they should and the others untouched.
inline void expect_near(const vexo_img &img, const Canvas &canvas) {
  for (int p = 0; p < 3; ++p) {
    for (size_t i = 0; i < canvas.bytes[p].size(); ++i) {
      const int32_t is = img.plane[p][i], should = canvas.bytes[p][i];
      const bool written = canvas.written[p][i];
      ASSERT_LE(std::abs(is - should), written ? canvas.tolerance[p] : 0)
          << "plane " << p << ", byte " << i << " is " << is << ", expected "
          << should << (written ? "" : ", untouched");
      if (!written || canvas.tolerance[p] == kAny) continue;
      ++agreement.compared;
      agreement.excess += is - should;
      agreement.equal += is == should ? 1 : 0;
    }
  }
}

inline bool is_clear(const vexo_rsz_new_context &c) {
  const vexo_rsz_new_context clear{};
  return std::memcmp(&c, &clear, sizeof c) == 0;
}

// The plan by which the library is about to scale: none if it could not make
// one.
inline void draw_planned(const vexo_img &src, const vexo_img &dst,
                         const vexo_rsz_new_context &c, bool chroma_alone,
                         Canvas &canvas) {
  if (is_clear(c)) return;
  const vexo_img pair[] = {src, dst};
  Plan plan(pair, c.prescale);
  plan.planned = c.dst_stride[0] != 0;
  draw(plan, src, dst, chroma_alone, canvas);
}

inline int32_t checked_scale(const vexo_img *src, const vexo_img *dst,
                             vexo_rsz_new_context *context, vexo_shift_set a,
                             vexo_shift_set b) {
  Canvas canvas(*dst);
  draw_planned(*src, *dst, *context, false, canvas);
  const int32_t status = vexo_rsz_new(src, dst, context, a, b);
  expect_near(*dst, canvas);
  return status;
}

template <void *(*kEntry)(void *)>
void *checked_chroma(void *argument) {
  const auto &w = *static_cast<const vexo_rsz_new_worker *>(argument);
  Canvas canvas(*w.dst);
  draw_planned(*w.src, *w.dst, *w.context, true, canvas);
  pthread_t thread;
  void *result = nullptr;
  pthread_create(&thread, nullptr, kEntry, argument);
  pthread_join(thread, &result);
  expect_near(*w.dst, canvas);
  return result;
}

// What a plane is when turned.
inline Plane turned(const Plane &from, int32_t w, int32_t h, int32_t rotation) {
  const bool quarter = rotation == 1 || rotation == 2;
  Plane to(quarter ? h : w, quarter ? w : h);
  to.tolerance = from.tolerance;
  for (int32_t y = 0; y < h; ++y) {
    for (int32_t x = 0; x < w; ++x) {
      const int32_t places[6][2] = {{x, y},         {y, w - 1 - x},
                                    {h - 1 - y, x}, {w - 1 - x, h - 1 - y},
                                    {w - 1 - x, y}, {x, h - 1 - y}};
      to.at(places[rotation][0], places[rotation][1]) =
          static_cast<uint8_t>(from.sample(x, y));
    }
  }
  return to;
}

inline int32_t checked_thumbnail(const vexo_img *pair, vexo_img *result,
                                 const vexo_img *intermediate,
                                 vexo_rsz_new_context *context,
                                 vexo_shift_set a, vexo_shift_set b,
                                 int32_t rotation) {
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
    planes[i] = turned(planes[i], std::max(w, 0), std::max(h, 0), rotation);
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
  EXPECT_EQ(std::memcmp(result, &expected, sizeof expected), 0);
  expect_near(*result, canvas);
  return status;
}

// The planar forms first, then the pixels, which are put together of them.
inline int32_t checked_pixels(const vexo_img *quartet,
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
  expect_near(quartet[2], apart);
  expect_near(quartet[3], planes);
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
  expect_near(to, pixels);
  return status;
}

}  // namespace lox_test
