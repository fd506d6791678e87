// SPDX-License-Identifier: Apache-2.0
//
// Weights are made by table and by arithmetic that rounds alike everywhere: the
// C libraries' sines differ.
#include "apex/taps.h"

#include <cstddef>
#include <cstring>

#include "common/divisor.h"

namespace lox {

namespace {

constexpr double kPi = 3.14159265358979323846;

// sin(pi x).
constexpr double sine(double x) {
  double sign = 1;
  while (x > 0.5) {
    x -= 1;
    sign = -sign;
  }
  const double square = kPi * x * kPi * x;
  double term = kPi * x;
  double sum = term;
  for (int i = 2; i < 24; i += 2) {
    term *= -square / (i * (i + 1));
    sum += term;
  }
  return sign * sum;
}

// The filter from 0 to 3, in steps of which a cubic between four is nearer than
// the weights' last bit by far. The first is one before 0.
constexpr int kSteps = 64;
struct Table {
  double at[3 * kSteps + 4];
};
constexpr Table kFilter = [] {
  Table t{};
  for (int i = 0; i < 3 * kSteps + 4; ++i) {
    const int steps = i == 0 ? 1 : i - 1;
    const double x = double{1} * steps / kSteps;
    const double angle = kPi * x;
    t.at[i] = steps == 0 ? 1
              : steps % kSteps == 0
                  ? 0
                  : sine(x) * sine(x / 3) * 3 / (angle * angle);
  }
  return t;
}();

double filter(double steps) {
  const int step = static_cast<int>(steps);
  if (step >= 3 * kSteps) return 0;
  const double t = steps - step;
  const double *const p = kFilter.at + step;
  const double a = p[0] * (t * (t - 1) * (t - 2) / -6);
  const double b = p[1] * ((t + 1) * (t - 1) * (t - 2) / 2);
  const double c = p[2] * ((t + 1) * t * (t - 2) / -2);
  const double d = p[3] * ((t + 1) * t * (t - 1) / 6);
  return a + b + (c + d);
}

// A centre of the filter: `part` quarters of 1 / to behind sample `at`.
struct Centre {
  int64_t at, part;
};
int64_t floor_divide(int64_t a, int64_t b) {
  return a / b - (a % b < 0 ? 1 : 0);
}

// The first sample that the filter may reach, less the one before the centre.
int64_t first_tap(const ApexAxis &axis, int64_t part) {
  if (axis.from == axis.to) return 0;
  const int64_t wide = axis.from > axis.to ? axis.from : axis.to;
  return floor_divide(part - 12 * wide, 4 * int64_t{axis.to}) + 1;
}

void weigh(const ApexAxis &axis, int64_t part, int32_t count,
           int16_t *weights) {
  if (count == 1) {
    weights[0] = 1 << 14;
    return;
  }
  const int64_t unit = 4 * int64_t{axis.to};
  const int64_t wide = 4 * int64_t{axis.from > axis.to ? axis.from : axis.to};
  const double steps = kSteps / static_cast<double>(wide);
  double values[kMostTaps];
  double sum = 0;
  int64_t from_centre = unit * first_tap(axis, part) - part;
  for (int32_t k = 0; k < count; ++k, from_centre += unit) {
    const int64_t away = from_centre < 0 ? -from_centre : from_centre;
    sum += values[k] = filter(static_cast<double>(away) * steps);
  }
  const double scale = (1 << 14) / sum;
  double until = 0;
  int32_t given = 0;
  for (int32_t k = 0; k < count; ++k) {
    until += values[k] * scale;
    // Rounded to the nearest; nothing is as low as that.
    constexpr int32_t kLow = 1 << 15;
    const int32_t now = static_cast<int32_t>(until + (kLow + 0.5)) - kLow;
    weights[k] = static_cast<int16_t>(now - given);
    given = now;
  }
}

int32_t clamp(int64_t v, int32_t count) {
  return v < 0 ? 0 : v >= count ? count - 1 : static_cast<int32_t>(v);
}

}  // namespace

ApexPeriod::ApexPeriod(const ApexAxis &axis) : taps(axis.taps()) {
  const auto whole =
      static_cast<int32_t>(axis.to / common_divisor(axis.to, axis.from));
  outputs = whole < axis.dst_count ? whole : axis.dst_count;
  // Of a part of a period about as many.
  samples = (int64_t{outputs} * axis.from - 1) / axis.to + 1;
}

void ApexPeriod::fill(const ApexAxis &axis) const {
  const int64_t unit = 4 * int64_t{axis.to};
  // The first centre is at (from - to) / 2 to, of left samples at half of that.
  const int64_t begin = int64_t{axis.from} - axis.to;
  const int64_t start = axis.left ? begin : 2 * begin;
  Centre c = {floor_divide(start, unit), 0};
  c.part = start - c.at * unit;
  for (int32_t i = 0; i < outputs; ++i) {
    first[i] = static_cast<int32_t>(c.at + first_tap(axis, c.part));
    weigh(axis, c.part, taps, weights + int64_t{i} * taps);
    c.at += axis.from / axis.to;
    c.part += 4 * int64_t{axis.from % axis.to};
    if (c.part >= unit) {
      c.part -= unit;
      ++c.at;
    }
  }
}

void fill_taps(const ApexAxis &axis, const ApexPeriod &period, int64_t outputs,
               const ApexTaps &taps) {
  const ptrdiff_t pitch = ptrdiff_t{2} * taps.pairs;
  std::memset(taps.weights, 0,
              static_cast<size_t>(outputs * pitch) * sizeof *taps.weights);
  int32_t phase = 0;
  int64_t moved = 0;
  for (int64_t i = 0; i < outputs; ++i) {
    if (i >= axis.dst_count) {
      taps.first[i] = taps.first[axis.dst_count - 1];
      continue;
    }
    const int64_t at = period.first[phase] + moved;
    const int16_t *const own = period.weights + int64_t{phase} * period.taps;
    const int32_t first = clamp(at, axis.src_count);
    taps.first[i] = first / 2;
    int16_t *const w = taps.weights + i * pitch + first % 2;
    if (at == first && at + period.taps <= axis.src_count) {
      std::memcpy(w, own, static_cast<size_t>(period.taps) * sizeof *w);
    } else {
      for (int32_t k = 0; k < period.taps; ++k) {
        int16_t &sum = w[clamp(at + k, axis.src_count) - first];
        sum = static_cast<int16_t>(sum + own[k]);
      }
    }
    if (++phase == period.outputs) {
      phase = 0;
      moved += period.samples;
    }
  }
}

}  // namespace lox
