// SPDX-License-Identifier: Apache-2.0
//
// The table of formats: names and planes.
#include "picture/formats.h"

#include <cstring>

namespace lox {

namespace {

constexpr PlaneRule k8{1, 0, 0, 1, 1};
constexpr PlaneRule k8HalfWidth{1, 1, 0, 1, 1};
constexpr PlaneRule k8HalfHeight{1, 0, 1, 1, 1};
constexpr PlaneRule k8HalfBoth{1, 1, 1, 1, 1};
constexpr PlaneRule k8Pairs{2, 1, 1, 1, 1};
constexpr PlaneRule k16{2, 0, 0, 1, 1};
constexpr PlaneRule k16HalfBoth{2, 1, 1, 1, 1};
constexpr PlaneRule k16Pairs{4, 1, 1, 1, 1};
constexpr PlaneRule kPixelPairs{2, 0, 0, 1, 4};
constexpr PlaneRule k24{3, 0, 0, 1, 1};
constexpr PlaneRule k32{4, 0, 0, 1, 1};
constexpr PlaneRule k64{8, 0, 0, 1, 1};

// 64 x 32 tiles are grouped by two columns, hence 128; a last tile row without
// a partner fills half a row of groups, hence 32.
constexpr PlaneRule tile_luma(uint16_t width, uint8_t rows) {
  return {1, 0, 0, rows, width};
}
constexpr PlaneRule tile_chroma(uint16_t width, uint8_t rows) {
  return {2, 1, 1, rows, width};
}

char lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool same_name(const char *a, const char *b) {
  while (*a != '\0' && lower(*a) == lower(*b)) ++a, ++b;
  return *a == *b;
}

}  // namespace

constexpr Format kFormatTable[kFormats] = {
    {VEXO_FMT_YUV400, "yuv400", {"gray", "grey", "y800"}, 1, {k8}},
    {VEXO_FMT_YUV420,
     "yuv420",
     {"yuv420p", "i420", "iyuv"},
     3,
     {k8, k8HalfBoth, k8HalfBoth}},
    {VEXO_FMT_YUV422N,
     "yuv422n",
     {"yuv422p", "i422"},
     3,
     {k8, k8HalfWidth, k8HalfWidth}},
    {VEXO_FMT_YUV444, "yuv444", {"yuv444p", "i444"}, 3, {k8, k8, k8}},
    {VEXO_FMT_YV12, "yv12", {}, 3, {k8, k8HalfBoth, k8HalfBoth}},
    {VEXO_FMT_YV16, "yv16", {}, 3, {k8, k8HalfWidth, k8HalfWidth}},
    {VEXO_FMT_NV12, "nv12", {}, 2, {k8, k8Pairs}},
    {VEXO_FMT_NV21, "nv21", {}, 2, {k8, k8Pairs}},
    {VEXO_FMT_YUV422W,
     "yuv422w",
     {"yuv440p"},
     3,
     {k8, k8HalfHeight, k8HalfHeight}},
    {VEXO_FMT_T64X32,
     "t64x32",
     {},
     2,
     {tile_luma(128, 32), tile_chroma(128, 32)}},
    {VEXO_FMT_T16X16, "t16x16", {}, 2, {tile_luma(16, 16), tile_chroma(16, 8)}},
    {VEXO_FMT_T8X8, "t8x8", {}, 2, {tile_luma(8, 8), tile_chroma(8, 4)}},
    {VEXO_FMT_T256X16,
     "t256x16",
     {},
     2,
     {tile_luma(256, 16), tile_chroma(256, 8)}},
    {VEXO_FMT_UYVY, "uyvy", {"uyvy422"}, 1, {kPixelPairs}},
    {VEXO_FMT_YUYV, "yuyv", {"yuyv422", "yuy2"}, 1, {kPixelPairs}},
    {VEXO_FMT_RGB565, "rgb565", {"rgb565le"}, 1, {k16}},
    {VEXO_FMT_BGR565, "bgr565", {"bgr565le"}, 1, {k16}},
    {VEXO_FMT_RGB888, "rgb888", {"rgb24"}, 1, {k24}},
    {VEXO_FMT_BGR888, "bgr888", {"bgr24"}, 1, {k24}},
    {VEXO_FMT_RGBA8888, "rgba8888", {"rgba"}, 1, {k32}},
    {VEXO_FMT_BGRA8888, "bgra8888", {"bgra"}, 1, {k32}},
    {VEXO_FMT_ARGB8888, "argb8888", {"argb"}, 1, {k32}},
    {VEXO_FMT_ABGR8888, "abgr8888", {"abgr"}, 1, {k32}},
    {VEXO_FMT_YUV420PLANAR16,
     "yuv420Planar16",
     {"yuv420p10le"},
     3,
     {k16, k16HalfBoth, k16HalfBoth}},
    {VEXO_FMT_P010LE, "p010le", {"p010"}, 2, {k16, k16Pairs}},
    {VEXO_FMT_RGBA1010102, "rgba1010102", {"x2bgr10le"}, 1, {k32}},
    {VEXO_FMT_RGBAF16, "rgbaf16", {"rgbaf16le"}, 1, {k64}},
};

namespace {

// By code the place in the table, counted from 1: a search for a way asks
// thousands of times.
constexpr int32_t kCodes = VEXO_FMT_RGBAF16 + 1;
struct FormatIndex {
  uint8_t place[kCodes];
};
constexpr FormatIndex kIndex = [] {
  FormatIndex index = {};
  uint8_t place = 0;
  for (const Format &format : kFormatTable) index.place[format.code] = ++place;
  return index;
}();

}  // namespace

const Format *find_format(int32_t code) {
  const int place = code < 0 || code >= kCodes ? 0 : kIndex.place[code];
  return place == 0 ? nullptr : &kFormatTable[place - 1];
}

}  // namespace lox

using lox::Format;

extern "C" {

const char *vexo_status_name(int32_t status) {
  switch (status) {
    case VEXO_OK:
      return "ok";
    case VEXO_ERR_ARG:
      return "bad argument";
    case VEXO_ERR_MEMORY:
      return "out of memory";
    case VEXO_ERR_UNSUPPORTED:
      return "unsupported";
    default:
      return "unknown status";
  }
}

const char *vexo_format_name(int32_t format) {
  const Format *const found = lox::find_format(format);
  return found == nullptr ? nullptr : found->name;
}

int32_t vexo_format_of_name(const char *name) {
  if (name == nullptr) return -1;
  for (const Format &format : lox::kFormatTable) {
    if (lox::same_name(name, format.name)) return format.code;
    for (const char *const other : format.others) {
      if (other != nullptr && lox::same_name(name, other)) return format.code;
    }
  }
  return -1;
}

int32_t vexo_format_next(int32_t format) {
  for (const Format &entry : lox::kFormatTable) {
    if (entry.code > format) return entry.code;
  }
  return -1;
}

int32_t vexo_format_planes(int32_t format) {
  const Format *const found = lox::find_format(format);
  return found == nullptr ? 0 : found->planes;
}

int32_t vexo_format_sample_bytes(int32_t format, int32_t plane) {
  const Format *const found = lox::find_format(format);
  if (found == nullptr || plane < 0 || plane >= found->planes) return 0;
  return found->plane[plane].unit;
}

}  // extern "C"
