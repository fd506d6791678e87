// SPDX-License-Identifier: Apache-2.0
// Planes of a picture: picked from, taken apart, put together, out of tiles.
#include <orumlox/csc.h>

#include <algorithm>

#include "cases/cases.h"
#include "cases/conversion.h"

namespace lox_test {
namespace {

// A plane of `row` bytes in `rows` rows.
ExactPlane bytes_plane(int32_t row, int32_t rows) {
  return exact_plane(row, rows, 1);
}

using PlaneKernel = decltype(vexo_csc_1x2_to_1x1);
template <int32_t (*kWidth)(int32_t), int32_t (*kHeight)(int32_t)>
void plane(const Function &function, Source &source, Sink &sink) {
  const auto [width, height] = source.size();
  Picture src(source);
  Picture dst(source);
  src.set({bytes_plane(width, height)}, Rows::kEitherWay);
  dst.set({bytes_plane(kWidth(width), kHeight(height))}, Rows::kEitherWay);
  function.as<PlaneKernel>()(src.img.plane[0], width, height, src.img.stride[0],
                             dst.img.stride[0], dst.img.plane[0]);
  dst.add_to(sink);
}
int32_t same(int32_t n) { return n; }
int32_t twice(int32_t n) { return n < 0 || n > INT32_MAX / 2 ? n : 2 * n; }

// Pairs, apart and together.
void unpack_pairs(const Function &function, Source &source, Sink &sink) {
  const auto [width, height] = source.size();
  Picture src(source);
  Picture dst(source);
  src.set({bytes_plane(width, height)}, Rows::kEitherWay);
  dst.set({bytes_plane(half_up(width), height),
           bytes_plane(half_down(width), height)},
          Rows::kEitherWay);
  function.as<decltype(vexo_csc_8b8b_unpck)>()(
      src.img.plane[0], width, height, src.img.stride[0], dst.img.stride[0],
      dst.img.stride[1], dst.img.plane[0], dst.img.plane[1]);
  dst.add_to(sink);
}
void pack_pairs(const Function &function, Source &source, Sink &sink) {
  const auto [width, height] = source.size();
  Picture src(source);
  Picture dst(source);
  src.set({bytes_plane(width, height), bytes_plane(width, height)},
          Rows::kEitherWay);
  dst.set({bytes_plane(twice(width), height)}, Rows::kEitherWay);
  function.as<decltype(vexo_csc_8b8b_pck)>()(
      src.img.plane[0], src.img.plane[1], width, height, src.img.stride[0],
      src.img.stride[1], dst.img.stride[0], dst.img.plane[0]);
  dst.add_to(sink);
}

// Pixels of four bytes and four planes, some of which are null.
void pixels(const Function &function, Source &source, Sink &sink) {
  const Size size = source.size();
  Picture packed(source);
  Picture apart(source);
  packed.set({exact_plane(size.width, size.height, 4)}, Rows::kEitherWay);
  ExactImage image;
  const int32_t set = source.between(0, 15);
  for (int p = 0; p < 4; ++p) {
    if ((set >> p & 1) != 0) image[p] = bytes_plane(size.width, size.height);
  }
  apart.set(image, Rows::kEitherWay);
  for (int p = 0; p < 4; ++p) {
    if ((set >> p & 1) == 0) apart.img.plane[p] = nullptr;
  }
  uint8_t *const *a = apart.img.plane;
  const int32_t *s = apart.img.stride;
  // Both have the same arguments, but for what is written.
  using Pack = decltype(vexo_csc_8b8b8b8b_pack);
  using Unpack = decltype(vexo_csc_8b8b8b8b_unpack);
  const auto call = [&](const auto &kernel) {
    kernel(packed.img.plane[0], size.width, size.height, packed.img.stride[0],
           s[0], s[1], s[2], s[3], a[0], a[1], a[2], a[3]);
  };
  if (function.address == AnyFunction(vexo_csc_8b8b8b8b_pack)) {
    call(function.as<Pack>());
  } else {
    call(function.as<Unpack>());
  }
  packed.add_to(sink);
  apart.add_to(sink);
}

void swap(const Function &function, Source &source, Sink &sink) {
  // Also counts that wrap, to a run of a few bytes.
  int32_t stride = source.between(-3, 200);
  stride += 65536 * source.between(-2, 2);
  int32_t rows = source.between(-3, 20);
  rows += 65536 * source.between(-2, 2);
  Buffer plane(source, static_cast<size_t>(swapped_bytes(stride, rows)));
  function.as<decltype(vexo_csc_swap_8byte8)>()(plane.data(), stride, rows);
  sink.add(plane.data(), plane.size());
}

void tile_offset(const Function &function, Source &source, Sink &sink) {
  const int32_t width = around(source, 64, 15);
  const int32_t height = around(source, 32, 15);
  const int32_t x = source.between(0, width - 1);
  const int32_t y = source.between(0, height - 1);
  sink.add(static_cast<uint32_t>(
      function.as<decltype(vexo_get_tile_offset)>()(width, height, x, y)));
}

// Planes of small tiles, whose shape the format and the plane's kind say.
template <int32_t kFormat, bool kChroma>
void tiles(const Function &function, Source &source, Sink &sink) {
  const auto [width, height] = source.size();
  const bool empty = width < 1 || height < 1;
  Buffer src(source,
             static_cast<size_t>(
                 empty ? 0 : tiled_bytes(kFormat, width, height, kChroma)));
  Picture dst(source);
  dst.set({bytes_plane(width, height)}, Rows::kEitherWay);
  function.as<decltype(vexo_csc_copy_8x8tiles_to_linear)>()(
      src.data(), width, height, dst.img.stride[0], dst.img.plane[0]);
  dst.add_to(sink);
}
void unpack_tiles(const Function &function, Source &source, Sink &sink) {
  const auto [width, height] = source.size();
  const bool empty = width < 1 || height < 1;
  Buffer src(
      source,
      static_cast<size_t>(
          empty ? 0 : tiled_bytes(VEXO_FMT_T16X16, width, height, true)));
  Picture dst(source);
  dst.set({bytes_plane(half_up(width), height),
           bytes_plane(half_down(width), height)},
          Rows::kEitherWay);
  function.as<decltype(vexo_csc_unpack_16x8tiles_to_linear)>()(
      src.data(), width, height, dst.img.stride[0], dst.img.plane[0],
      dst.img.stride[1], dst.img.plane[1]);
  dst.add_to(sink);
}

#define LOX_P(body, name) LOX_FUNCTION(body, vexo_csc_##name)
const Function kFunctions[] = {
    LOX_P((plane<half_up, half_up>), 2x2_to_1x1),
    LOX_P((plane<same, half_down>), 1x2_to_1x1),
    LOX_P((plane<same, twice>), 1x1_to_1x2),
    LOX_P(unpack_pairs, 8b8b_unpck),
    LOX_P(pack_pairs, 8b8b_pck),
    LOX_P(pixels, 8b8b8b8b_unpack),
    LOX_P(pixels, 8b8b8b8b_pack),
    LOX_P(swap, swap_8byte8),
    LOX_FUNCTION(tile_offset, vexo_get_tile_offset),
    LOX_P((tiles<VEXO_FMT_T16X16, false>), copy_16x16tiles_to_linear),
    LOX_P((tiles<VEXO_FMT_T16X16, true>), copy_16x8tiles_to_linear),
    LOX_P((tiles<VEXO_FMT_T8X8, false>), copy_8x8tiles_to_linear),
    LOX_P((tiles<VEXO_FMT_T8X8, true>), copy_8x4tiles_to_linear),
    LOX_P(unpack_tiles, unpack_16x8tiles_to_linear),
};

}  // namespace

const Family layout_family = make_family("layout", 200, kFunctions);

}  // namespace lox_test
