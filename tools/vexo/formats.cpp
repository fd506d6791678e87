// SPDX-License-Identifier: Apache-2.0
//
// vexo formats: the tables of pairs and of chains, from the library's answers.
#include "formats.h"

#include <cstdio>
#include <map>
#include <vector>

#include "commands.h"
#include "error.h"
#include "io.h"
#include "nearest.h"

namespace vexo {
namespace {

constexpr const char *kFormatsHelp =
    R"(Prints the layouts, and which conversions the library has.

Layouts are written as they are named here, or as ffmpeg names those that have
the same bytes: yuv420p, gray, rgb24, yuv420p10le.

  vexo formats
  vexo formats --chains --standard bt709)";

struct Standard {
  const char *name;
  int32_t value;
};
constexpr Standard kStandards[] = {
    {"bt601", VEXO_STD_DEFAULT}, {"bt601-full", VEXO_STD_BT601_FULL},
    {"bt709", VEXO_STD_BT709},   {"bt709-full", VEXO_STD_BT709_FULL},
    {"bt2020", VEXO_STD_BT2020}, {"bt2020-full", VEXO_STD_BT2020_FULL}};

struct FormatsOptions {
  std::string standard = "bt601";
  bool json = false;
  bool chains = false;
};

void print_json(int32_t color_std) {
  std::fprintf(standard_output(), "{\n  \"std\": \"%s\",\n  \"formats\": [\n",
               standard_name(color_std));
  const char *comma = "";
  for (const Layout &from : all_layouts()) {
    std::fprintf(standard_output(),
                 "%s    {\"code\": %d, \"token\": \"%s\", \"to\": [", comma,
                 static_cast<int>(from.code), from.token);
    const char *inner = "";
    for (const Layout &to : all_layouts()) {
      if (!library_converts(from, to, color_std)) continue;
      std::fprintf(standard_output(), "%s\"%s\"", inner, to.token);
      inner = ", ";
    }
    std::fprintf(standard_output(), "]}");
    comma = ",\n";
  }
  std::fprintf(standard_output(), "\n  ]\n}\n");
}

void print_table(int32_t color_std) {
  std::fprintf(standard_output(),
               "Conversions from (rows) to (columns, by code), %s\n\n",
               standard_name(color_std));
  std::fprintf(standard_output(), "%-18s", "");
  for (const Layout &to : all_layouts()) {
    std::fprintf(standard_output(), " %3d", static_cast<int>(to.code));
  }
  std::fprintf(standard_output(), "\n");
  int pairs = 0;
  for (const Layout &from : all_layouts()) {
    std::fprintf(standard_output(), "%3d %-14s", static_cast<int>(from.code),
                 from.token);
    for (const Layout &to : all_layouts()) {
      const bool yes = library_converts(from, to, color_std);
      pairs += yes;
      std::fprintf(standard_output(), " %3s", yes ? "yes" : "-");
    }
    std::fprintf(standard_output(), "\n");
  }
  std::fprintf(standard_output(), "\n%d pairs\n", pairs);
}

// What lies between the ends of a chain; nothing where one conversion does.
std::string layouts_between(const Layout &from, const Layout &to,
                            int32_t color_std) {
  int32_t formats[VEXO_MOST_STOPS];
  const int32_t passes =
      vexo_picture_passes(from.code, color_std, to.code, color_std, formats);
  std::string between;
  for (int32_t i = 1; i < passes; ++i) {
    between += i == 1 ? "" : ", ";
    between += vexo_format_name(formats[i]);
  }
  return between;
}

// A section of docs/conversions.md: passes from each layout to each other one,
// then the ways of more than one, where they are not those of bt601.
void print_chains(int32_t color_std) {
  std::FILE *const out = standard_output();
  std::fprintf(out, "## %s\n\n|  |", standard_name(color_std));
  for (const Layout &to : all_layouts()) {
    std::fprintf(out, " %d |", static_cast<int>(to.code));
  }
  std::fprintf(out, "\n|---|");
  for (size_t i = 0; i < all_layouts().size(); ++i) std::fprintf(out, "---|");
  std::string list;
  for (const Layout &from : all_layouts()) {
    std::fprintf(out, "\n| %d `%s` |", static_cast<int>(from.code), from.token);
    // By what lies between, the layouts that are reached so.
    std::map<std::string, std::string> ways;
    for (const Layout &to : all_layouts()) {
      const int32_t passes = vexo_picture_passes(from.code, color_std, to.code,
                                                 color_std, nullptr);
      std::fprintf(out, passes == 0 ? " |" : " %d |", static_cast<int>(passes));
      const std::string between = layouts_between(from, to, color_std);
      if (between.empty() ||
          (color_std != VEXO_STD_DEFAULT &&
           between == layouts_between(from, to, VEXO_STD_DEFAULT))) {
        continue;
      }
      std::string &reached = ways[between];
      reached += (reached.empty() ? "" : ", ") + std::string(to.token);
    }
    for (const auto &[between, reached] : ways) {
      list.append("- ").append(from.token).append(" by ").append(between);
      list.append(": ").append(reached).append("\n");
    }
  }
  std::fprintf(out, "\n\n%s", list.c_str());
}

}  // namespace

int32_t standard_named(const std::string &name) {
  for (const Standard &standard : kStandards) {
    if (name == standard.name) return standard.value;
  }
  std::vector<std::string> names;
  for (const Standard &standard : kStandards) names.emplace_back(standard.name);
  throw Error("unknown standard '" + name +
              "': one of bt601, bt709, bt2020 and these with -full" +
              suggestion(name, names));
}

const char *standard_name(int32_t color_std) {
  for (const Standard &standard : kStandards) {
    if (color_std == standard.value) return standard.name;
  }
  return "no standard";
}

bool library_converts(const Layout &from, const Layout &to, int32_t color_std) {
  return vexo_csc_supports(from.code, to.code, color_std) != 0;
}

void add_formats(CLI::App &app) {
  const auto options = std::make_shared<FormatsOptions>();
  CLI::App *const command = app.add_subcommand("formats", kFormatsHelp);
  command->add_flag("--json", options->json, "As JSON");
  command->add_flag("--chains", options->chains,
                    "What chains of conversions lead to, in how many passes");
  command->add_option("--standard,--std", options->standard, "As for convert");
  command->callback([options] {
    const int32_t color_std = standard_named(options->standard);
    (options->chains ? print_chains
     : options->json ? print_json
                     : print_table)(color_std);
  });
}

}  // namespace vexo
