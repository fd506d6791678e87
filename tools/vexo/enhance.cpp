// SPDX-License-Identifier: Apache-2.0
//
// vexo sharpen, deblock, saturate and anaglyph: frames as the library's calls
// want them, planes without gaps among them, and what they make of these.
#include <algorithm>
#include <cstdio>
#include <vector>

#include "commands.h"
#include "convert.h"
#include "error.h"
#include "orumlox/common.h"
#include "orumlox/rot.h"
#include "orumlox/unprefixed.h"
#include "pixels.h"
#include "turns.h"

namespace vexo {
namespace {

constexpr const char *kSharpenHelp =
    R"(Sharpens the luma of pictures and clips.

IN and OUT are those of vexo convert. Frames are sharpened in their own layout
if luma is a plane of 8 bits in it, else as yuv420, and go back to their own
where the library converts to it and OUT holds it. Chroma is copied, and so are
the two outermost rows and columns and a picture less than 5 wide or high. There
is one strength.

  vexo sharpen photo.y4m sharp.png)";

constexpr const char *kDeblockHelp =
    R"(Smooths the edges of the 8x8 blocks of decoded pictures and clips.

IN and OUT are those of vexo convert. All planes are filtered, each by itself,
in the frames' own layout if its planes are of 8 bits without pairs, else as
yuv420; frames go back to their own layout where the library converts to it and
OUT holds it.

N is how large an edge may be to pass for one that compression has made: flat
blocks that differ by up to 8/3 N are joined by a slope, those that differ by
more less and less, from 16/3 N on not at all. 0 changes nothing.

  vexo deblock clip.mp4 smooth.mp4 --strength 12)";

constexpr const char *kSaturateHelp =
    R"(Maps chroma through the library's saturation table.

This is not what a saturation would give. The table is made of 32-bit words read
as 16-bit ones: an even sample 2k of chroma becomes what N makes of k, that is
((k - 128) N >> 10) + 128, limited to 0..255, and an odd one what N makes of 0.
Pictures turn green. One line on standard error says so, unless --quiet.

IN and OUT are those of vexo convert. Frames are worked on in their own layout
if it has planes of U and V of 8 bits, else as yuv420, and go back to their own
where the library converts to it and OUT holds it.

  vexo saturate photo.y4m green.png --quiet)";

constexpr const char *kAnaglyphHelp =
    R"(Makes red-cyan anaglyphs of two views side by side.

IN and OUT are those of vexo convert. What is not RGB is converted to rgb888
first, and goes back to what it was where the library converts to it and OUT
holds it. Alpha is dropped. The anaglyph is half as wide as IN.

  vexo anaglyph photo.png anaglyph.png --mode 1)";

// `level` is the strength or the mode, of those that have one.
struct EnhanceOptions : StreamOptions {
  int level = 0;
};

// 8 bits a sample and every component in a plane of its own.
bool has_planes(const Layout &layout) {
  return layout.code == VEXO_FMT_YUV400 ||
         (layout.code <= VEXO_FMT_YUV422W && layout.planes == 3);
}

bool has_luma_plane(const Layout &layout) {
  return layout.code <= VEXO_FMT_YUV422W;
}

bool has_chroma_planes(const Layout &layout) {
  return has_planes(layout) && layout.planes == 3;
}

void copy_plane(const Frame &src, const Frame &dst, int plane) {
  mlox_blk_mcpy(dst.row(plane, 0), src.row(plane, 0), dst.img().stride[plane],
                src.img().stride[plane], src.row_bytes(plane), src.rows(plane));
}

// What changes samples and nothing else, in layouts of which a test is true.
class Filter : public Reshape {
 public:
  explicit Filter(bool takes_layout(const Layout &layout))
      : takes_layout_(takes_layout) {}

  const Layout &takes(const Layout &source) const override {
    return takes_layout_(source) ? source : layout_of(VEXO_FMT_YUV420);
  }
  void announce(StreamInfo *) override {}

 private:
  bool (*takes_layout_)(const Layout &layout);
};

class Sharpen : public Filter {
 public:
  Sharpen() : Filter(has_luma_plane) {}

  void apply(const Frame &src, const Frame &dst) override {
    const int width = src.width();
    const size_t size =
        static_cast<size_t>(width) * static_cast<size_t>(src.height());
    luma_.resize(size);
    sharp_.resize(size);
    mlox_blk_mcpy(luma_.data(), src.row(0, 0), width, src.img().stride[0],
                  width, src.height());
    // The strength has no effect.
    detail_enh(luma_.data(), width, src.height(), sharp_.data(), 0);
    mlox_blk_mcpy(dst.row(0, 0), sharp_.data(), dst.img().stride[0], width,
                  width, src.height());
    for (int p = 1; p < src.layout().planes; ++p) copy_plane(src, dst, p);
  }

 private:
  std::vector<uint8_t> luma_;
  std::vector<uint8_t> sharp_;
};

class Deblock : public Filter {
 public:
  explicit Deblock(int strength)
      : Filter(has_planes), strength_(static_cast<uint32_t>(strength)) {}

