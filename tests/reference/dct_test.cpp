// SPDX-License-Identifier: Apache-2.0
// Scaling and thumbnails at every level against the model and the portable
// form: ratios, formats, geometries, the parts that callers may use alone.
#include <orumlox/rot.h>
#include <orumlox/unprefixed.h>

#include <pthread.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "common/isa.h"
#include "dct_pictures.h"

namespace lox_test {
namespace {

class Dct : public DctPictures {
 protected:
  // Runs `body` with the portable form, then again, on the same destination,
  // at the level of the test: the bytes are the same.
  template <typename Body>
  void at_both_levels(TestImage& dst, const Body& body) {
    const int level = lox::isa_level();
    const auto blank = dst.contents();
    lox::isa_limit(0);
    body();
    lox::isa_limit(level);
    if (level == 0) return;
    const auto portable = dst.contents();
    for (int p = 0; p < 4; ++p) {
      std::copy(blank[p].begin(), blank[p].end(), dst.buffer[p].data());
    }
    body();
    ASSERT_TRUE(holds(dst, portable)) << "unlike the portable form";
  }

  // Scales the pair and looks at all of both pictures.
  void check(const Job& job) {
    const Plan plan(pair_, job.prescale);
    const auto source = images_[0].contents();
    Canvas canvas(images_[1].contents());
    draw(plan, pair_[0], pair_[1], false, canvas);
    Scaler s(pair_, job.prescale);
    ASSERT_EQ(s.status, VEXO_OK) << job;
    ASSERT_NO_FATAL_FAILURE(at_both_levels(images_[1], [&] {
      ASSERT_EQ(s.run(), VEXO_OK);
    })) << job;
    ASSERT_TRUE(near(images_[1], canvas)) << job;
    ASSERT_TRUE(holds(images_[0], source)) << job;
  }

