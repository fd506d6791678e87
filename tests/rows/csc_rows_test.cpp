// SPDX-License-Identifier: Apache-2.0
// The conversion kernels of each set against the portable ones: every entry of
// the tables, all short widths and some long ones, any alignment, beside
// inaccessible memory; and every (Y, U, V).
#include <gtest/gtest.h>

#include <string>

#include "csc/csc_rows.h"
#include "support/guarded_buffer.h"
#include "support/random.h"
#include "tests/rows/row_sets.h"

namespace {

using lox::CscRows;
using lox::YuvToRgbFn;
using lox::YuvToRgbRows;
using lox_test::Edge;
using lox_test::Fill;
using lox_test::GuardedBuffer;

constexpr const CscRows* kSets[] = LOX_ROW_SETS(csc_rows);
constexpr size_t kPixelBytes[lox::kRgbLayouts] = {2, 2, 3, 3, 4, 4, 4, 4};
constexpr int kWidths[] = {1917, 1918, 1919, 1920, 1921, 1922, 4099};

// Bytes of a row's luma and of each of its two chroma rows.
struct RowBytes {
  size_t luma, chroma[2];
};
RowBytes row_bytes(int kind, size_t width) {
  const size_t pairs = (width + 1) / 2;
  switch (kind) {
    case lox::kRowPlanar:
      return {width, {pairs, pairs}};
    case lox::kRowUv:
    case lox::kRowVu:
      return {width, {2 * pairs, 0}};
    case lox::kRowFull:
      return {width, {width, width}};
    case lox::kRowYuyv:
      return {4 * pairs, {0, 0}};
    default:  // The luma byte after an odd row's last pixel is not read.
      return {4 * pairs - width % 2, {0, 0}};
  }
}

class CscRowsTest : public lox_test::SeededTest {
 protected:
  // One call of each form on rows that end (or start) at inaccessible memory.
  void compare(int level, YuvToRgbFn form, YuvToRgbFn portable, int rows,
               int kind, int layout, int width, Edge edge, bool stream) {
    const size_t pixels = static_cast<size_t>(width);
    const RowBytes bytes = row_bytes(kind, pixels);
    const size_t rgb_bytes = pixels * kPixelBytes[layout];
    const size_t sizes[] = {bytes.luma, bytes.luma, bytes.chroma[0],
                            bytes.chroma[1]};
    const Fill fill = lox_test::kFills[width % 4];
    for (int i = 0; i < 4; ++i) {
      in_[i].reset(sizes[i], edge);
      random.fill(in_[i].data(), sizes[i], fill);
    }
    for (int i = 0; i < 4; ++i) out_[i].reset(rgb_bytes, edge);
    YuvToRgbRows call = {{in_[0].data(), in_[1].data()},
                         {in_[2].data(), in_[3].data()},
                         {out_[0].data(), out_[1].data()},
                         stream};
    form(call, width);
    if (stream) kSets[level]->end_stream();
    call.stream = false;
    call.rgb[0] = out_[2].data();
    call.rgb[1] = out_[3].data();
    portable(call, width);
    for (int row = 0; row < rows; ++row) {
      ASSERT_TRUE(lox_test::holds(out_[row], out_[row + 2].copy()))
          << lox::isa_name(level) << ", source " << kind << ", layout "
          << layout << ", width " << width << ", row " << row << " of " << rows
          << (stream ? ", streaming" : "")
          << (edge == Edge::kEnd ? ", page behind" : ", page before");
    }
  }

  void compare_widths(int level, YuvToRgbFn form, YuvToRgbFn portable, int rows,
                      int kind, int layout) {
    for (const Edge edge : {Edge::kEnd, Edge::kStart}) {
      for (int width = 1; width <= 100; ++width) {
        compare(level, form, portable, rows, kind, layout, width, edge, false);
        if (HasFatalFailure()) return;
      }
      for (const int width : kWidths) {
        compare(level, form, portable, rows, kind, layout, width, edge, false);
        if (HasFatalFailure()) return;
      }
    }
    if (kSets[level]->stream_alignment == 0) return;
    // A page's start is aligned for streaming, whatever the width.
    for (const int width : {15, 16, 31, 32, 33, 63, 64, 100, 640, 1919}) {
      compare(level, form, portable, rows, kind, layout, width, Edge::kStart,
              true);
      if (HasFatalFailure()) return;
    }
  }

