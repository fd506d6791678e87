// SPDX-License-Identifier: Apache-2.0
//
// libyuv. It names a pixel by its word, so R, G, B, A in memory is its "ABGR"
// and R, G, B its "RAW".
#include <libyuv.h>
#include <libyuv/scale_rgb.h>

#include <tuple>
#include <utility>

#include "contender.h"

namespace bench {
namespace {

using libyuv::FilterMode;
using libyuv::RotationMode;
using Img = const vexo_img &;
using Scratch = std::shared_ptr<std::vector<uint8_t>>;

// Calls a converter with its planes and strides and the size.
template <auto convert, size_t... s, size_t... d>
void call(Img src, Img dst, std::index_sequence<s...>,
          std::index_sequence<d...>) {
  std::apply(convert, std::tuple_cat(std::tuple(src.plane[s], src.stride[s])...,
                                     std::tuple(dst.plane[d], dst.stride[d])...,
                                     std::tuple(src.width[0], src.height[0])));
}
template <auto convert, size_t src_planes, size_t dst_planes>
void call(Img src, Img dst) {
  call<convert>(src, dst, std::make_index_sequence<src_planes>(),
                std::make_index_sequence<dst_planes>());
}

constexpr struct {
  const char *id;
  void (*convert)(Img src, Img dst);
  // Where there is not the very converter: R and B exchanged, or U and V in
  // planes, which is the same work.
  int32_t dst_format = -1;
} kConverters[] = {
    {"nv12_rgba8888", call<libyuv::NV12ToABGR, 2, 1>},
    {"yuv420_rgba8888", call<libyuv::I420ToABGR, 3, 1>},
    {"yuv420_rgba8888_bt709", call<libyuv::H420ToABGR, 3, 1>},
    {"yuv420_rgba8888_bt601fr", call<libyuv::J420ToABGR, 3, 1>},
    {"yuv420_rgb565", call<libyuv::I420ToRGB565, 3, 1>},
    {"nv21_rgb888", call<libyuv::NV21ToRAW, 2, 1>},
    {"yuyv_rgba8888", call<libyuv::YUY2ToARGB, 1, 1>, VEXO_FMT_BGRA8888},
    {"rgba8888_nv12", call<libyuv::ABGRToNV12, 1, 2>},
    {"rgba8888_yuv420", call<libyuv::ABGRToI420, 1, 3>},
    {"rgb565_nv12", call<libyuv::RGB565ToI420, 1, 3>, VEXO_FMT_YUV420},
    {"yuv420_nv12", call<libyuv::I420ToNV12, 3, 2>},
    {"nv12_yuv420", call<libyuv::NV12ToI420, 2, 3>},
    // The exchange is the same in both directions.
    {"nv12_nv21", call<libyuv::NV21ToNV12, 2, 2>},
    {"copy_8b", call<libyuv::CopyPlane, 1, 1>},
};

constexpr struct {
  const char *name;
  FilterMode mode;
} kFilters[] = {
    {"libyuv Bilinear", libyuv::kFilterBilinear},
    {"libyuv Box", libyuv::kFilterBox},
};

Scratch scratch(size_t bytes) {
  return std::make_shared<std::vector<uint8_t>>(bytes);
}

// Calls one of its scalers of a single plane.
template <typename Scaler>
void scale_plane(Scaler scaler, Img src, Img dst, FilterMode mode) {
  scaler(src.plane[0], src.stride[0], src.width[0], src.height[0], dst.plane[0],
         dst.stride[0], dst.width[0], dst.height[0], mode);
}

// RGB565 goes through its ARGB, for which `between` has room twice.
void scale(Img src, Img dst, FilterMode mode, uint8_t *between) {
  if (src.format == VEXO_FMT_NV12) {
    libyuv::NV12Scale(src.plane[0], src.stride[0], src.plane[1], src.stride[1],
                      src.width[0], src.height[0], dst.plane[0], dst.stride[0],
                      dst.plane[1], dst.stride[1], dst.width[0], dst.height[0],
                      mode);
  } else if (src.format == VEXO_FMT_RGB888) {
    scale_plane(libyuv::RGBScale, src, dst, mode);
  } else if (src.format == VEXO_FMT_RGBA8888) {
    scale_plane(libyuv::ARGBScale, src, dst, mode);
  } else if (src.format == VEXO_FMT_RGB565) {
    const vexo_img wide_src =
        describe(VEXO_FMT_BGRA8888, {src.width[0], src.height[0]}, between);
    const vexo_img wide_dst =
        describe(VEXO_FMT_BGRA8888, {dst.width[0], dst.height[0]},
                 between + frame_bytes(wide_src));
    call<libyuv::RGB565ToARGB, 1, 1>(src, wide_src);
    scale_plane(libyuv::ARGBScale, wide_src, wide_dst, mode);
    call<libyuv::ARGBToRGB565, 1, 1>(wide_dst, dst);
  } else {
    scale_plane(libyuv::ScalePlane, src, dst, mode);
  }
}

void turn_rgba(Img src, uint32_t rotation, Img dst) {
  if (rotation == VEXO_ROT_HORI) {
    return call<libyuv::ARGBMirror, 1, 1>(src, dst);
  }
  if (rotation == VEXO_ROT_VERT) {
    libyuv::ARGBCopy(src.plane[0], src.stride[0], dst.plane[0], dst.stride[0],
                     src.width[0], -src.height[0]);
    return;
  }
  const RotationMode mode = rotation == VEXO_ROT_90L   ? libyuv::kRotate270
                            : rotation == VEXO_ROT_90R ? libyuv::kRotate90
                                                       : libyuv::kRotate180;
  libyuv::ARGBRotate(src.plane[0], src.stride[0], dst.plane[0], dst.stride[0],
                     src.width[0], src.height[0], mode);
}

// A quarter turn of NV12 or of its luma alone. It turns no NV12 into NV12: the
// pairs go as words of 16 bits, or into two planes, for which `apart` has room,
// that are merged again. Which is the faster depends on the machine.
void turn_yuv(Img src, uint32_t rotation, bool merges, uint8_t *apart,
              Img dst) {
  const RotationMode mode =
      rotation == VEXO_ROT_90L ? libyuv::kRotate270 : libyuv::kRotate90;
  libyuv::RotatePlane(src.plane[0], src.stride[0], dst.plane[0], dst.stride[0],
                      src.width[0], src.height[0], mode);
  if (src.format != VEXO_FMT_NV12) return;
  const int width = src.width[1], height = src.height[1];
  if (!merges) {
    libyuv::RotatePlane_16(reinterpret_cast<const uint16_t *>(src.plane[1]),
                           src.stride[1] / 2,
                           reinterpret_cast<uint16_t *>(dst.plane[1]),
                           dst.stride[1] / 2, width, height, mode);
    return;
  }
  uint8_t *const v = apart + ptrdiff_t{width} * height;
  libyuv::SplitRotateUV(src.plane[1], src.stride[1], apart, height, v, height,
                        width, height, mode);
  libyuv::MergeUVPlane(apart, height, v, height, dst.plane[1], dst.stride[1],
                       height, width);
}

void add_turning(const Job &job, Contenders *out) {
  const bool is_rgba = job.src_format == VEXO_FMT_RGBA8888;
  const bool scales = job.task == kScaleAndTurn;
  const bool has_pairs = job.src_format == VEXO_FMT_NV12;
  const Size upright =
      scales ? Size{job.sizes.dst.height, job.sizes.dst.width} : job.sizes.src;
  const size_t bytes =
      frame_bytes(describe(job.src_format, upright, nullptr, 64));
  for (const auto &filter : kFilters) {
    for (const bool merges : {false, true}) {
      if (merges && !has_pairs) continue;
      const Scratch scaled = scratch(bytes), apart = scratch(bytes);
      std::string name = merges ? "Rotate+Merge" : "Rotate";
      name = scales    ? std::string(filter.name) + "+" + name
             : is_rgba ? "libyuv"
                       : "libyuv " + name;
      const auto work = [=](vexo_img src, Img dst) {
        if (is_rgba) return turn_rgba(src, job.rotation(), dst);
        if (scales) {
          const vexo_img between =
              describe(job.src_format, upright, scaled->data(), 64);
          scale(src, between, filter.mode, nullptr);
          src = between;
        }
        turn_yuv(src, job.rotation(), merges, apart->data(), dst);
      };
      add_frames(out, job, name, work, near(job));
    }
    if (!scales) return;
  }
}

// Upright, its planes are looked at by the pointers; turned, by way of a frame.
void add_camera(const Job &job, Contenders *out) {
  if (job.dst_format != VEXO_FMT_RGBA8888) return;
  const vexo_img shape =
      describe(VEXO_FMT_RGBA8888, job.sizes.src, nullptr, 64);
  const Scratch converted = scratch(frame_bytes(shape));
  const auto work = [=](Img src, Img dst) {
    vexo_img to = dst;
    if (job.is_quarter_turn()) {
      to = describe(VEXO_FMT_RGBA8888, job.sizes.src, converted->data(), 64);
    }
    libyuv::Android420ToABGR(src.plane[0], src.stride[0], src.plane[1],
                             src.stride[1], src.plane[1] + 1, src.stride[1], 2,
                             to.plane[0], to.stride[0], src.width[0],
                             src.height[0]);
    if (job.is_quarter_turn()) turn_rgba(to, job.rotation(), dst);
  };
  add_frames(out, job, job.is_quarter_turn() ? "libyuv Rotate" : "libyuv", work,
             near(job));
}

void add_libyuv(const Job &job, Contenders *out) {
  for (const auto &c : kConverters) {
    if (std::string(c.id) != job.id) continue;
    add_frames(out, job, "libyuv", c.convert, near(job), c.dst_format);
  }
  if (job.task == kTurn || job.task == kScaleAndTurn) {
    add_turning(job, out);
  }
  if (job.task == kCamera) add_camera(job, out);
  // Its box filter alone regards every sample of a reduction.
  const bool means = job.is_means();
  if (!scales_plainly(job) && !means) return;
  for (const auto &filter : kFilters) {
    if (means && filter.mode != libyuv::kFilterBox) continue;
    const bool wide = job.src_format == VEXO_FMT_RGB565;
    const Scratch between =
        scratch(wide ? size_t{2} * (job.src_room() + job.dst_room()) : 0);
    const auto work = [=](Img src, Img dst) {
      scale(src, dst, filter.mode, between->data());
    };
    add_frames(out, job, filter.name, work, near(job));
  }
}

void hold_libyuv(int level) {
  using namespace libyuv;
  constexpr int kPortable = kCpuInitialized;
  constexpr int kSse41 = kPortable | kCpuHasX86 | kCpuHasERMS | kCpuHasSSE2 |
                         kCpuHasSSSE3 | kCpuHasSSE41;
  constexpr int kAvx2 = kSse41 | kCpuHasSSE42 | kCpuHasAVX | kCpuHasAVX2 |
                        kCpuHasFMA3 | kCpuHasF16C;
  constexpr int kMasks[] = {kPortable, kSse41, kAvx2};
  MaskCpuFlags(kMasks[level]);
}

const bool kRegistered = registered(
    {"libyuv", std::to_string(LIBYUV_VERSION), add_libyuv, hold_libyuv});

}  // namespace
}  // namespace bench
