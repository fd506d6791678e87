// SPDX-License-Identifier: Apache-2.0
//
// vexo thumbnail: pictures reduced in the domain of the cosine transform and
// turned, 4:2:0 by the library's thumbnail calls, the others as RGBA. The plan
// is made of the first frame and serves all.
#include <algorithm>
#include <memory>
#include <new>
#include <optional>
#include <utility>
#include <vector>

#include "commands.h"
#include "convert.h"
#include "error.h"
#include "orumlox/csc_layout.h"
#include "orumlox/dct.h"
#include "orumlox/rot.h"
#include "turns.h"

namespace vexo {
namespace {

constexpr const char *kThumbnailHelp =
    R"(Makes thumbnails of pictures and clips, and turns them if asked to.

IN and OUT are those of vexo convert. IN holds yuv420 or nv12, scaled as nv12,
or yuv400, rgb888 or rgba8888, scaled as rgba8888, whose alpha becomes 255.
--size is that before the turn, no larger than the picture. The thumbnail has
the layout of IN and is then converted to what OUT holds or --to says.

--prescale halves or quarters 4:2:0 by block means first: faster and coarser.)";

struct ThumbnailOptions : StreamOptions {
  std::string size;
  std::string turn = "0";
  int prescale = 0;
};

// Of a thumbnail before it is turned.
struct Shape {
  int width = 0;
  int height = 0;
  int32_t prescale = 0;
  uint32_t rotation = VEXO_ROT_COPY;
};

std::string size_text(int width, int height) {
  return std::to_string(width) + "x" + std::to_string(height);
}

size_t plane_bytes(const vexo_img &img, int plane) {
  return static_cast<size_t>(img.stride[plane]) *
         static_cast<size_t>(img.buf_height[plane]);
}

bool is_420(const Layout &layout) {
  return layout.code == VEXO_FMT_YUV420 || layout.code == VEXO_FMT_NV12;
}

// Pictures of one geometry to thumbnails of another.
class Scaler {
 public:
  Scaler() = default;
  virtual ~Scaler() = default;
  Scaler(const Scaler &) = delete;
  Scaler &operator=(const Scaler &) = delete;
  virtual void apply(const Frame &src, const Frame &dst) = 0;

 protected:
  vexo_rsz_new_context context_ = {};
  vexo_shift_set a_ = nullptr;
  vexo_shift_set b_ = nullptr;
};

// Of NV12 and, by way of it, YUV420. All frames come in the memory of the
// first.
class Nv12Scaler : public Scaler {
 public:
  Nv12Scaler(const Frame &src, const Shape &shape)
      : rotation_(static_cast<int32_t>(shape.rotation)) {
    if (src.layout().code == VEXO_FMT_YUV420) {
      paired_.emplace(layout_of(VEXO_FMT_NV12), src.width(), src.height(),
                      VEXO_STD_DEFAULT);
    }
    plan_buffers(paired_ ? *paired_ : src, shape);
    vexo_txc_new_init(pair_, &intermediate_, &context_, &a_, &b_,
                      shape.prescale, rotation_);
    // Null pointers are all that tells of failure; means need no sets.
    if ((a_ == nullptr && context_.exact_ratio == 0) ||
        (rotation_ != VEXO_ROT_COPY && intermediate_.plane[0] == nullptr)) {
      release();
      throw std::bad_alloc();
    }
  }

  ~Nv12Scaler() override { release(); }

  void apply(const Frame &src, const Frame &dst) override {
    if (paired_) {
      const vexo_img &in = src.img();
      const vexo_img &pairs = paired_->img();
      vexo_csc_yuv420_to_nv12(in.plane, in.width, in.height, in.stride,
                              pairs.stride, pairs.plane);
    }
    vexo_txc_new(pair_, &result_, &intermediate_, &context_, a_, b_, rotation_);
    // Of what the library wrote the visible part, chroma rounded up.
    const vexo_img &out = dst.img();
    std::copy_n(out.width, 2, result_.width);
    std::copy_n(out.height, 2, result_.height);
    if (paired_) {
      vexo_csc_nv12_to_yuv420(result_.plane, result_.width, result_.height,
                              result_.stride, out.stride, out.plane);
    } else {
      vexo_cpy(&result_, &out);
    }
  }

