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

enum Task {
  // Between equal formats a plane copy, of which a pixel is a byte.
  kConvert,
  // The same with interpolated chroma.
  kInterpolate,
  kDither,
  kScale,
  // By Lanczos filters of three lobes.
  kFilter,
  // A quarter turn to the left after scaling.
  kScaleAndTurn,
  kScaleAndConvert,
  kConvertAndTurn,
  // A camera's frame to RGB, turned.
  kCamera,
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
    const bool turns =
        task == kTurn || task == kConvertAndTurn || task == kCamera;
    return task == kScaleAndTurn ||
           (turns && (option == VEXO_ROT_90L || option == VEXO_ROT_90R));
  }
  // Scaling turns to the left.
  uint32_t rotation() const {
    return static_cast<uint32_t>(task == kScaleAndTurn ? int32_t{VEXO_ROT_90L}
                                                       : option);
  }
  // Two steps in one call.
  bool is_fused() const {
    return task >= kScaleAndTurn && task <= kConvertAndTurn;
  }
  bool is_media() const { return task >= kReadBits; }
  bool is_setup() const { return task == kPlan || task == kContext; }
  // Of conversions: only the places of the samples change.
  bool is_layout() const {
    return task == kConvert && src_format < VEXO_FMT_UYVY &&
           dst_format < VEXO_FMT_UYVY;
  }
  Picture picture() const {
    return src_format >= VEXO_FMT_YUV420PLANAR16  ? Picture::kHdr
           : task == kSharpen || task == kDeblock ? Picture::kBlocks
           : src_format >= VEXO_FMT_RGB565        ? Picture::kRgbWaves
                                                  : Picture::kYuvWaves;
  }
};

inline constexpr int32_t kGrey = VEXO_FMT_YUV400, kI420 = VEXO_FMT_YUV420,
                         kNv12 = VEXO_FMT_NV12, kNv21 = VEXO_FMT_NV21,
                         k565 = VEXO_FMT_RGB565, kRgb = VEXO_FMT_RGB888,
                         kRgba = VEXO_FMT_RGBA8888, kP010 = VEXO_FMT_P010LE,
                         kI010 = VEXO_FMT_YUV420PLANAR16;

