// SPDX-License-Identifier: Apache-2.0
//
// vexo convert: finds out which layouts the conversion goes through, and
// streams the frames.
#include "convert.h"

#include <algorithm>
#include <deque>
#include <vector>

#include "commands.h"
#include "error.h"
#include "formats.h"
#include "progress.h"

namespace vexo {
namespace {

constexpr const char *kConvertHelp =
    R"(Converts pictures and clips between pixel layouts.

IN is PNG, PGM (P5), PPM (P6), Y4M or raw frames; OUT is PNG, PGM, PPM, Y4M or
raw frames by the ending of its name (.png .pgm .ppm .y4m; .raw .yuv .rgb) or
--out-kind. - is standard input or output; standard output is Y4M by default.
Several frames become numbered pictures with a name such as frame%03d.png; %% is
a percent sign.

Each step from a layout to the next is one conversion of the library. Without
--to the layout is one that OUT can hold and the library converts to. The
standard counts in every step between YUV and RGB, but p010le is always bt601.

Raw frames are planes without gaps, their chroma sizes rounded up: the last
column and row of an odd picture have chroma of their own. Tiled ones are whole
tiles of luma, then of U, V pairs; those of an odd picture have the next even
size, those of t64x32 an even number of tiles across. t256x16 is converted only
when wider than 1280.)";

// The library refuses anything smaller.
constexpr int kMinConvertedSide = 8;

void check_convertible(const StreamInfo &info) {
  if (std::min(info.width, info.height) >= kMinConvertedSide) return;
  throw Error(
      "the library converts no picture smaller than 8x8, and this "
      "one is " +
      std::to_string(info.width) + "x" + std::to_string(info.height));
}

Error no_route(const Layout &from, const Layout &to, int32_t color_std) {
  std::string sentence = std::string("pair not supported by the library: ") +
                         from.token + " to " + to.token;
  if (color_std != VEXO_STD_DEFAULT) {
    sentence += std::string(" (") + standard_name(color_std) + ")";
  }
  return Error(sentence);
}

void check_route(const Layout &from, const Layout &to, int32_t color_std) {
  if (!library_converts(from, to, color_std)) {
    throw no_route(from, to, color_std);
  }
}

// The layout to write when the command line names none.
const Layout &choose_layout(Kind kind, const Layout &source,
                            int32_t color_std) {
  std::vector<int32_t> wanted;
  switch (kind) {
    case Kind::kPng:
      if (source.code == VEXO_FMT_YUV400) return source;
      wanted = {VEXO_FMT_RGB888, VEXO_FMT_RGBA8888};
      break;
    case Kind::kPpm:
      wanted = {VEXO_FMT_RGB888};
      break;
    case Kind::kPgm:
      wanted = {VEXO_FMT_YUV400};
      break;
    case Kind::kY4m:
      if (kind_carries(kind, source)) return source;
      wanted = {VEXO_FMT_YUV420, VEXO_FMT_YUV422N, VEXO_FMT_YUV444};
      break;
    case Kind::kRaw:
      return source;
  }
  if (std::find(wanted.begin(), wanted.end(), source.code) != wanted.end()) {
    return source;
  }
  for (const int32_t code : wanted) {
    const Layout &layout = layout_of(code);
    if (library_converts(source, layout, color_std)) return layout;
  }
  // Without a conversion a picture can still be looked at when only the order
  // of its bytes differs.
  if (kind_carries(kind, source)) return source;
  throw no_route(source, layout_of(wanted.front()), color_std);
}

// All layouts from the source's to the output's. Frames that left their home
// for a change go back to it if nobody says where to.
std::vector<const Layout *> plan(const StreamOptions &options, Kind kind,
                                 const Layout &source, const Layout &home,
                                 int32_t color_std) {
  std::vector<const Layout *> chain = {&source};
  if (!options.via.empty()) {
    size_t start = 0;
    for (;;) {
      const size_t comma =
          std::min(options.via.find(',', start), options.via.size());
      chain.push_back(&layout_named(options.via.substr(start, comma - start)));
      if (comma == options.via.size()) break;
      start = comma + 1;
    }
  }
  if (!options.to.empty()) {
    const Layout &last = layout_named(options.to);
    if (&last != chain.back()) chain.push_back(&last);
  }
  for (size_t i = 1; i < chain.size(); ++i) {
    if (chain[i] == chain[i - 1]) {
      throw Error(std::string("--via goes from ") + chain[i]->token +
                  " to itself");
    }
  }
  if (options.to.empty()) {
    const bool returns = &home != &source && options.via.empty() &&
                         kind_carries(kind, home) &&
                         library_converts(source, home, color_std);
    const Layout &last =
        returns ? home : choose_layout(kind, *chain.back(), color_std);
    if (&last != chain.back()) chain.push_back(&last);
  }
  if (!kind_carries(kind, *chain.back())) {
    throw Error(std::string("a ") + kind_name(kind) + " file cannot hold " +
                chain.back()->token);
  }
  for (size_t i = 1; i < chain.size(); ++i) {
    check_route(*chain[i - 1], *chain[i], color_std);
  }
  return chain;
}

void convert_step(const PictureContext &context, const Frame &src,
                  const Frame &dst) {
  vexo_img in = src.img();
  vexo_img out = dst.img();
  // As vexo_csc has it.
  if (in.format == VEXO_FMT_P010LE) in.color_std = out.color_std = 0;
  const int32_t status =
      vexo_picture_convert(context.get(), &in, &out, nullptr);
  if (status == VEXO_OK) return;
  throw Error(std::string("the library refuses ") + src.layout().token +
              " to " + dst.layout().token + " at " +
              std::to_string(src.width()) + "x" + std::to_string(src.height()) +
              " (status " + std::to_string(status) + ")");
}

}  // namespace

