// SPDX-License-Identifier: Apache-2.0
#include "colour.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "orumlox/img.h"

namespace vexo {
namespace {

constexpr const char *kMatrices[] = {"gbr",
                                     "bt709",
                                     "unknown",
                                     "reserved",
                                     "fcc",
                                     "bt470bg",
                                     "smpte170m",
                                     "smpte240m",
                                     "ycgco",
                                     "bt2020nc",
                                     "bt2020c",
                                     "smpte2085",
                                     "chroma-derived-nc",
                                     "chroma-derived-c",
                                     "ictcp"};
constexpr const char *kPrimaries[] = {
    "reserved", "bt709",     "unknown",   "reserved", "bt470m",
    "bt470bg",  "smpte170m", "smpte240m", "film",     "bt2020",
    "smpte428", "smpte431",  "smpte432"};
constexpr const char *kTransfers[] = {
    "reserved",  "bt709",        "unknown",   "reserved",     "gamma22",
    "gamma28",   "smpte170m",    "smpte240m", "linear",       "log100",
    "log316",    "iec61966-2-4", "bt1361e",   "iec61966-2-1", "bt2020-10",
    "bt2020-12", "smpte2084",    "smpte428",  "arib-std-b67"};
constexpr const char *kRanges[] = {"unknown", "limited", "full"};
constexpr const char *kSitings[] = {
    "unknown", "left", "center", "topleft", "top", "bottomleft", "bottom"};

template <size_t kCount>
const char *name_of(const char *const (&names)[kCount], int number) {
  if (number < 0 || number >= static_cast<int>(kCount)) return "reserved";
  return names[number];
}

}  // namespace

const char *matrix_name(int matrix) { return name_of(kMatrices, matrix); }
const char *primaries_name(int primaries) {
  return primaries == 22 ? "ebu3213" : name_of(kPrimaries, primaries);
}
const char *transfer_name(int transfer) {
  return name_of(kTransfers, transfer);
}
const char *range_name(int range) { return name_of(kRanges, range); }
const char *siting_name(int siting) { return name_of(kSitings, siting); }

int32_t standard_of(const Colour &colour, int width, int height) {
  const bool full = colour.range == 2;
  const int32_t bt601 = full ? VEXO_STD_BT601_FULL : VEXO_STD_DEFAULT;
  const int32_t bt709 = full ? VEXO_STD_BT709_FULL : VEXO_STD_BT709;
  switch (colour.matrix) {
    case 1:
    case 7:  // Of 1988, whose weights differ by 2 percent at most.
      return bt709;
    case 4:  // Of 1953, whose weights are those of BT.601 in two digits.
    case 5:
    case 6:
      return bt601;
    case 9:
      return full ? VEXO_STD_BT2020_FULL : VEXO_STD_BT2020;
    case 0:  // Planes of green, blue and red, which are packed when read.
    case 2:
    case 3:
      return std::max(width, height) >= 1280 || std::min(width, height) > 576
                 ? bt709
                 : bt601;
    default:
      return kNoStandard;
  }
}

int matrix_of(int32_t color_std) {
  if (color_std == kNoStandard) return Colour::kUnknown;
  return color_std >= VEXO_STD_BT2020 ? 9 : color_std >= VEXO_STD_BT709 ? 1 : 6;
}

int source_nit(const Colour &colour) {
  constexpr int kUsual = 1000;
  constexpr int kMost = 10000;
  if (colour.brightest > 0) return std::min(colour.brightest, kMost);
  if (colour.display_peak < 1) return kUsual;
  return static_cast<int>(
      std::lround(std::min<double>(colour.display_peak, kMost)));
}

std::string describe(const Colour &colour) {
  std::string line = std::string("matrix ") + matrix_name(colour.matrix) +
                     ", " + range_name(colour.range) + " range, transfer " +
                     transfer_name(colour.transfer) + ", primaries " +
                     primaries_name(colour.primaries) + ", chroma " +
                     siting_name(colour.siting);
  if (colour.display_peak > 0) {
    line += ", display " + std::to_string(std::lround(colour.display_peak)) +
            " nits";
  }
  if (colour.brightest > 0) {
    line += ", brightest " + std::to_string(colour.brightest) + " nits";
  }
  return line;
}

}  // namespace vexo
