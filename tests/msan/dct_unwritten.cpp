// SPDX-License-Identifier: Apache-2.0
// Small pictures through the DCT scaler: no byte of a destination may come from
// memory that nobody wrote, be it the library's own or the source's beyond its
// width or height. The sanitizer ends the program at the first.
#include <orumlox/dct.h>
#include <sanitizer/msan_interface.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "common/isa.h"

namespace {

uint64_t state = 20240229;
int32_t between(int32_t low, int32_t high) {
  state = state * 6364136223846793005 + 1442695040888963407;
  return low + static_cast<int32_t>((state >> 33) %
                                    static_cast<uint64_t>(high - low + 1));
}

// Planes of their own memory. A source has no more than its samples, whatever
// its strides; all of a destination is written before.
class Picture {
 public:
  Picture(const vexo_img &described, bool source) : img(described) {
    for (int p = 0; p < 3; ++p) {
      size_[p] = size_t{1} * std::max(img.stride[p], 0) *
                 std::max(img.buf_height[p], 0);
      img.plane[p] = static_cast<uint8_t *>(std::malloc(size_[p] + 1));
      const bool pairs = p == 1 && (img.format == 6 || img.format == 7);
      const bool pixels = img.format == VEXO_FMT_RGBA8888;
      const int32_t bytes = img.width[p] * (pixels ? 4 : pairs ? 2 : 1);
      if (!source) std::memset(img.plane[p], 0xA5, size_[p] + 1);
      for (int32_t y = 0; source && y < img.height[p]; ++y) {
        for (int32_t x = 0; x < bytes; ++x) {
          img.plane[p][ptrdiff_t{y} * img.stride[p] + x] =
              static_cast<uint8_t>(between(0, 255));
        }
      }
    }
  }
  ~Picture() {
    for (int p = 0; p < 3; ++p) std::free(img.plane[p]);
  }
  Picture(const Picture &) = delete;
  Picture &operator=(const Picture &) = delete;

  void check() const {
    for (int p = 0; p < 3; ++p) {
      __msan_check_mem_is_initialized(img.plane[p], size_[p]);
    }
  }

  vexo_img img;

