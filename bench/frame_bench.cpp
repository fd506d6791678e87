// SPDX-License-Identifier: Apache-2.0
//
// Times whole frames through the library's entry points beside its peers, in
// one process and, unless a row says otherwise, on one thread. README.md says
// how to run it and what the figures are.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "bench/contender.h"
#include "bench/dct_bench.h"
#include "bench/frames.h"
#include "bench/hdr_contender.h"
#include "bench/media_bench.h"
#include "bench/one_core.h"
#include "bench/vqe_bench.h"
#include "common/isa.h"

namespace bench {

namespace {

struct Setting {
  const char *id;
  bool large, ring;
};

constexpr Setting kSettings[] = {
    {"640x360", false, false},
    {"1080p_hot", true, false},
    {"1080p_ring", true, true},
};

size_t aligned(size_t bytes) { return (bytes + 63) / 64 * 64; }

struct Plan {
  size_t src_step, dst_step, count;

  Plan(const Workload &workload, const Setting &s)
      : src_step(aligned(src_room(workload, sizes_of(workload, s.large)))),
        dst_step(aligned(dst_room(workload, sizes_of(workload, s.large)))),
        count(s.ring ? ring_bytes() / (src_step + dst_step) + 1 : 1) {}
};

void time_frames(benchmark::State &state, const Contender &contender,
                 Frames *frames, double pixels) {
  lox::isa_limit(contender.level >= 0 ? contender.level : lox::isa_best());
  std::optional<OneCore> one_core;
  if (contender.threads == Contender::Threads::kOnOneCore) one_core.emplace();
  for (auto _ : state) frames->next(contender.run);
  lox::isa_limit(lox::isa_best());
  state.counters["pixels"] = pixels;
}

std::string processor() {
  std::ifstream file("/proc/cpuinfo");
  for (std::string line; std::getline(file, line);) {
    const size_t colon = line.find(": ");
    if (line.rfind("model name", 0) == 0 && colon != std::string::npos) {
      return line.substr(colon + 2);
    }
  }
  return "unknown";
}

void record_versions() {
  benchmark::AddCustomContext("processor", processor());
#if defined(__clang__)
  benchmark::AddCustomContext("compiler", __VERSION__);
#else
  benchmark::AddCustomContext("compiler", "GCC " __VERSION__);
#endif
  benchmark::AddCustomContext("orumlox_form", lox::isa_name(lox::isa_best()));
  benchmark::AddCustomContext("ring_bytes", std::to_string(ring_bytes()));
#if defined(BENCH_HAS_LIBYUV)
  benchmark::AddCustomContext("libyuv", libyuv_version());
#endif
#if defined(BENCH_HAS_OPENCV)
  benchmark::AddCustomContext("OpenCV", opencv_version());
#endif
#if defined(BENCH_HAS_SWSCALE)
  benchmark::AddCustomContext("swscale", swscale_version_text());
#endif
#if defined(BENCH_HAS_ZIMG)
  benchmark::AddCustomContext("zimg", zimg_version());
#endif
#if defined(BENCH_HAS_AVFILTER)
  benchmark::AddCustomContext("avfilter", avfilter_version_text());
#endif
}

bool check(const Workload &workload, const Sizes &sizes,
           const Contenders &list) {
  switch (workload.task) {
    case Task::kReduce:
      return check_same_reduction(workload, sizes, list);
    case Task::kSharpen:
      return check_same_enhancement(workload, sizes, list);
    default:
      return check_same_work(workload, sizes, list);
  }
}

}  // namespace

Contenders contenders_for(const Workload &workload, const Sizes &sizes) {
  Contenders list;
  add_own_forms(workload, sizes, &list);
  add_own_reduction(workload, sizes, &list);
#if defined(BENCH_HAS_LIBYUV)
  add_libyuv(workload, sizes, &list);
  add_libyuv_scaling(workload, sizes, &list);
#endif
#if defined(BENCH_HAS_OPENCV)
  add_opencv(workload, sizes, &list);
  add_opencv_scaling(workload, sizes, &list);
  add_opencv_sharpening(workload, sizes, &list);
#endif
#if defined(BENCH_HAS_SWSCALE)
  add_swscale(workload, sizes, &list);
#endif
#if defined(BENCH_HAS_ZIMG)
  add_zimg(workload, sizes, &list);
  add_zimg_reduction(workload, sizes, &list);
#endif
#if defined(BENCH_HAS_AVFILTER)
  add_avfilter(workload, sizes, &list);
  add_avfilter_sharpening(workload, sizes, &list);
#endif
  add_stream_bounds(workload, sizes, &list);
  return list;
}

}  // namespace bench

int main(int argc, char **argv) {
  using namespace bench;
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  record_versions();

  // All workloads share the memory, so that the run fits small machines.
  size_t src_bytes = 0, dst_bytes = 0;
  for (const Workload &workload : kWorkloads) {
    for (const Setting &setting : kSettings) {
      const Plan plan(workload, setting);
      src_bytes = std::max(src_bytes, plan.src_step * plan.count);
      dst_bytes = std::max(dst_bytes, plan.dst_step * plan.count);
    }
  }
  const Block src(src_bytes), dst(dst_bytes);

  // Reserved: the registered benchmarks keep pointers into it.
  std::vector<Frames> frames;
  frames.reserve(std::size(kWorkloads) * std::size(kSettings));
  bool same = true;
  for (const Workload &workload : kWorkloads) {
    for (const Setting &setting : kSettings) {
      if (workload.task == Task::kReduce && !setting.large) continue;
      const Sizes sizes = sizes_of(workload, setting.large);
      const Contenders list = contenders_for(workload, sizes);
      if (!setting.ring) {
        same &= check(workload, sizes, list);
      }
      const Plan plan(workload, setting);
      frames.emplace_back(src.data(), plan.src_step, dst.data(), plan.dst_step,
                          plan.count);
      const double pixels = 1.0 * sizes.dst.width * sizes.dst.height;
      for (const Contender &contender : list) {
        const std::string name =
            std::string(workload.id) + "/" + setting.id + "/" + contender.name;
        // The time of the whole process: a thread that a peer starts counts.
        auto *row = benchmark::RegisterBenchmark(
            name.c_str(),
            [contender, at = &frames.back(), pixels](benchmark::State &state) {
              time_frames(state, contender, at, pixels);
            });
        row->MeasureProcessCPUTime()->Unit(benchmark::kMicrosecond);
        if (contender.threads == Contender::Threads::kByTheClock) {
          row->UseRealTime();
        }
      }
    }
  }
  register_dct_setup();
  same &= check_deblocking();
  register_deblocking();
  same &= check_media();
  register_media();
  same &= check_tone_mapping();
  register_tone_mapping();
  if (!same) {
    std::fputs("not timed: outputs differ\n", stderr);
    return 1;
  }
  record_dct_quality();
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
