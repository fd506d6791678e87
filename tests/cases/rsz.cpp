// SPDX-License-Identifier: Apache-2.0
// Scaling, with a turn and without: kernels, plane scalers, entry points.
#include <orumlox/rot.h>
#include <orumlox/rsz.h>

#include <algorithm>
#include <string_view>
#include <utility>

#include "cases/by_rows.h"
#include "cases/cases.h"

namespace lox_test {
namespace {

bool has(std::string_view text, const char *word) {
  return text.find(word) != std::string_view::npos;
}

// Bytes of a sample, and which way rows of them go.
int unit_of(std::string_view name) {
  const char *const types[] = {"8b8b8b8b", "8b8b8b", "16b16b", "5b6b5b",
                               "16b",      "8b8b",   "8b"};
  constexpr int kUnits[] = {4, 3, 4, 2, 2, 2, 1};
  int i = 0;
  while (!has(name, types[i])) ++i;
  return kUnits[i];
}
Rows rows_of(std::string_view name) {
  return has(name, "16b") || has(name, "5b6b5b") ? Rows::kEven
                                                 : Rows::kEitherWay;
}

// What a side may be scaled to: near, by whole numbers, far; small ones by more
// than the weights of 64ths are made for.
int32_t smaller_side(Source &source, int32_t side) {
  return source.one_in(2) ? std::max(side / source.between(2, 9), 1)
                          : source.between(1, side - 1);
}
int32_t larger_side(Source &source, int32_t side) {
  const int32_t kind = source.between(0, 3);
  return kind == 0   ? side * source.between(1, side < 8 ? 70 : 5)
         : kind == 1 ? side + source.between(0, source.one_in(8) ? 400 : 40)
                     : side + source.between(0, side);
}
int32_t other_side(Source &source, int32_t side) {
  constexpr int32_t kLarge = 1000;
  if (side < 1 || side > kLarge || source.one_in(8)) return source.width();
  return side > 1 && source.one_in(2) ? smaller_side(source, side)
                                      : larger_side(source, side);
}
int32_t side_above_1(Source &source) {
  return source.one_in(16) ? source.between(65, 400) : source.between(2, 64);
}

// A kernel of its role: both ways at once, across or down.
void kernel(const Function &function, Source &source, Sink &sink) {
  const std::string_view name = function.name;
  const bool whole = has(name, "_down_mult");
  const bool both = whole || has(name, "_non_mult");
  const bool down = has(name, "_down_h") || has(name, "_up_h");
  const bool grows = has(name, "_up");
  const bool quarter = has(name, "_90");

  int32_t width = side_above_1(source);
  int32_t height = source.between(2, 40);
  int32_t new_width =
      grows ? larger_side(source, width) : smaller_side(source, width);
  int32_t new_height =
      grows ? larger_side(source, height) : smaller_side(source, height);
  if (whole) {
    width = new_width * source.between(2, 7);
    height = new_height * source.between(2, 5);
  }
  // What comes in and goes out before a turn; sizes that are not read.
  const int unit = unit_of(name);
  const ExactImage in = {exact_plane(down ? new_width : width, height, unit)};
  const ExactImage out = {
      exact_plane(new_width, both || down ? new_height : height, unit)};
  if (down) width = source.between(1, 9);
  if (!both && !down) new_height = source.between(1, 9);
  Picture src(source);
  Picture dst(source);
  src.set(in, rows_of(name));
  dst.set(quarter && (both || down) ? turned(out) : out, rows_of(name));
  if (quarter) std::swap(new_width, new_height);
  if (source.one_in(16)) {
    int32_t *const sides[] = {&width, &height, &new_width, &new_height};
    *source.one_of(sides) = source.between(-1, 0);
  }
  function.as<vexo_rsz_kernel>()(src.img.plane[0], width, height, new_width,
                                 new_height, dst.img.plane[0],
                                 src.img.stride[0], dst.img.stride[0]);
  dst.add_to(sink);
}

void scaler(const Function &function, Source &source, Sink &sink) {
  const std::string_view name = function.name;
  const int unit = unit_of(name);
  const auto [width, height] = source.size();
  const int32_t new_width = other_side(source, width);
  const int32_t new_height = other_side(source, height);
  const ExactImage out = {exact_plane(new_width, new_height, unit)};
  Picture src(source);
  Picture dst(source);
  src.set({exact_plane(width, height, unit)}, rows_of(name));
  dst.set(has(name, "_90") ? turned(out) : out, rows_of(name));
  const bool unused = (new_width < width && new_height < height) ||
                      has(name, "16b") || width < 1 || height < 1;
  const int64_t row = std::max<int64_t>(out[0].row_bytes, 0);
  Buffer scratch(source,
                 static_cast<size_t>(unused ? 0 : row * (height > 1 ? 2 : 1)));
  const bool quarter = has(name, "_90");
  const int32_t status = function.as<vexo_rsz_scaler>()(
      src.img.plane[0], width, height, quarter ? new_height : new_width,
      quarter ? new_width : new_height, dst.img.plane[0], scratch.data(),
      src.img.stride[0], dst.img.stride[0],
      source.one_in(2) ? VEXO_MODE_MOD1 : source.any());
  sink.add(static_cast<uint32_t>(status));
  dst.add_to(sink);
}

void picture(const Function &function, Source &source, Sink &sink) {
  const bool turns = has(function.name, "_rot");
  const int32_t format = source.format();
  const auto [width, height] = source.size();
  const bool same = source.one_in(8);
  const auto rotation = static_cast<uint32_t>(source.between(0, 6));
  const bool quarter =
      turns && (rotation == VEXO_ROT_90L || rotation == VEXO_ROT_90R);
  const ExactImage in = planes_by_code(source, format, width, height);
  const int32_t new_width = same ? width : other_side(source, width);
  const int32_t new_height = same ? height : other_side(source, height);
  // Equal sizes of plane 0 are a copy, whatever the other planes' sizes.
  ExactImage out = new_width == width && new_height == height
                       ? in
                       : planes_by_code(source, format, new_width, new_height);
  if (quarter) out = turned(out);
  Picture src(source);
  Picture dst(source);
  src.set(in);
  dst.set(out);
  src.img.format = dst.img.format = format;
  if (source.one_in(16)) dst.img.format = source.format();
  dst.img.mode = source.one_in(2) ? VEXO_MODE_MOD1 : 0;
  const auto some = [&](int32_t y0, int32_t y1) {
    return function.as<decltype(vexo_rsz_rows)>()(&src.img, &dst.img, y0, y1);
  };
  const int32_t status =
      turns
          ? function.as<decltype(vexo_rsz_rot)>()(&src.img, rotation, &dst.img)
      : takes_rows(function)
          ? by_rows(&dst, dst.img.height[0], dst.img.format, some)
          : function.as<decltype(vexo_rsz)>()(&src.img, &dst.img);
  sink.add(static_cast<uint32_t>(status));
  dst.add_to(sink);
}

// A walk over samples: how many of them it comes to, the neighbour that the
// last has a weight for included.
struct Walk {
  uint32_t word;
  int32_t count;
};
Walk walk(Source &source, int32_t outputs, int32_t log_distance) {
  const auto step = static_cast<uint32_t>(source.between(0, 5 << 18));
  const uint32_t last = step * static_cast<uint32_t>(outputs - 1);
  const int32_t samples =
      static_cast<int32_t>(last >> 18) + ((last >> 15 & 7) != 0 ? 2 : 1);
  return {step << 3 | static_cast<uint32_t>(log_distance),
          ((samples - 1) << log_distance) + 1};
}
void bilinear(const Function &function, Source &source, Sink &sink) {
  const int32_t width = source.between(1, 64);
  const int32_t height = source.between(1, 16);
  const Walk across = walk(source, width, source.between(0, 2));
  const Walk down = walk(source, height, source.between(0, 1));
  Picture src(source);
  Picture dst(source);
  src.set({exact_plane(across.count, down.count, 1)}, Rows::kEitherWay);
  dst.set({exact_plane(width, height, 1)}, Rows::kEitherWay);
  const bool narrow = source.one_in(32);
  const bool flat = source.one_in(32);
  function.as<decltype(vexo_rsz_8b_org)>()(
      src.img.plane[0], src.img.stride[0], narrow ? 0 : width,
      flat ? -1 : height, dst.img.stride[0], dst.img.plane[0], across.word,
      down.word);
  dst.add_to(sink);
}

const Function kFunctions[] = {
    LOX_FUNCTION(picture, vexo_rsz),
    LOX_FUNCTION(picture, vexo_rsz_rows),
    LOX_FUNCTION(picture, vexo_rsz_rot),
    LOX_FUNCTION(bilinear, vexo_rsz_8b_org),
#define KERNEL(name) LOX_FUNCTION(scaler, name),
#include "vexo_rsz_scaler.inc"
#undef KERNEL
#define KERNEL(name) LOX_FUNCTION(kernel, name),
#include "vexo_rsz_kernel.inc"
};

}  // namespace

const Family rsz_family = make_family("rsz", 60, kFunctions);

}  // namespace lox_test
