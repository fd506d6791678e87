// SPDX-License-Identifier: Apache-2.0
//
// Options that commands have in common.
#include "commands.h"

namespace vexo {

CLI::App *add_stream_command(CLI::App &app, const char *name, const char *help,
                             const std::string &size_names,
                             StreamOptions *options) {
  options->size_name = size_names.substr(0, size_names.find(','));
  CLI::App *const command = app.add_subcommand(name, help);
  command->add_option("IN", options->in, "Input file or -")->required();
  command->add_option("OUT", options->out, "Output file or -")->required();
  command->add_option(size_names, options->from_size, "WxH of raw input");
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

void add_step_options(CLI::App *command, StreamOptions *options) {
  command->add_option("--via", options->via,
                      "Layouts to go through, separated by commas");
  command->add_option("--standard,--std", options->standard,
                      "bt601 (default), bt601-full, bt709 or bt709-full");
}

}  // namespace vexo
