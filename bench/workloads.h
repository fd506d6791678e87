// SPDX-License-Identifier: Apache-2.0
//
// What is measured, on the host and in the ARM guest alike, and how this
// library does it.
#pragma once

#include <functional>
#include <iterator>

#include "orumlox/media_type.h"
#include "picture.h"

namespace bench {

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
inline constexpr Ratio kHdrSizes = {kEqual.large, {{3840, 2160}, {3840, 2160}}};
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

// Reductions are large only.
constexpr Ratio from_1080p(int32_t width, int32_t height) {
  return {{}, {{1920, 1080}, {width, height}}};
}

enum class Task {
  // Between equal formats a plane copy, of which a pixel is a byte.
  kConvert,
  kScale,
  // A quarter turn to the left after scaling.
  kScaleAndTurn,
  kTurn,
  kSharpen,
  // In place: it is the source that is worked on.
  kDeblock,
  // Scaled down in the domain of the cosine transform, from a plan that stands.
  kReduce,
  // Such a plan made and released.
  kPlan,
  kToneMap,
  // What every tone mapping builds first.
  kContext,
  // 1 MiB of bit fields.
  kReadBits,
  // 1 MiB scanned for a key frame to its end.
  kFindKey
};

// Of kReadBits a length from 1 to 32, or one of these.
enum Fields : int32_t {
  // 1 to 32 bits, from a list.
  kRandom = 0,
  kRandomLsbFirst = -1,
  // By the call for a single bit.
  kSingle = -2
};

struct Workload {
  const char *id;
  Task task;
  int32_t src_format = 0, dst_format = 0;
  Ratio ratio = kEqual;
  // By task: the colour standard, the destination's mode, the rotation, the
  // pre-scale factor, the kind of HDR, the Fields or the media type.
  int32_t option = 0;

