// SPDX-License-Identifier: Apache-2.0
// The conversion kernels of each set against the portable ones: every entry of
// the tables, all short widths and some long ones, any alignment, beside
// inaccessible memory; and every (Y, U, V).
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "csc/yuv_to_rgb_rows.h"
#include "support/guarded_buffer.h"
#include "support/random.h"

namespace {

using lox::CscRows;
using lox::YuvToRgbFn;
using lox::YuvToRgbKernels;
using lox::YuvToRgbRows;
using lox_test::Edge;
using lox_test::Fill;
using lox_test::GuardedBuffer;

// The pairs of 16-bit samples, which are no kind of the table.
constexpr int kWords = lox::kYuvRowKinds;
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
    case kWords:
      return {2 * width, {4 * pairs, 0}};
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
    const size_t rgb_bytes =
        pixels * static_cast<size_t>(lox::kPixelFormats[layout].bytes);
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
                         stream,
                         width % 3 == 0};
    form(call, width);
    if (stream) lox::yuv_to_rgb_rows_sets[level]->end_stream();
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
    if (lox::yuv_to_rgb_rows_sets[level]->stream_alignment == 0) return;
    // A page's start is aligned for streaming, whatever the width.
    for (const int width : {15, 16, 31, 32, 33, 63, 64, 100, 640, 1919}) {
      compare(level, form, portable, rows, kind, layout, width, Edge::kAligned,
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
    const CscRows &set = *lox::yuv_to_rgb_rows_sets[level];
    const CscRows &portable = *lox::yuv_to_rgb_rows_sets[0];
    const auto check = [&](const YuvToRgbKernels &form,
                           const YuvToRgbKernels &rule, int kind, int layout) {
      // A form that was not compiled for its set proves nothing.
      ASSERT_NE(form.one_row, rule.one_row);
      compare_widths(level, form.one_row, rule.one_row, 1, kind, layout);
      ASSERT_EQ(form.two_rows == nullptr, rule.two_rows == nullptr);
      if (form.two_rows == nullptr || HasFatalFailure()) return;
      ASSERT_NE(form.two_rows, rule.two_rows);
      compare_widths(level, form.two_rows, rule.two_rows, 2, kind, layout);
    };
    for (int kind = 0; kind < lox::kYuvRowKinds; ++kind) {
      for (int layout = 0; layout < lox::kRgbLayouts; ++layout) {
        ASSERT_NO_FATAL_FAILURE(check(set.yuv_to_rgb[kind][layout],
                                      portable.yuv_to_rgb[kind][layout], kind,
                                      layout));
      }
      if (kind >= lox::kSharedRowKinds) continue;
      ASSERT_NO_FATAL_FAILURE(check(set.bt601_full[kind],
                                    portable.bt601_full[kind], kind,
                                    lox::kRgba8888));
    }
    ASSERT_NO_FATAL_FAILURE(check(set.words_to_rgba, portable.words_to_rgba,
                                  kWords, lox::kRgba8888));
    ASSERT_NO_FATAL_FAILURE(check(set.bt709_planar, portable.bt709_planar,
                                  lox::kRowPlanar, lox::kRgba8888));
    ASSERT_NO_FATAL_FAILURE(check(set.bt709_full_planar,
                                  portable.bt709_full_planar, lox::kRowPlanar,
                                  lox::kRgba8888));
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
          const auto run = [&](const CscRows &set, GuardedBuffer &to) {
            (is_565 ? set.grey_to_rgb565 : set.grey_to_rgb888)(
                in.data(), to.data(), static_cast<ptrdiff_t>(width));
          };
          run(*lox::yuv_to_rgb_rows_sets[level], out);
          run(*lox::yuv_to_rgb_rows_sets[0], expected);
          ASSERT_TRUE(lox_test::holds(out, expected.copy()))
              << lox::isa_name(level) << ", width " << width;
        }
      }
    }
  }
}

TEST_F(CscRowsTest, EveryYuvIsThatOfThePortableForm) {
  // All 256 Y of 16 U in a row; 16 rows of those for each V. A chroma sample of
  // the other standards' forms serves two of the Y.
  constexpr size_t kWidth = 4096;
  std::vector<uint8_t> y(kWidth);
  std::vector<uint8_t> u(kWidth);
  std::vector<uint8_t> v(kWidth);
  std::vector<uint8_t> got(kWidth * 4);
  std::vector<uint8_t> expected(kWidth * 4);
  const auto forms = [](const CscRows &set) {
    const auto &full = set.yuv_to_rgb[lox::kRowFull];
    // One of each way of packing: 16, 24 and 32 bits, both orders of colours,
    // alpha before and behind; and the matrices.
    return std::array{full[lox::kRgb565].one_row,
                      full[lox::kBgr888].one_row,
                      full[lox::kRgba8888].one_row,
                      full[lox::kAbgr8888].one_row,
                      set.bt601_full[lox::kRowPlanar].one_row,
                      set.bt709_planar.one_row,
                      set.bt709_full_planar.one_row};
  };
  for (int level = 1; level <= lox::isa_best(); ++level) {
    const auto set = forms(*lox::yuv_to_rgb_rows_sets[level]);
    const auto portable = forms(*lox::yuv_to_rgb_rows_sets[0]);
    for (size_t i = 0; i < set.size(); ++i) {
      const size_t shared = i < 4 ? 1 : 2;
      for (int row = 0; row < 256 * 16; ++row) {
        for (size_t x = 0; x < kWidth; ++x) {
          y[x] = static_cast<uint8_t>(x);
          u[x / shared] = static_cast<uint8_t>(x / 256 + row % 16 * 16);
          v[x / shared] = static_cast<uint8_t>(row / 16);
        }
        const auto run = [&](YuvToRgbFn form, std::vector<uint8_t> &to) {
          form({{y.data(), nullptr},
                {u.data(), v.data()},
                {to.data(), nullptr},
                false,
                false},
               kWidth);
        };
        run(set[i], got);
        run(portable[i], expected);
        ASSERT_EQ(got, expected)
            << lox::isa_name(level) << ", form " << i << ", V " << row / 16
            << ", U from " << row % 16 * 16;
      }
    }
  }
}

}  // namespace
