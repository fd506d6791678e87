// SPDX-License-Identifier: Apache-2.0
// Pictures whose rows lie more than a gigabyte apart, down or up memory, as a
// caller's atlas or a camera's ring may have them: the third row is beyond what
// 31 bits count, the fifth beyond 32. Calls write what they write of the same
// picture in one piece.
#include <gtest/gtest.h>
#include <orumlox/orumlox.h>
#include <sys/mman.h>

#include <cstdint>
#include <cstring>
#include <functional>

#include "cases/picture.h"
#include "owned.h"

namespace lox_test {
namespace {

constexpr int32_t kWidth = 72, kHeight = 10;
// Even, and no multiple of a page.
constexpr int32_t kApart = (1 << 30) + 4166;
constexpr int64_t kPlane = int64_t{kApart} * (kWidth + 1);

// Addresses for three planes of 73 such rows: only what is touched takes
// memory.
class Reserved {
 public:
  Reserved()
      : at_(mmap(nullptr, 3 * kPlane, PROT_READ | PROT_WRITE,
                 MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0)) {}
  ~Reserved() {
    if (there()) munmap(at_, 3 * kPlane);
  }
  Reserved(const Reserved &) = delete;
  Reserved &operator=(const Reserved &) = delete;
  bool there() const { return at_ != MAP_FAILED; }

  // The picture with its rows here. Tiles have no rows and stay.
  vexo_img spread(const vexo_img &close, bool upwards) const {
    vexo_img img = close;
    if (is_tiled_code(img.format)) return img;
    const auto image = picture_image(img.format, img.width[0], img.height[0]);
    for (int p = 0; p < vexo_format_planes(img.format); ++p) {
      img.plane[p] = static_cast<uint8_t *>(at_) + p * kPlane;
      if (upwards) img.plane[p] += int64_t{kApart} * (image[p].height - 1);
      img.stride[p] = upwards ? -kApart : kApart;
      for (int32_t y = 0; y < image[p].height; ++y) {
        std::memcpy(row(img, p, y), row(close, p, y), image[p].row_bytes);
      }
    }
    return img;
  }

  static uint8_t *row(const vexo_img &img, int p, int32_t y) {
    return img.plane[p] + int64_t{img.stride[p]} * y;
  }

 private:
  void *at_;
};

bool equal(const vexo_img &a, const vexo_img &b) {
  const auto image = picture_image(a.format, a.width[0], a.height[0]);
  bool same = true;
  for (int p = 0; p < vexo_format_planes(a.format); ++p) {
    const auto size = static_cast<size_t>(
        image[p].whole > 0 ? image[p].whole : image[p].row_bytes);
    const int32_t rows = image[p].whole > 0 ? 1 : image[p].height;
    for (int32_t y = 0; y < rows; ++y) {
      same = same && std::memcmp(Reserved::row(a, p, y), Reserved::row(b, p, y),
                                 size) == 0;
    }
  }
  return same;
}

class DistantRows : public testing::Test {
 protected:
  using Call = std::function<int32_t(const vexo_img *, const vexo_img *)>;

  void SetUp() override {
    if (!source_.there() || !destination_.there()) {
      GTEST_SKIP() << "no address space";
    }
  }

  // Into a destination of this size, from all formats to all others.
  void all_pairs(int32_t width, int32_t height, int least, const Call &call) {
    int served = 0;
    for (int32_t from = 0; from >= 0; from = vexo_format_next(from)) {
      const Owned src(from, 0, kWidth, kHeight, 1 + from);
      for (int32_t to = 0; to >= 0; to = vexo_format_next(to)) {
        served += pair(src, to, width, height, call);
      }
    }
    // Most of what is asked for must be served, or nothing is held.
    EXPECT_GE(served, least);
  }

