// SPDX-License-Identifier: Apache-2.0
//
// The vexo command line.
#include <signal.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <sstream>
#include <string>
#include <vector>

#include "commands.h"
#include "error.h"
#include "io.h"
#include "stages.h"

namespace {

constexpr int kExitFailure = 1;
constexpr int kExitUsage = 2;

int complain(const char *sentence) {
  std::fprintf(stderr, "vexo: %s\n", sentence);
  return kExitFailure;
}

// As vexo --help lists them.
constexpr vexo::AddCommand *kCommands[] = {
    vexo::add_convert,   vexo::add_scale,    vexo::add_rotate,
    vexo::add_thumbnail, vexo::add_tonemap,  vexo::add_sharpen,
    vexo::add_deblock,   vexo::add_saturate, vexo::add_anaglyph,
    vexo::add_compare,   vexo::add_info,     vexo::add_keyframes,
    vexo::add_fourcc,    vexo::add_formats};

int run(int argc, char **argv) {
  CLI::App app{
      "Converts, scales, turns, tone maps and enhances pictures; makes "
      "thumbnails and anaglyphs of them. Lists key frames of video streams.",
      "vexo"};
  app.set_version_flag("--version", "vexo " VEXO_VERSION);
  app.require_subcommand(1);
  for (vexo::AddCommand *const add : kCommands) add(app);
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
  return 0;
}

int guarded_run(int argc, char **argv) {
  try {
    vexo::claim_standard_output();
    const int status = run(argc, argv);
    vexo::close_standard_output();
    return status;
  } catch (const vexo::Reported &) {
    return kExitFailure;
  } catch (const std::bad_alloc &) {
    return complain("out of memory");
  } catch (const std::exception &error) {
    return complain(error.what());
  }
}

}  // namespace

int main(int argc, char **argv) {
  // A reader that goes away and a file that may not grow are failed writes with
  // a message, not a death.
  signal(SIGPIPE, SIG_IGN);
  signal(SIGXFSZ, SIG_IGN);
  const int status = guarded_run(argc, argv);
  // What a thread still uses must stay.
  if (vexo::threads_left_behind()) std::_Exit(status);
  return status;
}
