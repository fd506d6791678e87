// SPDX-License-Identifier: Apache-2.0
//
// vexo thumbnail: pictures reduced in the domain of the cosine transform and
// turned.
#include <algorithm>
#include <utility>

#include "commands.h"
#include "convert.h"
#include "error.h"
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

bool is_420(const Layout &layout) {
  return layout.code == VEXO_FMT_YUV420 || layout.code == VEXO_FMT_NV12;
}

class Thumbnail : public Reshape {
 public:
  explicit Thumbnail(const ThumbnailOptions &options) {
    parse_size(options.size, "--size", &shape_.width, &shape_.height);
    shape_.prescale = options.prescale;
    shape_.rotation = turn_named(options.turn, "--turn");
  }

  void announce(StreamInfo *info) override {
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
    vexo_picture_options options = {};
    options.rotation = static_cast<int32_t>(shape_.rotation);
    options.prescale = shape_.prescale;
    const int32_t status = vexo_picture_thumbnail(context_.get(), &src.img(),
                                                  &dst.img(), &options);
    if (status == VEXO_OK) return;
    throw Error(std::string("the library refuses to make a thumbnail: ") +
                vexo_status_name(status));
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
  // The plan is made of the first frame and serves all.
  const PictureContext context_;
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
    convert(*options, [&] { return std::make_unique<Thumbnail>(*options); });
  });
}

}  // namespace vexo
