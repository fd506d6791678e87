// SPDX-License-Identifier: Apache-2.0
#include "thumbnail.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "error.h"
#include "orumlox/rot.h"
#include "turns.h"

namespace vexo {
namespace {

// A rectangle of a picture.
struct Area {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
};

std::string size_text(int width, int height) {
  return std::to_string(width) + "x" + std::to_string(height);
}

bool is_420(const Layout &layout) {
  return layout.code == VEXO_FMT_YUV420 || layout.code == VEXO_FMT_NV12;
}

int rounded(double value, int most) {
  return std::clamp(static_cast<int>(std::lround(value)), 1, most);
}

class Thumbnail : public Reshape {
 public:
  explicit Thumbnail(const ThumbnailOptions &options)
      : letterbox_(options.letterbox),
        fill_(options.fill),
        fitted_(options.size.empty()),
        prescale_(options.prescale),
        rotation_(turn_named(options.turn, "--turn")) {
    if (fitted_) {
      parse_size(options.fit, "--fit", &width_, &height_);
    } else {
      parse_size(options.size, "--size", &width_, &height_);
    }
  }

  // Chroma that is finer than 4:2:0 is kept by way of RGB.
  const Layout &takes(const Layout &source) const override {
    switch (source.code) {
      case VEXO_FMT_YUV400:
      case VEXO_FMT_YUV420:
      case VEXO_FMT_NV12:
      case VEXO_FMT_RGB888:
      case VEXO_FMT_RGBA8888:
        return source;
      case VEXO_FMT_YV12:
      case VEXO_FMT_NV21:
      case VEXO_FMT_YUV420PLANAR16:
      case VEXO_FMT_P010LE:
      case VEXO_FMT_T64X32:
        return layout_of(VEXO_FMT_NV12);
      default:
        return layout_of(VEXO_FMT_RGBA8888);
    }
  }

  void announce(StreamInfo *info) override {
    if (!is_420(*info->layout) && prescale_ != 0) {
      throw Error(std::string("--prescale is for 4:2:0, and the input holds ") +
                  info->layout->token);
    }
    from_ = {0, 0, info->width, info->height};
    if (fitted_) {
      fit(*info);
    } else {
      to_ = {0, 0, width_, height_};
    }
    check_reduces();
    int width = width_;
    int height = height_;
    if (is_quarter(rotation_)) std::swap(width, height);
    reshape_stream(info, rotation_, width, height);
    if (fitted_) set_square(info);
  }

  void apply(const Frame &src, const Frame &dst) override {
    vexo_picture_options options = {};
    options.rotation = static_cast<int32_t>(rotation_);
    options.prescale = prescale_;
    const vexo_img in =
        window_of(src, from_.x, from_.y, from_.width, from_.height);
    if (letterbox_) blacken(dst);
    const vexo_img out =
        letterbox_ ? window_of(dst, to_.x, to_.y, to_.width, to_.height)
                   : dst.img();
    require_ok(vexo_picture_thumbnail(context_.get(), &in, &out, &options),
               "make a thumbnail of", src, dst);
  }

 private:
  // Finds what part of the picture goes where, by the shape of its pixels.
  void fit(const StreamInfo &info) {
    const double pixel = pixel_shape(info);
    double shown_width = info.width * pixel;
    const double shown_height = info.height;
    if (fill_) {
      const double wanted = static_cast<double>(width_) / height_;
      if (shown_width > wanted * shown_height) {
        from_.width = rounded(shown_height * wanted / pixel, info.width);
      } else {
        from_.height = rounded(shown_width / wanted, info.height);
      }
      from_.x = (info.width - from_.width) / 2;
      from_.y = (info.height - from_.height) / 2;
      shown_width = from_.width * pixel;
    }
    // Nothing is enlarged, in neither direction.
    const double scale = std::min({width_ / shown_width,
                                   height_ / static_cast<double>(from_.height),
                                   1.0, from_.width / shown_width});
    to_.width = rounded(shown_width * scale, std::min(width_, from_.width));
    to_.height = rounded(from_.height * scale, std::min(height_, from_.height));
    if (fill_ && to_.width >= width_ - 1 && to_.height >= height_ - 1 &&
        from_.width >= width_ && from_.height >= height_) {
      to_.width = width_;
      to_.height = height_;
    }
    if (letterbox_) {
      to_.x = (width_ - to_.width) / 2;
      to_.y = (height_ - to_.height) / 2;
      if (rotation_ != VEXO_ROT_COPY) {
        throw Error("--letterbox and --turn do not go together");
      }
    } else {
      width_ = to_.width;
      height_ = to_.height;
    }
  }

  bool is_reduced_by(int factor) const {
    return from_.width == factor * to_.width &&
           from_.height == factor * to_.height;
  }

  void check_reduces() const {
    if (from_.width < to_.width || from_.height < to_.height) {
      throw Error("--size " + size_text(to_.width, to_.height) +
                  " is larger than the picture, which is " +
                  size_text(from_.width, from_.height));
    }
    if (prescale_ == 0 || is_reduced_by(2) || is_reduced_by(4)) return;
    // What the pre-scaled picture counts as; its chroma has half the rows.
    const int width =
        prescale_ == 2 ? from_.width / 4 * 2 : (from_.width / 4 + 1) / 2 * 2;
    const int height = from_.height / prescale_;
    if (width < to_.width || height < std::max(to_.height, 2)) {
      throw Error("--prescale " + std::to_string(prescale_) + " leaves " +
                  size_text(width, height) +
                  " of the picture, too little for " +
                  size_text(to_.width, to_.height));
    }
  }

  bool letterbox_;
  bool fill_;
  bool fitted_;
  int32_t prescale_;
  uint32_t rotation_;
  // Of the thumbnail before it is turned.
  int width_ = 0;
  int height_ = 0;
  Area from_;
  Area to_;
  // The plan is made of the first frame and serves all.
  const PictureContext context_;
};

}  // namespace

std::unique_ptr<Reshape> make_thumbnail(const ThumbnailOptions &options) {
  return std::make_unique<Thumbnail>(options);
}

}  // namespace vexo
