// SPDX-License-Identifier: Apache-2.0
#include "workloads.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <utility>

#include "hdr/context.h"
#include "media.h"
#include "orumlox/key_frame.h"
#include "orumlox/unprefixed.h"

namespace bench {

namespace {

// Rows of frames that are scaled or turned begin at multiples of 64 bytes as
// decoders' do: one peer takes no others.
int32_t row_unit(const Workload &workload) {
  switch (workload.task) {
    case Task::kScale:
    case Task::kScaleAndTurn:
    case Task::kTurn:
    case Task::kReduce:
    case Task::kPlan:
      return 64;
    default:
      return 1;
  }
}

void require(int32_t status, const Workload &workload) {
  if (status == VEXO_OK) return;
  std::fprintf(stderr, "%s: refused by the library\n", workload.id);
  std::abort();
}

// What an application keeps between reductions of one geometry.
class DctPlan {
 public:
  DctPlan(const Workload &workload, const Sizes &sizes)
      : workload_(workload),
        sizes_(sizes),
        img_{describe_src(workload, sizes, nullptr),
             describe_dst(workload, sizes, nullptr)} {
    if (!is_rgba()) {
      require(vexo_rsz_new_init(img_, &context_, &a_, &b_, workload.option),
              workload);
      return;
    }
    const Size of[] = {sizes.src, sizes.dst};
    for (int i = 0; i < 2; ++i) {
      const auto planes = [&](uint8_t *bytes) {
        return describe(VEXO_FMT_YUV444, of[i], bytes, 64);
      };
      planes_[i] = std::make_unique<Block>(frame_bytes(planes(nullptr)));
      img_[2 + i] = planes(planes_[i]->data());
    }
    require(vexo_rsz_new_rgba8888_init(img_, &context_, &a_, &b_), workload);
  }
  ~DctPlan() {
    if (is_rgba()) {
      vexo_rsz_new_rgba8888_deinit(img_, &context_, a_, b_);
    } else {
      vexo_rsz_new_deinit(img_, &context_, a_, b_);
    }
  }
  DctPlan(const DctPlan &) = delete;
  DctPlan &operator=(const DctPlan &) = delete;

  bool has_workers() const {
    return is_rgba() || (context_.prescale != 0 && context_.exact_ratio == 0);
  }

  void run(uint8_t *src, uint8_t *dst, bool by_parts) {
    img_[0] = describe_src(workload_, sizes_, src);
    img_[1] = describe_dst(workload_, sizes_, dst);
    if (!is_rgba()) {
      vexo_rsz_new(&img_[0], &img_[1], &context_, a_, b_);
    } else if (!by_parts) {
      vexo_rsz_new_rgba8888(img_, &context_, a_, b_);
    } else {
      const vexo_img &from = img_[2], &to = img_[3];
      vexo_csc_8b8b8b8b_unpack(src, from.width[0], from.height[0],
                               img_[0].stride[0], from.stride[0],
                               from.stride[1], from.stride[2], 0, from.plane[0],
                               from.plane[1], from.plane[2], nullptr);
      for (int32_t p = 0; p < 3; ++p) {
        dct_downscaling_rgba8888(from.plane[p], to.plane[p], &context_, a_, b_,
                                 p);
      }
      vexo_csc_8b8b8b8b_pack(dst, to.width[0], to.height[0], img_[1].stride[0],
                             to.stride[0], to.stride[1], to.stride[2], 0,
                             to.plane[0], to.plane[1], to.plane[2], nullptr);
    }
  }

 private:
  bool is_rgba() const { return workload_.src_format == VEXO_FMT_RGBA8888; }

