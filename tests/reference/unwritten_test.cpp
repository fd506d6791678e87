// SPDX-License-Identifier: Apache-2.0
// What calls on pictures make of memory that nobody wrote: nothing. Each is
// made three times, the heap, the stack and the destination holding other bytes
// each time, the last one with a context that served all cases before. Statuses
// and pictures are the same, and what lies beside the rows stays, as all of the
// destination does where a call refuses.
#include <gtest/gtest.h>
#include <orumlox/picture.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "cases/picture.h"

static int filler = 0;
// The linker leads the library's calls of malloc here.
extern "C" void *__real_malloc(size_t size);
extern "C" void *__wrap_malloc(size_t size) {
  void *const block = __real_malloc(size);
  if (block != nullptr) std::memset(block, filler, size);
  return block;
}

namespace lox_test {
namespace {

[[gnu::noinline]] void fill_stack() {
  uint8_t below[256 << 10];
  std::memset(below, filler, sizeof below);
  asm volatile("" ::"r"(below) : "memory");
}

struct Laid {
  Laid(Source &source, int32_t format, int32_t width, int32_t height) {
    const int32_t alignment = 1 << source.between(0, 1) * source.between(0, 5);
    size_t bytes = 0;
    EXPECT_EQ(vexo_picture_bytes(format, width, height, alignment, &bytes),
              VEXO_OK);
    memory.resize(bytes);
    source.fill(memory.data(), bytes);
    EXPECT_EQ(vexo_picture_layout(&img, format, width, height, alignment,
                                  memory.data(), bytes),
              VEXO_OK);
  }
  // Whether a row has this byte. Tiles have none: parts of them are nobody's.
  bool has_in_row(size_t at) const {
    const ExactImage image =
        picture_image(img.format, img.width[0], img.height[0]);
    for (int p = 0; p < vexo_format_planes(img.format); ++p) {
      const int64_t offset =
          int64_t(at) - int64_t(img.plane[p] - memory.data());
      if (offset < 0 || image[p].whole > 0) continue;
      const int64_t y = offset / img.stride[p];
      if (y < image[p].height && offset % img.stride[p] < image[p].row_bytes) {
        return true;
      }
    }
    return false;
  }

  std::vector<uint8_t> memory;
  vexo_img img = {};
};

using Call = decltype(vexo_picture_convert);
struct Drawn {
  Call *call;
  vexo_picture_options options = {};
  Size from, to;
};

// Half of them are thumbnails, and half of the sources NV12: its chroma is what
// a stride has room for.
Drawn draw(Source &source) {
  constexpr Call *kCalls[] = {vexo_picture_convert,   vexo_picture_turn,
                              vexo_picture_scale,     vexo_picture_thumbnail,
                              vexo_picture_thumbnail, vexo_picture_thumbnail};
  Drawn d = {kCalls[source.between(0, 5)], {}, {}, {}};
  d.from = {source.between(1, source.between(1, 30)),
            source.between(1, source.between(1, 30))};
  if (source.between(0, 7) == 0) d.from.width += source.between(0, 120);
  d.to = d.from;
  if (d.call == kCalls[2] || d.call == kCalls[3]) {
    const int32_t more = d.call == kCalls[2] ? 12 : 0;
    d.to = {source.between(1, d.from.width + more),
            source.between(1, d.from.height + more)};
  }
  d.options.rotation = d.call == kCalls[0] ? 0 : source.between(0, 5);
  if (d.options.rotation == 1 || d.options.rotation == 2) {
    std::swap(d.to.width, d.to.height);
  }
  d.options.prescale = 2 * source.between(0, 2);
  d.options.mode = source.between(0, 1) * VEXO_MODE_MOD1;
  d.options.filter = source.between(0, 1);
  d.options.dither = source.between(0, 1);
  d.options.chroma = source.between(0, 2);
  return d;
}

TEST(Unwritten, IsReadByNoCall) {
  vexo_picture_context *used = nullptr;
  ASSERT_EQ(vexo_picture_context_new(&used), VEXO_OK);
  Source source(23);
  int served = 0;
  for (int i = 0; i < LOX_CASES; ++i) {
    const Drawn d = draw(source);
    const int32_t from =
        source.between(0, 1) == 0 ? VEXO_FMT_NV12 : known_format(source);
    const Laid src(source, from, d.from.width, d.from.height);
    Laid dst(source, known_format(source), d.to.width, d.to.height);
    int32_t status[3];
    std::vector<uint8_t> got[3];
    constexpr int kFillers[3] = {0x00, 0xFF, 0x5A};
    for (int k = 0; k < 3; ++k) {
      filler = kFillers[k];
      std::fill(dst.memory.begin(), dst.memory.end(), uint8_t(filler));
      fill_stack();
      status[k] =
          d.call(k < 2 ? nullptr : used, &src.img, &dst.img, &d.options);
      got[k] = dst.memory;
    }
    ASSERT_TRUE(status[0] == status[1] && status[1] == status[2]);
    served += status[0] == VEXO_OK;
    for (size_t at = 0; at < dst.memory.size(); ++at) {
      const bool same = got[0][at] == got[1][at] && got[1][at] == got[2][at];
      const bool stays = got[0][at] == kFillers[0] && got[1][at] == kFillers[1];
      const bool tiles = status[0] == VEXO_OK && is_tiled_code(dst.img.format);
      const bool row = status[0] == VEXO_OK && dst.has_in_row(at);
      ASSERT_TRUE(row ? same : stays || (tiles && same))
          << "case " << i << ": " << from << ' ' << d.from.width << 'x'
          << d.from.height << " to " << dst.img.format << ' ' << d.to.width
          << 'x' << d.to.height << ", byte " << at;
    }
  }
  EXPECT_GT(served, LOX_CASES / 2);
  vexo_picture_context_free(used);
}

}  // namespace
}  // namespace lox_test