void convert(const StreamOptions &options, Reshape *reshape) {
  const int32_t color_std = standard_named(options.standard);
  const Kind kind = output_kind(options);
  const std::unique_ptr<FrameReader> reader = open_reader(options);
  const StreamInfo &source = reader->info();
  std::deque<Frame> frames;
  const auto add_frame = [&](const Layout &layout, const StreamInfo &size) {
    frames.emplace_back(layout, size.width, size.height, color_std);
  };
  StreamInfo info = source;
  // Which frame the change makes; 0: none.
  size_t reshaped = 0;
  if (reshape != nullptr) {
    const Layout &taken = reshape->takes(*source.layout);
    if (&taken != source.layout) {
      check_route(*source.layout, taken, color_std);
      check_convertible(source);
      add_frame(*source.layout, source);
    }
    add_frame(taken, source);
    reshaped = frames.size();
    info.layout = &taken;
    reshape->announce(&info);
  }
  const Layout &home = reshaped > 1 ? *source.layout : *info.layout;
  const std::vector<const Layout *> chain =
      plan(options, kind, *info.layout, home, color_std);
  if (chain.size() > 1) check_convertible(info);
  for (const Layout *layout : chain) add_frame(*layout, info);
  const PictureContext context;
  const auto convert_next = [&] {
    if (!reader->read(frames.front())) return false;
    for (size_t i = 1; i < frames.size(); ++i) {
      if (i == reshaped) {
        reshape->apply(frames[i - 1], frames[i]);
      } else {
        convert_step(context, frames[i - 1], frames[i]);
      }
    }
    return true;
  };

  // The first frame is converted before the output is opened: most bad input
  // fails here, and then nothing has reached a pipe.
  if (!convert_next()) throw Error("the input has no frame");
  info.layout = chain.back();
  const std::unique_ptr<FrameWriter> writer =
      open_writer(kind, options.out, info);
  Progress progress(options.quiet);
  do {
    writer->write(frames.back());
    progress.frame_done();
  } while (convert_next());
  writer->finish();
}

void add_convert(CLI::App &app) {
  const auto options = std::make_shared<StreamOptions>();
  CLI::App *const command =
      add_stream_command(app, "convert", kConvertHelp, "--size", options.get());
  add_step_options(command, options.get());
  command->callback([options] { convert(*options); });
}

}  // namespace vexo
