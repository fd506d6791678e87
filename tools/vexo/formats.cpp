// SPDX-License-Identifier: Apache-2.0
//
// vexo formats: the table of pairs, from trial conversions.
#include "formats.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "commands.h"
#include "error.h"
#include "io.h"
#include "orumlox/csc.h"

namespace vexo {
namespace {

// Wide enough for t256x16, which is accepted only above 1280.
constexpr int kTrialWidth = 1344;
constexpr int kTrialHeight = 64;

struct Standard {
  const char *name;
  int32_t value;
};
constexpr Standard kStandards[] = {{"bt601", VEXO_STD_DEFAULT},
                                   {"bt601-full", VEXO_STD_BT601_FULL},
                                   {"bt709", VEXO_STD_BT709},
                                   {"bt709-full", VEXO_STD_BT709_FULL}};

struct FormatsOptions {
  std::string standard = "bt601";
  bool json = false;
};

void fill(const Frame &frame, int value) {
  for (int p = 0; p < frame.layout().planes; ++p) {
    for (int y = 0; y < frame.rows(p); ++y) {
      std::memset(frame.row(p, y), value,
                  static_cast<size_t>(frame.row_bytes(p)));
    }
  }
}

bool filled_with(const Frame &frame, int value) {
  for (int p = 0; p < frame.layout().planes; ++p) {
    for (int y = 0; y < frame.rows(p); ++y) {
      const uint8_t *const row = frame.row(p, y);
      if (!std::all_of(row, row + frame.row_bytes(p),
                       [value](uint8_t byte) { return byte == value; })) {
        return false;
      }
    }
  }
  return true;
}

// A picture cannot be all zeros and all ones: one of two fills shows whether
// anything was written.
bool converts(const Frame &src, const Frame &dst) {
  bool written = false;
  for (const int value : {0, 255}) {
    fill(dst, value);
    if (vexo_csc(&src.img(), &dst.img()) != VEXO_OK) return false;
    written = written || !filled_with(dst, value);
  }
  return written;
}

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

}  // namespace

int32_t standard_named(const std::string &name) {
  for (const Standard &standard : kStandards) {
    if (name == standard.name) return standard.value;
  }
  throw Error("unknown standard '" + name +
              "': one of bt601, bt601-full, bt709, bt709-full");
}

const char *standard_name(int32_t color_std) {
  for (const Standard &standard : kStandards) {
    if (color_std == standard.value) return standard.name;
  }
  return "";
}

bool library_converts(const Layout &from, const Layout &to, int32_t color_std) {
  const Frame src(from, kTrialWidth, kTrialHeight, color_std);
  const Frame dst(to, kTrialWidth, kTrialHeight, color_std);
  return converts(src, dst);
}

void add_formats(CLI::App &app) {
  const auto options = std::make_shared<FormatsOptions>();
  CLI::App *const command = app.add_subcommand(
      "formats", "Prints which conversions the library has.");
  command->add_flag("--json", options->json, "As JSON");
  command->add_option("--standard,--std", options->standard, "As for convert");
  command->callback([options] {
    const int32_t color_std = standard_named(options->standard);
    (options->json ? print_json : print_table)(color_std);
  });
}

}  // namespace vexo
