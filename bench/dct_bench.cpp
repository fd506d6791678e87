// SPDX-License-Identifier: Apache-2.0
#include "bench/dct_bench.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "bench/contender.h"
#include "bench/dct_model.h"
#include "bench/dct_picture.h"
#include "bench/dct_plan.h"
#include "bench/frames.h"

namespace bench {

namespace {

constexpr Workload kSetup = reduce("dct_setup", VEXO_FMT_NV12, k4To1.large);

void time_setup(benchmark::State &state) {
  for (auto _ : state) {
    const DctPlan plan(kSetup, kSetup.ratio.large);
    benchmark::DoNotOptimize(plan.context());
  }
  state.counters["pixels"] = 1;
}

// Draws it as NV12.
using Draw = bool (*)(const vexo_img &img);

bool draw_frame(const vexo_img &img) {
  draw_detailed(img);
  return true;
}

// The photograph of samples/, which is I420 behind two lines of text.
bool draw_photograph(const vexo_img &img) {
  std::ifstream file(BENCH_SAMPLES "/coffee_320x208.y4m", std::ios::binary);
  std::string line;
  std::getline(file, line);
  std::getline(file, line);
  for (const Component &channel : components(img)) {
    for (int32_t y = 0; y < channel.height; ++y) {
      for (int32_t x = 0; x < channel.width; ++x) {
        channel.at(x, y) = static_cast<uint8_t>(file.get());
      }
    }
  }
  return file.good();
}

struct Case {
  const char *name;
  Draw draw;
  Sizes sizes;
};

constexpr Case kCases[] = {
    {"photograph, 320x208 to 80x52", draw_photograph, {{320, 208}, {80, 52}}},
    {"photograph, 320x208 to 118x76", draw_photograph, {{320, 208}, {118, 76}}},
    {"drawn frame, 1920x1080 to 480x270", draw_frame, k4To1.large},
    {"drawn frame, 1920x1080 to 712x400",
     draw_frame,
     {{1920, 1080}, {712, 400}}},
};

std::vector<double> samples_of(const Component &channel) {
  std::vector<double> samples;
  for (int32_t y = 0; y < channel.height; ++y) {
    for (int32_t x = 0; x < channel.width; ++x) {
      samples.push_back(channel.at(x, y));
    }
  }
  return samples;
}

// `reference` gives the samples of a channel.
template <typename Reference>
void record(const Case &quality, const std::string &name, const Components &own,
            const Reference &reference) {
  std::string decibels;
  for (size_t c = 0; c < 3; ++c) {
    char text[16];
    std::snprintf(text, sizeof(text), "%s%.1f", c > 0 ? " " : "",
                  psnr(own[c], reference(c)));
    decibels += text;
  }
  benchmark::AddCustomContext(
      std::string("dct_psnr/") + quality.name + "/" + name, decibels);
}

void record(const Case &quality) {
  const Workload workload = reduce(quality.name, VEXO_FMT_NV12, quality.sizes);
  const Sizes &sizes = quality.sizes;
  const Block src(src_room(workload, sizes));
  const vexo_img from = describe_src(workload, sizes, src.data());
  if (!quality.draw(from)) {
    std::fprintf(stderr, "%s: no picture\n", quality.name);
    return;
  }
  const size_t size = dst_room(workload, sizes);
  const Block dst(size), other(size);
  DctPlan plan(workload, sizes);
  plan.run(src.data(), dst.data());
  const Components own = components(describe_dst(workload, sizes, dst.data()));
  record(quality, "model", own, [&](size_t c) {
    return reduce_by_model(components(from)[c], {own[c].width, own[c].height},
                           plan.context(), c > 0);
  });
  int32_t drawn = from.format;
  for (const Contender &peer : contenders_for(workload, sizes)) {
    if (peer.kind != Contender::Kind::kPeer) continue;
    Workload order = workload;
    order.dst_format = peer.dst_format;
    if (peer.src_format >= 0) order.src_format = peer.src_format;
    if (order.src_format != drawn) {
      quality.draw(describe_src(order, sizes, src.data()));
      drawn = order.src_format;
    }
    peer.run(src.data(), other.data());
    const Components theirs =
        components(describe_dst(order, sizes, other.data()));
    record(quality, peer.name, own,
           [&](size_t c) { return samples_of(theirs[c]); });
  }
}

}  // namespace

void register_dct_setup() {
  benchmark::RegisterBenchmark("dct_setup/any/orumlox", time_setup)
      ->MeasureProcessCPUTime()
      ->Unit(benchmark::kMicrosecond);
}

void record_dct_quality() {
  for (const Case &quality : kCases) record(quality);
}

}  // namespace bench
