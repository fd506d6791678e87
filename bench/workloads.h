// SPDX-License-Identifier: Apache-2.0
//
// The workloads that are measured, on the host and in the ARM guest alike, and
// how a frame of one lies in memory: all planes in one block, which every peer
// can be given as well. Only tiles, which are whole, have padding.
#pragma once

#include <cstddef>
#include <cstdint>

#include "orumlox/orumlox.h"

namespace bench {

struct Workload {
  const char *id;
  // Equal for the plane copy, of which a pixel is a byte.
  int32_t src_format;
  int32_t dst_format;
  // One of VEXO_STD_, of both sides.
  int32_t color_std = VEXO_STD_DEFAULT;

  bool is_copy() const { return src_format == dst_format; }
  // Only the places of the samples change.
  bool keeps_samples() const {
    return src_format < VEXO_FMT_UYVY && dst_format < VEXO_FMT_UYVY;
  }
};

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
};

// Bytes of a frame of a format that a workload has; width and height even.
size_t frame_bytes(int32_t format, int32_t width, int32_t height);

// Those of them that belong to the picture.
size_t picture_bytes(int32_t format, int32_t width, int32_t height);

vexo_img describe(int32_t format, int32_t width, int32_t height,
                  uint8_t *bytes);

// One frame through the library's entry point, as an application calls it.
int32_t run_library(const Workload &workload, int32_t width, int32_t height,
                    uint8_t *src, uint8_t *dst);

// Bytes from 16 to 235, no two neighbours related: a picture in any layout.
void fill_noise(uint8_t *bytes, size_t size);

}  // namespace bench
