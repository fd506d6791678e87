// SPDX-License-Identifier: Apache-2.0
//
// vexo compare: how far two pictures or clips are apart, frame by frame.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <optional>
#include <vector>

#include "commands.h"
#include "convert.h"
#include "error.h"
#include "metrics.h"
#include "route.h"

namespace vexo {
namespace {

constexpr const char *kCompareHelp =
    R"(Says how far two pictures or clips of one size are apart.

A line a frame, then the mean: PSNR in decibels of each component and of all
samples together, and SSIM (windows of 8x8, 4 apart; of all components by their
numbers of samples). The mean of PSNR is that of all frames' squared errors. B
is converted to the layout of A; what is YUV in one and RGB in the other, or YUV
of another matrix or range, is compared as RGB. Frames that one of the two lacks
are an error.

--map draws the frame that is furthest off: eight times the largest difference
of each pixel's components, as grey.

  vexo compare original.y4m coded.mp4
  vexo compare a.png b.jpg --json --map where.png)";

struct CompareOptions {
  StreamOptions a;
  StreamOptions b;
  std::string map;
  bool json = false;
  bool quiet = false;
};

// Of a component, or of all.
struct Score {
  std::string name;
  double error = 0;
  double ssim = 0;
  double samples = 0;
};

struct FrameScore {
  std::vector<Score> components;
  int peak = 255;

  Score all() const {
    Score all;
    all.name = "all";
    for (const Score &score : components) {
      all.error += score.error * score.samples;
      all.ssim += score.ssim * score.samples;
      all.samples += score.samples;
    }
    all.error /= all.samples;
    all.ssim /= all.samples;
    return all;
  }
};

const Layout &comparable(const Layout &layout) {
  if (has_components(layout)) return layout;
  if (is_rgb(layout)) return layout_of(VEXO_FMT_RGBA8888);
  switch (layout.code) {
    case VEXO_FMT_UYVY:
    case VEXO_FMT_YUYV:
    case VEXO_FMT_YV16:
      return layout_of(VEXO_FMT_YUV422N);
    case VEXO_FMT_P010LE:
      return layout_of(VEXO_FMT_YUV420PLANAR16);
    default:
      return layout_of(VEXO_FMT_YUV420);
  }
}

// Whether equal samples are not equal colours: one side is RGB, their ranges
// differ or the matrices that both say.
bool wants_rgb(const StreamInfo &a, const StreamInfo &b) {
  if (is_rgb(*a.layout) || is_rgb(*b.layout)) return true;
  if (a.color_std == kNoStandard || b.color_std == kNoStandard ||
      is_deep(*a.layout) || is_deep(*b.layout)) {
    return false;
  }
  const bool said = a.colour.matrix != Colour::kUnknown &&
                    b.colour.matrix != Colour::kUnknown;
  return is_full_range(a.color_std) != is_full_range(b.color_std) ||
         (said && a.color_std != b.color_std);
}

// A file's frames in a layout whose components are known.
class Side {
 public:
  explicit Side(const StreamOptions &options)
      : reader_(open_reader(options)),
        source_(taken_info(options, *reader_)),
        frame_(frame_of(source_)),
        converted_(frame_) {}

  const StreamInfo &info() const { return source_; }

  void compare_as(const Layout &layout) {
    if (source_.layout == &layout) return;
    converts_ = true;
    StreamInfo info = source_;
    how_.chroma = interpolation(*info.layout, layout, info);
    info.layout = &layout;
    converted_ = frame_of(info);
  }

  // Null at the end.
  const Frame *next() {
    if (!reader_->read(frame_)) return nullptr;
    if (!converts_) return &frame_;
    require_ok(vexo_picture_convert(context_.get(), &frame_.img(),
                                    &converted_.img(), &how_),
               "convert", frame_, converted_);
    return &converted_;
  }

