// SPDX-License-Identifier: Apache-2.0
//
// Options that commands have in common.
#include "commands.h"

namespace vexo {

CLI::App *add_stream_command(CLI::App &app, const char *name, const char *help,
                             const std::string &size_names,
                             StreamOptions *options) {
  CLI::App *const command = app.add_subcommand(name, help);
  command->add_option("IN", options->in, "Input file or -")->required();
  command->add_option("OUT", options->out, "Output file or -")->required();
  add_file_options(command, size_names, options);
  return command;
}

void add_file_options(CLI::App *command, const std::string &size_names,
                      StreamOptions *options) {
  options->size_name = size_names.substr(0, size_names.find(','));
  command->add_option(size_names, options->from_size, "WxH of raw input");
  command->add_option("--from,--format", options->from,
                      "Layout of raw input; vexo formats lists all");
  command->add_option("--to", options->to, "Layout to write");
  command->add_option("--in-kind", options->in_kind,
                      "Kind of IN: png, pgm, ppm, jpeg, webp, y4m, raw, video");
  command->add_option("--out-kind", options->out_kind, "Kind of OUT");
  command
      ->add_option("-j,--jobs", options->jobs,
                   "Threads that compute, besides one that reads")
      ->check(CLI::Range(1, 64));
  command->add_option("--frames", options->frames, "Ends after so many frames")
      ->check(CLI::PositiveNumber);
  command
      ->add_option("--stream", options->stream,
                   "Number of the stream of a container (the best video)")
      ->check(CLI::NonNegativeNumber);
  command->add_option("--at", options->at,
                      "Begins there: 12.5s, 1:02:03 or 30%");
  command->add_flag("--keep-turn", options->keep_turn,
                    "Pictures as they are stored, not turned upright");
  command->add_flag("--tolerant", options->tolerant,
                    "Goes on where the input is damaged");
  command->add_option("--crop", options->crop,
                      "WxH+X+Y of the picture, before all else; of subsampled "
                      "layouts X and Y are rounded down to even");
  command
      ->add_option("--png-level", options->encode.png_level,
                   "Effort of PNG, 0 to 9")
      ->check(CLI::Range(0, 9));
  command
      ->add_option("--quality", options->encode.quality,
                   "Of JPEG (90), WebP (85) and videos, 0 to 100")
      ->check(CLI::Range(0, 100));
  command->add_flag("--quiet", options->quiet,
                    "No progress line and no remark");
  command->add_flag("--verbose", options->verbose,
                    "Says what the input is and how it is taken");
}

void add_step_options(CLI::App *command, StreamOptions *options) {
  command->add_option("--via", options->via,
                      "Layouts to go through, separated by commas");
  command->add_option("--standard,--std", options->standard,
                      "bt601, bt709, bt2020 or these with -full, whatever the "
                      "input says (bt601)");
  command->add_option("--range", options->range,
                      "limited or full, whatever the input says");
  command->add_option("--chroma", options->chroma,
                      "plain, or smooth: interpolated where YUV becomes RGB");
  command->add_flag("--dither", options->dither, "What loses bits is dithered");
  add_tone_options(command, options);
}

void add_square_option(CLI::App *command, StreamOptions *options) {
  command->add_flag("--square-pixels", options->square,
                    "Enlarges the side that pixels which are not square make "
                    "too short");
}

void add_tone_options(CLI::App *command, StreamOptions *options) {
  command->add_option("--kind", options->kind,
                      "Tone mapping: hdr10 (PQ), hdr10-mild (PQ, milder "
                      "colours), hlg or none; that of the input");
  CLI::Option *const nit =
      command
          ->add_option("--nit", options->nit,
                       "Peak of the source in nits, 1 to 10000 (that of the "
                       "input, or 1000)")
          ->check(CLI::Range(1, 10000));
  command
      ->add_flag("--measure", options->measure,
                 "Choose the curve by each frame's brightest luma")
      ->excludes(nit);
}

}  // namespace vexo
