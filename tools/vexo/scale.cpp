// SPDX-License-Identifier: Apache-2.0
//
// vexo scale and vexo rotate: pictures of another size or another way up, in
// the layout that they come in. Only then are they converted to what the output
// holds.
#include "scale.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "commands.h"
#include "error.h"
#include "orumlox/rsz.h"
#include "turns.h"

namespace vexo {
namespace {

constexpr const char *kScaleHelp =
    R"(Scales pictures and clips, and turns them on the way if asked to.

IN and OUT are those of vexo convert. Frames are scaled in the layout that IN
holds, each plane for itself (tiles as nv12), and then converted to what OUT
holds or --to says.

--size is exact: where it has another shape than IN, pixels are not square, and
Y4M and videos say so. --fit keeps the shape in which IN is shown, with square
pixels and even sides. Sizes are those after the turn.

  vexo scale clip.mp4 small.mp4 --fit 640x640
  vexo scale photo.y4m upright.png --size 104x160 --rotate right
  vexo scale clip.mp4 best.mp4 --size 640x360 --filter lanczos)";

constexpr const char *kRotateHelp =
    R"(Turns or mirrors pictures and clips.

IN and OUT are those of vexo convert. Frames are turned in the layout that IN
holds, each plane for itself, and then converted to what OUT holds or --to says.
4:2:2 has half its chroma rows, not columns, after a quarter turn: yuv422n
becomes yuv422w. Tiles are turned as nv12.

  vexo rotate photo.png mirrored.png --turn mirror
  vexo rotate clip.mp4 upright.mp4 --turn right)";

struct ScaleOptions : StreamOptions {
  // Exactly this, or what fits into that; neither: square pixels.
  std::string size;
  std::string fit;
  // Empty: no turn.
  std::string rotate;
  std::string filter = "plain";
  bool mode1 = false;
};

struct RotateOptions : StreamOptions {
  std::string turn;
};

// The nearest even number of pixels that is not too large; 1 if that is most.
int even_side(double side, int most) {
  const long largest = most < 2 ? 1 : most / 2 * 2;
  return static_cast<int>(
      std::clamp(2 * std::lround(side / 2), std::min(largest, 2L), largest));
}

class Scale : public Reshape {
 public:
  explicit Scale(const ScaleOptions &options)
      : fits_(!options.fit.empty()), squares_(options.size.empty()) {
    how_.mode = options.mode1 ? VEXO_MODE_MOD1 : 0;
    how_.filter =
        options.filter == "lanczos" ? VEXO_FILTER_LANCZOS : VEXO_FILTER_PLAIN;
    if (fits_) {
      parse_size(options.fit, "--fit", &width_, &height_);
    } else if (!squares_) {
      parse_size(options.size, "--size", &width_, &height_);
    }
    if (!options.rotate.empty()) {
      how_.rotation =
          static_cast<int32_t>(turn_named(options.rotate, "--rotate"));
    }
  }

  void announce(StreamInfo *info) override {
    if (squares_) choose_size(*info);
    reshape_stream(info, static_cast<uint32_t>(how_.rotation), width_, height_);
    if (squares_) set_square(info);
  }

  void apply(const Frame &src, const Frame &dst) override {
    vexo_img out = dst.img();
    out.color_std = src.img().color_std;
    require_ok(vexo_picture_scale(context_.get(), &src.img(), &out, &how_),
               "scale", src, dst);
  }

 private:
  // Sides in square pixels, after the turn.
  void choose_size(const StreamInfo &info) {
    const double shape = pixel_shape(info);
    double width = info.width * std::max(shape, 1.0);
    double height = info.height / std::min(shape, 1.0);
    if (!fits_) {
      // One side grows; what is too large is refused.
      constexpr int kMost = kMaxSide + 1;
      width_ = shape > 1 ? even_side(width, kMost) : info.width;
      height_ = shape < 1 ? even_side(height, kMost) : info.height;
      return;
    }
    if (is_quarter(static_cast<uint32_t>(how_.rotation))) {
      std::swap(width, height);
    }
    const double scale = std::min(width_ / width, height_ / height);
    width_ = even_side(width * scale, width_);
    height_ = even_side(height * scale, height_);
  }

  bool fits_;
  bool squares_;
  int width_ = 0;
  int height_ = 0;
  vexo_picture_options how_ = {};
  const PictureContext context_;
};

}  // namespace

std::unique_ptr<Reshape> make_squaring() {
  return std::make_unique<Scale>(ScaleOptions());
}

void add_scale(CLI::App &app) {
  const auto options = std::make_shared<ScaleOptions>();
  CLI::App *const command = add_stream_command(app, "scale", kScaleHelp,
                                               "--from-size", options.get());
  add_step_options(command, options.get());
  CLI::Option *const size =
      command->add_option("--size", options->size, "WxH of the output");
  command
      ->add_option("--fit", options->fit,
                   "WxH in which it fits, as wide to high as it is shown")
      ->excludes(size);
  command->add_flag("--mode1", options->mode1,
                    "The second kind of enlargement");
  command
      ->add_option("--filter", options->filter,
                   "plain (default), or lanczos: of three lobes")
      ->check(CLI::IsMember({"plain", "lanczos"}));
  command->add_option(
      "--rotate", options->rotate,
      "left, right, half, mirror, flip or the library's codes 0 to 5");
  command->callback([options] {
    if (options->size.empty() && options->fit.empty()) {
      throw CLI::RequiredError("--size or --fit");
    }
    convert(*options, [&] { return std::make_unique<Scale>(*options); });
  });
}

void add_rotate(CLI::App &app) {
  const auto options = std::make_shared<RotateOptions>();
  CLI::App *const command =
      add_stream_command(app, "rotate", kRotateHelp, "--size", options.get());
  add_step_options(command, options.get());
  add_square_option(command, options.get());
  command
      ->add_option("--turn", options->turn, "left, right, half, mirror or flip")
      ->required();
  command->callback([options] {
    const uint32_t rotation = turn_named(options->turn, "--turn");
    convert(*options, [=] { return make_turn(rotation); });
  });
}

}  // namespace vexo
