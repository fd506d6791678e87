// SPDX-License-Identifier: Apache-2.0
//
// What is timed: this library's forms, its peers and the stream bounds, all as
// one kind of thing, a function from a frame to a frame.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "workloads.h"

namespace bench {

// Outputs that nobody compares.
inline constexpr double kAny = 1e9;

struct Contender {
  // This library's begin with "orumlox", bounds with "bound".
  std::string name;
  // How far its output may be from this library's: levels of 255 that the
  // channel which differs most is off on average. Of sharpening, deblocking and
  // tone mapping, where filters differ on purpose, 1 less the correlation of
  // what they change. This library's own forms are equal to the byte.
  double tolerance = 0;
  // Called when its turn comes, for what a peer keeps may be large. With
  // `fetch` what it leaves in memory of its own is copied to the destination.
  std::function<Run(bool fetch)> make;
  // What it reads and writes, when not the workload's own formats.
  int32_t src_format = -1, dst_format = -1;
  // A lesser form of the library's kernels, which is checked and not timed; -1
  // for that of the run.
  int level = -1;
  // Has threads of its own: kept on one processor, so that its forms can be
  // compared, or let alone and timed by the clock. The time of others is that
  // of the process: a thread that a peer started would count.
  enum class Threads { kNone, kOnOneCore, kByTheClock };
  Threads threads = Threads::kNone;
  // Threads of a caller, each with frames of its own.
  int callers = 1;

  bool is_own() const { return name.starts_with("orumlox"); }
};

using Contenders = std::vector<Contender>;

inline void add(Contenders *out, std::string name, double tolerance, Run run,
                int32_t dst_format = -1) {
  out->push_back({std::move(name), tolerance,
                  [run = std::move(run)](bool) { return run; }, -1,
                  dst_format});
}
// The same of what takes two descriptions.
template <typename Work>
void add_frames(Contenders *out, const Job &job, const std::string &name,
                const Work &work, double tolerance, int32_t dst_format = -1) {
  add(out, name, tolerance, on_frames(job, work, dst_format), dst_format);
}

// How far peers may be that do the same with other arithmetic.
inline double near(const Workload &job) {
  if (job.is_layout() || job.task == kTurn) return 0;
  if (job.task == kReduce || job.task == kFilter) return 1;
  // Scalers also take samples elsewhere: this library from the top left, peers
  // around the middle.
  if (job.task == kDither) return 6;
  if (job.task == kScale && job.src_format == kI010) return 14;
  if (job.task != kConvert) return 3.5;
  // A 16-bit pixel has steps of 8 and 4, which a dithering peer rounds to
  // either side. Of a 16-bit source, channels get zeros as their low bits here
  // and may get a copy of their high ones from a peer.
  if (job.dst_format == VEXO_FMT_RGB565) return 4;
  if (job.src_format == VEXO_FMT_RGB565) return 3.5;
  // Peers round the matrix otherwise, of BT.709 most; those of the other
  // standards are further away.
  return job.option == VEXO_STD_BT709 ? 3.5 : 2;
}

// Peers have no mode 1, whose row is set beside what they do without. Words are
// for those that say so.
inline bool scales_plainly(const Workload &job) {
  return job.task == kScale && job.option == 0 && job.src_format != kI010;
}

// What peers tone map as well.
inline bool is_usual_tone_mapping(const Workload &job) {
  return job.task == kToneMap && job.option == VEXO_HDR_HDR10 &&
         job.src_format == VEXO_FMT_P010LE &&
         (job.dst_format == VEXO_FMT_NV12 ||
          job.dst_format == VEXO_FMT_RGBA8888);
}

// Adds what can do the workload at the sizes.
void add_own(const Job &job, Contenders *out);
void add_bounds(const Job &job, Contenders *out);

// A library that is measured beside this one. Each is one unit that registers
// itself, and is left out of the build when it is not installed.
struct Library {
  const char *name;
  std::string version;
  void (*add)(const Job &job, Contenders *out);
  // Keeps it to the instructions of a level of this library's (common/isa.h)
  // below the machine's best; null where the environment does
  // (frame_bench.cpp).
  void (*hold)(int level);
};
inline std::vector<Library> &libraries() {
  static std::vector<Library> list;
  return list;
}
inline bool registered(const Library &library) {
  libraries().push_back(library);
  return true;
}

// Runs every contender on one picture and prints how far its output is from
// this library's. False when one is so far off that it does not do the same
// work.
bool check_same_work(const Job &job, const Contenders &contenders);

}  // namespace bench
