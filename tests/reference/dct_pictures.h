// SPDX-License-Identifier: Apache-2.0
// Pictures to scale, their planes beside inaccessible pages and filled beyond
// the picture too, and how near the model what comes of them is.
#pragma once

#include <cstdlib>
#include <cstring>
#include <vector>

#include "dct_model.h"
#include "support/image.h"

namespace lox_test {

struct Size {
  int32_t width, height;
};

struct Job {
  Size src, dst;
  int32_t prescale;
  int32_t src_format;
  int32_t dst_format;
  int32_t selector;
  // Else strides and rows are those of vexo_rsz_new_set_img.
  bool own_strides;
};

inline std::ostream &operator<<(std::ostream &out, const Job &j) {
  return out << j.src.width << "x" << j.src.height << " to " << j.dst.width
             << "x" << j.dst.height << ", factor " << j.prescale << ", formats "
             << j.src_format << " and " << j.dst_format << ", selector "
             << j.selector << (j.own_strides ? ", own strides" : "");
}

// Pixels of four bytes, source and destination, and their planar forms: planes
// of sizes alike and strides of their own.
struct Quartet {
  Quartet(Size src, Size dst, Random &random) {
    for (int i = 0; i < 4; ++i) {
      const Size &size = i % 2 == 0 ? src : dst;
      for (int p = 0; p < (i < 2 ? 1 : 3); ++p) {
        const int32_t row = i < 2 ? 4 * size.width : size.width;
        const int32_t stride = row + random.between(0, 9);
        const int32_t rows = p == 0 ? size.height + random.between(0, 5)
                                    : images[i].img.buf_height[0];
        images[i].set_plane(p, size.width, size.height, stride,
                            plane_size(stride, rows, stride),
                            random.next() % 2 == 0 ? Edge::kEnd : Edge::kStart);
        images[i].img.buf_height[p] = rows;
      }
      img[i] = images[i].img;
    }
    images[0].fill(random);
  }

  vexo_img img[4];
  TestImage images[4] = {TestImage(500), TestImage(500), TestImage(-1),
                         TestImage(-1)};
};

enum class Content { kNoise, kSmooth, kExtremes };

class DctPictures : public SeededTest {
 protected:
  struct Scaler {
    Scaler(const vexo_img *source_and_destination, int32_t prescale)
        : pair(source_and_destination) {
      std::memset(static_cast<void *>(&context), 0xA5, sizeof context);
      status = vexo_rsz_new_init(pair, &context, &a, &b, prescale);
    }
    ~Scaler() { vexo_rsz_new_deinit(pair, &context, a, b); }
    Scaler(const Scaler &) = delete;
    Scaler &operator=(const Scaler &) = delete;
    int32_t run() { return vexo_rsz_new(&pair[0], &pair[1], &context, a, b); }

    const vexo_img *pair;
    vexo_rsz_new_context context;
    vexo_shift_set a = nullptr;
    vexo_shift_set b = nullptr;
    int32_t status;
  };

  // The pair without memory. What no call reads is 7777; the source's selector
  // is another than the destination's, which counts.
  void describe(const Job &job) {
    const Size sizes[2] = {job.src, job.dst};
    const int32_t formats[2] = {job.src_format, job.dst_format};
    for (int i = 0; i < 2; ++i) {
      vexo_img &img = pair_[i];
      img = TestImage(formats[i]).img;
      img.color_std = i == 0 ? job.selector + 1 : job.selector;
      for (int p = 0; p < (formats[i] == VEXO_FMT_YUV420 ? 3 : 2); ++p) {
        img.width[p] = p == 0 ? sizes[i].width : sizes[i].width / 2;
        img.height[p] = p == 0 ? sizes[i].height : sizes[i].height / 2;
        const int32_t row =
            std::max(img.width[p], 0) * (is_pairs(img) && p == 1 ? 2 : 1);
        // Plane 2 is written with the stride and rows of plane 1.
        img.stride[p] = p == 2 ? img.stride[1] : row + random.between(0, 40);
        img.buf_height[p] =
            p == 2 ? img.buf_height[1]
                   : std::max(img.height[p], 0) + random.between(0, 5);
      }
    }
    if (!job.own_strides) {
      ASSERT_EQ(vexo_rsz_new_set_img(pair_), VEXO_OK);
    }
  }

  static bool is_pairs(const vexo_img &img) {
    return img.format == VEXO_FMT_NV12 || img.format == VEXO_FMT_NV21;
  }

  // Memory for the planes that the descriptor has.
  void allocate(const vexo_img &described, TestImage &image, vexo_img *place) {
    for (int p = 0; p < 4; ++p) {
      const bool used = described.stride[p] != 7777;
      image.buffer[p].reset(
          used ? plane_size(described.stride[p], described.buf_height[p],
                            described.stride[p])
               : 0,
          random.next() % 2 == 0 ? Edge::kEnd : Edge::kStart);
      place->plane[p] = image.buffer[p].data();
    }
  }

  // Smooth pictures are waves of some amplitude and length in both directions.
  void fill(const vexo_img &img, TestImage &image, Content content) {
    image.fill(random);
    const int32_t phase = random.between(0, 99);
    for (int p = 0; p < 3 && content != Content::kNoise; ++p) {
      for (size_t i = 0; i < image.buffer[p].size(); ++i) {
        const double x = static_cast<double>(i % img.stride[p]);
        const double y = static_cast<double>(i / img.stride[p]);
        uint8_t &byte = image.buffer[p].data()[i];
        byte =
            content == Content::kExtremes
                ? byte < 128 ? 0 : 255
                : static_cast<uint8_t>(128 + 60 * std::sin((x + phase) / 19) +
                                       60 * std::cos((y + x / 2) / 23));
      }
    }
  }

  void make(const Job &job, Content content = Content::kNoise) {
    ASSERT_NO_FATAL_FAILURE(describe(job));
    for (int i = 0; i < 2; ++i) allocate(pair_[i], images_[i], &pair_[i]);
    fill(pair_[0], images_[0], content);
  }

  // Whether written bytes are as near as they should and the others untouched.
  // Those that agree are counted.
  testing::AssertionResult near(const TestImage &image, const Canvas &canvas) {
    const auto actual = image.contents();
    for (int p = 0; p < 4; ++p) {
      if (!image.buffer[p].margin_intact()) {
        return testing::AssertionFailure() << "written outside plane " << p;
      }
      for (size_t i = 0; i < actual[p].size(); ++i) {
        const int32_t is = actual[p][i], should = canvas.bytes[p][i];
        const bool written = canvas.written[p][i];
        if (std::abs(is - should) > (written ? canvas.tolerance[p] : 0)) {
          return testing::AssertionFailure()
                 << "plane " << p << ", byte " << i << " is " << is
                 << ", expected " << should << (written ? "" : ", untouched");
        }
        if (!written || canvas.tolerance[p] == kAny) continue;
        ++compared_;
        excess_ += is - should;
        if (is == should) ++equal_;
      }
    }
    return testing::AssertionSuccess();
  }

  void TearDown() override {
    // Sets of 16 bits move a few samples over an edge, up or down alike.
    if (compared_ > 0) {
      const auto all = static_cast<double>(compared_);
      EXPECT_GE(static_cast<double>(equal_), 0.97 * all);
      EXPECT_NEAR(static_cast<double>(excess_), 0, 0.02 * all);
    }
    SeededTest::TearDown();
  }

  vexo_img pair_[2];
  TestImage images_[2] = {TestImage(0), TestImage(0)};
  int64_t compared_ = 0;
  int64_t excess_ = 0;
  int64_t equal_ = 0;
};

}  // namespace lox_test
