// SPDX-License-Identifier: Apache-2.0
// Pictures that lay themselves out: names, planes, what the single calls serve
// by their own answers, the stages of a call, and memory that cannot be had.
#include <gtest/gtest.h>
#include <orumlox/orumlox.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "cases/picture.h"
#include "faults.h"
#include "owned.h"
#include "support/conversion_name.h"

namespace lox_test {
namespace {

TEST(Picture, Names) {
  int count = 0;
  for (int32_t code = -2; code < 710; ++code) {
    const char *const name = vexo_format_name(code);
    EXPECT_EQ(name != nullptr, vexo_format_planes(code) > 0);
    if (name == nullptr) continue;
    EXPECT_EQ(format_of_token(name), code);
    EXPECT_EQ(vexo_format_of_name(name), code);
    EXPECT_EQ(vexo_format_next(code - 1), code);
    ++count;
  }
  EXPECT_EQ(count, 27);
  EXPECT_EQ(vexo_format_next(VEXO_FMT_RGBAF16), -1);
  const std::pair<const char *, int32_t> others[] = {
      {"i420", VEXO_FMT_YUV420},
      {"YUV420P", VEXO_FMT_YUV420},
      {"yuv440p", VEXO_FMT_YUV422W},
      {"yuv420p10le", VEXO_FMT_YUV420PLANAR16},
      {"rgb24", VEXO_FMT_RGB888},
      {"bgra", VEXO_FMT_BGRA8888},
      {"rgb565le", VEXO_FMT_RGB565},
      {"gray", VEXO_FMT_YUV400},
      {"yuyv422", VEXO_FMT_YUYV},
      {"nv", -1},
      {"nv121", -1},
      {"", -1},
      {nullptr, -1}};
  for (const auto &[name, code] : others) {
    EXPECT_EQ(vexo_format_of_name(name), code);
  }
  EXPECT_STREQ(vexo_status_name(VEXO_ERR_MEMORY), "out of memory");
  EXPECT_STREQ(vexo_status_name(VEXO_ERR_UNSUPPORTED), "unsupported");
  EXPECT_STREQ(vexo_status_name(-4), "unknown status");
}

// What is lost decides first, the number of passes then.
TEST(Picture, Chains) {
  const std::tuple<int32_t, int32_t, std::string> chains[] = {
      {VEXO_STD_DEFAULT, VEXO_STD_DEFAULT, "nv12 bgra8888"},
      {VEXO_STD_BT709, VEXO_STD_BT709, "nv12 yuv420 rgba8888 bgra8888"},
      {VEXO_STD_BT709, VEXO_STD_DEFAULT, "nv12 yuv420 rgba8888 nv12"},
      {VEXO_STD_DEFAULT, VEXO_STD_DEFAULT, "rgba8888 yuv444 yuv422n"},
      {VEXO_STD_BT709, VEXO_STD_BT709, "rgba8888 nv12 yuv420 yuv422n"},
      {VEXO_STD_BT601_FULL, VEXO_STD_BT601_FULL, "uyvy yuv422n yv16"},
      {VEXO_STD_BT709_FULL, VEXO_STD_BT709_FULL, "p010le yuv420 rgba8888"},
      {VEXO_STD_BT2020, VEXO_STD_BT2020, "nv12 yuv420 yuv422w yuv444 bgr888"},
      {VEXO_STD_BT709, VEXO_STD_BT709, "t64x32 yuv420 rgba8888 rgba1010102"},
      {VEXO_STD_BT709, VEXO_STD_BT709, "p010le rgba1010102"},
      {VEXO_STD_BT709, VEXO_STD_BT709, "t8x8"},
      {VEXO_STD_DEFAULT, VEXO_STD_DEFAULT, "yuv420"}};
  for (const auto &[from_std, to_std, text] : chains) {
    const std::string first = text.substr(0, text.find(' '));
    const std::string last = text.substr(text.rfind(' ') + 1);
    // Alone: to what nothing leads to.
    const bool none = first == text;
    int32_t formats[VEXO_MOST_STOPS];
    const int32_t passes = vexo_picture_passes(
        vexo_format_of_name(first.c_str()), from_std,
        none ? VEXO_FMT_YUV400 : vexo_format_of_name(last.c_str()), to_std,
        formats);
    std::string got = none ? first : "";
    for (int32_t i = 0; i <= passes && passes > 0; ++i) {
      got.append(i > 0 ? " " : "").append(vexo_format_name(formats[i]));
    }
    EXPECT_EQ(got, text);
  }
}

// What can be converted, by however many passes, can be turned too.
TEST(Picture, LongChains) {
  vexo_picture_options turn = {};
  turn.rotation = VEXO_ROT_180;
  turn.dither = 1;
  const int32_t standards[] = {VEXO_STD_DEFAULT, VEXO_STD_BT709,
                               VEXO_STD_BT2020};
  for (int32_t from = 0; from >= 0; from = vexo_format_next(from)) {
    for (int32_t to = 0; to >= 0; to = vexo_format_next(to)) {
      if (to == from) continue;  // a copy may be all that there is
      for (const int32_t a : standards) {
        for (const int32_t b : standards) {
          const Owned src(from, is_rgb_code(from) ? 0 : a, 16, 16);
          const Owned dst(to, is_rgb_code(to) ? 0 : b, 16, 16);
          const int32_t status =
              vexo_picture_convert(nullptr, &src.img, &dst.img, nullptr);
          EXPECT_EQ(vexo_picture_turn(nullptr, &src.img, &dst.img, &turn),
                    status)
              << from << ":" << a << " to " << to << ":" << b;
        }
      }
    }
  }
}

// Planes one behind the other, as the formats say; one byte too few is refused.
TEST(Picture, Layout) {
  std::vector<uint8_t> memory(1 << 20);
  for (int32_t f = 0; f >= 0; f = vexo_format_next(f)) {
    for (const auto &[w, h] : {std::pair{1, 1}, {37, 21}, {130, 33}}) {
      for (const int32_t alignment : {1, 64}) {
        const ExactImage image = picture_image(f, w, h);
        vexo_img img = {};
        size_t bytes = 0;
        ASSERT_EQ(vexo_picture_bytes(f, w, h, alignment, &bytes), VEXO_OK);
        EXPECT_EQ(vexo_picture_layout(&img, f, w, h, alignment, memory.data(),
                                      bytes - 1),
                  VEXO_ERR_ARG);
        EXPECT_EQ(img.width[0], 0);
        ASSERT_EQ(
            vexo_picture_layout(&img, f, w, h, alignment, memory.data(), bytes),
            VEXO_OK);
        int64_t at = 0;
        for (int p = 0; p < 4 && image[p].width > 0; ++p) {
          const bool tiled = image[p].whole > 0;
          const int64_t stride = tiled ? image[p].row_bytes
                                       : (image[p].row_bytes + alignment - 1) /
                                             alignment * alignment;
          EXPECT_EQ(img.width[p], image[p].width) << f;
          EXPECT_EQ(img.height[p], image[p].height) << f;
          EXPECT_EQ(img.stride[p], stride) << f;
          EXPECT_EQ(img.plane[p] - memory.data(), at) << f;
          at += tiled ? image[p].whole : stride * image[p].height;
        }
        EXPECT_EQ(static_cast<int64_t>(bytes), at) << f;
      }
    }
  }
  vexo_img img = {};
  const int32_t most = INT32_MAX;
  EXPECT_EQ(vexo_picture_alloc(&img, 9, 8, 8), VEXO_ERR_UNSUPPORTED);
  EXPECT_EQ(vexo_picture_alloc(&img, VEXO_FMT_RGBA8888, most / 4 + 1, 1),
            VEXO_ERR_ARG);
  EXPECT_EQ(vexo_picture_alloc(&img, VEXO_FMT_YUV400, most, 1), VEXO_ERR_ARG);
  const int32_t huge =
      vexo_picture_alloc(&img, VEXO_FMT_YUV420, most - 1, most - 1);
  EXPECT_TRUE(huge == VEXO_ERR_MEMORY || huge == VEXO_ERR_ARG);
  EXPECT_EQ(img.plane[0], nullptr);
}

// Held against what the calls answer and write; conversions are held by the
// tool's tests.
TEST(Picture, Supports) {
  for (int32_t f = 0; f >= 0; f = vexo_format_next(f)) {
    // Tiles are no pictures of three planes, as the calls take them.
    if (is_tiled_code(f)) {
      EXPECT_EQ(vexo_rsz_supports(f) + vexo_rot_supports(f, 1), 0) << f;
      continue;
    }
    const Owned src(f, 0, 64, 64, 1), half(f, 0, 32, 32), odd(f, 0, 33, 31);
    const int by_any = vexo_rsz(&src.img, &odd.img) == VEXO_OK;
    const int by_half = vexo_rsz(&src.img, &half.img) == VEXO_OK;
    EXPECT_EQ(vexo_rsz_supports(f), by_any ? 1 : by_half ? 2 : 0) << f;
    // Planes for any turn; the destination's format is not read.
    const Owned turned(is_rgb_code(f) ? f : VEXO_FMT_YUV444, 0, 64, 64);
    for (uint32_t r = 0; r < 7; ++r) {
      EXPECT_EQ(vexo_rot_supports(f, r),
                vexo_rot(&src.img, r, &turned.img) == VEXO_OK)
          << f << " " << r;
    }
  }
  // Those that are whole pictures by what hdr.h says.
  std::string served;
  for (int32_t f = 0; f >= 0; f = vexo_format_next(f)) {
    const bool p010 = vexo_hdr_supports(VEXO_FMT_P010LE, f) != 0;
    EXPECT_EQ(p010, vexo_hdr_supports(VEXO_FMT_YUV420PLANAR16, f) != 0);
    EXPECT_EQ(vexo_hdr_supports(VEXO_FMT_NV12, f), 0);
    if (p010) served.append(vexo_format_name(f)).append(" ");
  }
  EXPECT_EQ(served, "yuv420 nv12 nv21 rgb888 rgba8888 argb8888 ");
}

using Call = decltype(vexo_picture_convert);

// What a call makes in one go, and conversions around the same call without a
// change of format, which the cases hold to the single calls.
struct Stages {
  Call *call;
  const char *from, *via, *to;
  int32_t standard, width, height, rotation, prescale;

