// SPDX-License-Identifier: Apache-2.0
//
// Times whole frames through the library's entry points beside its peers, in
// one process and, unless a row says otherwise, on one thread. README.md says
// how to run it and what the figures are.
#include <benchmark/benchmark.h>
#include <sched.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <regex>

#include "common/caches.h"
#include "common/isa.h"
#include "contender.h"

namespace bench {
namespace {

struct Setting {
  std::string id;
  Sizes sizes;
  // Of frames; 0 is a ring that no cache holds.
  size_t count = 1;
  // One of many sizes, for this library's best form alone.
  bool grows = false;

  // Two threads call at the same time, too.
  bool in_parallel() const {
    return grows && (sizes.dst.width == 640 || sizes.dst.width == 1920);
  }
};

// How cost grows is shown of these: both directions of what is converted most,
// of scaling and of turning the kind that costs most, the conversion whose
// arithmetic is least, and what starts threads and builds tables.
constexpr std::string_view kGrowing[] = {"nv12_rgba8888", "rgba8888_nv12",
                                         "nv12_3to2",     "rgba8888_90r",
                                         "nv12_yuv420",   "hdr_p010_nv12"};
// Of the smaller picture; the larger one has no more than 7680x4320.
constexpr Size kGrowth[] = {
    {16, 16},     {32, 32},     {64, 64},     {128, 128},   {256, 144},
    {320, 180},   {480, 272},   {640, 360},   {960, 540},   {1280, 720},
    {1920, 1080}, {2560, 1440}, {3840, 2160}, {5120, 2880}, {7680, 4320}};

void add_growth(const Workload &job, std::vector<Setting> *out) {
  const bool is_best = lox::isa_level() == lox::isa_best();
  if (!is_best || !std::ranges::count(kGrowing, job.id)) return;
  const auto &[src, dst] = job.ratio.large;
  for (const auto &[width, height] : kGrowth) {
    const Size from = {width * src.width / dst.width,
                       height * src.height / dst.height};
    if (from.width > 7680) continue;
    const std::string size =
        std::to_string(width) + "x" + std::to_string(height);
    out->push_back({"growth_" + size, {from, {width, height}}, 1, true});
  }
}

std::vector<Setting> settings_of(const Workload &job) {
  const auto &[small, large] = job.ratio;
  std::vector<Setting> list;
  if (job.is_setup()) return {{"any", large}};
  switch (job.task) {
    case kReduce:
      return {{"1080p_hot", large}, {"1080p_ring", large, 0}};
    case kToneMap:
      list = {{"1080p", small, 2}, {"2160p", large, 2}};
      break;
    case kReadBits:
      return {{"1MiB", large}};
    case kFindKey:
      return {{"1MiB", large}, {"64MiB", large, 64}};
    default:
      list = {
          {"640x360", small}, {"1080p_hot", large}, {"1080p_ring", large, 0}};
  }
  add_growth(job, &list);
  return list;
}

// Twice the largest cache that the machine says it has, and at least 96 MiB,
// for a virtual machine may not see all of the cache it shares.
size_t ring_bytes() {
  size_t largest = 0;
  for (const auto &cache : benchmark::CPUInfo::Get().caches) {
    largest = std::max(largest, static_cast<size_t>(cache.size));
  }
  return std::max(2 * largest, size_t{96} << 20);
}

// One workload at one setting.
struct Row {
  Job job;
  Setting setting;
  size_t src_step, dst_step, count;
  // The next frame. It outlives a repetition: the next one goes on where the
  // last one left the caches.
  std::shared_ptr<size_t> at = std::make_shared<size_t>(0);

  Row(const Workload &w, const Setting &s)
      : job(w, s.sizes),
        setting(s),
        src_step((job.src_room() + 63) / 64 * 64),
        dst_step((job.dst_room() + 63) / 64 * 64),
        count(s.count > 0 ? s.count
                          : ring_bytes() / (src_step + dst_step) + 1) {}

