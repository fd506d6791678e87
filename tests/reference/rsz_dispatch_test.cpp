// SPDX-License-Identifier: Apache-2.0
// vexo_rsz and vexo_rsz_rot: every format code, the planes of each, statuses
// and their order, what is written before a refusal, copies and turns of images
// that keep their size, and a heap without scratch memory. Planes have sizes
// that have nothing to do with each other.
#include <orumlox/rsz.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "rsz_model.h"
#include "support/image.h"

// The linker leads the library's calls of malloc here.
static bool heap_refuses = false;
extern "C" void *__real_malloc(size_t size);
extern "C" void *__wrap_malloc(size_t size) {
  return heap_refuses ? nullptr : __real_malloc(size);
}

namespace lox_test {
namespace {

using Planes = std::vector<const Type *>;

Planes yuv_planes(int32_t format) {
  if (format < 0 || format > 99 || format == VEXO_FMT_T64X32) return {};
  if (format == VEXO_FMT_YUV400) return {&k8b};
  if (format == VEXO_FMT_NV12 || format == VEXO_FMT_NV21) return {&k8b, &k8b8b};
  return {&k8b, &k8b, &k8b};
}
Planes rsz_planes(int32_t format) {
  if (format == 200 || format == 201) return {&k5b6b5b};
  if (format == 400 || format == 401) return {&k8b8b8b};
  if (format >= 500 && format <= 503) return {&k8b8b8b8b};
  if (format == VEXO_FMT_P010LE) return {&k16b, &k16b16b};
  return yuv_planes(format);
}
Planes rot_planes(int32_t format) {
  if (format >= 200 && format <= 299) return {&k5b6b5b};
  if (format >= 400 && format <= 499) return {&k8b8b8b};
  if (format >= 500 && format <= 599) return {&k8b8b8b8b};
  return yuv_planes(format);
}

// A call of vexo_rsz, or of vexo_rsz_rot when there is a rotation.
struct Call {
  int32_t src, dst;
  std::optional<uint32_t> rotation = {};
  Size from[3] = {};
  Size to[3] = {};
  int32_t src_mode = 0, dst_mode = 0;
};

// What such a call does: the planes that it writes, which are copied or turned
// at the source's size or scaled to a size before the turn, and the status.
struct Answer {
  int32_t status;
  uint32_t rotation = 0;
  bool scales = false;
  Planes written = {};

