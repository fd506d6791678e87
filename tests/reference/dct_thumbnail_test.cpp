// SPDX-License-Identifier: Apache-2.0
// Thumbnails at every level against the model, turned the plain way.
#include <orumlox/dct.h>
#include <orumlox/rot.h>

#include <cstdint>
#include <cstring>

#include "dct_levels.h"

namespace lox_test {
namespace {

class DctThumbnails : public Dct {
 protected:
  static int32_t up(int32_t n, int32_t multiple) {
    return (n + multiple - 1) / multiple * multiple;
  }
  static void set(vexo_img &img, int p, int32_t width, int32_t height,
                  int32_t stride, int32_t rows) {
    img.width[p] = width;
    img.height[p] = height;
    img.stride[p] = stride;
    img.buf_height[p] = rows;
  }

  // What becomes of the result's geometry.
  vexo_img turned_geometry(const vexo_img &before, int32_t rotation) const {
    const vexo_img &in = pair_[1];
    vexo_img img = before;
    const int32_t w = in.width[0], h = in.height[0];
    const int32_t s = in.stride[0], t = in.buf_height[0];
    const int32_t selector = before.color_std;
    const bool quarter = rotation == VEXO_ROT_90L || rotation == VEXO_ROT_90R;
    const bool half = rotation == VEXO_ROT_180;
    if (in.format == VEXO_FMT_YUV420 && quarter) {
      set(img, 0, h, w, t, s);
      for (int p = 1; p < 3; ++p) set(img, p, h / 2, w / 2, t / 2, s / 2);
    } else if (in.format == VEXO_FMT_YUV420 && half) {
      set(img, 0, w, h, s, t);
      for (int p = 1; p < 3; ++p) {
        set(img, p, in.width[1], in.height[1], in.stride[1], in.buf_height[1]);
      }
    } else if (in.format == VEXO_FMT_NV12 && quarter && selector == 0) {
      set(img, 0, h, w, up(h, 128), up(w, 32));
      set(img, 1, h / 2, w / 2, up(h, 128), up(w, 32) / 2);
    } else if (in.format == VEXO_FMT_NV12 && quarter && selector == 1) {
      set(img, 0, h, w, up(h, 16), up(w, 16));
      set(img, 1, h / 2, w / 2, up(h, 16), up(w / 2, 16));
    } else if (in.format == VEXO_FMT_NV12 && half && selector < 2) {
      for (int p = 0; p < 2; ++p) {
        set(img, p, in.width[p], in.height[p], in.stride[p], in.buf_height[p]);
      }
    }
    return img;
  }

  // A caller's own geometry, right for the turn.
  vexo_img own_geometry(int32_t rotation) {
    vexo_img img = pair_[1];
    for (int p = 0; p < 3 && rotation != 0; ++p) {
      const vexo_img &in = pair_[1];
      if (in.stride[p] == 7777) continue;
      const bool quarter = rotation == 1 || rotation == 2;
      const int32_t bytes = p == 1 && is_pairs(in) ? 2 : 1;
      const int32_t width = quarter ? in.height[p] : in.width[p];
      const int32_t height = quarter ? in.width[p] : in.height[p];
      set(img, p, width, height, width * bytes + random.between(0, 9),
          height + random.between(0, 3));
    }
    return img;
  }

