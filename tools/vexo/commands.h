// SPDX-License-Identifier: Apache-2.0
//
// The commands of the tool. The file of a command has its help, its options and
// what it does with them.
#pragma once

#include <CLI/CLI.hpp>

#include "streams.h"

namespace vexo {

// Each adds its command to the command line. It runs once the whole line has
// been read and is sound.
using AddCommand = void(CLI::App &app);
AddCommand add_convert;
AddCommand add_scale;
AddCommand add_rotate;
AddCommand add_thumbnail;
AddCommand add_tonemap;
AddCommand add_sharpen;
AddCommand add_deblock;
AddCommand add_saturate;
AddCommand add_anaglyph;
AddCommand add_compare;
AddCommand add_sheet;
AddCommand add_info;
AddCommand add_keyframes;
AddCommand add_fourcc;
AddCommand add_formats;

// A command from IN to OUT. `size_names` are those of the option for the size
// of raw input, separated by commas; messages use the first.
CLI::App *add_stream_command(CLI::App &app, const char *name, const char *help,
                             const std::string &size_names,
                             StreamOptions *options);

// The options of such a command that has its own names of files.
void add_file_options(CLI::App *command, const std::string &size_names,
                      StreamOptions *options);

// For commands whose frames may go from YUV to RGB or back on the way.
void add_step_options(CLI::App *command, StreamOptions *options);

// For commands without a size of their own.
void add_square_option(CLI::App *command, StreamOptions *options);

// How what is HDR is tone mapped.
void add_tone_options(CLI::App *command, StreamOptions *options);

}  // namespace vexo
