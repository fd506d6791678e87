// SPDX-License-Identifier: Apache-2.0
//
// libyuv's scaling and turning.
//
// Bilinear and Box are what this library's scaling is compared with; None takes
// the nearest sample and Linear weighs them across only, so both do less. Box
// alone regards every sample of a reduction.
// RGB888 goes by its scaler of three bytes, RGB565 through its ARGB.
//
// It turns no NV12 into NV12: the pairs go as words of 16 bits, or into two
// planes that are merged again. Which is the faster depends on the machine.
#include <libyuv.h>
#include <libyuv/scale_rgb.h>

#include <memory>
#include <string>
#include <utility>

#include "bench/contender.h"

namespace bench {

namespace {

using libyuv::FilterMode;
using libyuv::RotationMode;
using Scratch = std::shared_ptr<std::vector<uint8_t>>;

struct Filter {
  const char *name;
  FilterMode mode;
  // Computes no less than bilinear.
  bool is_level;
};

constexpr Filter kFilters[] = {
    {"libyuv None", libyuv::kFilterNone, false},
    {"libyuv Linear", libyuv::kFilterLinear, false},
    {"libyuv Bilinear", libyuv::kFilterBilinear, true},
    {"libyuv Box", libyuv::kFilterBox, true},
};

enum class Pairs { kAsWords, kMerged };

constexpr struct {
  const char *name;
  Pairs pairs;
} kTurns[] = {
    {"Rotate", Pairs::kAsWords},
    {"Rotate+Merge", Pairs::kMerged},
};

Scratch scratch(size_t bytes) {
  return std::make_shared<std::vector<uint8_t>>(bytes);
}

// Of an ARGB frame of the same size.
size_t wide_bytes(const vexo_img &img) {
  return size_t{4} * static_cast<size_t>(img.width[0]) *
         static_cast<size_t>(img.height[0]);
}

// Calls one of its scalers of a single plane.
template <typename Scaler>
void scale_plane(Scaler scaler, const vexo_img &src, const vexo_img &dst,
                 FilterMode mode) {
  scaler(src.plane[0], src.stride[0], src.width[0], src.height[0], dst.plane[0],
         dst.stride[0], dst.width[0], dst.height[0], mode);
}

void scale(const vexo_img &src, const vexo_img &dst, FilterMode mode) {
  switch (src.format) {
    case VEXO_FMT_NV12:
      libyuv::NV12Scale(src.plane[0], src.stride[0], src.plane[1],
                        src.stride[1], src.width[0], src.height[0],
                        dst.plane[0], dst.stride[0], dst.plane[1],
                        dst.stride[1], dst.width[0], dst.height[0], mode);
      break;
    case VEXO_FMT_RGB888:
      scale_plane(libyuv::RGBScale, src, dst, mode);
      break;
    case VEXO_FMT_RGBA8888:
      scale_plane(libyuv::ARGBScale, src, dst, mode);
      break;
    default:
      scale_plane(libyuv::ScalePlane, src, dst, mode);
  }
}

void scale_565(const vexo_img &src, const vexo_img &dst, uint8_t *wide_src,
               uint8_t *wide_dst, FilterMode mode) {
  const int src_stride = src.width[0] * 4, dst_stride = dst.width[0] * 4;
  libyuv::RGB565ToARGB(src.plane[0], src.stride[0], wide_src, src_stride,
                       src.width[0], src.height[0]);
  libyuv::ARGBScale(wide_src, src_stride, src.width[0], src.height[0], wide_dst,
                    dst_stride, dst.width[0], dst.height[0], mode);
  libyuv::ARGBToRGB565(wide_dst, dst_stride, dst.plane[0], dst.stride[0],
                       dst.width[0], dst.height[0]);
}

void turn_rgba(const vexo_img &src, uint32_t rotation, const vexo_img &dst) {
  const auto rotate = [&](RotationMode mode) {
    libyuv::ARGBRotate(src.plane[0], src.stride[0], dst.plane[0], dst.stride[0],
                       src.width[0], src.height[0], mode);
  };
  switch (rotation) {
    case VEXO_ROT_90L:
      return rotate(libyuv::kRotate270);
    case VEXO_ROT_90R:
      return rotate(libyuv::kRotate90);
    case VEXO_ROT_180:
      return rotate(libyuv::kRotate180);
    case VEXO_ROT_HORI:
      libyuv::ARGBMirror(src.plane[0], src.stride[0], dst.plane[0],
                         dst.stride[0], src.width[0], src.height[0]);
      return;
    default:
      libyuv::ARGBCopy(src.plane[0], src.stride[0], dst.plane[0], dst.stride[0],
                       src.width[0], -src.height[0]);
  }
}

// A quarter turn of NV12 or of its luma alone. `apart` has room for plane 1.
void turn_yuv(const vexo_img &src, uint32_t rotation, Pairs pairs,
              uint8_t *apart, const vexo_img &dst) {
  const RotationMode mode =
      rotation == VEXO_ROT_90L ? libyuv::kRotate270 : libyuv::kRotate90;
  libyuv::RotatePlane(src.plane[0], src.stride[0], dst.plane[0], dst.stride[0],
                      src.width[0], src.height[0], mode);
  if (src.format != VEXO_FMT_NV12) return;
  const int width = src.width[1], height = src.height[1];
  if (pairs == Pairs::kAsWords) {
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

void add_scaling(const Workload &workload, const Sizes &sizes,
                 Contenders *out) {
  const bool is_565 = workload.src_format == VEXO_FMT_RGB565;
  const auto room = [&](const vexo_img &img) {
    return scratch(is_565 ? wide_bytes(img) : 0);
  };
  for (const Filter &filter : kFilters) {
    if (workload.task == Task::kReduce && filter.mode != libyuv::kFilterBox) {
      continue;
    }
    const Scratch wide_src = room(describe_src(workload, sizes, nullptr));
    const Scratch wide_dst = room(describe_dst(workload, sizes, nullptr));
    const std::string name = filter.name;
    out->push_back({filter.is_level ? name : "(" + name + ")",
                    Contender::Kind::kPeer,
                    [=](uint8_t *s, uint8_t *d) {
                      const vexo_img src = describe_src(workload, sizes, s);
                      const vexo_img dst = describe_dst(workload, sizes, d);
                      if (is_565) {
                        scale_565(src, dst, wide_src->data(), wide_dst->data(),
                                  filter.mode);
                      } else {
                        scale(src, dst, filter.mode);
                      }
                    },
                    workload.dst_format});
  }
}

void add_turning(const Workload &workload, const Sizes &sizes,
                 Contenders *out) {
  const bool is_rgba = workload.src_format == VEXO_FMT_RGBA8888;
  for (const auto &form : kTurns) {
    const Scratch apart =
        scratch(frame_bytes(describe_dst(workload, sizes, nullptr)));
    out->push_back({is_rgba ? "libyuv" : std::string("libyuv ") + form.name,
                    Contender::Kind::kPeer,
                    [=](uint8_t *s, uint8_t *d) {
                      const vexo_img src = describe_src(workload, sizes, s);
                      const vexo_img dst = describe_dst(workload, sizes, d);
                      if (is_rgba) {
                        turn_rgba(src, workload.rotation, dst);
                      } else {
                        turn_yuv(src, workload.rotation, form.pairs,
                                 apart->data(), dst);
                      }
                    },
                    workload.dst_format});
    if (is_rgba) break;
  }
}

// Scales and then turns.
void add_both(const Workload &workload, const Sizes &sizes, Contenders *out) {
  const Size upright = {sizes.dst.height, sizes.dst.width};
  const size_t bytes =
      frame_bytes(describe(workload.dst_format, upright, nullptr, 64));
  for (const Filter &filter : kFilters) {
    for (const auto &form : kTurns) {
      const bool has_pairs = workload.src_format == VEXO_FMT_NV12;
      if (!filter.is_level || (!has_pairs && form.pairs == Pairs::kMerged)) {
        continue;
      }
      const Scratch scaled = scratch(bytes), apart = scratch(bytes);
      out->push_back(
          {std::string(filter.name) + "+" + form.name, Contender::Kind::kPeer,
           [=](uint8_t *s, uint8_t *d) {
             const vexo_img src = describe_src(workload, sizes, s);
             const vexo_img between =
                 describe(workload.dst_format, upright, scaled->data(), 64);
             scale(src, between, filter.mode);
             turn_yuv(between, workload.rotation, form.pairs, apart->data(),
                      describe_dst(workload, sizes, d));
           },
           workload.dst_format});
    }
  }
}

}  // namespace

void add_libyuv_scaling(const Workload &workload, const Sizes &sizes,
                        Contenders *out) {
  switch (workload.task) {
    case Task::kScale:
    case Task::kReduce:
      return add_scaling(workload, sizes, out);
    case Task::kTurn:
      return add_turning(workload, sizes, out);
    case Task::kScaleAndTurn:
      return add_both(workload, sizes, out);
    default:
      return;
  }
}

}  // namespace bench