  bool wants_scratch(const Call &c) const {
    for (size_t p = 0; scales && p < written.size(); ++p) {
      const Size to = turned(c.to[p], rotation);
      if (written[p] != &k16b && written[p] != &k16b16b &&
          !roles(c.from[p], to, false).single()) {
        return true;
      }
    }
    return false;
  }
};

Answer answer(const Call &c) {
  if (c.src != c.dst) return {VEXO_ERR_ARG};
  const uint32_t code = c.rotation.value_or(0);
  const bool keeps_size = turned(c.from[0], code) == c.to[0];
  if (c.rotation && keeps_size) {
    const Planes planes = rot_planes(c.src);
    if (planes.empty() || code > 5) return {VEXO_ERR_UNSUPPORTED};
    return {VEXO_OK, code, false, planes};
  }
  const Planes planes = c.rotation ? yuv_planes(c.src) : rsz_planes(c.src);
  if (planes.empty()) return {VEXO_ERR_UNSUPPORTED};
  if (keeps_size) return {VEXO_OK, 0, false, planes};
  Answer a{VEXO_OK, code <= 3 ? code : 0, true};
  for (size_t p = 0; p < planes.size(); ++p) {
    if (c.from[p].empty() || c.to[p].empty()) {
      a.status = VEXO_ERR_ARG;
      break;
    }
    if (planes[p]->bits[0] == 16 &&
        roles(c.from[p], c.to[p], false).first != Role::down_mult) {
      a.status = VEXO_ERR_UNSUPPORTED;
      break;
    }
    a.written.push_back(planes[p]);
  }
  return a;
}

class RszDispatch : public SeededTest {
 protected:
  // Planes that are neither read nor written have no memory.
  void check(const Call &c, bool refuse_heap = false) {
    Answer a = answer(c);
    // Which refusal of two comes first is nobody's business.
    if (refuse_heap && a.status != VEXO_OK) return;
    if (refuse_heap && a.wants_scratch(c)) a = {VEXO_ERR_ARG};
    src_.img.format = c.src;
    src_.img.mode = c.src_mode;
    dst_.img.format = c.dst;
    dst_.img.mode = c.dst_mode;
    for (int p = 0; p < 3; ++p) {
      const bool used = p < static_cast<int>(a.written.size());
      const Type &type = used ? *a.written[p] : k8b;
      set_plane(src_, p, type, c.from[p], used ? c.from[p] : Size{});
      const Size written = a.scales ? c.to[p] : turned(c.from[p], a.rotation);
      set_plane(dst_, p, type, c.to[p], used ? written : Size{});
    }
    src_.fill(random);
    TestImage::Contents expected = dst_.contents();
    for (size_t p = 0; p < a.written.size(); ++p) {
      if (c.from[p].empty()) continue;
      const Type &type = *a.written[p];
      Picture picture(type, c.from[p], src_.img.plane[p],
                      type.stride(src_.img.stride[p]));
      if (a.scales) {
        picture = scaled(picture, turned(c.to[p], a.rotation),
                         c.dst_mode == VEXO_MODE_MOD1);
      }
      turned(picture, a.rotation)
          .write(expected[p].data(), type.stride(dst_.img.stride[p]));
    }
    heap_refuses = refuse_heap;
    const int32_t status = c.rotation
                               ? vexo_rsz_rot(&src_.img, *c.rotation, &dst_.img)
                               : vexo_rsz(&src_.img, &dst_.img);
    heap_refuses = false;
    const auto written = holds(dst_, expected);
    ASSERT_TRUE(status == a.status && written)
        << describe(c) << ": " << status << " instead of " << a.status << ", "
        << written.message();
  }

  // Even strides where samples have 16 bits: copies and turns do not all treat
  // odd ones alike.
  void set_plane(TestImage &image, int p, const Type &type, Size described,
                 Size room) {
    const int32_t pad = random.between(0, 9) * (type.bytes % 2 == 0 ? 2 : 1);
    const int32_t width = std::max(room.width, 0);
    const int32_t stride = width * type.bytes + pad;
    image.set_plane(p, described.width, described.height, stride,
                    plane_size(width * type.bytes, room.height, stride),
                    random.next() % 2 == 0 ? Edge::kEnd : Edge::kStart);
  }

  static std::string describe(const Call &c) {
    std::ostringstream text;
    text << c.src << " to " << c.dst << ", rotation "
         << (c.rotation ? static_cast<int64_t>(*c.rotation) : -1);
    for (int p = 0; p < 3; ++p) {
      text << ", " << c.from[p].width << "x" << c.from[p].height << " to "
           << c.to[p].width << "x" << c.to[p].height;
    }
    return text.str();
  }

  // Sizes of plane 0 that agree in half of the cases, with or without a turn,
  // whole factors often, and one size that is none now and then.
  Call any_call(int32_t src, int32_t dst, std::optional<uint32_t> rotation) {
    const auto heads = [&] { return random.next() % 2 == 0; };
    const auto any = [&] { return random.between(1, 40); };
    Call c{src, dst, rotation};
    for (int p = 0; p < 3; ++p) {
      c.to[p] = {any(), any()};
      c.from[p] = {any(), any()};
      if (heads()) {
        c.from[p] = {c.to[p].width * random.between(1, 4),
                     c.to[p].height * random.between(1, 4)};
      }
    }
    if (random.next() % 4 == 0) {
      Size &size = (heads() ? c.from : c.to)[random.between(0, 2)];
      (heads() ? size.width : size.height) = random.between(-9, 0);
    }
    const int32_t kind = random.between(0, 5);
    if (kind == 0) c.to[0] = c.from[0];
    if (kind == 1) c.to[0] = turned(c.from[0], 1);
    if (kind == 2) c.to[0] = turned(c.from[0], rotation.value_or(0));
    constexpr int32_t kModes[] = {0, 1, VEXO_MODE_MOD1};
    c.src_mode = kModes[random.between(0, 2)];
    c.dst_mode = kModes[random.between(0, 2)];
    return c;
  }

