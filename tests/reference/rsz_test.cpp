// SPDX-License-Identifier: Apache-2.0
// The plane scalers and every kernel of scaling against the model, over sizes
// of every kind of ratio, strides and placements; the scaler by steps and its
// weights.
#include <orumlox/rsz.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <ostream>
#include <utility>
#include <vector>

#include "rsz_model.h"
#include "support/image.h"

namespace lox_test {

std::ostream &operator<<(std::ostream &out, Size s) {
  return out << s.width << "x" << s.height;
}

namespace {

struct Scaler {
  const char *name;
  vexo_rsz_scaler *scale;
  const Type &type;
  uint32_t rotation = 0;

  bool is_16_bit() const { return type.bits[0] == 16; }
};
constexpr Scaler kScalers[] = {
    {"8b", vexo_rsz_8b, k8b},
    {"8b8b", vexo_rsz_8b8b, k8b8b},
    {"8b8b8b", vexo_rsz_8b8b8b, k8b8b8b},
    {"8b8b8b8b", vexo_rsz_8b8b8b8b, k8b8b8b8b},
    {"5b6b5b", vexo_rsz_5b6b5b, k5b6b5b},
    {"16b", vexo_rsz_16b, k16b},
    {"16b16b", vexo_rsz_16b16b, k16b16b},
    {"8b_rot_90l", vexo_rsz_8b_rot_90l, k8b, 1},
    {"8b_rot_90r", vexo_rsz_8b_rot_90r, k8b, 2},
    {"8b_rot_180", vexo_rsz_8b_rot_180, k8b, 3},
    {"8b8b_rot_90l", vexo_rsz_8b8b_rot_90l, k8b8b, 1},
    {"8b8b_rot_90r", vexo_rsz_8b8b_rot_90r, k8b8b, 2},
    {"8b8b_rot_180", vexo_rsz_8b8b_rot_180, k8b8b, 3}};

struct Kernel {
  const char *name;
  vexo_rsz_kernel *call;
  const Type &type;
  Role role;
  uint32_t rotation;
};
#define KERNEL(name, type, rotation, role) \
  { #name, vexo_##name, type, Role::role, rotation }
#define ACROSS_AND_BOTH(stem, ...)                             \
  KERNEL(stem##down_mult, __VA_ARGS__, down_mult),             \
      KERNEL(stem##down_non_mult, __VA_ARGS__, down_non_mult), \
      KERNEL(stem##down_w, __VA_ARGS__, down_w),               \
      KERNEL(stem##up, __VA_ARGS__, up),                       \
      KERNEL(stem##up_mode1, __VA_ARGS__, up_mode1)
#define ALL_ROLES(stem, ...)                     \
  ACROSS_AND_BOTH(stem, __VA_ARGS__),            \
      KERNEL(stem##down_h, __VA_ARGS__, down_h), \
      KERNEL(stem##up_h, __VA_ARGS__, up_h),     \
      KERNEL(stem##up_h_mode1, __VA_ARGS__, up_h_mode1)
constexpr Kernel kKernels[] = {
    ALL_ROLES(8b_rsz_, k8b, 0),
    ALL_ROLES(8b8b_rsz_, k8b8b, 0),
    ACROSS_AND_BOTH(8b8b8b_rsz_, k8b8b8b, 0),
    ACROSS_AND_BOTH(8b8b8b8b_rsz_, k8b8b8b8b, 0),
    ALL_ROLES(5b6b5b_rsz_, k5b6b5b, 0),
    KERNEL(16b_rsz_down_mult, k16b, 0, down_mult),
    KERNEL(16b16b_rsz_down_mult, k16b16b, 0, down_mult),
    KERNEL(8b_rsz_down_non_mult_720p_720x404, k8b, 0, down_non_mult),
    KERNEL(8b8b_rsz_down_non_mult_720p_720x404, k8b8b, 0, down_non_mult),
    ALL_ROLES(8b_rsz_rot_90l_, k8b, 1),
    ALL_ROLES(8b_rsz_rot_90r_, k8b, 2),
    ALL_ROLES(8b_rsz_rot_180_, k8b, 3),
    ALL_ROLES(8b8b_rsz_rot_90l_, k8b8b, 1),
    ALL_ROLES(8b8b_rsz_rot_90r_, k8b8b, 2),
    ALL_ROLES(8b8b_rsz_rot_180_, k8b8b, 3)};
static_assert(std::size(kKernels) == 86);

// Source and destination of a job, the latter before a turn.
struct Job {
  Size from, to;
};
std::ostream &operator<<(std::ostream &out, const Job &j) {
  return out << j.from << " to " << j.to;
}

// One direction of a job, its sizes not much above the limit: any two, a single
// sample, or a simple ratio, or one sample off it.
std::pair<int32_t, int32_t> any_direction(Random &random, int32_t limit) {
  constexpr int32_t kRatios[][2] = {{1, 1}, {2, 1}, {3, 1}, {4, 1}, {8, 1},
                                    {3, 2}, {4, 3}, {9, 4}, {16, 1}};
  const auto &ratio = kRatios[random.between(0, 8)];
  const int32_t times = random.between(1, std::max(limit / ratio[0], 1));
  int32_t a = random.between(1, limit);
  int32_t b = random.between(1, limit);
  switch (random.between(0, 5)) {
    case 0:
      b = 1;
      break;
    case 1:
    case 2:
      break;
    default:
      a = std::max(ratio[0] * times + random.between(-1, 1), 1);
      b = ratio[1] * times;
  }
  return random.next() % 2 == 0 ? std::pair{a, b} : std::pair{b, a};
}

Job any_job(Random &random) {
  const auto [from_width, to_width] = any_direction(random, 260);
  const auto [from_height, to_height] = any_direction(random, 24);
  return {{from_width, from_height}, {to_width, to_height}};
}

// A job of whose directions one has a given quotient: every one counts up to
// where the weights end, and from 65 on they exceed their scale.
constexpr int32_t kQuotients = 70;
Job any_job(Random &random, int32_t quotient, bool is_width) {
  Job job = any_job(random);
  int32_t small = random.between(1, 3);
  int32_t large = small * quotient + random.between(0, small - 1);
  if (random.next() % 2 == 0) std::swap(small, large);
  (is_width ? job.from.width : job.from.height) = small;
  (is_width ? job.to.width : job.to.height) = large;
  return job;
}

constexpr int32_t kModes[] = {0, VEXO_MODE_MOD1, 1, VEXO_MODE_MOD1 + 1, -1};

class Rsz : public SeededTest {
 protected:
  // Reads a picture of a size from a plane that has just been filled with all
  // values, with the two extremes, or with runs of them.
  Picture source(const Type &type, Size size) {
    src_stride_ = any_stride(type, size.width);
    src_.reset(plane_size(size.width * type.bytes, size.height,
                          type.stride(src_stride_)),
               any_edge());
    const int32_t kind = random.between(0, 3);
    random.fill(src_.data(), src_.size(),
                kind == 0 ? Fill::kAlternating : Fill::kRandom);
    for (size_t i = 0; kind == 1 && i < src_.size(); ++i) {
      src_.data()[i] = src_.data()[i] % 2 == 0 ? 0 : 255;
    }
    return {type, size, src_.data(), type.stride(src_stride_)};
  }

  // Makes room for a picture; what that is to hold when it is not written.
  std::vector<uint8_t> room(const Type &type, Size size) {
    dst_stride_ = any_stride(type, size.width);
    dst_.reset(plane_size(size.width * type.bytes, size.height,
                          type.stride(dst_stride_)),
               any_edge());
    return dst_.copy();
  }
  void place(const Picture &p, std::vector<uint8_t> &plane) const {
    p.write(plane.data(), p.type->stride(dst_stride_));
  }

  Edge any_edge() { return random.next() % 2 == 0 ? Edge::kEnd : Edge::kStart; }
  int32_t any_stride(const Type &type, int32_t width) {
    constexpr int32_t kPads[] = {0, 0, 1, 3, 16, 64, 77};
    return width * type.bytes + kPads[random.between(0, 6)];
  }

  void check(const Scaler &s, const Job &job, int32_t mode) {
    const Picture picture = source(s.type, job.from);
    const Size to = turned(job.to, s.rotation);
    std::vector<uint8_t> expected = room(s.type, to);
    const Roles r = roles(job.from, job.to, mode == VEXO_MODE_MOD1);
    const bool refused = s.is_16_bit() && r.first != Role::down_mult;
    if (!refused) {
      const bool mode1 = mode == VEXO_MODE_MOD1;
      place(turned(scaled(picture, job.to, mode1), s.rotation), expected);
    }
    const bool scratch = !r.single() && !s.is_16_bit();
    const int32_t rows =
        is_quarter(s.rotation) ? job.from.height : std::min(job.from.height, 2);
    scratch_.reset(scratch ? size_t{1} * rows * job.to.width * s.type.bytes : 0,
                   any_edge());
    const int32_t status =
        s.scale(src_.data(), job.from.width, job.from.height, to.width,
                to.height, dst_.data(), scratch ? scratch_.data() : nullptr,
                src_stride_, dst_stride_, mode);
    ASSERT_EQ(status, refused ? VEXO_ERR_UNSUPPORTED : VEXO_OK) << job;
    ASSERT_TRUE(holds(dst_, expected))
        << job << ", strides " << src_stride_ << " " << dst_stride_ << ", mode "
        << mode;
    ASSERT_TRUE(scratch_.margin_intact()) << job;
  }

  // The picture that a kernel reads and the one that it writes have the sizes
  // of its role, and one size is not looked at.
  void check(const Kernel &k, const Job &job) {
    const Size to = turned(job.to, k.rotation);
    Size read = job.from;
    Size given_from = job.from;
    Size given_to = to;
    const int32_t unread = random.next() % 2 == 0 ? -7777 : 7777;
    if (is_down(k.role)) {
      read.width = job.to.width;
      given_from.width = unread;
    } else if (is_across(k.role)) {
      (is_quarter(k.rotation) ? given_to.width : given_to.height) = unread;
    }
    const Picture out = apply(k.role, source(k.type, read), job.to);
    const Picture result = is_across(k.role) ? out : turned(out, k.rotation);
    std::vector<uint8_t> expected = room(k.type, result.size);
    const auto call = [&](Size from, Size size) {
      k.call(src_.data(), from.width, from.height, size.width, size.height,
             dst_.data(), src_stride_, dst_stride_);
    };
    call({job.from.width, random.between(-1, 0)}, given_to);
    ASSERT_TRUE(holds(dst_, expected)) << job;
    place(result, expected);
    call(given_from, given_to);
    ASSERT_TRUE(holds(dst_, expected))
        << job << ", strides " << src_stride_ << " " << dst_stride_;
  }

  GuardedBuffer src_;
  GuardedBuffer dst_;
  GuardedBuffer scratch_;
  int32_t src_stride_ = 0;
  int32_t dst_stride_ = 0;
};

class RszScalers : public Rsz, public testing::WithParamInterface<Scaler> {};

TEST_P(RszScalers, ScaleEverySize) {
  for (int n = 0; n < 500; ++n) {
    const int32_t quotient = n / 4 + 1;
    const Job job = quotient <= kQuotients
                        ? any_job(random, quotient, n % 2 == 0)
                        : any_job(random);
    for (const int32_t mode : {0, kModes[random.between(1, 4)]}) {
      ASSERT_NO_FATAL_FAILURE(check(GetParam(), job, mode));
    }
  }
  constexpr Job kJobs[] = {{{1, 1}, {1, 1}},         {{1, 1}, {150, 130}},
                           {{1, 40}, {1, 3}},        {{40, 1}, {3, 1}},
                           {{260, 8}, {130, 4}},     {{260, 8}, {65, 4}},
                           {{1917, 33}, {1279, 22}}, {{1917, 33}, {639, 11}},
                           {{1917, 33}, {1920, 9}},  {{640, 33}, {1917, 50}},
                           {{1920, 12}, {1280, 8}},  {{1920, 12}, {960, 6}},
                           {{1280, 9}, {1920, 12}},  {{1920, 8}, {240, 2}}};
  for (const Job &job : kJobs) {
    for (const int32_t mode : kModes) {
      ASSERT_NO_FATAL_FAILURE(check(GetParam(), job, mode));
    }
  }
}

// The sizes that are scaled under another name, and what those names imply; a
// picture beyond the caches.
TEST_P(RszScalers, ScaleLargePictures) {
  constexpr Job kJobs[] = {{{1280, 720}, {720, 404}},
                           {{1280, 580}, {720, 326}},
                           {{640, 360}, {360, 202}},
                           {{640, 360}, {360, 163}},
                           {{640, 290}, {360, 163}}};
  for (const Job &job : kJobs) {
    ASSERT_NO_FATAL_FAILURE(check(GetParam(), job, 0));
  }
  const int32_t bytes = GetParam().type.bytes;
  check(GetParam(), {{1024 / bytes, 900}, {2048 / bytes, 2100}}, 0);
}

TEST_P(RszScalers, RefuseSizesBelowOne) {
  const Scaler &s = GetParam();
  room(s.type, {8, 8});
  const std::vector<uint8_t> blank = dst_.copy();
  for (const int32_t bad : {0, -1, -8, INT32_MIN}) {
    for (int n = 0; n < 4; ++n) {
      int32_t size[4] = {16, 16, 8, 8};
      size[n] = bad;
      EXPECT_EQ(s.scale(nullptr, size[0], size[1], size[2], size[3],
                        dst_.data(), nullptr, 64, dst_stride_, 0),
                VEXO_ERR_ARG);
      EXPECT_TRUE(holds(dst_, blank));
    }
  }
}

INSTANTIATE_TEST_SUITE_P(, RszScalers, testing::ValuesIn(kScalers),
                         [](const auto &i) { return i.param.name; });

class RszKernels : public Rsz, public testing::WithParamInterface<Kernel> {};

TEST_P(RszKernels, ScaleEverySize) {
  const Kernel &k = GetParam();
  // Sizes that call for the role; of one direction the other is free.
  const bool mode1 = k.role == Role::up_mode1 || k.role == Role::up_h_mode1;
  const auto fits = [&](Job job) {
    if (is_across(k.role)) job.from.height = job.to.height;
    if (is_down(k.role)) job.from.width = job.to.width;
    const Roles r = roles(job.from, job.to, mode1);
    return r.first == k.role || r.second == k.role;
  };
  // No reduction by whole factors has the quotient 1.
  for (int quotient = 2; quotient < 250;) {
    const Job job = quotient <= kQuotients
                        ? any_job(random, quotient, !is_down(k.role))
                        : any_job(random);
    if (!fits(job)) continue;
    ASSERT_NO_FATAL_FAILURE(check(k, job));
    ++quotient;
  }
}

INSTANTIATE_TEST_SUITE_P(, RszKernels, testing::ValuesIn(kKernels),
                         [](const auto &i) { return i.param.name; });

// Computed by hand.
TEST(RszByHand, Lines) {
  struct Line {
    std::vector<uint8_t> from, plain, mode1;
  };
  const Line lines[] = {
      {{10, 20, 31, 40, 51}, {10, 25, 45}, {10, 25, 45}},
      {{10, 21, 99, 41, 50, 99}, {15, 45}, {15, 45}},
      {{0, 90}, {0, 45, 90, 90, 90}, {0, 45, 90, 90, 90}},
      {{90, 0}, {90, 60, 30, 0, 0, 0}, {90, 60, 30, 0, 0, 0}},
      {{0, 90}, {0, 30, 60, 90, 90, 90}, {0, 29, 59, 90, 90, 90}},
      {{7, 0, 200},
       {7, 3, 0, 100, 200, 200, 200},
       {7, 3, 0, 100, 200, 200, 200}}};
  for (const Line &line : lines) {
    const Size from{static_cast<int32_t>(line.from.size()), 1};
    const Size to{static_cast<int32_t>(line.plain.size()), 1};
    for (const bool mode1 : {false, true}) {
      const std::vector<uint8_t> &expected = mode1 ? line.mode1 : line.plain;
      std::vector<uint8_t> modelled(expected.size());
      scaled({k8b, from, line.from.data(), 0}, to, mode1)
          .write(modelled.data(), 0);
      EXPECT_EQ(modelled, expected);
      std::vector<uint8_t> computed(expected.size());
      std::vector<uint8_t> scratch(expected.size());
      vexo_rsz_8b(line.from.data(), from.width, 1, to.width, 1, computed.data(),
                  scratch.data(), from.width, to.width,
                  mode1 ? VEXO_MODE_MOD1 : 0);
      EXPECT_EQ(computed, expected);
    }
  }
}

class RszSteps : public Rsz {};

TEST_F(RszSteps, HaveTheirWeights) {
  for (int n = 0; n < 64; ++n) {
    const int px = n / 8;
    const int py = n % 8;
    const uint8_t *w = vexo_tbl_rsz_weight[n];
    EXPECT_EQ(w[0], (8 - px) * (8 - py));
    EXPECT_EQ(w[1], px * (8 - py));
    EXPECT_EQ(w[2], (8 - px) * py);
    EXPECT_EQ(w[3], px * py);
  }
}

// The source ends with the last sample that has weight.
TEST_F(RszSteps, WalkThePlane) {
  constexpr uint32_t kOne = 1 << 18;
  constexpr uint32_t kSteps[] = {0,        1,        kOne / 8,
                                 kOne / 2, kOne - 1, kOne,
                                 kOne * 2, kOne + 1, kOne * 3 / 2};
  std::vector<uint8_t> content(1 << 21);
  random.fill(content.data(), content.size());
  for (int n = 0; n < 1500; ++n) {
    const Size size{random.between(-1, n % 8 == 0 ? 300 : 40),
                    random.between(-1, 9)};
    uint32_t step[2];
    uint32_t distance[2];
    for (int i = 0; i < 2; ++i) {
      const int32_t pick = random.between(0, 17);
      step[i] = pick < 9 ? kSteps[pick]
                         : static_cast<uint32_t>(random.between(0, 1 << 20));
      distance[i] = random.between(0, pick % 3 == 0 ? 7 : 1);
    }
    src_stride_ = random.between(1, 200);
    std::vector<uint8_t> expected =
        room(k8b, {std::max(size.width, 0), std::max(size.height, 0)});
    size_t end = 0;
    for (int32_t y = 0; y < size.height; ++y) {
      for (int32_t x = 0; x < size.width; ++x) {
        const uint32_t p[2] = {x * step[0], y * step[1]};
        const uint32_t phase[2] = {p[0] >> 15 & 7, p[1] >> 15 & 7};
        uint32_t sum = 0;
        for (const uint32_t right : {0, 1}) {
          for (const uint32_t below : {0, 1}) {
            const uint32_t weight = (right ? phase[0] : 8 - phase[0]) *
                                    (below ? phase[1] : 8 - phase[1]);
            if (weight == 0) continue;
            const size_t at = (((p[0] >> 18) + right) << distance[0]) +
                              (((p[1] >> 18) + below) << distance[1]) *
                                  size_t{1} * src_stride_;
            sum += weight * content[at];
            end = std::max(end, at + 1);
          }
        }
        expected[size_t{1} * y * dst_stride_ + x] =
            static_cast<uint8_t>(sum >> 6);
      }
    }
    src_.reset(end, any_edge());
    std::copy_n(content.data(), end, src_.data());
    vexo_rsz_8b_org(src_.data(), src_stride_, size.width, size.height,
                    dst_stride_, dst_.data(), step[0] << 3 | distance[0],
                    step[1] << 3 | distance[1]);
    ASSERT_TRUE(holds(dst_, expected))
        << size << ", steps " << step[0] << " " << step[1] << ", distances "
        << distance[0] << " " << distance[1];
  }
}

}  // namespace
}  // namespace lox_test
