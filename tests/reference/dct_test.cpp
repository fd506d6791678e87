// SPDX-License-Identifier: Apache-2.0
// Scaling at every level against the model and the portable form: ratios,
// formats, geometries, the parts that callers may use alone.
#include <orumlox/unprefixed.h>
#include <pthread.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "dct_levels.h"

namespace lox_test {
namespace {

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
  for (const Job &job : {Job{{520, 525}, {4, 4}, 0, 6, 6, 0, false},
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
    const bool exact = prescale != 0 && n % 5 == 0;
    const double ratio =
        exact ? prescale
              : random.between(60, 400) / 100.0 * std::max(prescale, 1);
    const Job job = {{times(dst.width, ratio), times(dst.height, ratio)},
                     dst,
                     prescale,
                     7,
                     n % 2 == 0 ? 6 : 1,
                     2,
                     true};
    ASSERT_NO_FATAL_FAILURE(describe(job));
    for (vexo_img &img : pair_) {
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
          GuardedBuffer &buffer = images_[0].buffer[p];
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

// By what was planned and by what is asked for then. Planes are left alone that
// have no blocks, for sizes below 1 and ratios below 1/4, and those without a
// sample after the pre-scaling.
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
    for (const auto &[src, dst] : {std::pair<Size, Size>{{64, 0}, {16, 16}},
                                   {{64, 64}, {0, 0}},
                                   {{64, 64}, {16, -4}},
                                   {{9, 9}, {40, 40}},
                                   {{2, 64}, {16, 16}},
                                   {{3, 16}, {4, 4}},
                                   {{6, 16}, {4, 4}},
                                   {{7, 64}, {4, 4}},
                                   {{64, 7}, {16, 4}},
                                   {{5, 12}, {5, 9}},
                                   {{22, 29}, {37, 65}}}) {
      const Job job = {src, dst, prescale, 6, 6, 1, false};
      ASSERT_NO_FATAL_FAILURE(make(job));
      const Plan plan(pair_, prescale);
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
      const vexo_rsz_new_context &c = s.context;
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
void run_thread(void *(*entry)(void *), Worker worker) {
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
  void *result = &worker;
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

TEST_F(Dct, PixelsOfFourBytes) {
  for (int n = 0; n < 40; ++n) {
    const Size dst = {random.between(4, 60), random.between(4, 40)};
    const double ratio = n < 10 ? n / 2 + 1 : random.between(100, 900) / 100.0;
    Quartet q({times(dst.width, ratio), times(dst.height, ratio)}, dst, random);
    const vexo_img &src = q.img[0];
    const vexo_img *planar = q.img + 2;
    const Axis across(src.width[0], dst.width), down(src.height[0], dst.height);
    auto taken_apart = q.images[2].contents();
    Canvas canvas(q.images[3].contents());
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
    ASSERT_EQ(vexo_rsz_new_rgba8888_init(q.img, &context, &a, &b), VEXO_OK);
    auto expected = q.images[1].contents();
    ASSERT_NO_FATAL_FAILURE(at_both_levels(q.images[3], [&] {
      ASSERT_EQ(vexo_rsz_new_rgba8888(q.img, &context, a, b), VEXO_OK);
    }));
    EXPECT_TRUE(holds(q.images[2], taken_apart));
    ASSERT_TRUE(near(q.images[3], canvas)) << n;
    const auto planes = q.images[3].contents();
    for (int32_t y = 0; y < dst.height; ++y) {
      for (int32_t i = 0; i < 4 * dst.width; ++i) {
        expected[0][y * q.img[1].stride[0] + i] =
            i % 4 == 3 ? 255
                       : planes[i % 4][y * planar[1].stride[i % 4] + i / 4];
      }
    }
    ASSERT_TRUE(holds(q.images[1], expected)) << n;

    // Plane by plane: by itself, and by threads.
    for (int p = 0; p < 3; ++p) {
      for (const bool by_thread : {false, true}) {
        if (by_thread && p == 0) continue;
        q.images[3].fill(random);
        auto scaled_again = q.images[3].contents();
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
        ASSERT_TRUE(holds(q.images[3], scaled_again)) << p;
      }
    }
    ASSERT_EQ(vexo_rsz_new_rgba8888_deinit(q.img, &context, a, b), VEXO_OK);
  }
}

TEST_F(Dct, PixelsWithoutBlocksAreLeftAlone) {
  for (const Size &dst : {Size{40, 41}, Size{3, 40}}) {
    Quartet q({3, 3}, dst, random);
    const auto before = q.images[1].contents();
    vexo_rsz_new_context context;
    vexo_shift_set a, b;
    ASSERT_EQ(vexo_rsz_new_rgba8888_init(q.img, &context, &a, &b), VEXO_OK);
    ASSERT_EQ(vexo_rsz_new_rgba8888(q.img, &context, a, b), VEXO_OK);
    EXPECT_TRUE(holds(q.images[1], before));
    vexo_rsz_new_rgba8888_deinit(q.img, &context, a, b);
  }
}

TEST_F(Dct, SmallestSources) {
  const struct {
    int32_t prescale;
    Size size;
    int32_t chroma_stride;
    bool luma, chroma;  // whether it is scaled
  } kCases[] = {{0, {1, 1}, 2, true, false},  {0, {2, 2}, 2, true, true},
                {2, {4, 2}, 4, true, false},  {2, {3, 2}, 4, false, false},
                {2, {4, 1}, 4, false, false}, {2, {4, 4}, 4, true, true},
                {2, {4, 4}, 3, true, false},  {2, {4, 3}, 4, true, false},
                {4, {4, 4}, 8, true, false},  {4, {3, 8}, 8, false, false},
                {4, {4, 3}, 8, false, false}, {4, {4, 8}, 8, true, true},
                {4, {4, 8}, 7, true, false},  {4, {4, 7}, 8, true, false}};
  for (const auto &k : kCases) {
    const Job job = {k.size, {4, 4}, k.prescale, 6, 6, 2, true};
    ASSERT_NO_FATAL_FAILURE(describe(job));
    pair_[0].stride[1] = k.chroma_stride;
    for (int i = 0; i < 2; ++i) allocate(pair_[i], images_[i], &pair_[i]);
    fill(pair_[0], images_[0], Content::kNoise);
    const auto before = images_[1].contents();
    Scaler s(pair_, k.prescale);
    ASSERT_EQ(s.run(), VEXO_OK);
    const auto after = images_[1].contents();
    EXPECT_EQ(after[0] != before[0], k.luma) << job;
    EXPECT_EQ(after[1] != before[1], k.chroma) << job;
  }
}

// Chroma of plane 0's size alone: what plane 1 has not is not made up.
TEST_F(Dct, ChromaWithoutSamplesIsLeftAlone) {
  for (const int32_t prescale : {0, 2, 4}) {
    for (const int32_t format : {6, 1}) {
      for (const int32_t ratio : {4, 5}) {  // by means alone, and not
        const Job job = {
            {16 * ratio, 16 * ratio}, {16, 16}, prescale, 6, format, 2, true};
        ASSERT_NO_FATAL_FAILURE(make(job));
        pair_[0].width[1] = 0;
        Canvas canvas(images_[1].contents());
        const Plan plan(pair_, prescale);
        canvas.put(scaled(plan, pair_[0], pair_[1])[0], 0, pair_[1].stride[0],
                   pair_[1].buf_height[0]);
        Scaler s(pair_, prescale);
        ASSERT_EQ(s.run(), VEXO_OK);
        ASSERT_TRUE(near(images_[1], canvas)) << job;
      }
    }
  }
}

// A slope stays within half a sample of its place, though blocks are not all of
// one size. With a factor of 4 it lies half a row lower, and chroma is off as
// much as its grouped pairs make it.
TEST_F(Dct, SlopesStayInPlace) {
  const struct {
    int32_t plane, src, dst, prescale, rise;
    double across, down;  // how far off, in samples of the source
  } kSlopes[] = {{0, 62, 32, 0, 4, 0.5, 0.5},   {0, 63, 40, 0, 4, 0.5, 0.5},
                 {0, 58, 24, 0, 4, 0.5, 0.5},   {1, 124, 64, 0, 4, 0.5, 0.5},
                 {1, 160, 32, 2, 3, 0.5, 0.5},  {1, 160, 32, 4, 3, 0.9, 0.75},
                 {1, 192, 32, 4, 2, 0.8, 0.75}, {0, 160, 32, 4, 1, 0.5, 0.75}};
  for (const auto &k : kSlopes) {
    for (const bool down : {false, true}) {
      const Job job = {
          {k.src, k.src}, {k.dst, k.dst}, k.prescale, 6, 1, 2, true};
      ASSERT_NO_FATAL_FAILURE(make(job));
      const vexo_img &src = pair_[0], &dst = pair_[1];
      const int32_t p = k.plane;
      for (int32_t y = 0; y < src.height[p]; ++y) {
        for (int32_t x = 0; x < src.width[p] * (p + 1); ++x) {
          src.plane[p][y * src.stride[p] + x] =
              static_cast<uint8_t>(k.rise * (down ? y : x / (p + 1)));
        }
      }
      Scaler s(pair_, k.prescale);
      ASSERT_EQ(s.run(), VEXO_OK);
      for (int32_t i = 0; i < dst.width[p]; ++i) {
        const double place = (i + 0.5) * src.width[p] / dst.width[p] - 0.5;
        ASSERT_NEAR(dst.plane[p][i * (down ? dst.stride[p] : 1)],
                    k.rise * place, k.rise * (down ? k.down : k.across) + 1)
            << job << ", plane " << p << (down ? ", row " : ", column ") << i;
      }
    }
  }
}

}  // namespace
}  // namespace lox_test