  bool is_quarter_turn() const {
    return task == Task::kScaleAndTurn ||
           (task == Task::kTurn &&
            (option == VEXO_ROT_90L || option == VEXO_ROT_90R));
  }
  // Scaling turns to the left.
  uint32_t rotation() const {
    return static_cast<uint32_t>(task == Task::kTurn ? option
                                                     : int32_t{VEXO_ROT_90L});
  }
  bool is_media() const { return task >= Task::kReadBits; }
  bool is_setup() const {
    return task == Task::kPlan || task == Task::kContext;
  }
  // Of conversions: only the places of the samples change.
  bool is_layout() const {
    return task == Task::kConvert && src_format < VEXO_FMT_UYVY &&
           dst_format < VEXO_FMT_UYVY;
  }
  Picture picture() const {
    return task == Task::kToneMap                             ? Picture::kHdr
           : task == Task::kSharpen || task == Task::kDeblock ? Picture::kBlocks
           : src_format >= VEXO_FMT_RGB565 ? Picture::kRgbWaves
                                           : Picture::kYuvWaves;
  }
};

constexpr Workload scale(const char *id, int32_t format, const Ratio &ratio,
                         int32_t mode = 0) {
  return {id, Task::kScale, format, format, ratio, mode};
}
constexpr Workload turn(const char *id, int32_t format, int32_t rotation) {
  return {id, Task::kTurn, format, format, kEqual, rotation};
}
constexpr Workload both(const char *id, int32_t format, const Ratio &ratio) {
  return {id, Task::kScaleAndTurn, format, format, ratio};
}
constexpr Workload reduce(const char *id, int32_t format, const Ratio &ratio,
                          int32_t prescale = 0) {
  return {id, Task::kReduce, format, format, ratio, prescale};
}
constexpr Workload tone_map(const char *id, int32_t src_format,
                            int32_t dst_format, int32_t kind = VEXO_HDR_HDR10) {
  return {id, Task::kToneMap, src_format, dst_format, kHdrSizes, kind};
}
constexpr Workload bits(const char *id, int32_t fields) {
  return {id, Task::kReadBits, 0, 0, kEqual, fields};
}
constexpr Workload scan(const char *id, int32_t type) {
  return {id, Task::kFindKey, 0, 0, kEqual, type};
}

inline constexpr Workload kWorkloads[] = {
    {"nv12_rgba8888", Task::kConvert, VEXO_FMT_NV12, VEXO_FMT_RGBA8888},
    {"yuv420_rgba8888", Task::kConvert, VEXO_FMT_YUV420, VEXO_FMT_RGBA8888},
    {"yuv420_rgb565", Task::kConvert, VEXO_FMT_YUV420, VEXO_FMT_RGB565},
    {"nv21_rgb888", Task::kConvert, VEXO_FMT_NV21, VEXO_FMT_RGB888},
    {"yuyv_rgba8888", Task::kConvert, VEXO_FMT_YUYV, VEXO_FMT_RGBA8888},
    {"yuv420_rgba8888_bt709", Task::kConvert, VEXO_FMT_YUV420,
     VEXO_FMT_RGBA8888, kEqual, VEXO_STD_BT709},
    {"yuv420_rgba8888_bt601fr", Task::kConvert, VEXO_FMT_YUV420,
     VEXO_FMT_RGBA8888, kEqual, VEXO_STD_BT601_FULL},
    {"rgba8888_nv12", Task::kConvert, VEXO_FMT_RGBA8888, VEXO_FMT_NV12},
    {"rgba8888_yuv420", Task::kConvert, VEXO_FMT_RGBA8888, VEXO_FMT_YUV420},
    {"rgb565_nv12", Task::kConvert, VEXO_FMT_RGB565, VEXO_FMT_NV12},
    {"yuv420_nv12", Task::kConvert, VEXO_FMT_YUV420, VEXO_FMT_NV12},
    {"nv12_yuv420", Task::kConvert, VEXO_FMT_NV12, VEXO_FMT_YUV420},
    {"nv12_nv21", Task::kConvert, VEXO_FMT_NV12, VEXO_FMT_NV21},
    {"t64x32_nv12", Task::kConvert, VEXO_FMT_T64X32, VEXO_FMT_NV12},
    {"copy_8b", Task::kConvert, VEXO_FMT_YUV400, VEXO_FMT_YUV400},
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
    both("grey_2to1_90l", VEXO_FMT_YUV400, k2To1),
    both("grey_3to2_90l", VEXO_FMT_YUV400, k3To2),
    both("nv12_2to1_90l", VEXO_FMT_NV12, k2To1),
    both("nv12_3to2_90l", VEXO_FMT_NV12, k3To2),
    {"vqe_sharpen", Task::kSharpen, VEXO_FMT_YUV400, VEXO_FMT_YUV400},
    {"vqe_deblock", Task::kDeblock, VEXO_FMT_YUV420, VEXO_FMT_YUV420},
    reduce("dct_nv12_480x270", VEXO_FMT_NV12, from_1080p(480, 270)),
    reduce("dct_nv12_480x270_by_2", VEXO_FMT_NV12, from_1080p(480, 270), 2),
    reduce("dct_nv12_480x270_by_4", VEXO_FMT_NV12, from_1080p(480, 270), 4),
    reduce("dct_nv12_400x224_by_2", VEXO_FMT_NV12, from_1080p(400, 224), 2),
    reduce("dct_nv12_400x224_by_4", VEXO_FMT_NV12, from_1080p(400, 224), 4),
    reduce("dct_nv12_800x450", VEXO_FMT_NV12, from_1080p(800, 450)),
    reduce("dct_nv12_160x90", VEXO_FMT_NV12, from_1080p(160, 90)),
    reduce("dct_rgba8888_480x270", VEXO_FMT_RGBA8888, from_1080p(480, 270)),
    {"dct_setup", Task::kPlan, VEXO_FMT_NV12, VEXO_FMT_NV12,
     from_1080p(480, 270)},
    tone_map("hdr_p010_nv12", VEXO_FMT_P010LE, VEXO_FMT_NV12),
    tone_map("hdr_p010_rgba8888", VEXO_FMT_P010LE, VEXO_FMT_RGBA8888),
    tone_map("hdr_p010_yuv420", VEXO_FMT_P010LE, VEXO_FMT_YUV420),
    tone_map("hdr_p010_rgb888", VEXO_FMT_P010LE, VEXO_FMT_RGB888),
    tone_map("hdr_planar16_nv12", VEXO_FMT_YUV420PLANAR16, VEXO_FMT_NV12),
    tone_map("hdr_hlg_nv12", VEXO_FMT_P010LE, VEXO_FMT_NV12, VEXO_HDR_HLG),
    {"hdr_context", Task::kContext, VEXO_FMT_P010LE, VEXO_FMT_NV12, kHdrSizes,
     VEXO_HDR_HDR10},
    bits("media_bits", kRandom),
    bits("media_bits_lsb", kRandomLsbFirst),
    bits("media_bits_read1", kSingle),
    bits("media_bits_1", 1),
    bits("media_bits_8", 8),
    bits("media_bits_13", 13),
    bits("media_bits_32", 32),
    scan("media_keyframe_h264", MLOX_MT_VIDEO_H264),
    scan("media_keyframe_hevc", MLOX_MT_VIDEO_HEVC),
    scan("media_keyframe_mpeg4", MLOX_MT_VIDEO_MPEG4),
    scan("media_keyframe_h263", MLOX_MT_VIDEO_H263),
};

// The sizes of a workload, its destination's as they are after the turn.
Sizes sizes_of(const Workload &workload, bool large);

// What is counted: pixels of the destination, or bit fields, bytes scanned or
// set-ups.
double units_of(const Workload &workload, const Sizes &sizes);

// The frames, or with another format those of a peer.
vexo_img describe_src(const Workload &workload, const Sizes &sizes,
                      uint8_t *bytes, int32_t format = -1);
vexo_img describe_dst(const Workload &workload, const Sizes &sizes,
                      uint8_t *bytes, int32_t format = -1);

// What a source and a destination take, whoever reads or writes them.
size_t src_room(const Workload &workload, const Sizes &sizes);
size_t dst_room(const Workload &workload, const Sizes &sizes);

// The source, with what the work depends on: a picture, random bits, or a frame
// that has a key frame at its end or none.
void fill_src(const Workload &workload, const Sizes &sizes, uint8_t *bytes,
              int32_t format = -1, bool with_key = false);

using Run = std::function<void(uint8_t *src, uint8_t *dst)>;

enum class Way {
  // As an application calls it.
  kCall,
  // By the parts of the call: scaling and then turning, RGBA8888 reduced or a
  // frame tone mapped on the calling thread.
  kParts,
  // As by parts, but what stands between frames is not made again.
  kPrepared
};

// One frame by this library. Ends the program when a call fails.
Run own_work(const Workload &workload, const Sizes &sizes,
             Way way = Way::kCall);

// Whether a reduction's call starts threads.
bool has_workers(const Workload &workload);

}  // namespace bench