  // Each with every rotation, most of them in vain, and none.
  void check_all(int32_t src, int32_t dst, int times,
                 bool refuse_heap = false) {
    constexpr uint32_t kRotations[] = {0, 1, 2, 3, 4, 5, 6, 7, UINT32_MAX};
    for (int n = 0; n < times; ++n) {
      check(any_call(src, dst, {}), refuse_heap);
      for (const uint32_t r : kRotations) {
        check(any_call(src, dst, r), refuse_heap);
        if (HasFatalFailure()) return;
      }
    }
  }

  TestImage src_{0};
  TestImage dst_{0};
};

std::vector<int32_t> codes() {
  std::vector<int32_t> all = {INT32_MIN, 199, 200, 201, 202, 299,      300, 399,
                              400,       401, 402, 499, 500, 501,      502, 503,
                              504,       599, 600, 601, 602, INT32_MAX};
  for (int32_t code = -1; code <= 120; ++code) all.push_back(code);
  return all;
}

TEST_F(RszDispatch, EveryFormat) {
  for (const int32_t code : codes()) {
    const bool assigned = !rsz_planes(code).empty() && (code < 15 || code > 99);
    ASSERT_NO_FATAL_FAILURE(check_all(code, code, assigned ? 60 : 8));
  }
}

TEST_F(RszDispatch, FormatsThatDiffer) {
  for (const int32_t code : codes()) {
    for (const int32_t other : {-2, 0, 1, 4, 6, 7, 11, 200, 201, 500, 601}) {
      if (other == code) continue;
      ASSERT_NO_FATAL_FAILURE(check_all(code, other, 1));
    }
  }
}

// Plane by plane: planes of unequal kinds, chroma larger than luma, one plane
// that is refused after others have been written.
TEST_F(RszDispatch, ChosenSizes) {
  const Call calls[] = {
      {6, 6, {}, {{16, 16}, {4, 4}}, {{8, 8}, {33, 40}}},
      {1, 1, 3u, {{16, 16}, {4, 4}, {9, 9}}, {{8, 8}, {330, 40}, {9, 9}}},
      {1, 1, {}, {{16, 16}, {8, 8}, {8, 8}}, {{24, 24}, {12, 0}, {12, 12}}},
      {1, 1, 1u, {{16, 16}, {8, 8}, {8, 8}}, {{24, 24}, {12, 9}, {-1, 12}}},
      {1, 1, {}, {{16, 16}, {8, 0}, {0, 8}}, {{16, 16}, {-9, 5}, {7, 7}}},
      {601, 601, {}, {{16, 16}, {8, 8}}, {{8, 4}, {4, 2}}},
      {601, 601, {}, {{16, 16}, {8, 8}}, {{8, 8}, {4, 8}}},
      {601, 601, {}, {{16, 16}, {8, 8}}, {{8, 8}, {3, 4}}},
      {601, 601, {}, {{16, 16}, {8, 8}}, {{8, 8}, {4, 0}}},
      {601, 601, {}, {{16, 16}, {8, 8}}, {{16, 8}, {4, 4}}},
      {601, 601, {}, {{16, 16}, {8, 8}}, {{16, 16}, {4, 9}}}};
  for (const Call &c : calls) ASSERT_NO_FATAL_FAILURE(check(c));
}

// Nothing is written then; reductions and copies want no memory.
TEST_F(RszDispatch, HeapThatRefuses) {
  for (const int32_t code : {0, 1, 6, 7, 9, 200, 400, 500, 601}) {
    ASSERT_NO_FATAL_FAILURE(check_all(code, code, 40, true));
  }
}

}  // namespace
}  // namespace lox_test
