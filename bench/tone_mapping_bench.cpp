// SPDX-License-Identifier: Apache-2.0
//
// Times tone mapping: large frames, from a ring of two, which together are
// beyond most caches.
#include <benchmark/benchmark.h>

#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <utility>

#include "bench/frames.h"
#include "bench/hdr_contender.h"
#include "common/isa.h"

namespace bench {

namespace {

struct Setting {
  const char *id;
  Size size;
};
constexpr Setting kLarge = {"2160p", {3840, 2160}};
constexpr Setting kSmall = {"1080p", {1920, 1080}};

// Frames of one picture and their destinations.
class Ring {
 public:
  Ring(int32_t format, Size size)
      : format_(format),
        size_(size),
        src_step_((frame_bytes(describe(format, size, nullptr)) + 63) / 64 *
                  64),
        dst_step_(tone_mapped_bytes(size)),
        src_(kCount * src_step_),
        dst_(kCount * dst_step_),
        frames_(src_.data(), src_step_, dst_.data(), dst_step_, kCount) {
    draw_hdr(describe(format, size, src_.data()));
    for (size_t i = 1; i < kCount; ++i) {
      std::memcpy(src_.data() + i * src_step_, src_.data(), src_step_);
    }
  }

  bool next(ToneMapper *mapper) {
    bool done = false;
    frames_.next([&](uint8_t *src, uint8_t *dst) {
      done = mapper->run(describe(format_, size_, src), dst);
    });
    return done;
  }

 private:
  static constexpr size_t kCount = 2;

  int32_t format_;
  Size size_;
  size_t src_step_, dst_step_;
  Block src_, dst_;
  Frames frames_;
};

// Made when first asked for: a run of other workloads needs none.
Ring &ring_of(int32_t format, Size size) {
  static std::map<std::pair<int32_t, int32_t>, std::unique_ptr<Ring>> rings;
  std::unique_ptr<Ring> &ring = rings[{format, size.width}];
  if (!ring) ring = std::make_unique<Ring>(format, size);
  return *ring;
}

void time_frames(benchmark::State &state, const HdrContender &contender,
                 Size size) {
  lox::isa_limit(contender.level);
  Ring &ring = ring_of(contender.src_format, size);
  const auto mapper = contender.prepare();
  // Once before it counts: peers get their memory with the first frame.
  bool done = mapper && ring.next(mapper.get());
  for (auto _ : state) done = done && ring.next(mapper.get());
  lox::isa_limit(lox::isa_best());
  if (!done) state.SkipWithError("no picture came out");
  state.counters["pixels"] = 1.0 * size.width * size.height;
}

void time_context(benchmark::State &state) {
  const vexo_img src = describe(VEXO_FMT_P010LE, kSmall.size, nullptr);
  const vexo_img dst = describe(VEXO_FMT_NV12, kSmall.size, nullptr);
  vexo_hdr_context context;
  for (auto _ : state) {
    build_context(kToneMappings[0], src, dst, &context);
    benchmark::DoNotOptimize(context);
  }
  state.counters["pixels"] = 1;
}

void register_frames(const ToneMapping &mapping, const Setting &setting) {
  for (const HdrContender &contender :
       tone_mapping_contenders(mapping, setting.size)) {
    const std::string name =
        std::string(mapping.id) + "/" + setting.id + "/" + contender.name;
    auto *row = benchmark::RegisterBenchmark(
        name.c_str(), [=](benchmark::State &state) {
          time_frames(state, contender, setting.size);
        });
    row->MeasureProcessCPUTime()->Unit(benchmark::kMicrosecond);
    if (contender.by_the_clock) row->UseRealTime();
  }
}

}  // namespace

HdrContenders tone_mapping_contenders(const ToneMapping &mapping, Size size) {
  HdrContenders list;
  add_own_tone_mapping(mapping, size, &list);
#if defined(BENCH_HAS_AVFILTER)
  add_avfilter_tone_mapping(mapping, size, &list);
#endif
#if defined(BENCH_HAS_ZIMG)
  add_zimg_tone_mapping(mapping, size, &list);
#endif
  return list;
}

void register_tone_mapping() {
  for (const ToneMapping &mapping : kToneMappings) {
    register_frames(mapping, kLarge);
    if (mapping.is_main) register_frames(mapping, kSmall);
  }
  benchmark::RegisterBenchmark("hdr_context/any/orumlox", time_context)
      ->MeasureProcessCPUTime()
      ->Unit(benchmark::kMicrosecond);
}

}  // namespace bench
