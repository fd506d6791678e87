// SPDX-License-Identifier: Apache-2.0
//
// The vexo command line.
#include <signal.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <new>

#include "convert.h"
#include "error.h"
#include "formats.h"
#include "scale.h"
#include "thumbnail.h"
#include "tonemap.h"

namespace {

constexpr int kExitFailure = 1;
constexpr int kExitUsage = 2;

constexpr const char *kConvertHelp =
    R"(Converts pictures and clips between pixel layouts.

IN is PNG, PGM (P5), PPM (P6), Y4M or raw frames; OUT is PNG, PGM, PPM, Y4M or
raw frames by the ending of its name (.png .pgm .ppm .y4m; .raw .yuv .rgb) or
--out-kind. - is standard input or output; standard output is Y4M by default.
Several frames become numbered pictures with a name such as frame%03d.png.

Each step from a layout to the next is one conversion of the library. Without
--to the layout is one that OUT can hold and the library converts to. The
standard counts in every step between YUV and RGB, but p010le is always bt601;
the library takes bt709-full for bt601-full.

Raw frames are planes without gaps, their chroma sizes rounded up: the last
column and row of an odd picture have chroma of their own. Tiled ones are whole
tiles of luma, then of U, V pairs; those of an odd picture have the next even
size, those of t64x32 an even number of tiles across. t256x16 is converted only
when wider than 1280.)";

constexpr const char *kScaleHelp =
    R"(Scales pictures and clips, and turns them on the way if asked to.

IN and OUT are those of vexo convert. Frames are scaled in the layout that IN
holds, each plane for itself, and then converted to what OUT holds or --to says.
With --rotate only YUV is scaled. p010le is only reduced, by whole factors.)";

constexpr const char *kRotateHelp =
    R"(Turns or mirrors pictures and clips.

IN and OUT are those of vexo convert. Frames are turned in the layout that IN
holds, each plane for itself, and then converted to what OUT holds or --to says.
4:2:2 has half its chroma rows, not columns, after a quarter turn: yuv422n
becomes yuv422w.)";

constexpr const char *kThumbnailHelp =
    R"(Makes thumbnails of pictures and clips, and turns them if asked to.

IN and OUT are those of vexo convert. IN holds yuv420 or nv12, scaled as nv12,
or yuv400, rgb888 or rgba8888, scaled as rgba8888, whose alpha becomes 255.
--size is that before the turn, no larger than the picture. The thumbnail has
the layout of IN and is then converted to what OUT holds or --to says.

--prescale halves or quarters 4:2:0 by block means first: faster and coarser.)";

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

int complain(const char *sentence) {
  std::fprintf(stderr, "vexo: %s\n", sentence);
  return kExitFailure;
}

// A command from IN to OUT. The name is that of the option for the size of raw
// input.
CLI::App *add_stream_command(CLI::App *app, const char *name, const char *help,
                             const char *from_size_name,
                             vexo::StreamOptions *options) {
  CLI::App *const command = app->add_subcommand(name, help);
  command->add_option("IN", options->in, "Input file or -")->required();
  command->add_option("OUT", options->out, "Output file or -")->required();
  command->add_option(from_size_name, options->from_size, "WxH of raw input");
  command->add_option("--from,--format", options->from,
                      "Layout of raw input; vexo formats lists all");
  command->add_option("--to", options->to, "Layout to write");
  command->add_option("--in-kind", options->in_kind,
                      "Kind of IN: png, pgm, ppm, y4m, raw");
  command->add_option("--out-kind", options->out_kind, "Kind of OUT");
  command->add_flag("--quiet", options->quiet, "No progress line");
  return command;
}

// For commands whose frames may go from YUV to RGB or back on the way.
void add_step_options(CLI::App *command, vexo::StreamOptions *options,
                      std::string *standard) {
  command->add_option("--via", options->via,
                      "Layouts to go through, separated by commas");
  command->add_option("--standard,--std", *standard,
                      "bt601 (default), bt601-full, bt709 or bt709-full");
}