  bool quarter() const { return rotation == 1 || rotation == 2; }
};
const Stages kStages[] = {
    {vexo_picture_scale, "nv12", "nv12", "bgra8888", 10, 19, 11, 0, 0},
    {vexo_picture_scale, "uyvy", "yuv422n", "rgb565", 0, 25, 14, 0, 0},
    {vexo_picture_scale, "p010le", "p010le", "yv12", 11, 40, 21, 0, 0},
    {vexo_picture_scale, "p010le", "p010le", "nv12", 1, 32, 22, 0, 0},
    {vexo_picture_scale, "yuv420", "yuv420", "rgb888", 1, 17, 31, 1, 0},
    {vexo_picture_scale, "rgb888", "rgb888", "argb8888", 0, 70, 50, 4, 0},
    {vexo_picture_turn, "yuyv", "yuv422n", "yuv422w", 0, 65, 43, 2, 0},
    {vexo_picture_turn, "p010le", "rgba8888", "rgba8888", 10, 65, 43, 1, 0},
    {vexo_picture_thumbnail, "p010le", "nv12", "rgb888", 10, 20, 13, 0, 0},
    {vexo_picture_thumbnail, "t16x16", "nv12", "nv21", 0, 20, 13, 2, 2},
    {vexo_picture_thumbnail, "nv12", "nv12", "nv12", 0, 20, 13, 0, 0},
    {vexo_picture_thumbnail, "yuv444", "rgba8888", "bgr888", 0, 30, 20, 3, 0},
    {vexo_picture_thumbnail, "yuv400", "yuv400", "bgra8888", 0, 30, 20, 1, 0}};

TEST(Picture, Stages) {
  for (const Stages &s : kStages) {
    const int32_t w = s.from == std::string("p010le") ? 96 : 65;
    const int32_t h = s.height == 22 ? 44 : 43;
    const int32_t from = vexo_format_of_name(s.from);
    const int32_t via = vexo_format_of_name(s.via);
    const int32_t to = vexo_format_of_name(s.to);
    const int32_t to_w = s.call == vexo_picture_turn ? w : s.width;
    const int32_t to_h = s.call == vexo_picture_turn ? h : s.height;
    const int32_t out_w = s.quarter() ? to_h : to_w;
    const int32_t out_h = s.quarter() ? to_w : to_h;
    const Owned src(from, s.standard, w, h, 7);
    const Owned before(via, s.standard, w, h);
    // Of 4:2:2 a quarter turn makes the other one.
    const int32_t after_format =
        s.quarter() && via == VEXO_FMT_YUV422N ? VEXO_FMT_YUV422W : via;
    const Owned after(after_format, s.standard, out_w, out_h);
    const Owned expected(to, s.standard, out_w, out_h);
    const Owned got(to, s.standard, out_w, out_h);
    vexo_picture_options options = {};
    options.rotation = s.rotation;
    options.prescale = s.prescale;
    for (const Owned *const picture : {&before, &after, &expected, &got}) {
      ASSERT_NE(picture->img.plane[0], nullptr);
    }
    EXPECT_EQ(vexo_picture_convert(nullptr, &src.img, &before.img, nullptr), 0);
    EXPECT_EQ(s.call(nullptr, &before.img, &after.img, &options), 0);
    EXPECT_EQ(vexo_picture_convert(nullptr, &after.img, &expected.img, nullptr),
              0);
    // With what a call of other options has left, and rows that lie upwards.
    vexo_picture_options others = options;
    others.prescale = 2 - s.prescale;
    vexo_img upwards = src.img;
    Owned flipped(from, s.standard, w, h);
    const bool flips = !is_tiled_code(from);
    for (int p = 0; flips && p < vexo_format_planes(from); ++p) {
      upwards.stride[p] = -src.img.stride[p];
      upwards.plane[p] = flipped.img.plane[p] +
                         (src.img.height[p] - int64_t{1}) * src.img.stride[p];
      for (int32_t y = 0; y < src.img.height[p]; ++y) {
        std::memcpy(upwards.plane[p] + int64_t{y} * upwards.stride[p],
                    src.img.plane[p] + int64_t{y} * src.img.stride[p],
                    static_cast<size_t>(src.img.stride[p]));
      }
    }
    vexo_picture_context *kept = nullptr;
    ASSERT_EQ(vexo_picture_context_new(&kept), VEXO_OK);
    EXPECT_EQ(s.call(kept, &src.img, &got.img, &others), 0);
    EXPECT_EQ(s.call(kept, &src.img, &got.img, &options), 0);
    EXPECT_TRUE(got == expected) << s.from << " " << s.to;
    EXPECT_EQ(s.call(kept, &upwards, &got.img, &options), 0);
    vexo_picture_context_free(kept);
    EXPECT_TRUE(got == expected) << s.from << " " << s.to;

    // Without memory nothing is written, or the same with fewer threads.
    for (int n = 1;; ++n) {
      const int held_before = held;
      const Owned failed(to, s.standard, out_w, out_h);
      const Owned nothing(to, s.standard, out_w, out_h);
      failing_allocation = n;
      const int32_t status = s.call(nullptr, &src.img, &failed.img, &options);
      const bool done = failing_allocation != 0;
      failing_allocation = 0;
      EXPECT_TRUE(status == VEXO_OK
                      ? failed == expected
                      : status == VEXO_ERR_MEMORY && failed == nothing)
          << s.from << " allocation " << n << " status " << status;
      EXPECT_EQ(held, held_before + 2);
      if (done) break;
    }
  }
}

TEST(Picture, SizesBelongTogether) {
  const Owned nv12(VEXO_FMT_NV12, 0, 16, 10);
  const Owned p010(VEXO_FMT_P010LE, 0, 16, 10);
  const Owned rgba(VEXO_FMT_RGBA8888, 0, 10, 16);
  vexo_picture_options right = {};
  right.rotation = VEXO_ROT_90R;
  EXPECT_EQ(vexo_picture_turn(nullptr, &nv12.img, &rgba.img, &right), VEXO_OK);
  const std::vector<uint8_t> before(rgba.img.plane[0],
                                    rgba.img.plane[0] + 4 * 10);
  EXPECT_EQ(vexo_picture_turn(nullptr, &nv12.img, &rgba.img, nullptr),
            VEXO_ERR_ARG);
  EXPECT_EQ(vexo_picture_convert(nullptr, &nv12.img, &rgba.img, nullptr),
            VEXO_ERR_ARG);
  EXPECT_EQ(vexo_picture_tonemap(nullptr, &p010.img, &rgba.img, nullptr),
            VEXO_ERR_ARG);
  EXPECT_TRUE(std::equal(before.begin(), before.end(), rgba.img.plane[0]));
  vexo_img none = {};
  EXPECT_EQ(vexo_picture_wrap(&none, VEXO_FMT_NV12, 16, 10, nullptr, nullptr),
            VEXO_ERR_ARG);
}

// By the calls, of both sources and of an odd size.
TEST(Picture, Tonemap) {
  for (const int32_t kind :
       {VEXO_HDR_HDR10, VEXO_HDR_HDR10_MILD, VEXO_HDR_HLG}) {
    for (const int32_t width : {64, 37}) {
      // Rows of an even width, of which the last column may be none of the
      // picture's.
      const int32_t even = width + width % 2;
      const Owned wide(VEXO_FMT_YUV420PLANAR16, 0, even, 21, 3);
      const Owned shifted(VEXO_FMT_P010LE, 0, width, 21);
      for (int p = 0; p < 3; ++p) {
        for (int32_t y = 0; y < wide.img.height[p]; ++y) {
          for (int32_t x = 0; x < shifted.img.width[p > 0]; ++x) {
            const uint8_t *const in =
                wide.img.plane[p] + y * wide.img.stride[p] + 2 * x;
            const int word = (in[0] | in[1] << 8) << 6 | 42;
            uint8_t *const out = shifted.img.plane[p > 0] +
                                 y * shifted.img.stride[p > 0] +
                                 (p > 0 ? 4 * x + 2 * (p - 1) : 2 * x);
            out[0] = static_cast<uint8_t>(word & 255);
            out[1] = static_cast<uint8_t>(word >> 8 & 255);
          }
        }
      }
      std::vector<uint8_t> pixels(static_cast<size_t>(4 * even * 21));
      vexo_img mapped = {};
      mapped.format = VEXO_FMT_RGBA8888;
      mapped.plane[0] = pixels.data();
      vexo_img in = wide.img;
      in.source_nit = 1000;
      ASSERT_EQ(vexo_hdr_to_sdr(&in, &mapped, kind), VEXO_OK);
      vexo_picture_options options = {};
      options.hdr_kind = kind;
      for (const int32_t format :
           {VEXO_FMT_RGBA8888, VEXO_FMT_BGRA8888, VEXO_FMT_RGB888}) {
        const int unit = vexo_format_sample_bytes(format, 0);
        const bool reversed = format == VEXO_FMT_BGRA8888;
        for (const int32_t full : {0, 1}) {
          options.full_range = full;
          const Owned got(format, 0, width, 21);
          ASSERT_EQ(
              vexo_picture_tonemap(nullptr, &shifted.img, &got.img, &options),
              VEXO_OK);
          for (int i = 0; i < width * 21; ++i) {
            const uint8_t *const a =
                &pixels[4 * (i / width * even + i % width)];
            const uint8_t *const b = got.img.plane[0] +
                                     i / width * got.img.stride[0] +
                                     i % width * unit;
            for (int k = 0; k < 3; ++k) {
              const int value = a[reversed ? 2 - k : k];
              EXPECT_EQ(b[k], full ? (510 * (value - 16) + 219) / 438 : value);
            }
            EXPECT_EQ(unit == 4 ? b[3] : 255, 255);
          }
        }
      }
    }
  }
}

// What vexo_csc refuses is not dithered either.
TEST(Picture, RefusedByDither) {
  const std::tuple<int32_t, int32_t, int32_t> calls[] = {
      {1280, 0, VEXO_ERR_UNSUPPORTED},
      {1281, 0, VEXO_OK},
      {1281, VEXO_STD_BT709, VEXO_ERR_UNSUPPORTED}};
  for (const auto &[width, standard, status] : calls) {
    const Owned tiles(VEXO_FMT_T256X16, VEXO_STD_BT709, width, 16, 3);
    const Owned rgb(VEXO_FMT_RGB565, standard, width, 16);
    const Owned empty(VEXO_FMT_RGB565, standard, width, 16);
    EXPECT_EQ(vexo_csc_dither(&tiles.img, &rgb.img), status);
    EXPECT_EQ(rgb == empty, status != VEXO_OK);
  }
}

// Where a factor leaves no room for chroma's columns there is nothing to scale.
TEST(Picture, ThumbnailsOfTooLittleChroma) {
  vexo_picture_options options = {};
  options.prescale = 4;
  for (const int32_t stride : {6, 16}) {
    Owned nv12(VEXO_FMT_NV12, 0, 6, 12, 3);
    nv12.img.stride[0] = nv12.img.stride[1] = stride;
    const Owned small(VEXO_FMT_YUV420, 0, 1, 3);
    const int32_t status =
        vexo_picture_thumbnail(nullptr, &nv12.img, &small.img, &options);
    EXPECT_EQ(status, stride == 6 ? VEXO_ERR_UNSUPPORTED : VEXO_OK);
    EXPECT_EQ(small == Owned(VEXO_FMT_YUV420, 0, 1, 3), stride == 6);
  }
}

// The pattern is the destination's: dithered before a turn or an enlargement it
// would be turned or enlarged.
TEST(Picture, DithersLast) {
  const std::pair<int32_t, int32_t> formats[] = {
      {VEXO_FMT_NV12, VEXO_FMT_RGB565},
      {VEXO_FMT_RGBA8888, VEXO_FMT_BGR565},
      {VEXO_FMT_P010LE, VEXO_FMT_RGB565},
      {VEXO_FMT_P010LE, VEXO_FMT_NV12},
      {VEXO_FMT_YUV420PLANAR16, VEXO_FMT_YUV420}};
  using Change = decltype(&vexo_picture_turn);
  const std::tuple<Change, int32_t, int32_t, int32_t> calls[] = {
      {vexo_picture_turn, VEXO_ROT_90R, 22, 36},
      {vexo_picture_scale, VEXO_ROT_COPY, 60, 40},
      {vexo_picture_scale, VEXO_ROT_90L, 33, 64}};
  for (const auto &[from, to] : formats) {
    for (const auto &[call, rotation, width, height] : calls) {
      const Owned src(from, 0, 36, 22, 5);
      Owned changed(from, 0, width, height);
      Owned dithered(to, 0, width, height);
      const Owned expected(to, 0, width, height);
      vexo_picture_options options = {};
      options.rotation = rotation;
      ASSERT_EQ(call(nullptr, &src.img, &changed.img, &options), VEXO_OK);
      options.dither = 1;
      ASSERT_EQ(call(nullptr, &src.img, &dithered.img, &options), VEXO_OK);
      options.rotation = VEXO_ROT_COPY;
      ASSERT_EQ(
          vexo_picture_convert(nullptr, &changed.img, &expected.img, &options),
          VEXO_OK);
      EXPECT_EQ(dithered, expected)
          << from << " to " << to << " by " << rotation;
    }
  }
}

// A chain in bands of rows gives what its conversions give one by one.
TEST(Picture, Bands) {
  const Owned nv12(VEXO_FMT_NV12, VEXO_STD_BT709, 1500, 61, 8);
  const Owned planes(VEXO_FMT_YUV420, VEXO_STD_BT709, 1500, 61);
  const Owned rgba(VEXO_FMT_RGBA8888, 0, 1500, 61);
  const Owned expected(VEXO_FMT_BGR888, 0, 1500, 61);
  const Owned got(VEXO_FMT_BGR888, 0, 1500, 61);
  const Owned *const steps[] = {&nv12, &planes, &rgba, &expected};
  for (int i = 0; i < 3; ++i) {
    ASSERT_EQ(vexo_picture_convert(nullptr, &steps[i]->img, &steps[i + 1]->img,
                                   nullptr),
              VEXO_OK);
  }
  ASSERT_EQ(vexo_picture_convert(nullptr, &nv12.img, &got.img, nullptr),
            VEXO_OK);
  EXPECT_TRUE(got == expected);
}

// Ranges of rows on threads of the caller: what ThreadSanitizer is to see, and
// the bytes of the whole.
TEST(Picture, RowsOnThreads) {
  const Owned nv12(VEXO_FMT_NV12, 0, 200, 130, 5);
  const Owned rgba(VEXO_FMT_RGBA8888, 0, 200, 130, 6);
  using Rows = std::function<int32_t(const vexo_img &, int32_t, int32_t)>;
  const struct {
    int32_t format, width, height;
    Rows call;
  } jobs[] = {{VEXO_FMT_BGR888, 200, 130,
               [&](const vexo_img &dst, int32_t y0, int32_t y1) {
                 return vexo_csc_rows(&nv12.img, &dst, y0, y1);
               }},
              {VEXO_FMT_NV21, 200, 130,
               [&](const vexo_img &dst, int32_t y0, int32_t y1) {
                 return vexo_csc_rows(&rgba.img, &dst, y0, y1);
               }},
              {VEXO_FMT_NV12, 132, 86,
               [&](const vexo_img &dst, int32_t y0, int32_t y1) {
                 return vexo_rsz_rows(&nv12.img, &dst, y0, y1);
               }},
              {VEXO_FMT_RGBA8888, 130, 200,
               [&](const vexo_img &dst, int32_t y0, int32_t y1) {
                 return vexo_rot_rows(&rgba.img, VEXO_ROT_90R, &dst, y0, y1);
               }}};
  for (const auto &job : jobs) {
    const Owned whole(job.format, 0, job.width, job.height);
    const Owned parts(job.format, 0, job.width, job.height);
    ASSERT_EQ(job.call(whole.img, 0, job.height), VEXO_OK);
    std::vector<std::thread> threads;
    for (int32_t first = 0; first < 3; ++first) {
      threads.emplace_back([&, first] {
        for (int32_t y = 2 * first; y < job.height; y += 6) {
          EXPECT_EQ(job.call(parts.img, y, y + 2), VEXO_OK);
        }
      });
    }
    for (std::thread &thread : threads) thread.join();
    EXPECT_TRUE(parts == whole) << job.format;
  }
}

}  // namespace
}  // namespace lox_test
