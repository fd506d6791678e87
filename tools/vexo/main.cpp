// SPDX-License-Identifier: Apache-2.0
//
// The vexo command line.
#include <signal.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <new>
#include <sstream>
#include <string>
#include <vector>

#include "convert.h"
#include "enhance.h"
#include "error.h"
#include "formats.h"
#include "fourcc.h"
#include "help.h"
#include "io.h"
#include "keyframes.h"
#include "scale.h"
#include "thumbnail.h"
#include "tonemap.h"

namespace {

constexpr int kExitFailure = 1;
constexpr int kExitUsage = 2;

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
  command->add_flag("--quiet", options->quiet,
                    "No progress line and no remark");
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
      "Converts, scales, turns, tone maps and enhances pictures; makes "
      "thumbnails and anaglyphs of them. Lists key frames of video streams.",
      "vexo"};
  app.set_version_flag("--version", "vexo " VEXO_VERSION);
  app.require_subcommand(1);

  std::string standard = "bt601";
  vexo::StreamOptions options;
  CLI::App *const convert = add_stream_command(
      &app, "convert", vexo::kConvertHelp, "--size", &options);
  add_step_options(convert, &options, &standard);

  vexo::ScaleOptions scale_options;
  CLI::App *const scale = add_stream_command(&app, "scale", vexo::kScaleHelp,
                                             "--from-size", &options);
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
      add_stream_command(&app, "rotate", vexo::kRotateHelp, "--size", &options);
  add_step_options(rotate, &options, &standard);
  rotate->add_option("--turn", turn, "left, right, half, mirror or flip")
      ->required();

  vexo::ThumbnailOptions thumbnail_options;
  CLI::App *const thumbnail = add_stream_command(
      &app, "thumbnail", vexo::kThumbnailHelp, "--from-size", &options);
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
  CLI::App *const tonemap = add_stream_command(
      &app, "tonemap", vexo::kTonemapHelp, "--size", &options);
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

  // The other commands that want the size of raw input alone.
  const auto add_enhancement = [&](const char *name, const char *help) {
    CLI::App *const command =
        add_stream_command(&app, name, help, "--size,--from-size", &options);
    add_step_options(command, &options, &standard);
    return command;
  };
  CLI::App *const sharpen = add_enhancement("sharpen", vexo::kSharpenHelp);
  int deblocking = 8;
  CLI::App *const deblock = add_enhancement("deblock", vexo::kDeblockHelp);
  deblock->add_option("--strength", deblocking, "N, 0 to 15 (8)")
      ->check(CLI::Range(0, 15));
  int saturation = 1180;
  CLI::App *const saturate = add_enhancement("saturate", vexo::kSaturateHelp);
  saturate->add_option("--strength", saturation, "N, 1 to 32767 (1180)")
      ->check(CLI::Range(1, 32767));
  int anaglyph_mode = 1;
  CLI::App *const anaglyph = add_enhancement("anaglyph", vexo::kAnaglyphHelp);
  anaglyph
      ->add_option("--mode", anaglyph_mode,
                   "1: red of the left view, 2: of the right one")
      ->required()
      ->check(CLI::Range(1, 2));

  std::string stream, codec;
  bool json = false;
  CLI::App *const keyframes =
      app.add_subcommand("keyframes", vexo::kKeyframesHelp);
  keyframes->add_option("FILE", stream, "Input file or -")->required();
  keyframes->add_option("--codec", codec,
                        "h264, hevc, mpeg4, h263; vp8 or vp9 of IVF");
  keyframes->add_flag("--json", json, "As JSON");

  std::string code;
  bool text = false;
  CLI::App *const fourcc = app.add_subcommand("fourcc", vexo::kFourccHelp);
  fourcc->add_option("CODE", code, "FourCC or number")->required();
  fourcc->add_flag("--text", text,
                   "CODE is characters, whatever it looks like");

  CLI::App *const formats = app.add_subcommand(
      "formats", "Prints which conversions the library has.");
  formats->add_flag("--json", json, "As JSON");
  formats->add_option("--standard,--std", standard, "As for convert");

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError &error) {
    // Help and version are reported as errors too.
    if (error.get_exit_code() == 0) {
      std::ostringstream help;
      app.exit(error, help, help);
      std::fputs(help.str().c_str(), vexo::standard_output());
      return 0;
    }
    const std::vector<std::string> unknown = app.remaining();
    if (app.get_subcommands().empty() && !unknown.empty()) {
      complain(("unknown subcommand '" + unknown.front() +
                "'; vexo --help lists all")
                   .c_str());
    } else {
      complain(error.what());
    }
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
  if (sharpen->parsed()) vexo::sharpen(options);
  if (deblock->parsed()) vexo::deblock(options, deblocking);
  if (saturate->parsed()) vexo::saturate(options, saturation);
  if (anaglyph->parsed()) vexo::anaglyph(options, anaglyph_mode);
  if (keyframes->parsed()) vexo::print_key_frames(stream, codec, json);
  if (fourcc->parsed()) vexo::print_media_types(code, text);
  if (formats->parsed()) vexo::print_formats(options.color_std, json);
  return 0;
}

}  // namespace

int main(int argc, char **argv) {
  // A reader that goes away and a file that may not grow are failed writes with
  // a message, not a death.
  signal(SIGPIPE, SIG_IGN);
  signal(SIGXFSZ, SIG_IGN);
  try {
    vexo::claim_standard_output();
    const int status = run(argc, argv);
    vexo::close_standard_output();
    return status;
  } catch (const std::bad_alloc &) {
    return complain("out of memory");
  } catch (const std::exception &error) {
    return complain(error.what());
  }
}