  // A second caller's frames lie behind those of the first.
  size_t frames() const { return setting.in_parallel() ? 2 : count; }
};

Contenders contenders_for(const Row &row) {
  const Job &job = row.job;
  Contenders list;
  add_own(job, &list);
  if (row.setting.grows) {
    for (int callers = 1; row.setting.in_parallel() && callers <= 2;
         ++callers) {
      Contender &caller = list.emplace_back(list[0]);
      caller.name += callers == 1 ? " 1 caller" : " 2 callers";
      // One waits for nobody: its own time is steadier than the clock's.
      if (callers > 1) caller.threads = Contender::Threads::kByTheClock;
      caller.callers = callers;
    }
    // Its threads are part of what grows.
    if (job.task == kToneMap) list[0].level = lox::isa_level();
    return list;
  }
  for (const Library &library : libraries()) library.add(job, &list);
  add_bounds(job, &list);
  return list;
}

// All rows share the memory, so that the run fits small machines.
struct Memory {
  Block src, dst;
};

// What the frames of a row have to hold; other work does not depend on it.
const std::vector<uint8_t> &content_of(const Row &row, int32_t format) {
  static std::map<std::array<int32_t, 4>, std::vector<uint8_t>> contents;
  const Job &job = row.job;
  auto &content =
      contents[{job.task, job.is_media() ? job.option : 0,
                format < 0 ? job.src_format : format, job.sizes.src.width}];
  if (content.empty() &&
      (job.task == kToneMap || job.task == kDeblock || job.is_media())) {
    content.resize(row.src_step);
    job.fill_src(content.data(), format);
  }
  return content;
}

void time_frames(benchmark::State &state, const Row &row,
                 const Contender &contender, const Memory &memory,
                 const std::vector<uint8_t> &content) {
  static std::atomic<int> timings = 0;
  if (const int made = ++timings; made % 500 == 0) {
    std::fprintf(stderr, "%d timings\n", made);
  }
  cpu_set_t all, here;
  sched_getaffinity(0, sizeof(all), &all);
  if (contender.threads == Contender::Threads::kOnOneCore) {
    CPU_ZERO(&here);
    CPU_SET(sched_getcpu(), &here);
    sched_setaffinity(0, sizeof(here), &here);
  }
  const size_t caller = static_cast<size_t>(state.thread_index());
  uint8_t *const first_src = memory.src.data() + caller * row.src_step;
  uint8_t *const first_dst = memory.dst.data() + caller * row.dst_step;
  size_t callers_at = 0;
  size_t &at = contender.callers > 1 ? callers_at : *row.at;
  const auto src = [&] { return first_src + at * row.src_step; };
  const auto restore = [&] {
    std::copy(content.begin(), content.end(), src());
  };
  const auto advance = [&] {
    if (++at == row.count) at = 0;
  };
  if (!content.empty()) {
    for (at = 0; at < row.count; ++at) restore();
    at = 0;
  }
  const Run run = contender.make(false);
  const auto next = [&] { run(src(), first_dst + at * row.dst_step); };
  const bool in_place = row.job.task == kDeblock;
  // Once before it counts: peers get their memory with the first frame.
  next();
  if (in_place) restore();
  advance();
  for (auto _ : state) {
    next();
    if (in_place) {
      // Every call finds the same work.
      state.PauseTiming();
      restore();
      state.ResumeTiming();
    }
    advance();
  }
  sched_setaffinity(0, sizeof(all), &all);
  state.counters["units"] =
      benchmark::Counter(row.job.units(), benchmark::Counter::kAvgThreads);
}

// For experiments: the bytes of a destination from which on it is written past
// the caches.
void set_stream_from() {
  const char *const from = std::getenv("BENCH_STREAM_FROM");
  if (from == nullptr) return;
  lox::MemoryRule rule = lox::memory_now();
  rule.stream_rows = rule.stream_columns = std::strtoull(from, nullptr, 0);
  lox::set_memory_rule(rule);
  benchmark::AddCustomContext("stream_from", from);
}

void record_versions() {
  benchmark::AddCustomContext("compiler", BENCH_COMPILER);
  benchmark::AddCustomContext("level", lox::isa_name(lox::isa_level()));
  for (const Library &library : libraries()) {
    benchmark::AddCustomContext(library.name, library.version);
  }
}

// Registers what the filter asks for; false when outputs differ.
bool prepare(const std::vector<Row> &rows, const Memory &memory) {
  std::string wanted = benchmark::GetBenchmarkFilter();
  const bool inverted = wanted.starts_with("-");
  const std::regex filter(inverted ? wanted.substr(1) : wanted);
  bool same = true;
  int count = 0;
  for (const Row &row : rows) {
    const Contenders list = contenders_for(row);
    bool is_wanted = false;
    for (const Contender &contender : list) {
      const std::string name =
          std::string(row.job.id) + "/" + row.setting.id + "/" + contender.name;
      if (std::regex_search(name, filter) == inverted) continue;
      is_wanted = true;
      if (contender.level >= 0) continue;
      const auto &content = content_of(row, contender.src_format);
      const auto time = [=, &memory, &content](benchmark::State &state) {
        time_frames(state, row, contender, memory, content);
      };
      auto *timed = benchmark::RegisterBenchmark(name.c_str(), time);
      timed->MeasureProcessCPUTime()->Threads(contender.callers);
      timed->Unit(benchmark::kMicrosecond);
      if (contender.threads == Contender::Threads::kByTheClock)
        timed->UseRealTime();
      ++count;
    }
    // A ring has the sizes that another setting has.
    if (is_wanted && row.count <= 2 && !row.job.is_setup()) {
      same &= check_same_work(row.job, list);
    }
  }
  // Each repetition times a row once, the first until its calls are enough.
  std::fprintf(stderr, "%s: %d rows\n", lox::isa_name(lox::isa_level()), count);
  return same;
}

// Keeps everybody to a level below the best. What OpenCV and the C library's
// memcpy do without is read when a program starts: unless the environment says
// so already, it is started again.
void hold(int level, char **argv) {
  constexpr const char *kWithout[][2] = {
      {"SSE4.1,SSSE3,", ""},
      {"AVX2,FMA3,AVX,FP16,SSE4.2,", "-AVX2,-AVX,-AVX_Fast_Unaligned_Load,"},
      {"AVX512-SKX,", "-AVX512F,-AVX512VL,"}};
  std::string opencv, memcpy = "glibc.cpu.hwcaps=";
  for (int above = lox::isa_best(); --above >= level;) {
    opencv += kWithout[above][0];
    memcpy += kWithout[above][1];
  }
  const char *const is = std::getenv("OPENCV_CPU_DISABLE");
  if (!is || opencv != is) {
    setenv("OPENCV_CPU_DISABLE", opencv.c_str(), 1);
    setenv("GLIBC_TUNABLES", memcpy.c_str(), 1);
    execv("/proc/self/exe", argv);
    std::perror("frame_bench");
    std::exit(1);
  }
  lox::isa_limit(level);
  for (const Library &library : libraries()) {
    if (library.hold) library.hold(level);
  }
}

}  // namespace
}  // namespace bench

