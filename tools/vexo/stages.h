// SPDX-License-Identifier: Apache-2.0
//
// Frames on their way from a file to another: one thread reads, some compute,
// the caller's writes in order. Few frames are on their way at once, so that
// memory does not grow with the length.
#pragma once

#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "io.h"

namespace vexo {

// A frame and what becomes of it; its memory serves again.
struct Slot {
  Slot(Frame from, Frame to) : source(std::move(from)), target(std::move(to)) {}

  Frame source;
  Frame target;
  Showing showing;
  // What of the output can be made before its turn.
  std::string bytes;
  // Why this one is left out, if it is.
  std::string complaint;
  int64_t number = 0;
  std::exception_ptr failure;
};

struct Stages {
  // False when there is no further frame.
  std::function<bool(Slot &)> read;
  // For each thread its own.
  std::vector<std::function<void(Slot &)>> compute;
  std::function<void(Slot &)> write;
  std::function<std::unique_ptr<Slot>()> make_slot;
};

// Returns how many frames there were. Throws what a stage threw, after all
// frames before it have been written. A thread that waits for input which does
// not come is left behind then.
int64_t run_stages(Stages stages);

// Whether a thread still reads: the process must end without destructors.
bool threads_left_behind();

}  // namespace vexo
