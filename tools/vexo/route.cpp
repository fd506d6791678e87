// SPDX-License-Identifier: Apache-2.0
#include "route.h"

#include <algorithm>
#include <utility>

#include "crop.h"
#include "error.h"
#include "formats.h"
#include "orumlox/csc_new.h"
#include "scale.h"
#include "tonemap.h"
#include "turns.h"

namespace vexo {
namespace {

bool has_standard(const Layout &layout) {
  return !is_rgb(layout) && layout.code != VEXO_FMT_YUV400;
}

int32_t known(int32_t color_std) {
  return color_std == kNoStandard ? VEXO_STD_DEFAULT : color_std;
}

Error no_route(const Layout &from, const Layout &to, int32_t color_std) {
  std::string sentence = std::string("pair not supported by the library: ") +
                         from.token + " to " + to.token;
  if (known(color_std) != VEXO_STD_DEFAULT) {
    sentence += std::string(" (") + standard_name(color_std) + ")";
  }
  return Error(sentence);
}

bool is_smooth(const StreamOptions &options) {
  if (options.chroma.empty() || options.chroma == "plain") return false;
  if (options.chroma == "smooth") return true;
  throw Error("--chroma '" + options.chroma + "' is neither plain nor smooth");
}

bool leads_to(const Layout &from, const Layout &to, int32_t color_std) {
  return vexo_picture_passes(from.code, color_std, to.code, color_std,
                             nullptr) != 0;
}

std::vector<const Layout *> layouts_of(const std::string &names) {
  std::vector<const Layout *> layouts;
  size_t start = 0;
  for (;;) {
    const size_t comma = std::min(names.find(',', start), names.size());
    layouts.push_back(&layout_named(names.substr(start, comma - start)));
    if (comma == names.size()) return layouts;
    start = comma + 1;
  }
}

void convert_step(const PictureContext &context,
                  const vexo_picture_options &how, const Frame &src,
                  const Frame &dst) {
  vexo_img in = src.img();
  vexo_img out = dst.img();
  // That of RGB is the one of its way back to YUV.
  for (vexo_img *const img : {&in, &out}) {
    if (is_rgb(layout_of(img->format))) img->color_std = 0;
  }
  require_ok(vexo_picture_convert(context.get(), &in, &out, &how), "convert",
             src, dst);
}

}  // namespace

int32_t interpolation(const Layout &from, const Layout &to,
                      const StreamInfo &info) {
  if (vexo_csc_new_supports(from.code, to.code, known(info.color_std)) == 0) {
    return VEXO_CHROMA_AS_IT_IS;
  }
  return info.colour.siting == 2 ? VEXO_CHROMA_CENTRE : VEXO_CHROMA_LEFT;
}

Route::Route(const StreamOptions &options, Kind kind, const StreamInfo &source,
             const MakeReshape &make, Hdr hdr)
    : smooth_(is_smooth(options)),
      dither_(options.dither),
      chooses_(kind == Kind::kVideo && options.standard.empty() &&
               options.range.empty()) {
  add(source, nullptr);
  const bool mapped = hdr == Hdr::kMapped && is_mapped(options, source);
  if (mapped) reshape(make_tonemap(options, kind, !make));
  if (!options.keep_turn) {
    for (const uint32_t turn : source.turns) {
      if (turn != 0) reshape(make_turn(turn));
    }
  }
  if (!options.crop.empty()) reshape(make_crop(options.crop));
  if (options.square && pixel_shape(source) != 1) reshape(make_squaring());
  const Layout *home = steps_.back().info.layout;
  if (make) {
    const size_t steps = steps_.size();
    reshape(make());
    // Without a change of layout on the way there is nowhere to return to.
    if (steps_.size() == steps + 1) home = steps_.back().info.layout;
  }
  finish(options, kind, *home);
  for (size_t i = 1; i + 1 < steps_.size(); ++i) {
    between_.push_back(frame_of(steps_[i].info));
  }
}

void Route::add(StreamInfo info, std::unique_ptr<Reshape> reshape) {
  // The library's BT.709 makes white of RGB too bright, and it has no BT.2020
  // from there. What is written says that it is BT.601 then.
  if (chooses_ && is_rgb(*info.layout)) info.color_std = VEXO_STD_DEFAULT;
  steps_.push_back({std::move(info), std::move(reshape)});
}

vexo_picture_options Route::how(const Layout &from, const Layout &to,
                                const StreamInfo &info) const {
  vexo_picture_options how = {};
  how.dither = dither_ ? 1 : 0;
  const int32_t color_std = known(info.color_std);
  const bool fine =
      color_std != VEXO_STD_DEFAULT &&
      (from.code == VEXO_FMT_YUV422N || from.code == VEXO_FMT_YUV444);
  if (smooth_ || fine || color_std >= VEXO_STD_BT2020) {
    how.chroma = interpolation(from, to, info);
  }
  return how;
}

void Route::check_conversion(const Layout &from, const Layout &to) const {
  const StreamInfo &info = steps_.back().info;
  if (info.color_std == kNoStandard && has_standard(from) != has_standard(to)) {
    throw Error(std::string("the stream's matrix is ") +
                matrix_name(info.colour.matrix) +
                ", which the library does not convert; --standard takes it as "
                "another");
  }
  if (!leads_to(from, to, known(info.color_std)) &&
      how(from, to, info).chroma == 0) {
    throw no_route(from, to, info.color_std);
  }
}

void Route::convert_to(const Layout &layout) {
  StreamInfo info = steps_.back().info;
  if (info.layout == &layout) return;
  check_conversion(*info.layout, layout);
  const bool had = has_standard(*info.layout);
  if (!had && has_standard(layout)) {
    info.colour.range = is_full_range(info.color_std) ? 2 : 1;
    info.colour.matrix = matrix_of(info.color_std);
  }
  info.layout = &layout;
  add(std::move(info), nullptr);
}

void Route::reshape(std::unique_ptr<Reshape> reshape) {
  convert_to(reshape->takes(*steps_.back().info.layout));
  StreamInfo info = steps_.back().info;
  reshape->announce(&info);
  check_size(info.width, info.height, "the output");
  add(std::move(info), std::move(reshape));
}

// The layout to write when the command line names none: the first that the
// library reaches in one conversion, else in several.
const Layout &Route::choose_layout(Kind kind) const {
  const StreamInfo &info = steps_.back().info;
  const Layout &source = *info.layout;
  const int32_t color_std = known(info.color_std);
  const std::vector<int32_t> wanted = usual_layouts(kind, info);
  if (std::find(wanted.begin(), wanted.end(), source.code) != wanted.end()) {
    return source;
  }
  for (const int32_t code : wanted) {
    const Layout &layout = layout_of(code);
    if (library_converts(source, layout, color_std)) return layout;
  }
  // Without a conversion a picture can still be looked at when only the order
  // of its bytes differs.
  if (is_rgb(source) && kind_carries(kind, source)) return source;
  for (const int32_t code : wanted) {
    const Layout &layout = layout_of(code);
    if (leads_to(source, layout, color_std) ||
        how(source, layout, info).chroma != 0) {
      return layout;
    }
  }
  throw no_route(source, layout_of(wanted.front()), color_std);
}

// Frames that left their home for a change go back to it if nobody says where
// to.
void Route::finish(const StreamOptions &options, Kind kind,
                   const Layout &home) {
  const auto go = [this](const Layout &next) {
    if (&next == steps_.back().info.layout) {
      throw Error(std::string("--via goes from ") + next.token + " to itself");
    }
    convert_to(next);
  };
  if (!options.via.empty()) {
    for (const Layout *const layout : layouts_of(options.via)) go(*layout);
  }
  if (!options.to.empty()) {
    convert_to(layout_named(options.to));
  } else {
    const StreamInfo &info = steps_.back().info;
    const bool returns =
        info.layout != &home && options.via.empty() &&
        kind_carries(kind, home) && (is_rgb(home) || !is_picture(kind)) &&
        library_converts(*info.layout, home, known(info.color_std));
    convert_to(returns ? home : choose_layout(kind));
  }
  if (!kind_carries(kind, *result().layout)) {
    throw Error(std::string("a ") + kind_name(kind) + " file cannot hold " +
                result().layout->token);
  }
  const int32_t meant =
      kind == Kind::kJpeg ? VEXO_STD_BT601_FULL : VEXO_STD_DEFAULT;
  if ((kind == Kind::kJpeg || kind == Kind::kWebp) &&
      has_standard(*result().layout) && result().color_std != meant) {
    throw Error(std::string("a ") + kind_name(kind) + " file holds YUV of " +
                standard_name(meant) + " alone");
  }
}

void Route::run(const Frame &source, const Frame &target) {
  const Frame *from = &source;
  for (size_t i = 1; i < steps_.size(); ++i) {
    const Frame &to = i + 1 == steps_.size() ? target : between_[i - 1];
    if (steps_[i].reshape != nullptr) {
      steps_[i].reshape->apply(*from, to);
    } else {
      const StreamInfo &info = steps_[i - 1].info;
      convert_step(context_, how(from->layout(), to.layout(), info), *from, to);
    }
    from = &to;
  }
}

}  // namespace vexo
