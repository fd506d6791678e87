// SPDX-License-Identifier: Apache-2.0
//
// vexo tonemap: HDR pictures as SDR ones, in a layout that the library's tone
// mapping writes. From there they are converted to what the output holds.
#include <utility>

#include "commands.h"
#include "error.h"
#include "orumlox/hdr.h"
#include "tonemap.h"

namespace vexo {
namespace {

constexpr const char *kTonemapHelp =
    R"(Tone maps HDR (BT.2020, PQ or HLG) to SDR (BT.709).

IN is a Y4M of 10-bit 4:2:0 (C420p10) or raw frames of yuv420Planar16 or p010le,
of video range; OUT is as for vexo convert. The library writes rgb888, rgba8888,
argb8888, yuv420, nv12 and nv21; what it converts those to without a change of
colours is written too.

YUV is BT.709 of video range, 16 to 235, and so is raw RGB, as the library gives
it. In PNG and PPM, which have no such range, RGB is expanded to 0 to 255.

The tone curve is that of a source of 1000 nits for a peak up to 1500, else that
of 4000. With --measure each frame's brightest luma chooses the curve of 1000,
of 2000 or of more than 4000. hlg has none: neither option changes anything.

  vexo tonemap hdr.mkv sdr.mp4
  vexo tonemap hdr.y4m sdr%03d.png --kind hdr10-mild --nit 4000)";

struct MappingKind {
  const char *name;
  int32_t code;
};
constexpr MappingKind kKinds[] = {{"hdr10", VEXO_HDR_HDR10},
                                  {"hdr10-mild", VEXO_HDR_HDR10_MILD},
                                  {"hlg", VEXO_HDR_HLG}};

const MappingKind &kind_of(const StreamOptions &options, const Colour &colour) {
  if (options.kind.empty()) return kKinds[colour.is_hlg() ? 2 : 0];
  for (const MappingKind &kind : kKinds) {
    if (options.kind == kind.name) return kind;
  }
  throw Error("--kind '" + options.kind +
              "' is none of hdr10, hdr10-mild, hlg");
}

int nit_of(const StreamOptions &options, const Colour &colour) {
  return options.nit > 0 ? options.nit : source_nit(colour);
}

// The layout that is written or, if the library does not tone map into that,
// one from which it is reached without a change of colours.
const Layout &mapped_layout(const StreamOptions &streams, Kind kind,
                            const Layout &source) {
  if (!streams.to.empty()) {
    const Layout &wanted = layout_named(streams.to);
    if (vexo_hdr_supports(source.code, wanted.code) != 0) return wanted;
    return layout_of(is_rgb(wanted) ? VEXO_FMT_RGBA8888 : VEXO_FMT_YUV420);
  }
  if (is_picture(kind)) return layout_of(VEXO_FMT_RGB888);
  // As the source has its chroma, if the output can.
  return layout_of(kind == Kind::kRaw && source.code == VEXO_FMT_P010LE
                       ? VEXO_FMT_NV12
                       : VEXO_FMT_YUV420);
}

class Tonemap : public Reshape {
 public:
  // Of the tonemap command raw RGB has the range that the library gives it.
  Tonemap(const StreamOptions &options, Kind output, bool last, bool command)
      : options_(options),
        output_(output),
        last_(last),
        full_range_(!command || is_picture(output)) {}

  void announce(StreamInfo *info) override {
    how_.hdr_kind = kind_of(options_, info->colour).code;
    const Layout &source = *info->layout;
    if (!is_deep(source)) {
      throw Error(std::string("the input holds ") + source.token +
                  ": only yuv420Planar16 (Y4M: 420p10) and p010le are tone "
                  "mapped");
    }
    if (info->colour.range == 2) {
      throw Error(
          "the input is of full range: only luma of 64 to 940 is tone mapped");
    }
    how_.source_nit = nit_of(options_, info->colour);
    how_.measure = options_.measure ? 1 : 0;
    how_.full_range = full_range_ ? 1 : 0;
    // Chroma stays where the source has it: in video, with the left pixel.
    info->y4m_chroma = "420mpeg2";
    info->layout = last_ ? &mapped_layout(options_, output_, source)
                         : &layout_of(VEXO_FMT_YUV420);
    info->color_std = VEXO_STD_BT709;
    info->colour.matrix = info->colour.primaries = info->colour.transfer = 1;
    info->colour.range = 1;
    info->colour.display_peak = 0;
    info->colour.brightest = 0;
  }

  void apply(const Frame &src, const Frame &dst) override {
    require_ok(
        vexo_picture_tonemap(context_.get(), &src.img(), &dst.img(), &how_),
        "tone map", src, dst);
  }

 private:
  const StreamOptions &options_;
  Kind output_;
  bool last_;
  bool full_range_;
  vexo_picture_options how_ = {};
  const PictureContext context_;
};

}  // namespace

bool is_mapped(const StreamOptions &options, const StreamInfo &source) {
  if (options.kind == "none") return false;
  if (!options.kind.empty()) return true;
  if (!options.to.empty() &&
      layout_named(options.to).code >= VEXO_FMT_YUV420PLANAR16) {
    return false;
  }
  return source.colour.is_hdr();
}

std::string mapping_text(const StreamOptions &options, const Colour &colour) {
  return std::string(kind_of(options, colour).name) + " of " +
         std::to_string(nit_of(options, colour)) + " nits";
}

std::unique_ptr<Reshape> make_tonemap(const StreamOptions &options, Kind kind,
                                      bool last) {
  return std::make_unique<Tonemap>(options, kind, last, false);
}

void add_tonemap(CLI::App &app) {
  const auto options = std::make_shared<StreamOptions>();
  CLI::App *const command =
      add_stream_command(app, "tonemap", kTonemapHelp, "--size", options.get());
  add_tone_options(command, options.get());
  add_square_option(command, options.get());
  command->callback([options] {
    const Kind kind = output_kind(*options);
    convert(
        *options,
        [&] { return std::make_unique<Tonemap>(*options, kind, true, true); },
        Hdr::kAsItIs);
  });
}

}  // namespace vexo