  void apply(const Frame &src, const Frame &dst) override {
    for (int p = 0; p < src.layout().planes; ++p) copy_plane(src, dst, p);
    require_ok(vexo_dbf8x8_yuv(&dst.img(), strength_), "deblock");
  }

 private:
  uint32_t strength_;
};

class Saturate : public Filter {
 public:
  explicit Saturate(int strength) : Filter(has_chroma_planes) {
    require_ok(vexo_vqe_cs_init(strength), "make a saturation table");
  }

  void apply(const Frame &src, const Frame &dst) override {
    copy_plane(src, dst, 0);
    for (int y = 0; y < src.rows(1); ++y) {
      color_sat(lut, src.row_bytes(1), src.row(1, y), src.row(2, y),
                dst.row(1, y), dst.row(2, y));
    }
  }
};

class Anaglyph : public Reshape {
 public:
  explicit Anaglyph(int mode) : mode_(mode) {}

  const Layout &takes(const Layout &source) const override {
    return PixelUnpacker::takes(source) ? source : layout_of(VEXO_FMT_RGB888);
  }

  void announce(StreamInfo *info) override {
    if (info->width % 2 != 0) {
      throw Error("two views side by side have an even width, not " +
                  std::to_string(info->width));
    }
    const Ratio aspect = info->aspect;
    reshape_stream(info, VEXO_ROT_COPY, info->width / 2, info->height);
    info->aspect = aspect;
    info->layout = &layout_of(VEXO_FMT_RGB888);
  }

  void apply(const Frame &src, const Frame &dst) override {
    const vexo_img views = dense(src, &views_);
    const vexo_img result = dense(dst, &result_);
    PixelUnpacker unpacker(src.layout());
    const ptrdiff_t step = unpacker.alpha() ? 4 : 3;
    uint8_t *to = views_.data();
    for (int y = 0; y < src.height(); ++y) {
      const uint8_t *from = unpacker.row(src, y);
      for (int x = 0; x < src.width(); ++x, from += step, to += 3) {
        std::copy_n(from, 3, to);
      }
    }
    require_ok(vexo_fpa(&views, &result, mode_), "make an anaglyph");
    mlox_blk_mcpy(dst.row(0, 0), result_.data(), dst.img().stride[0],
                  result.stride[0], result.stride[0], dst.height());
  }

 private:
  // An rgb888 picture of a frame's size, without gaps.
  static vexo_img dense(const Frame &frame, std::vector<uint8_t> *pixels) {
    vexo_img img = {};
    img.width[0] = frame.width();
    img.height[0] = frame.height();
    img.stride[0] = 3 * frame.width();
    img.format = VEXO_FMT_RGB888;
    pixels->resize(static_cast<size_t>(img.stride[0]) *
                   static_cast<size_t>(frame.height()));
    img.plane[0] = pixels->data();
    return img;
  }

  int mode_;
  std::vector<uint8_t> views_;
  std::vector<uint8_t> result_;
};

// The size of raw input alone is wanted, under either name.
CLI::App *add_enhancement(CLI::App &app, const char *name, const char *help,
                          EnhanceOptions *options) {
  CLI::App *const command =
      add_stream_command(app, name, help, "--size,--from-size", options);
  add_step_options(command, options);
  add_square_option(command, options);
  return command;
}

}  // namespace

void add_sharpen(CLI::App &app) {
  const auto options = std::make_shared<EnhanceOptions>();
  add_enhancement(app, "sharpen", kSharpenHelp, options.get())
      ->callback([options] {
        convert(*options, [&] { return std::make_unique<Sharpen>(); });
      });
}

void add_deblock(CLI::App &app) {
  const auto options = std::make_shared<EnhanceOptions>();
  options->level = 8;
  CLI::App *const command =
      add_enhancement(app, "deblock", kDeblockHelp, options.get());
  command->add_option("--strength", options->level, "N, 0 to 15 (8)")
      ->check(CLI::Range(0, 15));
  command->callback([options] {
    convert(*options,
            [&] { return std::make_unique<Deblock>(options->level); });
  });
}

void add_saturate(CLI::App &app) {
  const auto options = std::make_shared<EnhanceOptions>();
  options->level = 1180;
  CLI::App *const command =
      add_enhancement(app, "saturate", kSaturateHelp, options.get());
  command->add_option("--strength", options->level, "N, 1 to 32767 (1180)")
      ->check(CLI::Range(1, 32767));
  command->callback([options] {
    convert(*options,
            [&] { return std::make_unique<Saturate>(options->level); });
    if (options->quiet) return;
    std::fputs(
        "vexo: the library's table is made of 32-bit words read as 16-bit "
        "ones: these are not the colours that a saturation would give\n",
        stderr);
  });
}

void add_anaglyph(CLI::App &app) {
  const auto options = std::make_shared<EnhanceOptions>();
  CLI::App *const command =
      add_enhancement(app, "anaglyph", kAnaglyphHelp, options.get());
  command
      ->add_option("--mode", options->level,
                   "1: red of the left view, 2: of the right one")
      ->required()
      ->check(CLI::Range(1, 2));
  command->callback([options] {
    convert(*options,
            [&] { return std::make_unique<Anaglyph>(options->level); });
  });
}

}  // namespace vexo
