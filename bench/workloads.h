// SPDX-License-Identifier: Apache-2.0
//
// The workloads that are measured, on the host and in the ARM guest alike, and
// how a frame of one lies in memory: all planes in one block, which every peer
// can be given as well. Tiles, which are whole, have padding, and the rows of
// frames that are scaled or turned, which begin at multiples of 64 bytes as
// decoders' do: one peer takes no others.
#pragma once

#include <cstddef>
#include <cstdint>

#include "orumlox/orumlox.h"

namespace bench {

struct Size {
  int32_t width, height;
};

struct Sizes {
  Size src, dst;
};

// A ratio at the sizes it is measured at: one that caches hold, its output near
// 640x360, and one whose larger picture is 1920x1080.
struct Ratio {
  Sizes small, large;
};

inline constexpr Ratio kEqual = {{{640, 360}, {640, 360}},
                                 {{1920, 1080}, {1920, 1080}}};
inline constexpr Ratio k2To1 = {{{1280, 720}, {640, 360}},
                                {{1920, 1080}, {960, 540}}};
inline constexpr Ratio k3To2 = {{{960, 540}, {640, 360}},
                                {{1920, 1080}, {1280, 720}}};
// No larger, or its source would leave the second-level cache.
inline constexpr Ratio k4To1 = {{{1280, 720}, {320, 180}},
                                {{1920, 1080}, {480, 270}}};
inline constexpr Ratio k720pTo404 = {{{1280, 720}, {720, 404}},
                                     {{1920, 1080}, {1080, 606}}};
inline constexpr Ratio k1To2 = {{{320, 180}, {640, 360}},
                                {{960, 540}, {1920, 1080}}};
inline constexpr Ratio k2To3 = {{{428, 240}, {642, 360}},
                                {{1280, 720}, {1920, 1080}}};
inline constexpr Ratio k1To3 = {{{214, 120}, {642, 360}},
                                {{640, 360}, {1920, 1080}}};

enum class Task {
  kConvert,
  kScale,
  kTurn,
  kScaleAndTurn,
  // Of luma.
  kSharpen,
  // Scaled down with regard to every sample, here in the domain of the discrete
  // cosine transform. Large frames only.
  kReduce
};

struct Workload {
  const char *id;
  // Different for a conversion; the plane copy, of which a pixel is a byte, is
  // one between equal formats.
  int32_t src_format;
  int32_t dst_format;
  // One of VEXO_STD_, of both sides.
  int32_t color_std = VEXO_STD_DEFAULT;
  Task task = Task::kConvert;
  Ratio ratio = kEqual;
  // The destination's.
  int32_t mode = 0;
  // One of VEXO_ROT_.
  uint32_t rotation = VEXO_ROT_COPY;
  // Of a reduction.
  int32_t prescale = 0;

