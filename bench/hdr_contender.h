// SPDX-License-Identifier: Apache-2.0
//
// What is timed of tone mapping. Frames are large and so is what a peer keeps
// beside them: a contender makes that when its turn comes and frees it again.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "bench/tone_mapping.h"

namespace bench {

// One channel of a picture, wherever it lies: bytes from row to row and from
// sample to sample.
struct Channel {
  const uint8_t *first;
  int32_t width, height;
  ptrdiff_t stride, step;
};
// Y, U, V or R, G, B.
using Channels = std::array<Channel, 3>;

class ToneMapper {
 public:
  virtual ~ToneMapper() = default;
  // False when no picture came out.
  virtual bool run(const vexo_img &src, uint8_t *dst) = 0;
  // Of what the last call wrote.
  virtual Channels channels(const uint8_t *dst) const = 0;
};

struct HdrContender {
  // In parentheses as those of other contenders: does less than is asked for.
  std::string name;
  bool is_own;
  // What it reads: the workload's format, or the twin of it that it takes.
  int32_t src_format;
  // Else it is the processors' time together that counts.
  bool by_the_clock;
  // The form of the library's kernels that runs.
  int level;
  // Null when it cannot be made.
  std::function<std::unique_ptr<ToneMapper>()> prepare;
};

using HdrContenders = std::vector<HdrContender>;

// Each adds its own. Peers know the main workloads only.
void add_own_tone_mapping(const ToneMapping &mapping, Size size,
                          HdrContenders *out);
void add_avfilter_tone_mapping(const ToneMapping &mapping, Size size,
                               HdrContenders *out);
void add_zimg_tone_mapping(const ToneMapping &mapping, Size size,
                           HdrContenders *out);

// All of them; this library's best form on one thread is the first.
HdrContenders tone_mapping_contenders(const ToneMapping &mapping, Size size);

// Tone maps one picture by every contender and prints how the outputs go
// together. False when one does not do the same work.
bool check_tone_mapping();

// Registers everything with Google Benchmark.
void register_tone_mapping();

}  // namespace bench
