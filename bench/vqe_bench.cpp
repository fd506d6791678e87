// SPDX-License-Identifier: Apache-2.0
//
// Deblocking in place: before the next frame is timed, the last one is made the
// picture of blocks again, so that every call finds the same work. With a ring
// its lines have long left the caches when its turn comes again.
#include "bench/vqe_bench.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>

#include "bench/enhancing.h"
#include "bench/frames.h"
#include "common/isa.h"

namespace bench {

namespace {

vexo_img describe_frame(uint8_t *bytes) {
  return describe(VEXO_FMT_YUV420, kDeblocked, bytes);
}

size_t frame_step() {
  return (frame_bytes(describe_frame(nullptr)) + 63) / 64 * 64;
}

// Frames of one picture, and one more that is never changed.
class BlockyFrames {
 public:
  explicit BlockyFrames(size_t count)
      : count_(count), bytes_((count + 1) * frame_step()) {
    draw_blocks(describe_frame(picture()));
    for (size_t i = 0; i < count_; ++i) restore(frame(i));
  }

  uint8_t *current() const { return frame(at_); }

  void next() {
    restore(current());
    if (++at_ == count_) at_ = 0;
  }

 private:
  uint8_t *frame(size_t i) const { return bytes_.data() + i * frame_step(); }
  uint8_t *picture() const { return frame(count_); }
  void restore(uint8_t *frame) const {
    std::memcpy(frame, picture(), frame_step());
  }

  size_t count_, at_ = 0;
  Block bytes_;
};

// Made when first asked for: a run of other workloads needs none.
BlockyFrames &frames_of(bool ring) {
  static std::unique_ptr<BlockyFrames> both[2];
  std::unique_ptr<BlockyFrames> &frames = both[ring];
  if (!frames) {
    frames = std::make_unique<BlockyFrames>(
        ring ? ring_bytes() / frame_step() + 1 : 1);
  }
  return *frames;
}

void time_frames(benchmark::State &state, const Contender &contender,
                 bool ring) {
  lox::isa_limit(contender.level >= 0 ? contender.level : lox::isa_best());
  BlockyFrames &frames = frames_of(ring);
  for (auto _ : state) {
    contender.run(frames.current(), nullptr);
    state.PauseTiming();
    frames.next();
    state.ResumeTiming();
  }
  lox::isa_limit(lox::isa_best());
  state.counters["pixels"] = 1.0 * kDeblocked.width * kDeblocked.height;
}

// This library's own work on the source and leave their result there.
Contenders deblocking_contenders() {
  Contenders list;
  for (int level = lox::isa_best(); level >= 0; --level) {
    std::string name = "orumlox";
    if (level < lox::isa_best()) {
      name += std::string(" ") + lox::isa_name(level);
    }
    list.push_back(
        {name, Contender::Kind::kOwn,
         [](uint8_t *frame, uint8_t *) { deblock(describe_frame(frame)); },
         VEXO_FMT_YUV420, level});
  }
#if defined(BENCH_HAS_AVFILTER)
  add_avfilter_deblocking(&list);
#endif
  return list;
}

}  // namespace

bool check_deblocking() {
  // The check wants the result in a frame of its own.
  Contenders list = deblocking_contenders();
  const size_t size = frame_bytes(describe_frame(nullptr));
  for (Contender &contender : list) {
    if (contender.kind != Contender::Kind::kOwn) continue;
    contender.run = [size, in_place = contender.run](uint8_t *src,
                                                     uint8_t *dst) {
      std::memcpy(dst, src, size);
      in_place(dst, nullptr);
    };
  }
  return check_same_enhancement(
      {"vqe_deblock", VEXO_FMT_YUV420, VEXO_FMT_YUV420},
      {kDeblocked, kDeblocked}, list);
}

void register_deblocking() {
  for (const bool ring : {false, true}) {
    for (const Contender &contender : deblocking_contenders()) {
      const std::string name = std::string("vqe_deblock/") +
                               (ring ? "1080p_ring/" : "1080p_hot/") +
                               contender.name;
      benchmark::RegisterBenchmark(
          name.c_str(),
          [=](benchmark::State &state) { time_frames(state, contender, ring); })
          ->MeasureProcessCPUTime()
          ->Unit(benchmark::kMicrosecond);
    }
  }
}

}  // namespace bench