inline constexpr Workload kWorkloads[] = {
    {"nv12_rgba8888", kConvert, kNv12, kRgba},
    {"yuv420_rgba8888", kConvert, kI420, kRgba},
    {"yuv420_rgb565", kConvert, kI420, k565},
    {"yuv420_rgb565_dither", kDither, kI420, k565},
    {"nv21_rgb888", kConvert, kNv21, kRgb},
    {"yuyv_rgba8888", kConvert, VEXO_FMT_YUYV, kRgba},
    {"yuv420_rgba8888_bt709", kConvert, kI420, kRgba, kEqual, VEXO_STD_BT709},
    {"yuv420_rgba8888_bt601fr", kConvert, kI420, kRgba, kEqual,
     VEXO_STD_BT601_FULL},
    {"nv12_rgba8888_new", kInterpolate, kNv12, kRgba},
    {"yuv420_rgba8888_new", kInterpolate, kI420, kRgba},
    {"rgba8888_nv12", kConvert, kRgba, kNv12},
    {"rgba8888_yuv420", kConvert, kRgba, kI420},
    {"rgb565_nv12", kConvert, k565, kNv12},
    {"yuv420_nv12", kConvert, kI420, kNv12},
    {"nv12_yuv420", kConvert, kNv12, kI420},
    {"nv12_nv21", kConvert, kNv12, kNv21},
    {"t64x32_nv12", kConvert, VEXO_FMT_T64X32, kNv12},
    {"copy_8b", kConvert, kGrey, kGrey},
    {"grey_2to1", kScale, kGrey, kGrey, k2To1},
    {"grey_3to2", kScale, kGrey, kGrey, k3To2},
    {"grey_4to1", kScale, kGrey, kGrey, k4To1},
    {"grey_720p_404", kScale, kGrey, kGrey, k720pTo404},
    {"grey_1to2", kScale, kGrey, kGrey, k1To2},
    {"grey_2to3", kScale, kGrey, kGrey, k2To3},
    {"grey_1to3", kScale, kGrey, kGrey, k1To3},
    {"grey_1to2_mode1", kScale, kGrey, kGrey, k1To2, VEXO_MODE_MOD1},
    {"grey_2to3_mode1", kScale, kGrey, kGrey, k2To3, VEXO_MODE_MOD1},
    {"grey_1to3_mode1", kScale, kGrey, kGrey, k1To3, VEXO_MODE_MOD1},
    {"nv12_3to2", kScale, kNv12, kNv12, k3To2},
    {"nv12_2to3", kScale, kNv12, kNv12, k2To3},
    {"rgba8888_3to2", kScale, kRgba, kRgba, k3To2},
    {"rgba8888_2to3", kScale, kRgba, kRgba, k2To3},
    {"rgb888_3to2", kScale, kRgb, kRgb, k3To2},
    {"rgb888_2to3", kScale, kRgb, kRgb, k2To3},
    {"rgb565_3to2", kScale, k565, k565, k3To2},
    {"planar16_2to1", kScale, kI010, kI010, k2To1},
    {"planar16_3to2", kScale, kI010, kI010, k3To2},
    {"planar16_2to3", kScale, kI010, kI010, k2To3},
    {"apex_grey_3to2", kFilter, kGrey, kGrey, k3To2},
    {"apex_grey_4to1", kFilter, kGrey, kGrey, k4To1},
    {"apex_nv12_3to2", kFilter, kNv12, kNv12, k3To2},
    {"apex_nv12_4to1", kFilter, kNv12, kNv12, k4To1},
    {"apex_rgba8888_3to2", kFilter, kRgba, kRgba, k3To2},
    {"apex_rgba8888_4to1", kFilter, kRgba, kRgba, k4To1},
    {"apex_rgb888_3to2", kFilter, kRgb, kRgb, k3To2},
    {"apex_rgb888_4to1", kFilter, kRgb, kRgb, k4To1},
    {"apex_planar16_3to2", kFilter, kI010, kI010, k3To2},
    {"apex_planar16_4to1", kFilter, kI010, kI010, k4To1},
    {"rgba8888_90l", kTurn, kRgba, kRgba, kEqual, VEXO_ROT_90L},
    {"rgba8888_90r", kTurn, kRgba, kRgba, kEqual, VEXO_ROT_90R},
    {"rgba8888_180", kTurn, kRgba, kRgba, kEqual, VEXO_ROT_180},
    {"rgba8888_hori", kTurn, kRgba, kRgba, kEqual, VEXO_ROT_HORI},
    {"rgba8888_vert", kTurn, kRgba, kRgba, kEqual, VEXO_ROT_VERT},
    {"nv12_90r", kTurn, kNv12, kNv12, kEqual, VEXO_ROT_90R},
    {"grey_2to1_90l", kScaleAndTurn, kGrey, kGrey, k2To1},
    {"grey_3to2_90l", kScaleAndTurn, kGrey, kGrey, k3To2},
    {"nv12_2to1_90l", kScaleAndTurn, kNv12, kNv12, k2To1},
    {"nv12_3to2_90l", kScaleAndTurn, kNv12, kNv12, k3To2},
    {"camera_nv12_rgba8888", kCamera, kNv12, kRgba},
    {"camera_nv12_rgba8888_90r", kCamera, kNv12, kRgba, kEqual, VEXO_ROT_90R},
    {"camera_nv12_rgb565_90r", kCamera, kNv12, k565, kEqual, VEXO_ROT_90R},
    {"nv12_rgba8888_3to2", kScaleAndConvert, kNv12, kRgba, k3To2},
    {"nv12_rgba8888_2to3", kScaleAndConvert, kNv12, kRgba, k2To3},
    {"nv12_rgba8888_90r", kConvertAndTurn, kNv12, kRgba, kEqual, VEXO_ROT_90R},
    {"nv12_rgba8888_hori", kConvertAndTurn, kNv12, kRgba, kEqual,
     VEXO_ROT_HORI},
    {"vqe_sharpen", kSharpen, kGrey, kGrey},
    {"vqe_deblock", kDeblock, kI420, kI420},
    {"dct_nv12_480x270", kReduce, kNv12, kNv12, from_1080p(480, 270)},
    {"dct_nv12_480x270_by_2", kReduce, kNv12, kNv12, from_1080p(480, 270), 2},
    {"dct_nv12_480x270_by_4", kReduce, kNv12, kNv12, from_1080p(480, 270), 4},
    {"dct_nv12_400x224_by_2", kReduce, kNv12, kNv12, from_1080p(400, 224), 2},
    {"dct_nv12_400x224_by_4", kReduce, kNv12, kNv12, from_1080p(400, 224), 4},
    {"dct_nv12_800x450", kReduce, kNv12, kNv12, from_1080p(800, 450)},
    {"dct_nv12_160x90", kReduce, kNv12, kNv12, from_1080p(160, 90)},
    {"dct_rgba8888_480x270", kReduce, kRgba, kRgba, from_1080p(480, 270)},
    {"dct_setup", kPlan, kNv12, kNv12, from_1080p(480, 270)},
    {"hdr_p010_nv12", kToneMap, kP010, kNv12, kHdrSizes, VEXO_HDR_HDR10},
    {"hdr_p010_rgba8888", kToneMap, kP010, kRgba, kHdrSizes, VEXO_HDR_HDR10},
    {"hdr_p010_yuv420", kToneMap, kP010, kI420, kHdrSizes, VEXO_HDR_HDR10},
    {"hdr_p010_rgb888", kToneMap, kP010, kRgb, kHdrSizes, VEXO_HDR_HDR10},
    {"hdr_planar16_nv12", kToneMap, VEXO_FMT_YUV420PLANAR16, kNv12, kHdrSizes,
     VEXO_HDR_HDR10},
    {"hdr_hlg_nv12", kToneMap, kP010, kNv12, kHdrSizes, VEXO_HDR_HLG},
    {"hdr_context", kContext, kP010, kNv12, kHdrSizes, VEXO_HDR_HDR10},
    {"media_bits", kReadBits, 0, 0, kEqual, kRandom},
    {"media_bits_lsb", kReadBits, 0, 0, kEqual, kRandomLsbFirst},
    {"media_bits_read1", kReadBits, 0, 0, kEqual, kSingle},
    {"media_bits_1", kReadBits, 0, 0, kEqual, 1},
    {"media_bits_8", kReadBits, 0, 0, kEqual, 8},
    {"media_bits_13", kReadBits, 0, 0, kEqual, 13},
    {"media_bits_32", kReadBits, 0, 0, kEqual, 32},
    {"media_keyframe_h264", kFindKey, 0, 0, kEqual, MLOX_MT_VIDEO_H264},
    {"media_keyframe_hevc", kFindKey, 0, 0, kEqual, MLOX_MT_VIDEO_HEVC},
    {"media_keyframe_mpeg4", kFindKey, 0, 0, kEqual, MLOX_MT_VIDEO_MPEG4},
    {"media_keyframe_h263", kFindKey, 0, 0, kEqual, MLOX_MT_VIDEO_H263},
};