  bool is_copy() const {
    return task == Task::kConvert && src_format == dst_format;
  }
  bool is_quarter_turn() const {
    return rotation == VEXO_ROT_90L || rotation == VEXO_ROT_90R;
  }
  // Only the places of the samples change.
  bool keeps_samples() const {
    if (task != Task::kConvert) return task == Task::kTurn;
    return src_format < VEXO_FMT_UYVY && dst_format < VEXO_FMT_UYVY;
  }
};

constexpr Workload scale(const char *id, int32_t format, const Ratio &ratio,
                         int32_t mode = 0) {
  return {id, format, format, VEXO_STD_DEFAULT, Task::kScale, ratio, mode};
}

constexpr Workload turn(const char *id, int32_t format, uint32_t rotation) {
  return {id,          format, format, VEXO_STD_DEFAULT,
          Task::kTurn, kEqual, 0,      rotation};
}

constexpr Workload scale_and_turn(const char *id, int32_t format,
                                  const Ratio &ratio) {
  return {id,    format, format,      VEXO_STD_DEFAULT, Task::kScaleAndTurn,
          ratio, 0,      VEXO_ROT_90L};
}

constexpr Workload reduce(const char *id, int32_t format, const Sizes &sizes,
                          int32_t prescale = 0) {
  return {id,
          format,
          format,
          VEXO_STD_DEFAULT,
          Task::kReduce,
          {sizes, sizes},
          0,
          VEXO_ROT_COPY,
          prescale};
}

inline constexpr Workload kWorkloads[] = {
    {"nv12_rgba8888", VEXO_FMT_NV12, VEXO_FMT_RGBA8888},
    {"yuv420_rgba8888", VEXO_FMT_YUV420, VEXO_FMT_RGBA8888},
    {"yuv420_rgb565", VEXO_FMT_YUV420, VEXO_FMT_RGB565},
    {"nv21_rgb888", VEXO_FMT_NV21, VEXO_FMT_RGB888},
    {"yuyv_rgba8888", VEXO_FMT_YUYV, VEXO_FMT_RGBA8888},
    {"yuv420_rgba8888_bt709", VEXO_FMT_YUV420, VEXO_FMT_RGBA8888,
     VEXO_STD_BT709},
    {"yuv420_rgba8888_bt601fr", VEXO_FMT_YUV420, VEXO_FMT_RGBA8888,
     VEXO_STD_BT601_FULL},
    {"rgba8888_nv12", VEXO_FMT_RGBA8888, VEXO_FMT_NV12},
    {"rgba8888_yuv420", VEXO_FMT_RGBA8888, VEXO_FMT_YUV420},
    {"rgb565_nv12", VEXO_FMT_RGB565, VEXO_FMT_NV12},
    {"yuv420_nv12", VEXO_FMT_YUV420, VEXO_FMT_NV12},
    {"nv12_yuv420", VEXO_FMT_NV12, VEXO_FMT_YUV420},
    {"nv12_nv21", VEXO_FMT_NV12, VEXO_FMT_NV21},
    {"t64x32_nv12", VEXO_FMT_T64X32, VEXO_FMT_NV12},
    {"copy_8b", VEXO_FMT_YUV400, VEXO_FMT_YUV400},
    {"vqe_sharpen", VEXO_FMT_YUV400, VEXO_FMT_YUV400, VEXO_STD_DEFAULT,
     Task::kSharpen},
    scale("grey_2to1", VEXO_FMT_YUV400, k2To1),
    scale("grey_3to2", VEXO_FMT_YUV400, k3To2),
    scale("grey_4to1", VEXO_FMT_YUV400, k4To1),
    scale("grey_720p_404", VEXO_FMT_YUV400, k720pTo404),
    scale("grey_1to2", VEXO_FMT_YUV400, k1To2),
    scale("grey_2to3", VEXO_FMT_YUV400, k2To3),
    scale("grey_1to3", VEXO_FMT_YUV400, k1To3),
    scale("grey_1to2_mode1", VEXO_FMT_YUV400, k1To2, VEXO_MODE_MOD1),
    scale("grey_2to3_mode1", VEXO_FMT_YUV400, k2To3, VEXO_MODE_MOD1),
    scale("grey_1to3_mode1", VEXO_FMT_YUV400, k1To3, VEXO_MODE_MOD1),
    scale("nv12_3to2", VEXO_FMT_NV12, k3To2),
    scale("nv12_2to3", VEXO_FMT_NV12, k2To3),
    scale("rgba8888_3to2", VEXO_FMT_RGBA8888, k3To2),
    scale("rgba8888_2to3", VEXO_FMT_RGBA8888, k2To3),
    scale("rgb888_3to2", VEXO_FMT_RGB888, k3To2),
    scale("rgb888_2to3", VEXO_FMT_RGB888, k2To3),
    scale("rgb565_3to2", VEXO_FMT_RGB565, k3To2),
    turn("rgba8888_90l", VEXO_FMT_RGBA8888, VEXO_ROT_90L),
    turn("rgba8888_90r", VEXO_FMT_RGBA8888, VEXO_ROT_90R),
    turn("rgba8888_180", VEXO_FMT_RGBA8888, VEXO_ROT_180),
    turn("rgba8888_hori", VEXO_FMT_RGBA8888, VEXO_ROT_HORI),
    turn("rgba8888_vert", VEXO_FMT_RGBA8888, VEXO_ROT_VERT),
    turn("nv12_90r", VEXO_FMT_NV12, VEXO_ROT_90R),
    scale_and_turn("grey_2to1_90l", VEXO_FMT_YUV400, k2To1),
    scale_and_turn("grey_3to2_90l", VEXO_FMT_YUV400, k3To2),
    scale_and_turn("nv12_2to1_90l", VEXO_FMT_NV12, k2To1),
    scale_and_turn("nv12_3to2_90l", VEXO_FMT_NV12, k3To2),
    reduce("dct_nv12_480x270", VEXO_FMT_NV12, k4To1.large),
    reduce("dct_nv12_480x270_by_2", VEXO_FMT_NV12, k4To1.large, 2),
    reduce("dct_nv12_480x270_by_4", VEXO_FMT_NV12, k4To1.large, 4),
    reduce("dct_nv12_400x224_by_2", VEXO_FMT_NV12, {{1920, 1080}, {400, 224}},
           2),
    reduce("dct_nv12_400x224_by_4", VEXO_FMT_NV12, {{1920, 1080}, {400, 224}},
           4),
    reduce("dct_nv12_800x450", VEXO_FMT_NV12, {{1920, 1080}, {800, 450}}),
    reduce("dct_nv12_160x90", VEXO_FMT_NV12, {{1920, 1080}, {160, 90}}),
    reduce("dct_rgba8888_480x270", VEXO_FMT_RGBA8888, k4To1.large),
};

// The sizes of a workload, its destination's as they are after the turn.
Sizes sizes_of(const Workload &workload, bool large);

// A frame; of 4:2:0 width and height are even.
vexo_img describe(int32_t format, Size size, uint8_t *bytes,
                  int32_t row_unit = 1);
// Those of a workload.
vexo_img describe_src(const Workload &workload, const Sizes &sizes,
                      uint8_t *bytes);
vexo_img describe_dst(const Workload &workload, const Sizes &sizes,
                      uint8_t *bytes);

int32_t row_bytes(const vexo_img &img, int plane);

// What a frame takes, and how much of that belongs to the picture.
size_t frame_bytes(const vexo_img &img);
size_t picture_bytes(const vexo_img &img);

// What a source and a destination of the workload take, whoever reads or writes
// them.
size_t src_room(const Workload &workload, const Sizes &sizes);
size_t dst_room(const Workload &workload, const Sizes &sizes);

// One frame through the library's entry point, as an application calls it; of a
// reduction, which wants a plan, dct_plan.h has that.
int32_t run_library(const Workload &workload, const Sizes &sizes, uint8_t *src,
                    uint8_t *dst);

// Bytes from 16 to 235, no two neighbours related: a picture in any layout.
void fill_noise(uint8_t *bytes, size_t size);

}  // namespace bench
