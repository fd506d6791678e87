// SPDX-License-Identifier: Apache-2.0
//
// The frames that are converted: one, for a setting that calls with the same
// buffers every time, or a ring of them that no cache holds.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace bench {

// The largest cache that this machine says it has, in bytes; 0 when it does
// not say.
size_t last_level_cache_bytes();

// What the frames of a ring take together: twice the last-level cache, and at
// least 96 MiB, for a virtual machine may not see all of the cache it shares.
size_t ring_bytes();

// Owns 64-byte aligned memory, all of it touched.
class Block {
 public:
  explicit Block(size_t size);
  uint8_t *data() const { return data_.get(); }

 private:
  struct Free {
    void operator()(uint8_t *p) const;
  };
  std::unique_ptr<uint8_t, Free> data_;
};

// Hands out the source and destination of the next call. The position outlives
// a repetition: the next one goes on where the last one left the caches.
class Frames {
 public:
  Frames(uint8_t *src, size_t src_step, uint8_t *dst, size_t dst_step,
         size_t count)
      : src_(src),
        dst_(dst),
        src_step_(src_step),
        dst_step_(dst_step),
        count_(count) {}

  template <typename Run>
  void next(const Run &run) {
    run(src_ + at_ * src_step_, dst_ + at_ * dst_step_);
    if (++at_ == count_) at_ = 0;
  }

 private:
  uint8_t *src_, *dst_;
  size_t src_step_, dst_step_;
  size_t count_, at_ = 0;
};

}  // namespace bench