int run(int argc, char **argv) {
  CLI::App app{
      "Converts, scales, turns and tone maps pictures; makes thumbnails of "
      "them.",
      "vexo"};
  app.set_version_flag("--version", "vexo " VEXO_VERSION);
  app.require_subcommand(1);

  std::string standard = "bt601";
  vexo::StreamOptions options;
  CLI::App *const convert =
      add_stream_command(&app, "convert", kConvertHelp, "--size", &options);
  add_step_options(convert, &options, &standard);

  vexo::ScaleOptions scale_options;
  CLI::App *const scale =
      add_stream_command(&app, "scale", kScaleHelp, "--from-size", &options);
  add_step_options(scale, &options, &standard);
  scale->add_option("--size", scale_options.size, "WxH of the output")
      ->required();
  scale->add_flag("--mode1", scale_options.mode1,
                  "The second kind of enlargement");
  scale->add_option("--rotate", scale_options.rotate,
                    "left, right or half; the library's codes 0 to 5, of which "
                    "4 and 5 (mirror, flip) need an unchanged size");

  std::string turn;
  CLI::App *const rotate =
      add_stream_command(&app, "rotate", kRotateHelp, "--size", &options);
  add_step_options(rotate, &options, &standard);
  rotate->add_option("--turn", turn, "left, right, half, mirror or flip")
      ->required();

  vexo::ThumbnailOptions thumbnail_options;
  CLI::App *const thumbnail = add_stream_command(
      &app, "thumbnail", kThumbnailHelp, "--from-size", &options);
  add_step_options(thumbnail, &options, &standard);
  thumbnail
      ->add_option("--size", thumbnail_options.size,
                   "WxH of the thumbnail before it is turned")
      ->required();
  thumbnail->add_option("--turn", thumbnail_options.turn,
                        "left, right, half, mirror, flip or the library's "
                        "codes 0 to 5");
  thumbnail
      ->add_option("--prescale", thumbnail_options.prescale, "0, 2 or 4 (0)")
      ->check(CLI::IsMember({0, 2, 4}));

  vexo::TonemapOptions tonemap_options;
  CLI::App *const tonemap =
      add_stream_command(&app, "tonemap", kTonemapHelp, "--size", &options);
  tonemap->add_option("--kind", tonemap_options.kind,
                      "hdr10 (default: PQ), hdr10-mild (PQ, milder colours) or "
                      "hlg");
  CLI::Option *const nit =
      tonemap
          ->add_option("--nit", tonemap_options.nit,
                       "Peak of the source in nits, 1 to 10000 (1000)")
          ->check(CLI::Range(1, 10000));
  tonemap
      ->add_flag("--measure", tonemap_options.measure,
                 "Choose the curve by each frame's brightest luma")
      ->excludes(nit);

  bool json = false;
  CLI::App *const formats = app.add_subcommand(
      "formats", "Prints which conversions the library has.");
  formats->add_flag("--json", json, "As JSON");
  formats->add_option("--standard,--std", standard, "As for convert");

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError &error) {
    // Help and version are reported as errors too.
    if (error.get_exit_code() == 0) return app.exit(error);
    complain(error.what());
    return kExitUsage;
  }
  options.color_std = vexo::standard_named(standard);
  if (convert->parsed()) vexo::convert(options);
  if (scale->parsed()) {
    options.from_size_name = "--from-size";
    vexo::scale(options, scale_options);
  }
  if (rotate->parsed()) vexo::rotate(options, turn);
  if (thumbnail->parsed()) {
    options.from_size_name = "--from-size";
    vexo::thumbnail(options, thumbnail_options);
  }
  if (tonemap->parsed()) vexo::tonemap(options, tonemap_options);
  if (formats->parsed()) vexo::print_formats(options.color_std, json);
  return 0;
}

}  // namespace

int main(int argc, char **argv) {
  // A reader that goes away is a failed write with a message, not a death.
  signal(SIGPIPE, SIG_IGN);
  try {
    return run(argc, argv);
  } catch (const std::bad_alloc &) {
    return complain("out of memory");
  } catch (const std::exception &error) {
    return complain(error.what());
  }
}
