// SPDX-License-Identifier: Apache-2.0
// Pictures to tone map: sources beside inaccessible pages, destinations of
// exactly the bytes that the model writes, and every call that maps a whole
// one.
#pragma once

#include <algorithm>
#include <cstring>
#include <vector>

#include "hdr_model.h"
#include "support/exact_sizes.h"
#include "support/image.h"

namespace lox_test {

// Those that get pixels, then codes that get luma alone, then such as get
// nothing.
constexpr int32_t kDestinations[] = {400, 500, 502, 1,   4,   6,   7,
                                     0,   2,   3,   5,   8,   100, -1,
                                     11,  199, 600, 601, 700, 2000};
constexpr int32_t kUnsupported[] = {200, 201, 399, 401, 499, 501, 503, 599};

struct Call {
  const char *name;
  int32_t variant;
  bool hlg;
  int32_t (*run)(vexo_img *src, const vexo_img *dst);
};
template <int32_t variant>
int32_t run_hdr10(vexo_img *src, const vexo_img *dst) {
  return vexo_hdr10_to_sdr8(src, dst, variant);
}
template <int32_t kind>
int32_t run_kind(vexo_img *src, const vexo_img *dst) {
  return vexo_hdr_to_sdr(src, dst, kind);
}
constexpr Call kCalls[] = {{"variant 0", 0, false, run_hdr10<0>},
                           {"variant 1", 1, false, run_hdr10<1>},
                           {"variant 7", 7, false, run_hdr10<7>},
                           {"HLG", 0, true, vexo_hlg_to_sdr8},
                           {"kind 1", 0, false, run_kind<1>},
                           {"kind 2", 1, false, run_kind<2>},
                           {"kind 4", 0, true, run_kind<4>}};
constexpr int kCallCount = static_cast<int>(std::size(kCalls));

// kSweep has every code of each component in 64 x 64 pixels; kDim no luma above
// 800, the word's other bits included, for the nits that are chosen then.
enum class Content { kRandom, kMuted, kExtremes, kSweep, kDim };

class HdrPictures : public SeededTest {
 protected:
  // What a call has no business to look at ends the test. Rows of a source that
  // is not measured may lie upwards.
  void make_source(int32_t format, int32_t width, int32_t height,
                   Content content, bool is_measured = false) {
    src_.img.format = format;
    src_.img.mode = random.between(0, 2);
    src_.img.source_nit = random.between(1400, 1600);
    const bool pairs = format == VEXO_FMT_P010LE;
    const bool has_planes = pairs || format == VEXO_FMT_YUV420PLANAR16;
    int32_t words = 0;
    for (int p = 0; p < 3; ++p) {
      const int32_t half = (width + 1) / 2;
      const int32_t columns = p == 0 ? width : pairs ? 2 * half : half;
      const int32_t rows = p == 0 ? height : (height + 1) / 2;
      if (p < 2) words = std::max(columns, 0) + random.between(0, 9);
      const bool used = has_planes && width > 0 && (!pairs || p < 2);
      src_.set_plane(
          p, 7777, 7777, p < 2 ? 2 * words + random.between(0, 1) : 1,
          used ? plane_size(2 * columns, rows, 2 * words) : 0, source_edge());
      if (!has_planes) src_.img.plane[p] = nullptr;
      const size_t count = src_.buffer[p].size() / 2;
      for (size_t i = 0; i < count; ++i) {
        const int32_t column = static_cast<int32_t>(i % words);
        const int32_t row = static_cast<int32_t>(i / words);
        const int component = pairs && p == 1 ? 1 + column % 2 : p;
        int32_t word =
            code(content, component, row * columns + column, pairs && p == 1);
        if (content != Content::kDim) {
          const int32_t junk = random.between(0, 63);
          word = pairs ? word << 6 | junk : junk << 10 | word;
        }
        const uint16_t bits = static_cast<uint16_t>(word);
        std::memcpy(src_.img.plane[p] + 2 * i, &bits, sizeof bits);
      }
    }
    src_.img.width[0] = width;
    src_.img.height[0] = height;
    // An odd byte of a stride does not count for rows upwards either.
    if (is_measured || src_.img.mode == VEXO_HDR_MODE_MEASURE || !has_planes ||
        width < 1 || height < 1 || random.between(0, 3) != 0) {
      return;
    }
    for (int p = 0; p < (pairs ? 2 : 3); ++p) {
      const int32_t rows = p == 0 ? height : (height + 1) / 2;
      const int32_t words_apart = src_.img.stride[p == 0 ? 0 : 1] / 2;
      src_.img.plane[p] += ptrdiff_t{2} * (rows - 1) * words_apart;
    }
    src_.img.stride[0] *= -1;
    src_.img.stride[1] *= -1;
  }