  Workload workload_;
  Sizes sizes_;
  // Source and destination; of RGBA8888 those and their planar forms.
  vexo_img img_[4] = {};
  std::unique_ptr<Block> planes_[2];
  vexo_rsz_new_context context_;
  vexo_shift_set a_ = nullptr, b_ = nullptr;
};

void build_context(const Workload &workload, const vexo_img &src,
                   const vexo_img &dst, vexo_hdr_context *context) {
  lox::build_hdr_context(context, &src, &dst, 1000, 0,
                         workload.option == VEXO_HDR_HLG);
}

Run tone_mapping(const Workload &workload, const Sizes &sizes, Way way) {
  const auto context = std::make_shared<vexo_hdr_context>();
  return [=, built = false](uint8_t *s, uint8_t *d) mutable {
    vexo_img src = describe_src(workload, sizes, s);
    const vexo_img dst = describe_dst(workload, sizes, d);
    if (way == Way::kCall) {
      src.source_nit = 1000;
      require(vexo_hdr_to_sdr(&src, &dst, workload.option), workload);
      return;
    }
    if (way == Way::kParts || !std::exchange(built, true)) {
      build_context(workload, src, dst, context.get());
    }
    constexpr int32_t kBand = 4;
    for (int32_t row = 0; row < context->height; row += kBand) {
      _vexo_hdr10_to_sdr8(context.get(), row, row + kBand);
    }
  };
}

Run scaling_and_turning(const Workload &workload, const Sizes &sizes, Way way) {
  const Size upright = {sizes.dst.height, sizes.dst.width};
  const auto scaled = std::make_shared<std::vector<uint8_t>>(
      frame_bytes(describe(workload.dst_format, upright, nullptr, 64)));
  return [=](uint8_t *s, uint8_t *d) {
    const vexo_img src = describe_src(workload, sizes, s);
    const vexo_img dst = describe_dst(workload, sizes, d);
    if (way == Way::kCall) {
      require(vexo_rsz_rot(&src, workload.rotation(), &dst), workload);
      return;
    }
    const vexo_img between =
        describe(workload.dst_format, upright, scaled->data(), 64);
    require(vexo_rsz(&src, &between), workload);
    require(vexo_rot(&between, workload.rotation(), &dst), workload);
  };
}

// One frame by the call that takes two descriptions or their parts.
void run_plain(const Workload &workload, const Sizes &sizes, uint8_t *s,
               uint8_t *d) {
  const vexo_img src = describe_src(workload, sizes, s);
  const vexo_img dst = describe_dst(workload, sizes, d);
  switch (workload.task) {
    case Task::kConvert:
      if (workload.src_format == workload.dst_format) {
        return vexo_cpy_8b(s, src.width[0], src.height[0], src.stride[0],
                           dst.stride[0], d);
      }
      return require(vexo_csc(&src, &dst), workload);
    case Task::kScale:
      return require(vexo_rsz(&src, &dst), workload);
    case Task::kTurn:
      return require(vexo_rot(&src, workload.rotation(), &dst), workload);
    case Task::kSharpen: {
      constexpr int32_t kStrength = 4;
      detail_enh(s, src.width[0], src.height[0], d, kStrength);
      return;
    }
    case Task::kDeblock: {
      // The greatest there is.
      constexpr uint32_t kStrength = 12;
      return require(vexo_dbf8x8_yuv(&src, kStrength), workload);
    }
    case Task::kContext: {
      vexo_hdr_context context;
      build_context(workload, src, dst, &context);
      *d = static_cast<uint8_t>(context.height);
      return;
    }
    case Task::kPlan: {
      const DctPlan plan(workload, sizes);
      *d = plan.has_workers();
      return;
    }
    case Task::kReadBits: {
      const uint32_t sum = read_fields(workload.option, BitReader::kLibrary, s);
      return static_cast<void>(
          std::copy_n(reinterpret_cast<const uint8_t *>(&sum), sizeof(sum), d));
    }
    default:
      *d = static_cast<uint8_t>(mlox_is_vkeyfrm(
          static_cast<uint32_t>(workload.option), s, int32_t{kMediaBytes}));
  }
}

}  // namespace

Sizes sizes_of(const Workload &workload, bool large) {
  Sizes sizes = large ? workload.ratio.large : workload.ratio.small;
  if (workload.is_quarter_turn()) {
    std::swap(sizes.dst.width, sizes.dst.height);
  }
  return sizes;
}

double units_of(const Workload &workload, const Sizes &sizes) {
  if (workload.is_setup()) return 1;
  if (workload.task == Task::kFindKey) return 1.0 * kMediaBytes;
  if (workload.task == Task::kReadBits) {
    return static_cast<double>(count_fields(workload.option));
  }
  return 1.0 * sizes.dst.width * sizes.dst.height;
}

vexo_img describe_src(const Workload &workload, const Sizes &sizes,
                      uint8_t *bytes, int32_t format) {
  vexo_img img = describe(format < 0 ? workload.src_format : format, sizes.src,
                          bytes, row_unit(workload));
  if (workload.task == Task::kConvert) img.color_std = workload.option;
  return img;
}

vexo_img describe_dst(const Workload &workload, const Sizes &sizes,
                      uint8_t *bytes, int32_t format) {
  vexo_img img = describe(format < 0 ? workload.dst_format : format, sizes.dst,
                          bytes, row_unit(workload));
  if (workload.task == Task::kConvert) img.color_std = workload.option;
  if (workload.task == Task::kScale) img.mode = workload.option;
  if (row_unit(workload) == 1 || img.format != VEXO_FMT_NV12 ||
      (workload.task != Task::kReduce && workload.task != Task::kPlan)) {
    return img;
  }
  vexo_img pair[] = {describe_src(workload, sizes, nullptr), img};
  pair[1].color_std = 1;  // the layout selector
  vexo_rsz_new_set_img(pair);
  if (bytes) {
    pair[1].plane[1] =
        bytes + ptrdiff_t{pair[1].stride[0]} * pair[1].buf_height[0];
  }
  return pair[1];
}

size_t src_room(const Workload &workload, const Sizes &sizes) {
  if (workload.is_media()) return kMediaBytes;
  const size_t own = frame_bytes(describe_src(workload, sizes, nullptr));
  // Peers may have planes instead of pairs, with other padding.
  return std::max(own, frame_bytes(describe_src(workload, sizes, nullptr,
                                                VEXO_FMT_YUV420)));
}

size_t dst_room(const Workload &workload, const Sizes &sizes) {
  if (workload.is_media()) return 64;
  // The bands of RGB888 lie as far apart as those of four bytes a pixel.
  const int32_t format =
      workload.task == Task::kToneMap ? VEXO_FMT_RGBA8888 : VEXO_FMT_YUV420;
  return std::max(frame_bytes(describe_dst(workload, sizes, nullptr)),
                  frame_bytes(describe_dst(workload, sizes, nullptr, format)));
}

void fill_src(const Workload &workload, const Sizes &sizes, uint8_t *bytes,
              int32_t format, bool with_key) {
  if (workload.is_media()) {
    fill_media(workload, bytes, with_key);
  } else {
    draw(workload.picture(), describe_src(workload, sizes, bytes, format));
  }
}

Run own_work(const Workload &workload, const Sizes &sizes, Way way) {
  if (workload.task == Task::kToneMap) {
    return tone_mapping(workload, sizes, way);
  }
  if (workload.task == Task::kScaleAndTurn) {
    return scaling_and_turning(workload, sizes, way);
  }
  if (workload.task == Task::kReduce) {
    const auto plan = std::make_shared<DctPlan>(workload, sizes);
    return [=](uint8_t *s, uint8_t *d) { plan->run(s, d, way != Way::kCall); };
  }
  return [=](uint8_t *s, uint8_t *d) { run_plain(workload, sizes, s, d); };
}

bool has_workers(const Workload &workload) {
  return DctPlan(workload, sizes_of(workload, true)).has_workers();
}

}  // namespace bench
