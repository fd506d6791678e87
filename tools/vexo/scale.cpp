// SPDX-License-Identifier: Apache-2.0
//
// vexo scale and vexo rotate: pictures of another size or another way up, in
// the layout that they come in. Only then are they converted to what the output
// holds.
#include <utility>

#include "commands.h"
#include "convert.h"
#include "error.h"
#include "orumlox/picture.h"
#include "orumlox/rot.h"
#include "orumlox/rsz.h"
#include "turns.h"

namespace vexo {
namespace {

constexpr const char *kScaleHelp =
    R"(Scales pictures and clips, and turns them on the way if asked to.

IN and OUT are those of vexo convert. Frames are scaled in the layout that IN
holds, each plane for itself, and then converted to what OUT holds or --to says.
With --rotate only YUV is scaled, but by --filter lanczos, which is slower and
keeps more, everything that it knows.

  vexo scale clip.mp4 small.mp4 --size 640x360
  vexo scale photo.y4m upright.png --size 104x160 --rotate right)";

constexpr const char *kRotateHelp =
    R"(Turns or mirrors pictures and clips.

IN and OUT are those of vexo convert. Frames are turned in the layout that IN
holds, each plane for itself, and then converted to what OUT holds or --to says.
4:2:2 has half its chroma rows, not columns, after a quarter turn: yuv422n
becomes yuv422w.

  vexo rotate photo.png mirrored.png --turn mirror
  vexo rotate clip.mp4 upright.mp4 --turn right)";

struct ScaleOptions : StreamOptions {
  std::string size;
  // Empty: no turn.
  std::string rotate;
  std::string filter = "plain";
  bool mode1 = false;
};

struct RotateOptions : StreamOptions {
  std::string turn;
};

void check_status(int32_t status, const char *what, const Frame &src,
                  const Frame &dst) {
  if (status == VEXO_OK) return;
  const auto size = [](const Frame &frame) {
    return std::to_string(frame.width()) + "x" + std::to_string(frame.height());
  };
  throw Error(std::string("the library refuses to ") + what + " " +
              src.layout().token + " from " + size(src) + " to " + size(dst) +
              " (status " + std::to_string(status) + ")");
}

class Scale : public Reshape {
 public:
  explicit Scale(const ScaleOptions &options)
      : mode_(options.mode1 ? VEXO_MODE_MOD1 : 0),
        filter_(options.filter == "lanczos" ? VEXO_FILTER_LANCZOS
                                            : VEXO_FILTER_PLAIN) {
    parse_size(options.size, "--size", &width_, &height_);
    if (!options.rotate.empty()) {
      rotation_ = turn_named(options.rotate, "--rotate");
    }
  }

  void announce(StreamInfo *info) override {
    // The library would scale and silently leave the mirroring out.
    if (rotation_ > VEXO_ROT_180 && filter_ == VEXO_FILTER_PLAIN &&
        (info->width != width_ || info->height != height_)) {
      throw Error(
          "--rotate mirrors only what keeps its size: scale, then "
          "vexo rotate");
    }
    reshape_stream(info, rotation_, width_, height_);
  }

  void apply(const Frame &src, const Frame &dst) override {
    vexo_img out = dst.img();
    // The library compares the codes, also where the planes of a turned layout
    // are another's.
    out.format = src.img().format;
    out.mode = mode_;
    // What vexo_rsz does not scale.
    if (filter_ != VEXO_FILTER_PLAIN ||
        src.img().format >= VEXO_FMT_YUV420PLANAR16) {
      vexo_picture_options how = {};
      how.rotation = static_cast<int32_t>(rotation_);
      how.mode = mode_;
      how.filter = filter_;
      out.format = dst.img().format;
      out.color_std = src.img().color_std;
      check_status(vexo_picture_scale(nullptr, &src.img(), &out, &how), "scale",
                   src, dst);
      return;
    }
    if (rotation_ == VEXO_ROT_COPY) {
      check_status(vexo_rsz(&src.img(), &out), "scale", src, dst);
    } else {
      check_status(vexo_rsz_rot(&src.img(), rotation_, &out), "scale and turn",
                   src, dst);
    }
  }

 private:
  int width_ = 0;
  int height_ = 0;
  uint32_t rotation_ = VEXO_ROT_COPY;
  int32_t mode_;
  int32_t filter_;
};

class Rotate : public Reshape {
 public:
  explicit Rotate(const std::string &turn)
      : rotation_(turn_named(turn, "--turn")) {}

  void announce(StreamInfo *info) override {
    int width = info->width;
    int height = info->height;
    if (is_quarter(rotation_)) std::swap(width, height);
    reshape_stream(info, rotation_, width, height);
  }

  void apply(const Frame &src, const Frame &dst) override {
    if (src.img().format < VEXO_FMT_YUV420PLANAR16) {
      check_status(vexo_rot(&src.img(), rotation_, &dst.img()), "turn", src,
                   dst);
      return;
    }
    vexo_img out = dst.img();
    out.color_std = src.img().color_std;
    vexo_picture_options how = {};
    how.rotation = static_cast<int32_t>(rotation_);
    check_status(vexo_picture_turn(nullptr, &src.img(), &out, &how), "turn",
                 src, dst);
  }

 private:
  uint32_t rotation_;
};

}  // namespace

void add_scale(CLI::App &app) {
  const auto options = std::make_shared<ScaleOptions>();
  CLI::App *const command = add_stream_command(app, "scale", kScaleHelp,
                                               "--from-size", options.get());
  add_step_options(command, options.get());
  command->add_option("--size", options->size, "WxH of the output")->required();
  command->add_flag("--mode1", options->mode1,
                    "The second kind of enlargement");
  command
      ->add_option("--filter", options->filter,
                   "plain (default), or lanczos: of three lobes")
      ->check(CLI::IsMember({"plain", "lanczos"}));
  command->add_option(
      "--rotate", options->rotate,
      "left, right or half; the library's codes 0 to 5, of which "
      "4 and 5 (mirror, flip) need an unchanged size");
  command->callback([options] {
    convert(*options, [&] { return std::make_unique<Scale>(*options); });
  });
}

void add_rotate(CLI::App &app) {
  const auto options = std::make_shared<RotateOptions>();
  CLI::App *const command =
      add_stream_command(app, "rotate", kRotateHelp, "--size", options.get());
  add_step_options(command, options.get());
  command
      ->add_option("--turn", options->turn, "left, right, half, mirror or flip")
      ->required();
  command->callback([options] {
    convert(*options, [&] { return std::make_unique<Rotate>(options->turn); });
  });
}

}  // namespace vexo
