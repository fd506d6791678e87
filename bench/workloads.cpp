// SPDX-License-Identifier: Apache-2.0
#include "workloads.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <utility>

#include "hdr/context.h"
#include "orumlox/apex.h"
#include "orumlox/camera.h"
#include "orumlox/key_frame.h"
#include "orumlox/unprefixed.h"

namespace bench {
namespace {

// Rows of frames that are scaled or turned begin at multiples of 64 bytes as
// decoders' do: one peer takes no others.
int32_t row_unit(const Workload &job) {
  const bool moves = job.task >= kScale && job.task <= kTurn;
  return moves || job.task == kReduce || job.task == kPlan ? 64 : 1;
}

void require(int32_t status, const Workload &job) {
  if (status == VEXO_OK) return;
  std::fprintf(stderr, "%s: refused by the library\n", job.id);
  std::abort();
}

// What an application keeps between reductions of one geometry.
class DctPlan {
 public:
  explicit DctPlan(const Job &job)
      : job_(job), img_{job.src(nullptr), job.dst(nullptr)} {
    if (!is_rgba()) {
      require(vexo_rsz_new_init(img_, &context_, &a_, &b_, job.option), job);
      return;
    }
    const Size of[] = {job.sizes.src, job.sizes.dst};
    for (int i = 0; i < 2; ++i) {
      const auto planes = [&](uint8_t *bytes) {
        return describe(VEXO_FMT_YUV444, of[i], bytes, 64);
      };
      planes_[i] = std::make_unique<Block>(frame_bytes(planes(nullptr)));
      img_[2 + i] = planes(planes_[i]->data());
    }
    require(vexo_rsz_new_rgba8888_init(img_, &context_, &a_, &b_), job);
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

  void run(uint8_t *src, uint8_t *dst, bool by_parts) {
    img_[0] = job_.src(src);
    img_[1] = job_.dst(dst);
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
  bool is_rgba() const { return job_.src_format == VEXO_FMT_RGBA8888; }

  Job job_;
  // Source and destination; of RGBA8888 those and their planar forms.
  vexo_img img_[4] = {};
  std::unique_ptr<Block> planes_[2];
  vexo_rsz_new_context context_;
  vexo_shift_set a_ = nullptr, b_ = nullptr;
};

void build_context(const Job &job, const vexo_img &src, const vexo_img &dst,
                   vexo_hdr_context *context) {
  lox::build_hdr_context(context, &src, &dst, 1000, 0,
                         job.option == VEXO_HDR_HLG);
}

Run tone_mapping(const Job &job, Way way) {
  const auto context = std::make_shared<vexo_hdr_context>();
  if (job.task == kContext) {
    return [=, src = job.src(nullptr), dst = job.dst(nullptr)](uint8_t *,
                                                               uint8_t *) {
      build_context(job, src, dst, context.get());
    };
  }
  return [=, built = false](uint8_t *s, uint8_t *d) mutable {
    vexo_img src = job.src(s);
    const vexo_img dst = job.dst(d);
    if (way == Way::kCall) {
      src.source_nit = 1000;
      require(vexo_hdr_to_sdr(&src, &dst, job.option), job);
      return;
    }
    if (way == Way::kParts || !std::exchange(built, true)) {
      build_context(job, src, dst, context.get());
    }
    constexpr int32_t kBand = 4;
    for (int32_t row = 0; row < context->height; row += kBand) {
      _vexo_hdr10_to_sdr8(context.get(), row, row + kBand);
    }
  };
}

Run two_steps(const Job &job, Way way) {
  const bool scales = job.task != kConvertAndTurn;
  const bool turns = job.task != kScaleAndConvert;
  Size upright = job.sizes.dst;
  if (job.is_quarter_turn()) std::swap(upright.width, upright.height);
  const int32_t format = turns ? job.dst_format : job.src_format;
  const auto made = std::make_shared<Block>(
      frame_bytes(describe(format, upright, nullptr, 64)));
  const auto work = [=](const vexo_img &src, const vexo_img &dst) {
    if (way == Way::kCall) {
      return require(!scales ? vexo_csc_rot(&src, job.rotation(), &dst)
                     : turns ? vexo_rsz_rot(&src, job.rotation(), &dst)
                             : vexo_rsz_csc(&src, &dst),
                     job);
    }
    const vexo_img between = describe(format, upright, made->data(), 64);
    require((scales ? vexo_rsz : vexo_csc)(&src, &between), job);
    require(turns ? vexo_rot(&between, job.rotation(), &dst)
                  : vexo_csc(&between, &dst),
            job);
  };
  return on_frames(job, work);
}

Run camera(const Job &job, Way way) {
  const auto converted = std::make_shared<std::vector<uint8_t>>(
      frame_bytes(describe(job.dst_format, job.sizes.src, nullptr, 64)));
  return on_frames(job, [=](const vexo_img &src, const vexo_img &dst) {
    if (way != Way::kCall) {
      const vexo_img between =
          describe(job.dst_format, job.sizes.src, converted->data(), 64);
      require(vexo_csc(&src, &between), job);
      return require(vexo_rot(&between, job.rotation(), &dst), job);
    }
    const vexo_camera_frame frame = {
        {src.plane[0], src.plane[1], src.plane[1] + 1},
        {SIZE_MAX, SIZE_MAX, SIZE_MAX},
        {src.stride[0], src.stride[1], src.stride[1]},
        {1, 2, 2},
        src.width[0],
        src.height[0],
        0,
        {}};
    vexo_camera_options options = {};
    if (job.is_quarter_turn()) options.rotation = 90;
    require(vexo_camera_to_rgb(&frame, &options, &dst), job);
  });
}

// One frame by the call that takes two descriptions or their parts.
void run_plain(const Job &job, const vexo_img &src, const vexo_img &dst) {
  uint8_t *const s = src.plane[0], *const d = dst.plane[0];
  switch (job.task) {
    case kConvert:
      if (job.src_format == job.dst_format) {
        return vexo_cpy_8b(s, src.width[0], src.height[0], src.stride[0],
                           dst.stride[0], d);
      }
      return require(vexo_csc(&src, &dst), job);
    case kInterpolate:
      return require(vexo_csc_new(&src, &dst), job);
    case kDither:
      return require(vexo_csc_dither(&src, &dst), job);
    case kScale:
      return require(job.src_format == kI010 ? vexo_rsz_deep(&src, &dst)
                                             : vexo_rsz(&src, &dst),
                     job);
    case kFilter:
      return require(vexo_rsz_apex_c(&src, &dst), job);
    case kTurn:
      return require(vexo_rot(&src, job.rotation(), &dst), job);
    case kSharpen: {
      constexpr int32_t kStrength = 4;
      detail_enh(s, src.width[0], src.height[0], d, kStrength);
      return;
    }
    case kDeblock: {
      // The greatest there is.
      constexpr uint32_t kStrength = 12;
      return require(vexo_dbf8x8_yuv(&src, kStrength), job);
    }
    case kPlan:
      DctPlan{job};
      return;
    case kReadBits: {
      const uint32_t sum = read_fields(job.option, BitReader::kLibrary, s);
      return static_cast<void>(
          std::copy_n(reinterpret_cast<const uint8_t *>(&sum), sizeof(sum), d));
    }
    default:
      *d = static_cast<uint8_t>(mlox_is_vkeyfrm(
          static_cast<uint32_t>(job.option), s, int32_t{kMediaBytes}));
  }
}

}  // namespace

Job::Job(const Workload &workload, const Sizes &unturned)
    : Workload(workload), sizes(unturned) {
  if (is_quarter_turn()) std::swap(sizes.dst.width, sizes.dst.height);
}

double Job::units() const {
  if (is_setup()) return 1;
  if (task == kFindKey) return 1.0 * kMediaBytes;
  if (task == kReadBits) return static_cast<double>(count_fields(option));
  return 1.0 * sizes.dst.width * sizes.dst.height;
}

vexo_img Job::src(uint8_t *bytes, int32_t format) const {
  vexo_img img = describe(format < 0 ? src_format : format, sizes.src, bytes,
                          row_unit(*this));
  if (task == kConvert) img.color_std = option;
  return img;
}

vexo_img Job::dst(uint8_t *bytes, int32_t format) const {
  vexo_img img = describe(format < 0 ? dst_format : format, sizes.dst, bytes,
                          row_unit(*this));
  if (task == kConvert) img.color_std = option;
  if (task == kScale) img.mode = option;
  if (img.format != VEXO_FMT_NV12 || (task != kReduce && task != kPlan)) {
    return img;
  }
  // A plan has padding of its own.
  vexo_img pair[] = {src(nullptr), img};
  pair[1].color_std = 1;  // the layout selector
  vexo_rsz_new_set_img(pair);
  img = pair[1];
  if (bytes)
    img.plane[1] = bytes + ptrdiff_t{img.stride[0]} * img.buf_height[0];
  return img;
}

namespace {

// Peers may have planes instead of pairs and pixels, with other padding.
int32_t planes_for(int32_t format) {
  const bool pixels =
      format >= VEXO_FMT_RGB888 && format < VEXO_FMT_YUV420PLANAR16;
  return pixels ? VEXO_FMT_YUV444 : VEXO_FMT_YUV420;
}

}  // namespace

size_t Job::src_room() const {
  if (is_media()) return kMediaBytes;
  return std::max(frame_bytes(src(nullptr)),
                  frame_bytes(src(nullptr, planes_for(src_format))));
}

size_t Job::dst_room() const {
  if (is_media()) return 64;
  // The bands of RGB888 lie as far apart as those of four bytes a pixel.
  const int32_t other =
      task == kToneMap ? VEXO_FMT_RGBA8888 : planes_for(dst_format);
  return std::max(frame_bytes(dst(nullptr)), frame_bytes(dst(nullptr, other)));
}

void Job::fill_src(uint8_t *bytes, int32_t format, bool with_key) const {
  if (is_media()) {
    fill_media(*this, bytes, with_key);
  } else {
    draw(picture(), src(bytes, format));
  }
}

Run own_work(const Job &job, Way way) {
  if (job.task == kToneMap || job.task == kContext) {
    return tone_mapping(job, way);
  }
  if (job.is_fused()) return two_steps(job, way);
  if (job.task == kCamera) return camera(job, way);
  if (job.task == kReduce) {
    const auto plan = std::make_shared<DctPlan>(job);
    return [=](uint8_t *s, uint8_t *d) { plan->run(s, d, way != Way::kCall); };
  }
  return on_frames(job, [=](const vexo_img &src, const vexo_img &dst) {
    run_plain(job, src, dst);
  });
}

}  // namespace bench