  static int32_t times(int32_t n, double ratio) {
    return static_cast<int32_t>(std::lround(n * ratio));
  }
  Content any_content() { return static_cast<Content>(random.between(0, 2)); }
};

TEST_F(Dct, AnyRatio) {
  constexpr double kRatios[] = {1, 1.07, 1.5, 2,  2.51, 3,  3.7,
                                4, 4.3,  5,   12, 24.2, 33, 48};
  constexpr int32_t kFormats[] = {6, 7, 1};
  for (int n = 0; n < 24 * 14; ++n) {
    const int32_t prescale = n / 14 % 3 == 0 ? 0 : n / 14 % 3 * 2;
    const double across = kRatios[n % 14] * std::max(prescale, 1);
    const double down = across * random.between(100, 130) / 100;
    const int32_t most = std::clamp(times(1, 500 / down), 6, 70);
    const Size dst = {random.between(1, most), random.between(1, most)};
    const int32_t selector = random.between(0, 2);
    const Job job = {{times(dst.width, across), times(dst.height, down)},
                     dst,
                     prescale,
                     random.between(6, 7),
                     kFormats[random.between(0, 2)],
                     selector,
                     selector == 2 || random.between(0, 1) == 0};
    ASSERT_NO_FATAL_FAILURE(make(job, any_content()));
    ASSERT_NO_FATAL_FAILURE(check(job));
  }
}

TEST_F(Dct, LargeRatiosAndPictures) {
  for (const Job& job : {Job{{520, 525}, {4, 4}, 0, 6, 6, 0, false},
                         Job{{1043, 530}, {8, 4}, 0, 7, 1, 1, false},
                         Job{{2100, 1056}, {4, 8}, 4, 6, 6, 2, true},
                         Job{{640, 480}, {160, 120}, 0, 6, 6, 0, false},
                         Job{{643, 487}, {102, 58}, 2, 6, 1, 1, false},
                         Job{{1920, 1080}, {160, 90}, 4, 6, 6, 1, false}}) {
    ASSERT_NO_FATAL_FAILURE(make(job, any_content()));
    ASSERT_NO_FATAL_FAILURE(check(job));
  }
}

// Chroma planes of their own sizes, rounded up or unlike luma's, and enlarged.
TEST_F(Dct, AnyChroma) {
  for (int n = 0; n < 60; ++n) {
    const Size dst = {random.between(9, 50), random.between(9, 50)};
    const int32_t prescale = n % 3 == 0 ? 0 : n % 3 * 2;
    const double ratio =
        random.between(60, 400) / 100.0 * std::max(prescale, 1);
    const Job job = {{times(dst.width, ratio), times(dst.height, ratio)},
                     dst,
                     prescale,
                     7,
                     n % 2 == 0 ? 6 : 1,
                     2,
                     true};
    ASSERT_NO_FATAL_FAILURE(describe(job));
    for (vexo_img& img : pair_) {
      for (int p = 1; p < 3 && img.stride[p] != 7777; ++p) {
        img.width[p] = n % 4 < 2 ? (img.width[0] + 1) / 2 : img.width[0] / 3;
        img.height[p] = n % 4 < 2 ? (img.height[0] + 1) / 2 : img.height[0];
        img.stride[p] = 2 * img.width[p] + n % 5;
        img.buf_height[p] = img.height[p] + n % 2;
      }
    }
    for (int i = 0; i < 2; ++i) allocate(pair_[i], images_[i], &pair_[i]);
    fill(pair_[0], images_[0], any_content());
    ASSERT_NO_FATAL_FAILURE(check(job)) << n;
  }
}

// Every size of block, alone.
TEST_F(Dct, FlatStaysFlatEveryValue) {
  for (int32_t width = 4; width <= 64; ++width) {
    for (int32_t height = 4; height <= 64; ++height) {
      const Job job = {{width, height}, {4, 4}, 0, 6, 6, 2, true};
      ASSERT_NO_FATAL_FAILURE(describe(job));
      pair_[0].stride[0] = width;
      pair_[0].buf_height[0] = height;
      for (int i = 0; i < 2; ++i) allocate(pair_[i], images_[i], &pair_[i]);
      Scaler s(pair_, 0);
      for (const int32_t level : {0, 128, 235, 255}) {
        for (int p = 0; p < 2; ++p) {
          GuardedBuffer& buffer = images_[0].buffer[p];
          std::memset(buffer.data(), level, buffer.size());
        }
        ASSERT_EQ(s.run(), VEXO_OK);
        for (int32_t i = 0; i < 16; ++i) {
          const int32_t is =
              pair_[1].plane[0][i / 4 * pair_[1].stride[0] + i % 4];
          ASSERT_LE(std::abs(is - level), 1) << width << "x" << height;
        }
        ASSERT_TRUE(images_[1].buffer[0].margin_intact());
      }
    }
  }
}

TEST_F(Dct, ExactRatios) {
  for (int n = 0; n < 240; ++n) {
    constexpr int32_t kFormats[] = {6, 1, 7, 0, 6};
    const int32_t ratio = n % 2 == 0 ? 2 : 4;
    const Size dst = {random.between(1, n < 200 ? 90 : 300),
                      random.between(1, 20)};
    const Job job = {{ratio * dst.width, ratio * dst.height},
                     dst,
                     n / 2 % 2 == 0 ? 2 : 4,
                     6 + n / 4 % 2,
                     kFormats[n % 5],
                     n % 3,
                     n % 3 == 2 || n % 7 < 3};
    ASSERT_NO_FATAL_FAILURE(make(job));
    ASSERT_NO_FATAL_FAILURE(check(job));
  }
}

// By what was planned and by what is asked for then. Nothing is planned for
// sizes below 1 and ratios below 1/4.
TEST_F(Dct, DestinationsThatGetLessThanAll) {
  for (const int32_t prescale : {0, 2, 4}) {
    for (const int32_t planned : {6, 7, 1, 0, 3, 500}) {
      for (const int32_t format : {planned, 400}) {
        const Job job = {{230, 121}, {23, 11}, prescale, 6, planned, 1, true};
        ASSERT_NO_FATAL_FAILURE(make(job));
        Canvas canvas(images_[1].contents());
        const Plan plan(pair_, prescale);
        Scaler s(pair_, prescale);
        pair_[1].format = format;
        draw(plan, pair_[0], pair_[1], false, canvas);
        ASSERT_EQ(s.run(), VEXO_OK);
        pair_[1].format = planned;
        ASSERT_TRUE(near(images_[1], canvas)) << job << ", run as " << format;
      }
    }
    for (const auto& [src, dst] : {std::pair<Size, Size>{{64, 0}, {16, 16}},
                                   {{64, 64}, {0, 0}},
                                   {{64, 64}, {16, -4}},
                                   {{9, 9}, {40, 40}},
                                   {{2, 64}, {16, 16}}}) {
      const Job job = {src, dst, prescale, 6, 6, 1, false};
      ASSERT_NO_FATAL_FAILURE(make(job));
      const Plan plan(pair_, prescale);
      if (plan.across[1].count * plan.down[1].count != 0) continue;
      Canvas canvas(images_[1].contents());
      draw(plan, pair_[0], pair_[1], false, canvas);
      Scaler s(pair_, prescale);
      ASSERT_EQ(s.status, VEXO_OK);
      ASSERT_EQ(s.run(), VEXO_OK);
      ASSERT_TRUE(near(images_[1], canvas)) << job;
    }
  }
}

// A plane as the context lays it out, by itself.
TEST_F(Dct, PlanesAlone) {
  for (int n = 0; n < 60; ++n) {
    const int32_t prescale = n % 3 == 0 ? 0 : n % 3 == 1 ? 2 : 4;
    const Size dst = {random.between(4, 50), random.between(4, 50)};
    const double ratio =
        random.between(100, 900) / 100.0 * std::max(1, prescale);
    const Job job = {{times(dst.width, ratio), times(dst.height, 1.1 * ratio)},
                     dst,
                     prescale,
                     6,
                     n % 2 == 0 ? 6 : 1,
                     n % 3,
                     n % 3 == 2};
    ASSERT_NO_FATAL_FAILURE(make(job));
    const Plan plan(pair_, prescale);
    if (plan.exact != 0) continue;
    Scaler s(pair_, prescale);
    for (int p = 0; p < 2; ++p) {
      const vexo_rsz_new_context& c = s.context;
      TestImage src(0), to(0);
      src.set_plane(p, 0, 0, 0,
                    plane_size(c.src_stride[p], c.src_rows[p], c.src_stride[p]),
                    n % 2 == 0 ? Edge::kEnd : Edge::kStart);
      src.fill(random);
      to.set_plane(p, 0, 0, 0,
                   plane_size(c.dst_stride[p], c.dst_rows[p], c.dst_stride[p]),
                   n % 2 == 0 ? Edge::kEnd : Edge::kStart);
      Canvas canvas(to.contents());
      const Plane plane(src.img.plane[p], c.src_stride[p], plan.width[p],
                        plan.height[p]);
      canvas.put(scaled(plane, plan.across[p], plan.down[p]), p,
                 c.dst_stride[p], c.dst_rows[p]);
      ASSERT_NO_FATAL_FAILURE(at_both_levels(to, [&] {
        dct_downscaling(src.img.plane[p], to.img.plane[p], &s.context, s.a, s.b,
                        p);
      }));
      ASSERT_TRUE(near(to, canvas)) << job << ", plane " << p;
    }
  }
}

// An entry that waits, works, tells and ends with a null result.
template <typename Worker>
void run_thread(void* (*entry)(void*), Worker worker) {
  sem_t start, done;
  ASSERT_EQ(sem_init(&start, 0, 0), 0);
  ASSERT_EQ(sem_init(&done, 0, 0), 0);
  worker.start = &start;
  worker.done = &done;
  pthread_t thread;
  ASSERT_EQ(pthread_create(&thread, nullptr, entry, &worker), 0);
  EXPECT_EQ(sem_trywait(&done), -1);
  sem_post(&start);
  while (sem_wait(&done) != 0) {
  }
  void* result = &worker;
  ASSERT_EQ(pthread_join(thread, &result), 0);
  EXPECT_EQ(result, nullptr);
  EXPECT_EQ(sem_trywait(&start), -1);
  sem_destroy(&start);
  sem_destroy(&done);
}

TEST_F(Dct, ChromaByTheCallersThread) {
  for (const int32_t prescale : {2, 4}) {
    for (const int32_t format : {6, 7, 1}) {
      const Job job = {{331, 244}, {25, 22}, prescale, 7, format, 1, true};
      ASSERT_NO_FATAL_FAILURE(make(job));
      Canvas canvas(images_[1].contents());
      draw(Plan(pair_, prescale), pair_[0], pair_[1], true, canvas);
      Scaler s(pair_, prescale);
      ASSERT_NO_FATAL_FAILURE(
          run_thread(prescale == 2 ? vexo_new_rsz_thread_prsz_2
                                   : vexo_new_rsz_thread_prsz_4,
                     vexo_rsz_new_worker{&pair_[0], &pair_[1], &s.context, s.a,
                                         s.b, nullptr, nullptr}));
      ASSERT_TRUE(near(images_[1], canvas)) << job;
    }
  }
}

// Pixels of four bytes. Planes have sizes alike, strides of their own.
class DctPixels : public Dct {
 protected:
  void make_quartet(Size src, Size dst) {
    for (int i = 0; i < 4; ++i) {
      const Size& size = i % 2 == 0 ? src : dst;
      TestImage& image = quartet_images_[i];
      for (int p = 0; p < (i < 2 ? 1 : 3); ++p) {
        const int32_t row = i < 2 ? 4 * size.width : size.width;
        const int32_t stride = row + random.between(0, 9);
        const int32_t rows = p == 0 ? size.height + random.between(0, 5)
                                    : image.img.buf_height[0];
        image.set_plane(p, size.width, size.height, stride,
                        plane_size(stride, rows, stride),
                        random.next() % 2 == 0 ? Edge::kEnd : Edge::kStart);
        image.img.buf_height[p] = rows;
      }
      quartet_[i] = image.img;
    }
    quartet_images_[0].fill(random);
  }

