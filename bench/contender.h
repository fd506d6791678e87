// SPDX-License-Identifier: Apache-2.0
//
// What is timed: this library's forms, its peers and the stream bounds, all as
// one kind of thing, a function from a frame to a frame. A peer's name is in
// parentheses when it does less than is asked for; it does not count as one to
// be compared with.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "bench/workloads.h"

namespace bench {

struct Contender {
  enum class Kind {
    kOwn,
    kPeer,
    // A copy of as many bytes, where no peer does the work.
    kCopy,
    kBound
  };

  std::string name;
  Kind kind;
  std::function<void(uint8_t *src, uint8_t *dst)> run;
  // What it writes: a peer without the very format writes another of the same
  // size, which is the same work.
  int32_t dst_format;
  // The form of the library's kernels that runs; -1 for the best.
  int level = -1;
  // Copies to the destination what a peer leaves in memory of its own.
  std::function<void(uint8_t *dst)> fetch = nullptr;
  // What it reads, when it cannot take the workload's own format: planes of the
  // same picture.
  int32_t src_format = -1;
  // Has threads of its own: kept on one processor, so that its forms can be
  // compared, or let alone and timed by the clock.
  enum class Threads { kNone, kOnOneCore, kByTheClock };
  Threads threads = Threads::kNone;
};

using Contenders = std::vector<Contender>;

// Each adds those of its kind that can do the workload at the sizes.
void add_own_forms(const Workload &workload, const Sizes &sizes,
                   Contenders *out);
void add_libyuv(const Workload &workload, const Sizes &sizes, Contenders *out);
void add_libyuv_scaling(const Workload &workload, const Sizes &sizes,
                        Contenders *out);
void add_opencv(const Workload &workload, const Sizes &sizes, Contenders *out);
void add_opencv_scaling(const Workload &workload, const Sizes &sizes,
                        Contenders *out);
void add_opencv_sharpening(const Workload &workload, const Sizes &sizes,
                           Contenders *out);
void add_swscale(const Workload &workload, const Sizes &sizes, Contenders *out);
void add_avfilter(const Workload &workload, const Sizes &sizes,
                  Contenders *out);
void add_avfilter_sharpening(const Workload &workload, const Sizes &sizes,
                             Contenders *out);
void add_zimg(const Workload &workload, const Sizes &sizes, Contenders *out);
// Of reductions.
void add_own_reduction(const Workload &workload, const Sizes &sizes,
                       Contenders *out);
void add_zimg_reduction(const Workload &workload, const Sizes &sizes,
                        Contenders *out);
void add_stream_bounds(const Workload &workload, const Sizes &sizes,
                       Contenders *out);

// All of them; this library's best form is the first.
Contenders contenders_for(const Workload &workload, const Sizes &sizes);

// The peers' versions, as they tell them at run time.
std::string libyuv_version();
std::string opencv_version();
std::string swscale_version_text();
std::string avfilter_version_text();
std::string zimg_version();

// Runs every library's contender on one smooth picture and prints how far
// its output is from this library's. False when one is so far off that it does
// not do the same work.
bool check_same_work(const Workload &workload, const Sizes &sizes,
                     const Contenders &contenders);
// The same of reductions.
bool check_same_reduction(const Workload &workload, const Sizes &sizes,
                          const Contenders &contenders);

}  // namespace bench