 private:
  int pair(const Owned &src, int32_t to, int32_t width, int32_t height,
           const Call &call) {
    const Owned expected(to, 0, width, height, 9);
    const int32_t status = call(&src.img, &expected.img);
    if (status != VEXO_OK) return 0;
    for (const bool upwards : {false, true}) {
      const Owned other(to, 0, width, height, 9);
      const vexo_img far_src = source_.spread(src.img, upwards);
      const vexo_img far_dst = destination_.spread(other.img, !upwards);
      EXPECT_EQ(call(&far_src, &far_dst), VEXO_OK);
      EXPECT_TRUE(equal(expected.img, far_dst))
          << vexo_format_name(src.img.format) << " to " << vexo_format_name(to)
          << (upwards ? " upwards" : " downwards");
    }
    return 1;
  }

  Reserved source_, destination_;
};

TEST_F(DistantRows, Convert) {
  for (const int32_t quality : {0, 1}) {
    vexo_picture_options options = {};
    options.chroma = options.dither = quality;
    all_pairs(kWidth, kHeight, 500, [&](auto *src, auto *dst) {
      return vexo_picture_convert(nullptr, src, dst, &options);
    });
  }
}

TEST_F(DistantRows, Scale) {
  constexpr Size kSizes[] = {{36, 5}, {48, 7}, {18, 3}, {108, 15}, {31, 11}};
  for (const int32_t filter : {VEXO_FILTER_PLAIN, VEXO_FILTER_LANCZOS}) {
    vexo_picture_options options = {};
    options.filter = filter;
    for (const auto [width, height] : kSizes) {
      all_pairs(width, height, 400, [&](auto *src, auto *dst) {
        return vexo_picture_scale(nullptr, src, dst, &options);
      });
    }
  }
}

TEST_F(DistantRows, Turn) {
  for (int32_t rotation = 1; rotation < 6; ++rotation) {
    vexo_picture_options options = {};
    options.rotation = rotation;
    const bool quarter = rotation < VEXO_ROT_180;
    all_pairs(quarter ? kHeight : kWidth, quarter ? kWidth : kHeight, 400,
              [&](auto *src, auto *dst) {
                return vexo_picture_turn(nullptr, src, dst, &options);
              });
  }
}

// Of NV12 the scaler takes memory by the stride, and there is none of this one.
TEST_F(DistantRows, Thumbnail) {
  const vexo_picture_options options = {};
  all_pairs(24, 4, 400, [&](auto *src, auto *dst) {
    return src->format == VEXO_FMT_NV12
               ? VEXO_ERR_UNSUPPORTED
               : vexo_picture_thumbnail(nullptr, src, dst, &options);
  });
}

TEST_F(DistantRows, ToneMap) {
  const vexo_picture_options options = {};
  all_pairs(kWidth, kHeight, 20, [&](auto *src, auto *dst) {
    return vexo_picture_tonemap(nullptr, src, dst, &options);
  });
}

// Two steps at once; copies of NV12 as NV21 take the padding for samples.
TEST_F(DistantRows, TwoStepsInOneCall) {
  const auto to_rgb = [](const vexo_img *dst) {
    return is_rgb_code(dst->format) && dst->format < 600;
  };
  for (const auto [width, height] : {Size{48, 8}, Size{kWidth, kHeight}}) {
    all_pairs(width, height, 30, [&](auto *src, auto *dst) {
      return to_rgb(dst) ? vexo_rsz_csc(src, dst) : VEXO_ERR_UNSUPPORTED;
    });
  }
  for (const uint32_t rotation : {1u, 2u, 3u, 4u}) {
    const bool quarter = rotation < 3;
    all_pairs(quarter ? kHeight : kWidth, quarter ? kWidth : kHeight, 30,
              [&](auto *src, auto *dst) {
                return to_rgb(dst) ? vexo_csc_rot(src, rotation, dst)
                                   : VEXO_ERR_UNSUPPORTED;
              });
    all_pairs(quarter ? 6 : 48, quarter ? 48 : 6, 2, [&](auto *src, auto *dst) {
      return src->format == dst->format ? vexo_rsz_rot(src, rotation, dst)
                                        : VEXO_ERR_UNSUPPORTED;
    });
  }
}

}  // namespace
}  // namespace lox_test
