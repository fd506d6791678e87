// SPDX-License-Identifier: Apache-2.0
//
// vexo tonemap: HDR pictures as SDR ones, in a layout that the library's tone
// mapping writes. From there they are converted to what the output holds.
#include <utility>

#include "commands.h"
#include "convert.h"
#include "error.h"
#include "orumlox/hdr.h"

namespace vexo {
namespace {

constexpr const char *kTonemapHelp =
    R"(Tone maps HDR pictures and clips (BT.2020, PQ or HLG) to SDR (BT.709).

IN is a Y4M of 10-bit 4:2:0 (C420p10) or raw frames of yuv420Planar16 or p010le,
of video range; OUT is as for vexo convert. The library writes rgb888, rgba8888,
argb8888, yuv420, nv12 and nv21; what it converts those to without a change of
colours is written too.

YUV is BT.709 of video range, 16 to 235, and so is raw RGB, as the library gives
it. In PNG and PPM, which have no such range, RGB is expanded to 0 to 255.

The tone curve is that of a source of 1000 nits for a peak up to 1500, else that
of 4000. With --measure each frame's brightest luma chooses the curve of 1000,
of 2000 or of more than 4000. hlg has none: neither option changes anything.)";

struct TonemapOptions : StreamOptions {
  std::string kind = "hdr10";
  int nit = 1000;
  bool measure = false;
};

int32_t kind_code(const std::string &name) {
  constexpr std::pair<const char *, int32_t> kKinds[] = {
      {"hdr10", VEXO_HDR_HDR10},
      {"hdr10-mild", VEXO_HDR_HDR10_MILD},
      {"hlg", VEXO_HDR_HLG}};
  for (const auto &[known, code] : kKinds) {
    if (name == known) return code;
  }
  throw Error("--kind '" + name + "' is none of hdr10, hdr10-mild, hlg");
}

bool is_picture(Kind kind) { return kind == Kind::kPng || kind == Kind::kPpm; }

// The layout that is written or, if the library does not tone map into that,
// one from which it is reached without a change of colours.
const Layout &mapped_layout(const StreamOptions &streams,
                            const Layout &source) {
  const Kind kind = output_kind(streams);
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
  explicit Tonemap(const TonemapOptions &options)
      : options_(options),
        kind_(kind_code(options.kind)),
        full_range_(is_picture(output_kind(options))) {}

  void announce(StreamInfo *info) const override {
    const Layout &source = *info->layout;
    if (source.code != VEXO_FMT_YUV420PLANAR16 &&
        source.code != VEXO_FMT_P010LE) {
      throw Error(std::string("the input holds ") + source.token +
                  ": only yuv420Planar16 (Y4M: 420p10) and p010le are tone "
                  "mapped");
    }
    std::string &remarks = info->y4m_remarks;
    if (remarks.find(" XCOLORRANGE=FULL") != std::string::npos) {
      throw Error(
          "the input is of full range: only luma of 64 to 940 is tone mapped");
    }
    if (remarks.find(" XCOLORRANGE=") == std::string::npos) {
      remarks += " XCOLORRANGE=LIMITED";
    }
    // Chroma stays where the source has it: in video, with the left pixel.
    info->y4m_chroma = "420mpeg2";
    info->layout = &mapped_layout(options_, source);
  }

  void apply(const Frame &src, const Frame &dst) override {
    vexo_picture_options how = {};
    how.hdr_kind = kind_;
    how.source_nit = options_.nit;
    how.measure = options_.measure ? 1 : 0;
    how.full_range = full_range_ ? 1 : 0;
    const int32_t status =
        vexo_picture_tonemap(context_.get(), &src.img(), &dst.img(), &how);
    if (status == VEXO_OK) return;
    throw Error(std::string("the library refuses to tone map: ") +
                vexo_status_name(status));
  }

 private:
  const TonemapOptions &options_;
  int32_t kind_;
  bool full_range_;
  const PictureContext context_;
};

}  // namespace

void add_tonemap(CLI::App &app) {
  const auto options = std::make_shared<TonemapOptions>();
  CLI::App *const command =
      add_stream_command(app, "tonemap", kTonemapHelp, "--size", options.get());
  command->add_option("--kind", options->kind,
                      "hdr10 (default: PQ), hdr10-mild (PQ, milder colours) or "
                      "hlg");
  CLI::Option *const nit =
      command
          ->add_option("--nit", options->nit,
                       "Peak of the source in nits, 1 to 10000 (1000)")
          ->check(CLI::Range(1, 10000));
  command
      ->add_flag("--measure", options->measure,
                 "Choose the curve by each frame's brightest luma")
      ->excludes(nit);
  command->callback([options] {
    Tonemap reshape(*options);
    convert(*options, &reshape);
  });
}

}  // namespace vexo