// A workload at its sizes, the destination's as they are after the turn.
struct Job : Workload {
  Sizes sizes;

  Job(const Workload &workload, const Sizes &unturned);

  // What is counted: pixels of the destination, or bit fields, bytes scanned or
  // set-ups.
  double units() const;

  // Of reductions: an exact ratio with a factor takes the means of blocks.
  bool is_means() const {
    return task == kReduce && option > 0 &&
           sizes.src.width % sizes.dst.width == 0 &&
           sizes.src.height % sizes.dst.height == 0;
  }

  // The frames, or with another format those of a peer.
  vexo_img src(uint8_t *bytes, int32_t format = -1) const;
  vexo_img dst(uint8_t *bytes, int32_t format = -1) const;

  // What they take, whoever reads or writes them.
  size_t src_room() const;
  size_t dst_room() const;

  // The source, with what the work depends on: a picture, random bits, or a
  // frame that has a key frame at its end or none.
  void fill_src(uint8_t *bytes, int32_t format = -1,
                bool with_key = false) const;
};

// Of bit fields and scans for key frames.
inline constexpr size_t kMediaBytes = size_t{1} << 20;

// This library's, or a plain one: inlined into the loop, or called as this
// library is.
enum class BitReader { kLibrary, kInlined, kCalled };

// As many as the data has.
size_t count_fields(int32_t fields);

// Reads all of them; the result depends on every value and on their order.
uint32_t read_fields(int32_t fields, BitReader reader, const uint8_t *data);

// The rule of the library's scan, byte by byte, but for extended headers.
int32_t plain_is_key_frame(int32_t type, const uint8_t *data, int32_t length);

// Random bits; of a scan without anything at which it ends, or with a key frame
// as the last bytes.
void fill_media(const Workload &workload, uint8_t *bytes, bool with_key);

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

// Work on two descriptions, which are made anew when the frames are others.
template <typename Work>
Run on_frames(const Job &job, const Work &work, int32_t dst_format = -1) {
  return [=, src = job.src(nullptr), dst = job.dst(nullptr, dst_format)](
             uint8_t *s, uint8_t *d) mutable {
    if (src.plane[0] != s) src = job.src(s);
    if (dst.plane[0] != d) dst = job.dst(d, dst_format);
    work(src, dst);
  };
}

// One frame by this library. Ends the program when a call fails.
Run own_work(const Job &job, Way way = Way::kCall);

}  // namespace bench