// frame_bench [--level NAME] [options of Google Benchmark]
int main(int argc, char **argv) {
  using namespace bench;
  if (argc > 2 && std::string_view(argv[1]) == "--level") {
    int level = lox::isa_best();
    while (level >= 0 && std::string_view(argv[2]) != lox::isa_name(level))
      --level;
    if (level < 0) {
      std::fputs("--level is one of", stderr);
      for (int l = lox::isa_best(); l >= 0; --l)
        std::printf(" %s", lox::isa_name(l));
      return 2;
    }
    if (level < lox::isa_best()) hold(level, argv);
    argv[2] = argv[0];
    argv += 2;
    argc -= 2;
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  record_versions();
  set_stream_from();
  std::vector<Row> rows;
  size_t src_bytes = 0, dst_bytes = 0;
  for (const Workload &workload : kWorkloads) {
    for (const Setting &setting : settings_of(workload)) {
      const Row &row = rows.emplace_back(workload, setting);
      src_bytes = std::max(src_bytes, row.src_step * row.frames());
      dst_bytes = std::max(dst_bytes, row.dst_step * row.frames());
    }
  }
  const Memory memory = {Block(src_bytes), Block(dst_bytes)};
  if (!prepare(rows, memory)) {
    std::fputs("not timed: outputs differ\n", stderr);
    return 1;
  }
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