 private:
  std::unique_ptr<FrameReader> reader_;
  StreamInfo source_;
  Frame frame_;
  Frame converted_;
  bool converts_ = false;
  vexo_picture_options how_ = {};
  const PictureContext context_;
};

// What a text says of a number that may be infinite.
std::string number_text(double value, bool json) {
  if (std::isinf(value)) return json ? "null" : "inf";
  char text[32];
  std::snprintf(text, sizeof text, "%.4f", value);
  return text;
}

std::string score_text(const FrameScore &frame, bool json) {
  std::vector<Score> scores = frame.components;
  scores.push_back(frame.all());
  std::string psnr;
  std::string ssim;
  for (const Score &score : scores) {
    const std::string first =
        number_text(psnr_of(score.error, frame.peak), json);
    const std::string second = number_text(score.ssim, json);
    const auto add = [&](std::string *to, const std::string &number) {
      if (json && !to->empty()) to->append(", ");
      to->append(json ? "\"" : " ").append(score.name);
      to->append(json ? "\": " : ":").append(number);
    };
    add(&psnr, first);
    add(&ssim, second);
  }
  // JSON has no infinity: null is that of equal frames.
  return json ? "\"psnr\": {" + psnr + "}, \"ssim\": {" + ssim + "}"
              : "psnr" + psnr + "  ssim" + ssim;
}

// The components' differences as a grey picture.
Frame map_of(const std::vector<Samples> &a, const std::vector<Samples> &b,
             int peak) {
  Frame map(layout_of(VEXO_FMT_YUV400), a[0].width, a[0].height,
            VEXO_STD_DEFAULT);
  for (int y = 0; y < map.height(); ++y) {
    for (int x = 0; x < map.width(); ++x) {
      int most = 0;
      for (size_t c = 0; c < a.size(); ++c) {
        const int64_t row = int64_t{y} * a[c].height / a[0].height;
        const int64_t column = int64_t{x} * a[c].width / a[0].width;
        const size_t at = static_cast<size_t>(row * a[c].width + column);
        most = std::max(most, std::abs(a[c].values[at] - b[c].values[at]));
      }
      map.row(0, y)[x] =
          static_cast<uint8_t>(std::min(most * 8 * 255 / peak, 255));
    }
  }
  return map;
}

void write_map(const std::string &path, const Frame &map) {
  StreamInfo info;
  info.layout = &map.layout();
  info.width = map.width();
  info.height = map.height();
  StreamOptions options;
  options.out = path;
  write_picture(output_kind(options), path, info, map, {});
}

class Comparison {
 public:
  explicit Comparison(const CompareOptions &options)
      : options_(options), a_(options.a), b_(options.b) {
    if (a_.info().width != b_.info().width ||
        a_.info().height != b_.info().height) {
      throw Error(options.a.in + " is " + size_of(a_.info()) + ", " +
                  options.b.in + " " + size_of(b_.info()));
    }
    const Layout &own = comparable(*a_.info().layout);
    const bool as_rgb = !is_rgb(own) && wants_rgb(a_.info(), b_.info());
    const Layout &layout = as_rgb ? layout_of(VEXO_FMT_RGB888) : own;
    a_.compare_as(layout);
    b_.compare_as(layout);
  }

  void run() {
    std::FILE *const out = standard_output();
    if (options_.json) std::fprintf(out, "{\n  \"frames\": [");
    for (;; ++count_) {
      const Frame *const one = a_.next();
      const Frame *const other = b_.next();
      if (one == nullptr && other == nullptr) break;
      if (one == nullptr || other == nullptr) {
        throw Error((one == nullptr ? options_.a.in : options_.b.in) +
                    " ends after " + std::to_string(count_) +
                    " frames, the other does not");
      }
      add(*one, *other);
    }
    if (count_ == 0) throw Error("the input has no frame");
    for (Score &score : sum_.components) {
      score.error /= static_cast<double>(count_);
      score.ssim /= static_cast<double>(count_);
    }
    if (options_.json) {
      std::fprintf(out, "\n  ],\n  \"mean\": {%s}\n}\n",
                   score_text(sum_, true).c_str());
    } else {
      std::fprintf(out, "mean of %lld %s\n", static_cast<long long>(count_),
                   score_text(sum_, false).c_str());
    }
    if (worst_map_) write_map(options_.map, *worst_map_);
  }

 private:
  static std::string size_of(const StreamInfo &info) {
    return std::to_string(info.width) + "x" + std::to_string(info.height);
  }

  void add(const Frame &one, const Frame &other) {
    FrameScore frame;
    const std::vector<Samples> a = components_of(one, &frame.peak);
    const std::vector<Samples> b = components_of(other, &frame.peak);
    for (size_t c = 0; c < a.size(); ++c) {
      Score score;
      score.name = a[c].name;
      score.error = squared_error(a[c], b[c]);
      score.ssim = ssim_of(a[c], b[c], frame.peak);
      score.samples = static_cast<double>(a[c].values.size());
      frame.components.push_back(score);
    }
    std::FILE *const out = standard_output();
    if (options_.json) {
      std::fprintf(out, "%s\n    {%s}", count_ == 0 ? "" : ",",
                   score_text(frame, true).c_str());
    } else if (!options_.quiet) {
      std::fprintf(out, "%7lld %s\n", static_cast<long long>(count_),
                   score_text(frame, false).c_str());
    }
    if (!options_.map.empty() && frame.all().error > worst_) {
      worst_ = frame.all().error;
      worst_map_ = map_of(a, b, frame.peak);
    }
    if (count_ == 0) {
      sum_ = frame;
      return;
    }
    for (size_t c = 0; c < a.size(); ++c) {
      sum_.components[c].error += frame.components[c].error;
      sum_.components[c].ssim += frame.components[c].ssim;
    }
  }

  const CompareOptions &options_;
  Side a_;
  Side b_;
  int64_t count_ = 0;
  FrameScore sum_;
  double worst_ = -1;
  std::optional<Frame> worst_map_;
};

}  // namespace

void add_compare(CLI::App &app) {
  const auto options = std::make_shared<CompareOptions>();
  CLI::App *const command = app.add_subcommand("compare", kCompareHelp);
  command->add_option("A", options->a.in, "One file")->required();
  command->add_option("B", options->b.in, "The other")->required();
  command->add_option("--map", options->map, "Picture of the differences");
  command->add_flag("--json", options->json,
                    "As JSON, where null is the infinite PSNR of equal frames");
  command->add_flag("--quiet", options->quiet, "The mean alone");
  for (StreamOptions *const side : {&options->a, &options->b}) {
    side->kind = "none";
  }
  command->callback([options] { Comparison(*options).run(); });
}

}  // namespace vexo