  // Gives the destination room for these bytes; what it will hold.
  TestImage::Contents make_room(const std::vector<Write> &writes) {
    size_t size[4] = {};
    for (const Write &w : writes) {
      size[w.plane] = std::max(size[w.plane], w.at + 1);
    }
    for (int p = 0; p < 4; ++p) {
      dst_.set_plane(p, -7777, -7777, -7777, size[p], edge());
    }
    TestImage::Contents expected = dst_.contents();
    for (const Write &w : writes) expected[w.plane][w.at] = w.value;
    return expected;
  }

  void check(const Call &call, int32_t dst_format) {
    dst_.img.format = dst_format;
    const int32_t nit = final_nit(src_.img);
    const auto expected = make_room(picture(
        model_context(src_.img, dst_.img, nit, call.variant, call.hlg)));
    const ExactImage exact = exact_hdr_destination(
        dst_format, src_.img.width[0], src_.img.height[0]);
    for (int p = 0; p < 4; ++p) {
      ASSERT_EQ(static_cast<int64_t>(expected[p].size()), exact[p].whole) << p;
    }
    const TestImage::Contents source = src_.contents();
    vexo_img described = src_.img;
    described.source_nit = nit;
    const int32_t status = call.run(&src_.img, &dst_.img);
    const auto written = holds(dst_, expected);
    ASSERT_TRUE(status == VEXO_OK && written)
        << call.name << ", " << src_.img.format << " to " << dst_format << ", "
        << src_.img.width[0] << "x" << src_.img.height[0] << ", nit " << nit
        << ": " << status << " " << written.message();
    ASSERT_TRUE(describes(described));
    ASSERT_TRUE(holds(src_, source));
  }

  // Whether the source's descriptor is this one.
  bool describes(const vexo_img &img) const {
    constexpr size_t kSize = offsetof(vexo_img, source_nit) + sizeof(int32_t);
    return std::memcmp(&img, &src_.img, kSize) == 0;
  }

  Edge edge() { return random.next() % 2 == 0 ? Edge::kEnd : Edge::kStart; }
  // Samples that are measured lie as words do.
  Edge source_edge() {
    return random.next() % 2 == 0 ? Edge::kEnd : Edge::kAligned;
  }

  TestImage src_{0};
  TestImage dst_{0};

 private:
  // The code of a component's sample: its index in rows without padding counts
  // for the sweep, where the two of a pair have one each.
  int32_t code(Content content, int component, int32_t index, bool pair) {
    constexpr int32_t kCodes[] = {0,   1,   63,  64,  65,  511, 512,  513,
                                  939, 940, 941, 959, 960, 961, 1022, 1023};
    constexpr int32_t kSteps[] = {1, 5, 383};
    switch (content) {
      case Content::kMuted:
        return component == 0 ? random.between(0, 1023)
                              : random.between(448, 576);
      case Content::kExtremes:
        return kCodes[random.between(0, 15)];
      case Content::kSweep:
        return (pair ? index / 2 : index) * kSteps[component] % 1024;
      case Content::kDim:
        return random.between(0, 800);
      default:
        return random.between(0, 1023);
    }
  }
};

}  // namespace lox_test