  vexo_img quartet_[4];
  TestImage quartet_images_[4] = {TestImage(500), TestImage(500), TestImage(-1),
                                  TestImage(-1)};
};

TEST_F(DctPixels, OfFourBytes) {
  for (int n = 0; n < 40; ++n) {
    const Size dst = {random.between(4, 60), random.between(4, 40)};
    const double ratio = n < 10 ? n / 2 + 1 : random.between(100, 900) / 100.0;
    make_quartet({times(dst.width, ratio), times(dst.height, ratio)}, dst);
    const vexo_img& src = quartet_[0];
    const vexo_img* planar = quartet_ + 2;
    const Axis across(src.width[0], dst.width), down(src.height[0], dst.height);
    auto taken_apart = quartet_images_[2].contents();
    Canvas canvas(quartet_images_[3].contents());
    for (int p = 0; p < 3; ++p) {
      const Plane plane(src.plane[0], src.stride[0], src.width[0],
                        src.height[0], 4, p);
      for (int32_t y = 0; y < plane.height; ++y) {
        for (int32_t x = 0; x < plane.width; ++x) {
          taken_apart[p][y * planar[0].stride[p] + x] =
              static_cast<uint8_t>(plane.sample(x, y));
        }
      }
      canvas.put(scaled(plane, across, down), p, planar[1].stride[p],
                 planar[1].buf_height[p]);
    }
    vexo_rsz_new_context context;
    vexo_shift_set a, b;
    ASSERT_EQ(vexo_rsz_new_rgba8888_init(quartet_, &context, &a, &b), VEXO_OK);
    EXPECT_EQ(context.src_width[0], across.src);
    EXPECT_EQ(context.types[0], block_types(across, down));
    auto expected = quartet_images_[1].contents();
    ASSERT_NO_FATAL_FAILURE(at_both_levels(quartet_images_[3], [&] {
      ASSERT_EQ(vexo_rsz_new_rgba8888(quartet_, &context, a, b), VEXO_OK);
    }));
    EXPECT_TRUE(holds(quartet_images_[2], taken_apart));
    ASSERT_TRUE(near(quartet_images_[3], canvas)) << n;
    const auto planes = quartet_images_[3].contents();
    for (int32_t y = 0; y < dst.height; ++y) {
      for (int32_t i = 0; i < 4 * dst.width; ++i) {
        expected[0][y * quartet_[1].stride[0] + i] =
            i % 4 == 3 ? 255
                       : planes[i % 4][y * planar[1].stride[i % 4] + i / 4];
      }
    }
    ASSERT_TRUE(holds(quartet_images_[1], expected)) << n;

    // Plane by plane: by itself, and by threads.
    for (int p = 0; p < 3; ++p) {
      for (const bool by_thread : {false, true}) {
        if (by_thread && p == 0) continue;
        quartet_images_[3].fill(random);
        auto scaled_again = quartet_images_[3].contents();
        for (size_t i = 0; i < scaled_again[p].size(); ++i) {
          if (canvas.written[p][i]) scaled_again[p][i] = planes[p][i];
        }
        if (by_thread) {
          ASSERT_NO_FATAL_FAILURE(run_thread(
              p == 1 ? vexo_new_rsz_thread_prsz_4_rgba8888
                     : vexo_new_rsz_thread_prsz_4_rgba8888_1,
              vexo_rsz_new_rgba8888_worker{planar[0].plane[p],
                                           planar[1].plane[p], &context, a, b,
                                           nullptr, nullptr}));
        } else {
          dct_downscaling_rgba8888(planar[0].plane[p], planar[1].plane[p],
                                   &context, a, b, p);
        }
        ASSERT_TRUE(holds(quartet_images_[3], scaled_again)) << p;
      }
    }
    ASSERT_EQ(vexo_rsz_new_rgba8888_deinit(quartet_, &context, a, b), VEXO_OK);
  }
}

class DctThumbnails : public Dct {
 protected:
  static int32_t up(int32_t n, int32_t multiple) {
    return (n + multiple - 1) / multiple * multiple;
  }
  static void set(vexo_img& img, int p, int32_t width, int32_t height,
                  int32_t stride, int32_t rows) {
    img.width[p] = width;
    img.height[p] = height;
    img.stride[p] = stride;
    img.buf_height[p] = rows;
  }

  // What becomes of the result's geometry.
  vexo_img turned_geometry(const vexo_img& before, int32_t rotation) const {
    const vexo_img& in = pair_[1];
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
      const vexo_img& in = pair_[1];
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
  static Plane turned(const Plane& from, int32_t w, int32_t h,
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

  void check_thumbnail(const Job& job, int32_t rotation) {
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
      const auto planes = scaled(plan, pair_[0], pair_[1]);
      const bool pairs = is_pairs(pair_[1]);
      for (int i = 0; i < 3; ++i) {
        const int p = pairs ? std::min(i, 1) : i;
        canvas.put(
            turned(planes[i], pair_[1].width[p], pair_[1].height[p], rotation),
            p, expected.stride[p], expected.buf_height[p],
            pairs && i > 0 ? 2 : 1, pairs && i == 2 ? 1 : 0);
      }
    }

    vexo_img intermediate;
    std::memset(static_cast<void*>(&intermediate), 0, sizeof intermediate);
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