 private:
  void plan_buffers(const Frame &source, const Shape &shape) {
    vexo_img &scaled = pair_[1];
    scaled.format = VEXO_FMT_NV12;
    scaled.width[0] = shape.width;
    scaled.height[0] = shape.height;
    // The layout selector: 1 rounds strides up to 16, 0 up to 128.
    scaled.color_std = 1;
    vexo_rsz_new_set_img(pair_);
    // Files have a column and a row of chroma more when the size is odd. The
    // stride has room for that column.
    scaled.width[1] = (shape.width + 1) / 2;
    scaled.height[1] = (shape.height + 1) / 2;
    scaled.buf_height[1] = (scaled.height[1] + 15) / 16 * 16;
    // A frame lies as it does, in rows that need no padding to be pre-scaled.
    pair_[0] = source.img();

    // Of either plane as much as luma takes, which is enough for chroma with
    // its sides exchanged.
    result_ = scaled;
    const size_t bytes = plane_bytes(scaled, 0);
    memory_.resize(2 * bytes);
    result_.plane[0] = memory_.data();
    result_.plane[1] = memory_.data() + bytes;
  }

  void release() {
    vexo_txc_new_deinit(pair_, &intermediate_, &context_, a_, b_, rotation_);
  }

  int32_t rotation_;
  std::optional<Frame> paired_;
  // The source and the thumbnail before it is turned.
  vexo_img pair_[2] = {};
  vexo_img intermediate_ = {};
  vexo_img result_ = {};
  std::vector<uint8_t> memory_;
};

// Pixels of so many bytes as pixels of another number: the first ones of each.
void repack(const Frame &from, const Frame &to) {
  const int from_step = from.layout().plane[0].unit_bytes;
  const int to_step = to.layout().plane[0].unit_bytes;
  const int common = std::min(from_step, to_step);
  for (int y = 0; y < from.height(); ++y) {
    const uint8_t *in = from.row(0, y);
    uint8_t *out = to.row(0, y);
    for (int x = 0; x < from.width(); ++x) {
      std::copy_n(in, common, out);
      in += from_step;
      out += to_step;
    }
  }
}

// Of RGBA8888 and of less than that in the same order: RGB888, grey.
class RgbaScaler : public Scaler {
 public:
  RgbaScaler(const Frame &src, const Frame &dst, const Shape &shape)
      : rotation_(shape.rotation),
        source_(rgba(src.width(), src.height())),
        scaled_(rgba(shape.width, shape.height)),
        turned_(rgba(dst.width(), dst.height())) {
    quartet_[0] = source_.img();
    quartet_[1] = scaled_.img();
    for (int i = 2; i < 4; ++i) {
      quartet_[i].format = VEXO_FMT_YUV420;
      std::fill_n(quartet_[i].width, 3, quartet_[i - 2].width[0]);
      std::fill_n(quartet_[i].height, 3, quartet_[i - 2].height[0]);
    }
    vexo_rsz_new_set_img(quartet_ + 2);
    for (int i = 2; i < 4; ++i) {
      const size_t bytes = plane_bytes(quartet_[i], 0);
      memory_[i - 2].resize(3 * bytes);
      for (size_t p = 0; p < 3; ++p) {
        quartet_[i].plane[p] = memory_[i - 2].data() + p * bytes;
      }
    }
    if (vexo_rsz_new_rgba8888_init(quartet_, &context_, &a_, &b_) != VEXO_OK) {
      throw std::bad_alloc();
    }
  }

  ~RgbaScaler() override {
    vexo_rsz_new_rgba8888_deinit(quartet_, &context_, a_, b_);
  }

  void apply(const Frame &src, const Frame &dst) override {
    repack(src, source_);
    vexo_rsz_new_rgba8888(quartet_, &context_, a_, b_);
    vexo_rot(&scaled_.img(), rotation_, &turned_.img());
    repack(turned_, dst);
  }

