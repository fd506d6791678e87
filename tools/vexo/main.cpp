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

int complain(const char *sentence) {
  std::fprintf(stderr, "vexo: %s\n", sentence);
  return kExitFailure;
}

// A command from IN to OUT. The name is that of the option for the size of raw
// input.
CLI::App *add_stream_command(CLI::App *app, const char *name, const char *help,
                             const char *from_size_name,
                             vexo::StreamOptions *options,
                             std::string *standard) {
  CLI::App *const command = app->add_subcommand(name, help);
  command->add_option("IN", options->in, "Input file or -")->required();
  command->add_option("OUT", options->out, "Output file or -")->required();
  command->add_option(from_size_name, options->from_size, "WxH of raw input");
  command->add_option("--from,--format", options->from,
                      "Layout of raw input; vexo formats lists all");
  command->add_option("--to", options->to, "Layout to write");
  command->add_option("--via", options->via,
                      "Layouts to go through, separated by commas");
  command->add_option("--standard,--std", *standard,
                      "bt601 (default), bt601-full, bt709 or bt709-full");
  command->add_option("--in-kind", options->in_kind,
                      "Kind of IN: png, pgm, ppm, y4m, raw");
  command->add_option("--out-kind", options->out_kind, "Kind of OUT");
  command->add_flag("--quiet", options->quiet, "No progress line");
  return command;
}

int run(int argc, char **argv) {
  CLI::App app{"Converts, scales and turns pictures.", "vexo"};
  app.set_version_flag("--version", "vexo " VEXO_VERSION);
  app.require_subcommand(1);

  std::string standard = "bt601";
  vexo::StreamOptions options;
  CLI::App *const convert = add_stream_command(&app, "convert", kConvertHelp,
                                               "--size", &options, &standard);

  vexo::ScaleOptions scale_options;
  CLI::App *const scale = add_stream_command(
      &app, "scale", kScaleHelp, "--from-size", &options, &standard);
  scale->add_option("--size", scale_options.size, "WxH of the output")
      ->required();
  scale->add_flag("--mode1", scale_options.mode1,
                  "The second kind of enlargement");
  scale->add_option("--rotate", scale_options.rotate,
                    "left, right or half; the library's codes 1 to 5, of which "
                    "4 and 5 (mirror, flip) need an unchanged size");

  std::string turn;
  CLI::App *const rotate = add_stream_command(&app, "rotate", kRotateHelp,
                                              "--size", &options, &standard);
  rotate->add_option("--turn", turn, "left, right, half, mirror or flip")
      ->required();

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
