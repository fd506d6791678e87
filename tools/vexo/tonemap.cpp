// SPDX-License-Identifier: Apache-2.0
//
// vexo tonemap: HDR pictures as SDR ones, in a layout that the library's tone
// mapping writes. From there they are converted to what the output holds.
#include <algorithm>
#include <cstring>
#include <optional>
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

// Whether the library tone maps into this layout. Its YV12 is no picture: every
// band of rows begins at the start of the planes.
bool maps_into(const Layout &layout) {
  constexpr int32_t kCodes[] = {VEXO_FMT_RGB888,   VEXO_FMT_RGBA8888,
                                VEXO_FMT_ARGB8888, VEXO_FMT_YUV420,
                                VEXO_FMT_NV12,     VEXO_FMT_NV21};
  return std::find(std::begin(kCodes), std::end(kCodes), layout.code) !=
         std::end(kCodes);
}

bool is_picture(Kind kind) { return kind == Kind::kPng || kind == Kind::kPpm; }

// The layout that is written or, if the library does not tone map into that,
// one from which it is reached without a change of colours.
const Layout &mapped_layout(const StreamOptions &streams,
                            const Layout &source) {
  const Kind kind = output_kind(streams);
  if (!streams.to.empty()) {
    const Layout &wanted = layout_named(streams.to);
    if (maps_into(wanted)) return wanted;
    return layout_of(is_rgb(wanted) ? VEXO_FMT_RGBA8888 : VEXO_FMT_YUV420);
  }
  if (is_picture(kind)) return layout_of(VEXO_FMT_RGB888);
  // As the source has its chroma, if the output can.
  return layout_of(kind == Kind::kRaw && source.code == VEXO_FMT_P010LE
                       ? VEXO_FMT_NV12
                       : VEXO_FMT_YUV420);
}

uint8_t to_full_range(int value) {
  return static_cast<uint8_t>(((std::clamp(value, 16, 235) - 16) * 255 + 109) /
                              219);
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
    vexo_img in = src.img();
    if (options_.measure) in = measurable(src);
    // In rows of an odd width the library would write over the last chroma
    // sample of each. A frame has room for one column more, which is dropped
    // again and which no chroma sample is made from.
    in.width[0] += in.width[0] % 2;
    in.mode = options_.measure ? VEXO_HDR_MODE_MEASURE : 0;
    in.source_nit = options_.nit;

    // RGB888 comes with gaps between its bands, and is taken from RGBA8888.
    const bool drop_fourth = dst.layout().code == VEXO_FMT_RGB888;
    if (!mapped_) {
      mapped_.emplace(drop_fourth ? layout_of(VEXO_FMT_RGBA8888) : dst.layout(),
                      src.width(), src.height(), VEXO_STD_DEFAULT);
    }
    const vexo_img out = mapped_->img();
    // Not vexo_hdr_to_sdr, which does not tell that memory ran out.
    const int32_t status =
        kind_ == VEXO_HDR_HLG
            ? vexo_hlg_to_sdr8(&in, &out)
            : vexo_hdr10_to_sdr8(&in, &out, kind_ == VEXO_HDR_HDR10_MILD);
    if (status != VEXO_OK) {
      throw Error("the library refuses to tone map (status " +
                  std::to_string(status) + ")");
    }
    for (int p = 0; p < dst.layout().planes; ++p) {
      // The library writes rows without gaps, whatever the stride.
      const PlaneRule &rule = mapped_->layout().plane[p];
      const int64_t step =
          int64_t{rule.unit_bytes} * (in.width[0] >> rule.x_shift);
      for (int y = 0; y < dst.rows(p); ++y) {
        copy_row(out.plane[p] + y * step, drop_fourth, dst.row(p, y),
                 dst.row_bytes(p));
      }
    }
  }

 private:
  void copy_row(const uint8_t *from, bool drop_fourth, uint8_t *to,
                int bytes) const {
    if (drop_fourth) {
      for (int i = 0; i < bytes; i += 3, from += 4) {
        std::memcpy(to + i, from, 3);
      }
    } else {
      std::memcpy(to, from, static_cast<size_t>(bytes));
    }
    // The 255 of a fourth byte stays.
    if (full_range_) std::transform(to, to + bytes, to, to_full_range);
  }

  // The library measures luma words as they are, so that the shifted ones of
  // p010le would always pass for the brightest, and takes the rows to have no
  // gaps. It is handed 10-bit words in such rows, whatever comes in.
  vexo_img measurable(const Frame &src) {
    if (!words_) {
      words_.emplace(layout_of(VEXO_FMT_YUV420PLANAR16), src.width(),
                     src.height(), VEXO_STD_DEFAULT);
    }
    vexo_img img = words_->img();
    img.stride[0] = 2 * (img.width[0] + img.width[0] % 2);
    const bool shifted = src.layout().code == VEXO_FMT_P010LE;
    for (int p = 0; p < words_->layout().planes; ++p) {
      const bool paired = shifted && p > 0;
      for (int y = 0; y < words_->rows(p); ++y) {
        const uint8_t *from = src.row(paired ? 1 : p, y);
        if (paired && p == 2) from += 2;
        uint8_t *to = img.plane[p] + int64_t{y} * img.stride[p];
        const uint8_t *const end = to + words_->row_bytes(p);
        for (; to < end; to += 2, from += paired ? 4 : 2) {
          const int word = from[0] | from[1] << 8;
          const int sample = shifted ? word >> 6 : word & 1023;
          to[0] = static_cast<uint8_t>(sample & 255);
          to[1] = static_cast<uint8_t>(sample >> 8);
        }
      }
    }
    return img;
  }

  const TonemapOptions &options_;
  int32_t kind_;
  bool full_range_;
  // Of every frame what the library writes and, to be measured, reads.
  std::optional<Frame> mapped_;
  std::optional<Frame> words_;
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