 private:
  GuardedBuffer in_[4];
  GuardedBuffer out_[4];
};

TEST_F(CscRowsTest, YuvToRgbIsThatOfThePortableForm) {
  for (int level = 1; level <= lox::isa_best(); ++level) {
    const CscRows& set = *kSets[level];
    const CscRows& portable = *kSets[0];
    for (int layout = 0; layout < lox::kRgbLayouts; ++layout) {
      for (int kind = 0; kind < lox::kYuvRowKinds; ++kind) {
        // A form that was not compiled for its set proves nothing.
        ASSERT_NE(set.yuv_to_rgb[kind][layout],
                  portable.yuv_to_rgb[kind][layout]);
        compare_widths(level, set.yuv_to_rgb[kind][layout],
                       portable.yuv_to_rgb[kind][layout], 1, kind, layout);
        if (HasFatalFailure()) return;
      }
      for (int kind = 0; kind < lox::kSharedRowKinds; ++kind) {
        ASSERT_NE(set.two_yuv_to_rgb[kind][layout],
                  portable.two_yuv_to_rgb[kind][layout]);
        compare_widths(level, set.two_yuv_to_rgb[kind][layout],
                       portable.two_yuv_to_rgb[kind][layout], 2, kind, layout);
        if (HasFatalFailure()) return;
      }
    }
  }
}

TEST_F(CscRowsTest, GreyToRgbIsThatOfThePortableForm) {
  GuardedBuffer in;
  GuardedBuffer out;
  GuardedBuffer expected;
  for (int level = 1; level <= lox::isa_best(); ++level) {
    for (const bool is_565 : {true, false}) {
      for (const Edge edge : {Edge::kEnd, Edge::kStart}) {
        for (size_t width = 1; width <= 300; ++width) {
          in.reset(width, edge);
          for (size_t x = 0; x < width; ++x) {
            in.data()[x] = static_cast<uint8_t>(x + width);
          }
          out.reset(width * (is_565 ? 2 : 3), edge);
          expected.reset(out.size(), edge);
          const auto run = [&](const CscRows& set, GuardedBuffer& to) {
            (is_565 ? set.grey_to_rgb565 : set.grey_to_rgb888)(
                in.data(), to.data(), static_cast<ptrdiff_t>(width));
          };
          run(*kSets[level], out);
          run(*kSets[0], expected);
          ASSERT_TRUE(lox_test::holds(out, expected.copy()))
              << lox::isa_name(level) << ", width " << width;
        }
      }
    }
  }
}

TEST_F(CscRowsTest, EveryYuvIsThatOfThePortableForm) {
  // All 256 Y of 16 U in a row; 16 rows of those for each V.
  constexpr size_t kWidth = 4096;
  std::vector<uint8_t> y(kWidth);
  std::vector<uint8_t> u(kWidth);
  std::vector<uint8_t> v(kWidth);
  std::vector<uint8_t> got(kWidth * 4);
  std::vector<uint8_t> expected(kWidth * 4);
  for (int level = 1; level <= lox::isa_best(); ++level) {
    // One of each way of packing: 16, 24 and 32 bits, both orders of colours,
    // alpha before and behind.
    for (const int layout :
         {lox::kRgb565, lox::kBgr888, lox::kRgba8888, lox::kAbgr8888}) {
      for (int row = 0; row < 256 * 16; ++row) {
        for (size_t x = 0; x < kWidth; ++x) {
          y[x] = static_cast<uint8_t>(x);
          u[x] = static_cast<uint8_t>(x / 256 + row % 16 * 16);
          v[x] = static_cast<uint8_t>(row / 16);
        }
        const auto run = [&](int at, std::vector<uint8_t>& to) {
          kSets[at]->yuv_to_rgb[lox::kRowFull][layout]({{y.data(), nullptr},
                                                        {u.data(), v.data()},
                                                        {to.data(), nullptr},
                                                        false},
                                                       kWidth);
        };
        run(level, got);
        run(0, expected);
        ASSERT_EQ(got, expected)
            << lox::isa_name(level) << ", layout " << layout << ", V "
            << row / 16 << ", U from " << row % 16 * 16;
      }
    }
  }
}

}  // namespace
