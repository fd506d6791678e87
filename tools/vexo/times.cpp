// SPDX-License-Identifier: Apache-2.0
#include "times.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>

#include "error.h"

namespace vexo {

double parse_time(const std::string &text, double duration) {
  const char *at = text.data();
  const char *const end = at + text.size();
  double seconds = 0;
  bool sound = false;
  for (int parts = 0; parts < 3; ++parts) {
    double value = 0;
    const auto read = std::from_chars(at, end, value, std::chars_format::fixed);
    sound = read.ec == std::errc() && value >= 0 && std::isfinite(value);
    if (!sound) break;
    seconds = 60 * seconds + value;
    at = read.ptr;
    if (at == end || *at != ':') break;
    ++at;
  }
  const std::string rest(at, end);
  sound =
      sound && seconds < 1e9 && (rest.empty() || rest == "s" || rest == "%");
  if (sound && rest == "%") {
    if (seconds > 100) sound = false;
    if (sound && duration <= 0) {
      throw Error("--at " + text + ": the input does not say how long it is");
    }
    seconds = seconds / 100 * duration;
  }
  if (sound) return seconds;
  throw Error("--at '" + text + "' is none of 12.5s, 1:02:03 and 30%");
}

std::string time_text(double seconds, int decimals) {
  const double step = std::pow(10, decimals);
  const double rounded = std::round(std::max(seconds, 0.0) * step) / step;
  const int whole = static_cast<int>(rounded / 60);
  char text[64];
  const double rest = rounded - 60.0 * whole;
  const int width = decimals > 0 ? 3 + decimals : 2;
  if (whole >= 60) {
    std::snprintf(text, sizeof text, "%d:%02d:%0*.*f", whole / 60, whole % 60,
                  width, decimals, rest);
  } else {
    std::snprintf(text, sizeof text, "%d:%0*.*f", whole, width, decimals, rest);
  }
  return text;
}

}  // namespace vexo