 private:
  static Frame rgba(int width, int height) {
    return {layout_of(VEXO_FMT_RGBA8888), width, height, VEXO_STD_DEFAULT};
  }

  uint32_t rotation_;
  Frame source_;
  Frame scaled_;
  Frame turned_;
  // The source, the destination, and the planar forms of both.
  vexo_img quartet_[4] = {};
  std::vector<uint8_t> memory_[2];
};

class Thumbnail : public Reshape {
 public:
  explicit Thumbnail(const ThumbnailOptions &options) {
    parse_size(options.size, "--size", &shape_.width, &shape_.height);
    shape_.prescale = options.prescale;
    shape_.rotation = turn_named(options.turn, "--turn");
  }

  void announce(StreamInfo *info) const override {
    const Layout &layout = *info->layout;
    if (!is_420(layout) && layout.code != VEXO_FMT_YUV400 &&
        layout.code != VEXO_FMT_RGB888 && layout.code != VEXO_FMT_RGBA8888) {
      throw Error(std::string("thumbnails are made of yuv420, nv12, yuv400, "
                              "rgb888 or rgba8888, and the input holds ") +
                  layout.token);
    }
    if (!is_420(layout) && shape_.prescale != 0) {
      throw Error(std::string("--prescale is for yuv420 and nv12, and the "
                              "input holds ") +
                  layout.token);
    }
    check_reduces(*info);
    int width = shape_.width;
    int height = shape_.height;
    if (is_quarter(shape_.rotation)) std::swap(width, height);
    reshape_stream(info, shape_.rotation, width, height);
  }

  void apply(const Frame &src, const Frame &dst) override {
    if (!scaler_) {
      if (is_420(src.layout())) {
        scaler_ = std::make_unique<Nv12Scaler>(src, shape_);
      } else {
        scaler_ = std::make_unique<RgbaScaler>(src, dst, shape_);
      }
    }
    scaler_->apply(src, dst);
  }

 private:
  bool is_reduced_by(int factor, const StreamInfo &info) const {
    return info.width == factor * shape_.width &&
           info.height == factor * shape_.height;
  }

  void check_reduces(const StreamInfo &info) const {
    if (info.width < shape_.width || info.height < shape_.height) {
      throw Error("--size " + size_text(shape_.width, shape_.height) +
                  " is larger than the picture, which is " +
                  size_text(info.width, info.height));
    }
    if (shape_.prescale == 0 || is_reduced_by(2, info) ||
        is_reduced_by(4, info)) {
      return;
    }
    // What the pre-scaled picture counts as; its chroma has half the rows.
    const int width = shape_.prescale == 2 ? info.width / 4 * 2
                                           : (info.width / 4 + 1) / 2 * 2;
    const int height = info.height / shape_.prescale;
    if (width < shape_.width || height < std::max(shape_.height, 2)) {
      throw Error("--prescale " + std::to_string(shape_.prescale) + " leaves " +
                  size_text(width, height) +
                  " of the picture, too little for " +
                  size_text(shape_.width, shape_.height));
    }
  }

  Shape shape_;
  std::unique_ptr<Scaler> scaler_;
};

}  // namespace

void add_thumbnail(CLI::App &app) {
  const auto options = std::make_shared<ThumbnailOptions>();
  CLI::App *const command = add_stream_command(app, "thumbnail", kThumbnailHelp,
                                               "--from-size", options.get());
  add_step_options(command, options.get());
  command
      ->add_option("--size", options->size,
                   "WxH of the thumbnail before it is turned")
      ->required();
  command->add_option("--turn", options->turn,
                      "left, right, half, mirror, flip or the library's "
                      "codes 0 to 5");
  command->add_option("--prescale", options->prescale, "0, 2 or 4 (0)")
      ->check(CLI::IsMember({0, 2, 4}));
  command->callback([options] {
    Thumbnail reshape(*options);
    convert(*options, &reshape);
  });
}

}  // namespace vexo
