// SPDX-License-Identifier: Apache-2.0
//
// vexo convert, and what all commands from a file to another do: frames are
// read, go their way and are written, each by a thread.
#include "convert.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

#include "commands.h"
#include "error.h"
#include "formats.h"
#include "progress.h"
#include "route.h"
#include "stages.h"
#include "tonemap.h"

namespace vexo {
namespace {

constexpr const char *kConvertHelp =
    R"(Converts pictures and clips between pixel layouts.

IN is PNG, PGM (P5), PPM (P6), Y4M or raw frames, or any other picture or video
that ffmpeg's libraries read. OUT is what its name ends in (.png .jpg .webp .pgm
.ppm .y4m; .raw .yuv .rgb; .mp4 .mkv .mov .webm), or --out-kind. - is standard
input or output; standard output is Y4M by default.
Several frames become numbered pictures with a name such as frame%03d.png; %% is
a percent sign.

Each step from a layout to the next is the library's chain of conversions that
loses least. Without --to the layout is one that OUT can hold. The standard
counts in every step between YUV and RGB; it is that of the input where that
says it (XCOLORRANGE of Y4M).

Raw frames are planes without gaps, their chroma sizes rounded up: the last
column and row of an odd picture have chroma of their own. Tiled ones are whole
tiles of luma, then of U, V pairs; those of an odd picture have the next even
size, those of t64x32 an even number of tiles across. t256x16 is converted only
when wider than 1280.

Colours are those that IN tells of, or --standard and --range. What is HDR (PQ,
HLG) is tone mapped; --kind none leaves it. Pictures come upright.

  vexo convert clip.mp4 frame%03d.png
  vexo convert clip.mkv still.jpg --at 12.5s --frames 1 --quality 85
  vexo convert frame.yuv frame.png --size 1920x1080 --from nv12)";

// How the samples of YUV are to be taken: as the options say it, else the
// input.
int32_t wanted_standard(const StreamOptions &options,
                        const StreamInfo &source) {
  if (!options.standard.empty() && options.range.empty()) {
    return standard_named(options.standard);
  }
  int32_t color_std = options.standard.empty()
                          ? source.color_std
                          : standard_named(options.standard);
  if (options.range.empty() || color_std == kNoStandard) return color_std;
  if (options.range != "limited" && options.range != "full") {
    throw Error("--range '" + options.range + "' is neither limited nor full");
  }
  color_std -= is_full_range(color_std) ? 1 : 0;
  return color_std + (options.range == "full" ? 1 : 0);
}

// Of the machine's threads: one reads and one writes.
int worker_count(const StreamOptions &options, bool encodes) {
  if (options.jobs > 0) return options.jobs;
  constexpr int kMost = 8;
  const int threads = static_cast<int>(std::thread::hardware_concurrency());
  return std::clamp(encodes ? threads : threads / 2, 1, kMost);
}

void say(const StreamOptions &options, const StreamInfo &source) {
  const bool guessed =
      options.standard.empty() && source.colour.matrix == Colour::kUnknown;
  const std::string mapping =
      is_mapped(options, source)
          ? ", tone mapped as " + mapping_text(options, source.colour)
          : "";
  std::fprintf(stderr, "vexo: %s: %dx%d %s, %s; taken as %s%s%s\n",
               options.in.c_str(), source.width, source.height,
               source.layout->token, describe(source.colour).c_str(),
               standard_name(source.color_std), guessed ? " (guessed)" : "",
               mapping.c_str());
}

}  // namespace

StreamInfo taken_info(const StreamOptions &options, const FrameReader &reader) {
  StreamInfo source = reader.info();
  source.color_std = wanted_standard(options, source);
  if (options.verbose) say(options, source);
  if (!options.standard.empty() || !options.range.empty()) {
    source.colour.range =
        is_full_range(source.color_std) ? 2 : std::min(source.colour.range, 1);
  }
  if (!options.standard.empty()) {
    source.colour.matrix = matrix_of(source.color_std);
  }
  return source;
}

Frame frame_of(const StreamInfo &info) {
  return Frame(
      *info.layout, info.width, info.height,
      info.color_std == kNoStandard ? VEXO_STD_DEFAULT : info.color_std);
}

void convert(const StreamOptions &options, const MakeReshape &make, Hdr hdr) {
  output_kind(options);
  convert(options, open_reader(options), make, hdr);
}

void convert(const StreamOptions &options,
             const std::shared_ptr<FrameReader> &reader,
             const MakeReshape &make, Hdr hdr) {
  const Kind kind = output_kind(options);
  const StreamInfo source = taken_info(options, *reader);
  // Each thread that computes has a way of its own.
  std::vector<std::shared_ptr<Route>> routes;
  const auto add_route = [&] {
    routes.push_back(std::make_shared<Route>(options, kind, source, make, hdr));
  };
  add_route();
  const Route &route = *routes.front();
  const std::shared_ptr<FrameWriter> writer =
      open_writer(kind, options.out, route.result(), options.encode);
  const int workers = worker_count(options, writer->encodes());
  for (int i = 1; i < workers; ++i) add_route();

  Stages stages;
  const bool changes = route.changes();
  const int64_t most = options.frames;
  stages.read = [reader, most](Slot &slot) {
    if (most != 0 && slot.number >= most) return false;
    if (!reader->read(slot.source)) return false;
    slot.showing = reader->showing();
    return true;
  };
  for (const std::shared_ptr<Route> &way : routes) {
    stages.compute.emplace_back([way, writer, changes](Slot &slot) {
      if (changes) way->run(slot.source, slot.target);
      writer->encode(changes ? slot.target : slot.source, &slot.bytes);
    });
  }
  Progress progress(options.quiet);
  stages.write = [&](Slot &slot) {
    writer->write(changes ? slot.target : slot.source, slot.bytes,
                  slot.showing);
    progress.one_done();
  };
  const StreamInfo result = route.result();
  stages.make_slot = [&source, &result] {
    return std::make_unique<Slot>(frame_of(source), frame_of(result));
  };
  if (run_stages(std::move(stages)) == 0) throw Error("the input has no frame");
  writer->finish();
}

void add_convert(CLI::App &app) {
  const auto options = std::make_shared<StreamOptions>();
  CLI::App *const command =
      add_stream_command(app, "convert", kConvertHelp, "--size", options.get());
  add_step_options(command, options.get());
  add_square_option(command, options.get());
  command->callback([options] { convert(*options); });
}

}  // namespace vexo
