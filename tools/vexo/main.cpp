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
#include "nearest.h"
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
    vexo::add_sheet,     vexo::add_compare,  vexo::add_info,
    vexo::add_keyframes, vexo::add_fourcc,   vexo::add_formats};

// Lists commands in a line each, so that all fit a screen.
class BriefFormatter : public CLI::Formatter {
 public:
  std::string make_usage(const CLI::App *, std::string) const override {
    return "Usage: vexo COMMAND [OPTIONS] [FILES]\n"
           "       vexo [COMMAND] --help; vexo --version\n";
  }
  std::string make_group(std::string, bool,
                         std::vector<const CLI::Option *>) const override {
    return "";
  }
  std::string make_subcommand(const CLI::App *command) const override {
    const std::string about = command->get_description();
    std::ostringstream line;
    CLI::detail::format_help(line, command->get_name(),
                             about.substr(0, about.find('\n')),
                             get_column_width());
    return line.str();
  }
};

// A command's page, of 80 columns.
class PageFormatter : public CLI::Formatter {
 public:
  std::string make_option_desc(const CLI::Option *option) const override {
    const size_t width = 80 - get_column_width();
    std::istringstream words(option->get_description());
    std::string lines;
    size_t begin = 0;
    for (std::string word; words >> word; lines += word) {
      if (lines.empty()) continue;
      const bool fits = lines.size() - begin + 1 + word.size() <= width;
      lines += fits ? ' ' : '\n';
      if (!fits) begin = lines.size();
    }
    return lines;
  }
};

// What was not understood, and what may have been meant.
std::string usage_sentence(CLI::App &app, const CLI::ParseError &error) {
  const std::vector<CLI::App *> chosen = app.get_subcommands();
  std::vector<std::string> names;
  if (chosen.empty()) {
    const std::vector<std::string> unknown = app.remaining();
    if (unknown.empty()) return error.what();
    for (const CLI::App *const command :
         app.get_subcommands([](CLI::App *) { return true; })) {
      names.push_back(command->get_name());
    }
    return "unknown subcommand '" + unknown.front() +
           "'; vexo --help lists all" +
           vexo::suggestion(unknown.front(), names);
  }
  const std::vector<std::string> unknown = chosen.front()->remaining();
  if (unknown.empty()) return error.what();
  for (const CLI::Option *const option : chosen.front()->get_options()) {
    for (const std::string &name : option->get_lnames()) {
      names.push_back("--" + name);
    }
  }
  return error.what() + vexo::suggestion(unknown.front(), names);
}

int run(int argc, char **argv) {
  CLI::App app{
      "Converts, scales, turns, tone maps and compares pictures and videos.",
      "vexo"};
  app.set_version_flag("--version", "vexo " VEXO_VERSION);
  app.require_subcommand(1);
  const auto brief = std::make_shared<BriefFormatter>();
  brief->column_width(14);
  app.formatter(brief);
  app.footer(
      "vexo COMMAND --help says more, with examples. The exit status is 0 when "
      "all was\ndone, 1 when something failed, 2 for a command line that is "
      "not "
      "understood.");
  for (vexo::AddCommand *const add : kCommands) add(app);
  for (CLI::App *const command :
       app.get_subcommands([](CLI::App *) { return true; })) {
    command->formatter(std::make_shared<PageFormatter>());
    command->footer("");
  }
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
    complain(usage_sentence(app, error).c_str());
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
