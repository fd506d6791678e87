// SPDX-License-Identifier: Apache-2.0
//
// Times whole frames through the library's entry points beside its peers, in
// one process and, unless a row says otherwise, on one thread. README.md says
// how to run it and what the figures are.
#include <benchmark/benchmark.h>
#include <sched.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <optional>
#include <regex>

#include "common/caches.h"
#include "common/isa.h"
#include "contender.h"

namespace bench {

namespace {

// Keeps this thread, and those that it starts meanwhile, on the processor where
// it is.
class OneCore {
 public:
  OneCore() {
    sched_getaffinity(0, sizeof(before_), &before_);
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(sched_getcpu(), &one);
    sched_setaffinity(0, sizeof(one), &one);
  }
  ~OneCore() { sched_setaffinity(0, sizeof(before_), &before_); }
  OneCore(const OneCore &) = delete;
  OneCore &operator=(const OneCore &) = delete;

 private:
  cpu_set_t before_;
};

struct Setting {
  const char *id;
  bool large;
  // Of frames; 0 is a ring that no cache holds.
  size_t count;
};

std::vector<Setting> settings_of(const Workload &job) {
  if (job.is_setup()) return {{"any", true, 1}};
  switch (job.task) {
    case kReduce:
      return {{"1080p_hot", true, 1}, {"1080p_ring", true, 0}};
    case kToneMap:
      return {{"1080p", false, 2}, {"2160p", true, 2}};
    case kReadBits:
      return {{"1MiB", true, 1}};
    case kFindKey:
      return {{"1MiB", true, 1}, {"64MiB", true, 64}};
    default:
      return {{"640x360", false, 1},
              {"1080p_hot", true, 1},
              {"1080p_ring", true, 0}};
  }
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
      : job(w, s.large),
        setting(s),
        src_step((job.src_room() + 63) / 64 * 64),
        dst_step((job.dst_room() + 63) / 64 * 64),
        count(s.count > 0 ? s.count
                          : ring_bytes() / (src_step + dst_step) + 1) {}
};

Contenders contenders_for(const Job &job) {
  Contenders list;
  add_own(job, &list);
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
                 const Contender &contender, const Memory &memory) {
  lox::isa_limit(contender.level >= 0 ? contender.level : lox::isa_best());
  std::optional<OneCore> one_core;
  if (contender.threads == Contender::Threads::kOnOneCore) one_core.emplace();
  const std::vector<uint8_t> &content = content_of(row, contender.src_format);
  size_t &at = *row.at;
  const auto src = [&] { return memory.src.data() + at * row.src_step; };
  const auto restore = [&] {
    std::copy(content.begin(), content.end(), src());
  };
  const auto advance = [&] { at = (at + 1) % row.count; };
  if (!content.empty()) {
    for (at = 0; at < row.count; ++at) restore();
    at = 0;
  }
  const Run run = contender.make(false);
  const auto next = [&] { run(src(), memory.dst.data() + at * row.dst_step); };
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
  lox::isa_limit(lox::isa_best());
  state.counters["units"] = row.job.units();
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
#if defined(__clang__)
  benchmark::AddCustomContext("compiler", __VERSION__);
#else
  benchmark::AddCustomContext("compiler", "GCC " __VERSION__);
#endif
  benchmark::AddCustomContext("form", lox::isa_name(lox::isa_best()));
  benchmark::AddCustomContext("ring_bytes", std::to_string(ring_bytes()));
  for (const Library &library : libraries()) {
    benchmark::AddCustomContext(library.name, library.version);
  }
}

void register_row(const Row &row, const Contender &contender,
                  const std::string &name, const Memory &memory) {
  auto *registered = benchmark::RegisterBenchmark(
      name.c_str(), [=, &memory](benchmark::State &state) {
        time_frames(state, row, contender, memory);
      });
  registered->MeasureProcessCPUTime()->Unit(benchmark::kMicrosecond);
  if (contender.threads == Contender::Threads::kByTheClock) {
    registered->UseRealTime();
  }
}

// Registers what the filter asks for; false when outputs differ.
bool prepare(const std::vector<Row> &rows, const Memory &memory) {
  std::string wanted = benchmark::GetBenchmarkFilter();
  const bool inverted = wanted.starts_with("-");
  const std::regex filter(inverted ? wanted.substr(1) : wanted);
  bool same = true;
  for (const Row &row : rows) {
    const Contenders list = contenders_for(row.job);
    bool is_wanted = false;
    for (const Contender &contender : list) {
      const std::string name =
          std::string(row.job.id) + "/" + row.setting.id + "/" + contender.name;
      if (std::regex_search(name, filter) == inverted) continue;
      register_row(row, contender, name, memory);
      is_wanted = true;
    }
    // A ring has the sizes that another setting has.
    if (is_wanted && row.count <= 2 && !row.job.is_setup()) {
      same &= check_same_work(row.job, list);
    }
  }
  return same;
}

}  // namespace

}  // namespace bench

int main(int argc, char **argv) {
  using namespace bench;
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  record_versions();
  set_stream_from();
  std::vector<Row> rows;
  size_t src_bytes = 0, dst_bytes = 0;
  for (const Workload &workload : kWorkloads) {
    for (const Setting &setting : settings_of(workload)) {
      const Row &row = rows.emplace_back(workload, setting);
      src_bytes = std::max(src_bytes, row.src_step * row.count);
      dst_bytes = std::max(dst_bytes, row.dst_step * row.count);
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