 private:
  size_t size_[3];
};

struct Case {
  int32_t src_width, src_height, dst_width, dst_height;
  int32_t prescale, src_format, dst_format, selector, rotation;
  int32_t chroma = 0;  // 1: rounded up; 2: the source has none
};

vexo_img describe(int32_t format, int32_t width, int32_t height, bool padded) {
  vexo_img img{};
  img.format = format;
  for (int p = 0; p < 3; ++p) {
    img.width[p] = p == 0 ? width : width / 2;
    img.height[p] = p == 0 ? height : height / 2;
    img.stride[p] = p == 0 ? width : width + width % 2;
    if (padded) img.stride[p] += 5;
    img.buf_height[p] = img.height[p] + (padded ? 3 : 0);
  }
  return img;
}

void scale(const Case &c) {
  const bool padded = c.selector == 3;
  vexo_img pair[2] = {
      describe(c.src_format, c.src_width, c.src_height, padded),
      describe(c.dst_format, c.dst_width, c.dst_height, padded)};
  pair[1].color_std = c.selector;
  for (vexo_img &img : pair) {
    for (int p = 1; p < 3 && c.chroma == 1 && padded; ++p) {
      img.width[p] = (img.width[0] + 1) / 2;
      img.height[p] = (img.height[0] + 1) / 2;
    }
  }
  vexo_rsz_new_set_img(pair);
  if (c.chroma == 2) pair[0].width[1] = 0;
  const Picture src(pair[0], true);
  // Room for any turn.
  vexo_img room = pair[1];
  for (int p = 0; p < 3; ++p) {
    room.stride[p] = room.buf_height[p] = 128;
  }
  Picture dst(room, false);
  for (int p = 0; p < 3; ++p) {
    dst.img.stride[p] = pair[1].stride[p];
    dst.img.buf_height[p] = pair[1].buf_height[p];
  }
  vexo_rsz_new_context context;
  vexo_shift_set a, b;
  vexo_img between_both{};
  const vexo_img both[2] = {src.img, pair[1]};
  vexo_txc_new_init(both, &between_both, &context, &a, &b, c.prescale,
                    c.rotation);
  vexo_txc_new(both, &dst.img, &between_both, &context, a, b, c.rotation);
  vexo_txc_new_deinit(both, &between_both, &context, a, b, c.rotation);
  dst.check();
}

void scale_pixels(int32_t width, int32_t height, int32_t to_width,
                  int32_t to_height, bool padded) {
  vexo_img img[4];
  for (int i = 0; i < 4; ++i) {
    vexo_img &m = img[i] = {};
    m.format = i < 2 ? VEXO_FMT_RGBA8888 : VEXO_FMT_YUV444;
    for (int p = 0; p < (i < 2 ? 1 : 3); ++p) {
      m.width[p] = i % 2 == 0 ? width : to_width;
      m.height[p] = m.buf_height[p] = i % 2 == 0 ? height : to_height;
      m.stride[p] = m.width[p] * (i < 2 ? 4 : 1) + (padded ? 3 + p : 0);
    }
  }
  const Picture src(img[0], true);
  const Picture dst(img[1], false);
  // The planar forms hold nothing before the call.
  Picture planar_src(img[2], false), planar_dst(img[3], false);
  for (int p = 0; p < 3; ++p) {
    for (const vexo_img *m : {&planar_src.img, &planar_dst.img}) {
      __msan_poison(m->plane[p], size_t{1} * m->stride[p] * m->buf_height[p]);
    }
  }
  const vexo_img quartet[4] = {src.img, dst.img, planar_src.img,
                               planar_dst.img};
  vexo_rsz_new_context context;
  vexo_shift_set a, b;
  vexo_rsz_new_rgba8888_init(quartet, &context, &a, &b);
  vexo_rsz_new_rgba8888(quartet, &context, a, b);
  vexo_rsz_new_rgba8888_deinit(quartet, &context, a, b);
  dst.check();
}

}  // namespace

int main() {
  constexpr int32_t kFormats[] = {VEXO_FMT_NV12, VEXO_FMT_YUV420, VEXO_FMT_NV21,
                                  VEXO_FMT_YUV444};
  int passed = 0;
  for (int level = 0; level <= lox::isa_best(); ++level) {
    lox::isa_limit(level);
    // Planes that are too small for their factor or enlarged too much.
    for (const Case &c :
         {Case{6, 16, 4, 4, 4, 6, 6, 1, 0}, Case{3, 16, 4, 4, 2, 6, 6, 1, 0},
          Case{5, 12, 5, 9, 4, 6, 6, 1, 0}, Case{5, 12, 5, 9, 2, 6, 6, 1, 0},
          Case{64, 7, 16, 4, 4, 6, 6, 1, 1},
          Case{22, 29, 37, 65, 2, 6, 6, 1, 1},
          Case{22, 29, 37, 65, 2, 6, 1, 0, 3}}) {
      scale(c);
      ++passed;
    }
    for (int n = 0; n < 1500; ++n) {
      const int32_t ratio = between(0, 2) * 2;
      const bool exact = between(0, 9) == 0 && ratio > 0;
      Case c = {between(1, 90),
                between(1, 90),
                between(1, 40),
                between(1, 40),
                ratio,
                between(6, 7),
                kFormats[between(0, 3)],
                between(0, 3),
                between(0, 5),
                between(0, 5)};
      if (exact) {
        c.src_width = ratio * c.dst_width;
        c.src_height = ratio * c.dst_height;
      }
      scale(c);
      ++passed;
    }
    for (int n = 0; n < 300; ++n) {
      scale_pixels(between(1, 60), between(1, 60), between(1, 70),
                   between(1, 70), n % 2 == 0);
      ++passed;
    }
  }
  std::printf("%d passed\n", passed);
  return 0;
}
