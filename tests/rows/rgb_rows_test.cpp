// SPDX-License-Identifier: Apache-2.0
// The kernels from RGB and those that move samples, of each set, against the
// portable ones: all short widths and some long ones, any alignment, beside
// inaccessible memory; and every colour.
#include "csc/rgb_rows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>
#include <vector>

#include "csc/layout_rows.h"
#include "support/guarded_buffer.h"
#include "support/random.h"

namespace {

using lox_test::Edge;
using lox_test::GuardedBuffer;

// Bytes that a row of a width has.
using Size = size_t (*)(size_t);
template <size_t kBytes>
size_t pixels(size_t width) {
  return kBytes * width;
}
size_t half(size_t width) { return width / 2; }
size_t half_up(size_t width) { return (width + 1) / 2; }
size_t even(size_t width) { return width / 2 * 2; }
size_t packed_pairs(size_t width) { return (width + 1) / 2 * 4; }

struct Form {
  std::vector<Size> in, out;
  const void *code;
  std::function<void(uint8_t *const in[], uint8_t *const out[], ptrdiff_t)> run;
};

std::vector<Form> forms(int level) {
  const lox::RgbRows &rgb = *lox::rgb_rows_sets[level];
  const lox::LayoutRows &layout = *lox::layout_rows_sets[level];
  std::vector<Form> list;
  const auto add = [&](std::vector<Size> in, std::vector<Size> out, auto *code,
                       auto run) {
    list.push_back({in, out, reinterpret_cast<const void *>(code), run});
  };
  const auto to_yuv = [&](lox::RgbToYuvFn fn, Size in, std::vector<Size> out) {
    add({in}, out, fn, [fn](auto *src, auto *dst, ptrdiff_t width) {
      fn({src[0], dst[0], {dst[1], dst[2]}}, width);
    });
  };
  const auto all_to_yuv = [&](const lox::RgbToYuvKernels &f, Size in) {
    to_yuv(f.luma, in, {pixels<1>});
    to_yuv(f.luma_and_chroma[lox::kChromaPlanes], in, {pixels<1>, half, half});
    to_yuv(f.luma_and_chroma[lox::kChromaUv], in, {pixels<1>, even});
    to_yuv(f.luma_and_chroma[lox::kChromaVu], in, {pixels<1>, even});
  };
  for (int i = 0; i < lox::kRgbLayouts; ++i) {
    constexpr Size kBytes[] = {nullptr, nullptr, pixels<2>, pixels<3>,
                               pixels<4>};
    all_to_yuv(rgb.to_yuv[i], kBytes[lox::kPixelFormats[i].bytes]);
  }
  all_to_yuv(rgb.bt601_full, pixels<4>);
  all_to_yuv(rgb.bt709, pixels<4>);
  to_yuv(rgb.rgba8888_to_yuv444, pixels<4>, {pixels<1>, pixels<1>, pixels<1>});
  to_yuv(rgb.argb8888_to_yuv444, pixels<4>, {pixels<1>, pixels<1>, pixels<1>});

  const auto one_to_one = [&](lox::RgbToRgbFn fn, Size in, Size out) {
    add({in}, {out}, fn,
        [fn](auto *src, auto *dst, ptrdiff_t n) { fn(src[0], dst[0], n); });
  };
  one_to_one(rgb.rgba8888_to_rgb565, pixels<4>, pixels<2>);
  one_to_one(rgb.rgb888_to_rgb565, pixels<3>, pixels<2>);
  one_to_one(rgb.rgb565_to_rgba8888, pixels<2>, pixels<4>);
  one_to_one(layout.even, pixels<1>, half_up);
  one_to_one(layout.swap, pixels<2>, pixels<2>);
  one_to_one(layout.narrow_10_to_8, pixels<2>, pixels<1>);
  add({pixels<2>}, {pixels<2>}, layout.swap,
      [&](auto *src, auto *dst, ptrdiff_t n) {
        std::copy_n(src[0], 2 * n, dst[0]);
        layout.swap(dst[0], dst[0], n);
      });
  add({pixels<1>}, {half_up, half}, layout.deinterleave,
      [&](auto *src, auto *dst, ptrdiff_t n) {
        layout.deinterleave(src[0], dst[0], dst[1], n);
      });
  add({pixels<1>, pixels<1>}, {pixels<2>}, layout.interleave,
      [&](auto *src, auto *dst, ptrdiff_t n) {
        layout.interleave(src[0], src[1], dst[0], n);
      });
  // All planes, and only some.
  for (const int skipped : {-1, 0, 3}) {
    add({pixels<4>}, {pixels<1>, pixels<1>, pixels<1>, pixels<1>},
        layout.deinterleave4, [&, skipped](auto *src, auto *dst, ptrdiff_t n) {
          uint8_t *planes[] = {dst[0], dst[1], dst[2], dst[3]};
          if (skipped >= 0) planes[skipped] = nullptr;
          layout.deinterleave4(src[0], planes, n);
        });
    add({pixels<1>, pixels<1>, pixels<1>, pixels<1>}, {pixels<4>},
        layout.interleave4, [&, skipped](auto *src, auto *dst, ptrdiff_t n) {
          const uint8_t *planes[] = {src[0], src[1], src[2], src[3]};
          if (skipped >= 0) planes[skipped] = nullptr;
          layout.interleave4(planes, dst[0], n);
        });
  }
  for (const auto fn : {layout.yuyv, layout.yuyv_average}) {
    add({packed_pairs}, {pixels<1>, half_up, half_up}, fn,
        [fn](auto *src, auto *dst, ptrdiff_t width) {
          fn(src[0], dst[0], dst[1], dst[2], width);
        });
  }
  return list;
}

using RgbRowsTest = lox_test::SeededTest;

TEST_F(RgbRowsTest, FormsAreThatOfThePortableSet) {
  const std::vector<Form> portable = forms(0);
  // The last is long enough for the forms that fetch lines ahead, and random.
  std::vector<size_t> widths = {1917, 1918, 1919, 1920, 4099, 800004};
  for (size_t width = 1; width <= 140; ++width) widths.push_back(width);
  GuardedBuffer in[4];
  GuardedBuffer got[4];
  GuardedBuffer expected[4];
  const auto pointers = [](GuardedBuffer *b) {
    return std::array{b[0].data(), b[1].data(), b[2].data(), b[3].data()};
  };
  for (int level = 1; level <= lox::isa_best(); ++level) {
    const std::vector<Form> set = forms(level);
    for (size_t f = 0; f < set.size(); ++f) {
      ASSERT_NE(set[f].code, portable[f].code);
      for (const Edge edge : {Edge::kEnd, Edge::kStart}) {
        for (const size_t width : widths) {
          for (size_t i = 0; i < set[f].in.size(); ++i) {
            in[i].reset(set[f].in[i](width), edge);
            random.fill(in[i].data(), in[i].size(),
                        lox_test::kFills[width % 4]);
          }
          for (size_t i = 0; i < set[f].out.size(); ++i) {
            got[i].reset(set[f].out[i](width), edge);
            expected[i].reset(set[f].out[i](width), edge);
          }
          const auto n = static_cast<ptrdiff_t>(width);
          set[f].run(pointers(in).data(), pointers(got).data(), n);
          portable[f].run(pointers(in).data(), pointers(expected).data(), n);
          for (size_t i = 0; i < set[f].out.size(); ++i) {
            ASSERT_TRUE(lox_test::holds(got[i], expected[i].copy()))
                << lox::isa_name(level) << ", form " << f << ", output " << i
                << ", width " << width;
          }
        }
      }
    }
  }
}

TEST_F(RgbRowsTest, EveryColourIsThatOfThePortableSet) {
  // Every blue of 16 greens in a row, each twice, so that it is an even pixel
  // too; 16 rows of those for each red.
  constexpr size_t kWidth = 8192;
  std::vector<uint8_t> rgb(kWidth * 4);
  std::vector<uint8_t> got(kWidth * 2);
  std::vector<uint8_t> expected(kWidth * 2);
  for (int level = 1; level <= lox::isa_best(); ++level) {
    const auto standards = [](const lox::RgbRows &set) {
      return std::array{&set.to_yuv[lox::kRgba8888], &set.bt601_full,
                        &set.bt709};
    };
    const auto set = standards(*lox::rgb_rows_sets[level]);
    const auto portable = standards(*lox::rgb_rows_sets[0]);
    for (int row = 0; row < 256 * 16; ++row) {
      for (size_t x = 0; x < kWidth; ++x) {
        rgb[4 * x] = static_cast<uint8_t>(row / 16);
        rgb[4 * x + 1] = static_cast<uint8_t>(x / 512 + row % 16 * 16);
        rgb[4 * x + 2] = static_cast<uint8_t>(x / 2);
        rgb[4 * x + 3] = static_cast<uint8_t>(x * 7);
      }
      for (size_t i = 0; i < set.size(); ++i) {
        const auto run = [&](const lox::RgbToYuvKernels &f,
                             std::vector<uint8_t> &to) {
          f.luma_and_chroma[lox::kChromaUv](
              {rgb.data(), to.data(), {to.data() + kWidth, nullptr}}, kWidth);
        };
        run(*set[i], got);
        run(*portable[i], expected);
        ASSERT_EQ(got, expected)
            << lox::isa_name(level) << ", standard " << i << ", red "
            << row / 16 << ", green from " << row % 16 * 16;
      }
    }
  }
}

}  // namespace