  // What the scaled planes of the pair's second are when turned.
  static Plane turned(const Plane &from, int32_t w, int32_t h,
                      int32_t rotation) {
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

  void check_thumbnail(const Job &job, int32_t rotation) {
    ASSERT_NO_FATAL_FAILURE(make(job));
    const Plan plan(pair_, job.prescale);
    const vexo_img before = own_geometry(rotation);
    const bool turns = rotation >= 1 && rotation <= 5;
    const bool fails = rotation != 0 && job.dst_format == VEXO_FMT_NV21;
    vexo_img expected = fails ? before : turned_geometry(before, rotation);
    vexo_img result = before;
    allocate(expected, images_[1], &result);
    std::copy(result.plane, result.plane + 4, expected.plane);
    Canvas canvas(images_[1].contents());
    if (rotation == 0) {
      draw(plan, pair_[0], expected, false, canvas);
    } else if (turns && !fails) {
      auto planes = scaled(plan, pair_[0], pair_[1]);
      const bool pairs = is_pairs(pair_[1]);
      for (int i = 0; i < 3; ++i) {
        const int p = pairs ? std::min(i, 1) : i;
        // Nobody has written it.
        if (planes[i].samples.empty()) {
          planes[i] = Plane(pair_[1].width[p], pair_[1].height[p]);
        }
        canvas.put(
            turned(planes[i], pair_[1].width[p], pair_[1].height[p], rotation),
            p, expected.stride[p], expected.buf_height[p],
            pairs && i > 0 ? 2 : 1, pairs && i == 2 ? 1 : 0);
      }
    }

    vexo_img intermediate;
    std::memset(static_cast<void *>(&intermediate), 0, sizeof intermediate);
    vexo_rsz_new_context context;
    vexo_shift_set a, b;
    ASSERT_EQ(vexo_txc_new_init(pair_, &intermediate, &context, &a, &b,
                                job.prescale, rotation),
              VEXO_OK);
    if (rotation != 0) {
      EXPECT_EQ(intermediate.plane[0] == nullptr, fails);
      EXPECT_EQ(intermediate.format, job.dst_format);
      for (int p = 0; p < (job.dst_format == VEXO_FMT_YUV420 ? 3 : 2); ++p) {
        EXPECT_EQ(intermediate.width[p], pair_[1].width[p]);
        EXPECT_EQ(intermediate.height[p], pair_[1].height[p]);
        EXPECT_EQ(intermediate.stride[p], pair_[1].stride[p]);
        EXPECT_EQ(intermediate.buf_height[p], pair_[1].buf_height[p]);
      }
    }
    ASSERT_NO_FATAL_FAILURE(
        at_both_levels(images_[1],
                       [&] {
                         ASSERT_EQ(vexo_txc_new(pair_, &result, &intermediate,
                                                &context, a, b, rotation),
                                   VEXO_OK);
                       }))
        << job << ", code " << rotation;
    ASSERT_EQ(std::memcmp(&result, &expected, sizeof result), 0)
        << job << ", code " << rotation;
    ASSERT_TRUE(near(images_[1], canvas)) << job << ", code " << rotation;
    ASSERT_EQ(
        vexo_txc_new_deinit(pair_, &intermediate, &context, a, b, rotation),
        VEXO_OK);
    EXPECT_EQ(intermediate.plane[0], nullptr);
  }
};

TEST_F(DctThumbnails, AreScaledAndTurned) {
  for (const int32_t format : {1, 6, 7}) {
    for (const int32_t prescale : {0, 2, 4}) {
      for (int32_t rotation = 0; rotation <= 6; ++rotation) {
        for (const int32_t selector : {0, 1, 2}) {
          const Size dst = {random.between(4, 50), random.between(4, 50)};
          // Every other one by the means of blocks alone.
          const int32_t ratio = selector == 0 ? 2 : random.between(4, 6);
          const Job job = {{ratio * dst.width, ratio * dst.height},
                           dst,
                           prescale,
                           6,
                           format,
                           selector,
                           selector == 2};
          ASSERT_NO_FATAL_FAILURE(check_thumbnail(job, rotation));
        }
      }
    }
  }
}

TEST_F(DctThumbnails, PlanesWithoutBlocksAreZero) {
  for (const int32_t format : {1, 6}) {
    for (int32_t rotation = 1; rotation <= 5; ++rotation) {
      for (const Job &job : {Job{{64, 7}, {16, 4}, 4, 6, format, 1, false},
                             Job{{22, 29}, {37, 65}, 2, 6, format, 1, false}}) {
        ASSERT_NO_FATAL_FAILURE(check_thumbnail(job, rotation));
      }
    }
  }
}

TEST_F(DctThumbnails, GeometryByHand) {
  const Job job = {{640, 480}, {320, 240}, 0, 6, 6, 0, false};
  ASSERT_NO_FATAL_FAILURE(check_thumbnail(job, VEXO_ROT_90L));
  const vexo_img turned = turned_geometry(pair_[1], VEXO_ROT_90L);
  const int32_t expected[2][4] = {{240, 320, 256, 320}, {120, 160, 256, 160}};
  for (int p = 0; p < 2; ++p) {
    EXPECT_EQ(turned.width[p], expected[p][0]);
    EXPECT_EQ(turned.height[p], expected[p][1]);
    EXPECT_EQ(turned.stride[p], expected[p][2]);
    EXPECT_EQ(turned.buf_height[p], expected[p][3]);
  }
}

}  // namespace
}  // namespace lox_test
