// SPDX-License-Identifier: Apache-2.0
//
// A bit reader as one would write it for a 64-bit machine, what this library's
// is set beside: eight bytes are loaded at once while there are so many. A
// little-endian host is taken for granted.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace bench {

// Whether the first bit is the most or the least significant one of a byte.
enum class BitOrder { kMsb, kLsb };

template <BitOrder order>
class PlainBits {
 public:
  PlainBits(const uint8_t *data, size_t size)
      : next_(data), end_(data + size) {}

  // The next n bits, 1 to 32; all ones when there are not so many.
  uint32_t read(int32_t n) {
    if (bits_ < n) {
      refill();
      if (bits_ < n) {
        bits_ = 0;
        return UINT32_MAX;
      }
    }
    bits_ -= n;
    uint32_t value;
    if constexpr (order == BitOrder::kMsb) {
      value = static_cast<uint32_t>(cache_ >> (64 - n));
      cache_ <<= n;
    } else {
      value = static_cast<uint32_t>(cache_ & ((uint64_t{1} << n) - 1));
      cache_ >>= n;
    }
    return value;
  }

 private:
  void refill() {
    if (end_ - next_ >= 8) {
      // What is beyond whole bytes is loaded again, at the same place.
      uint64_t word;
      std::memcpy(&word, next_, 8);
      if constexpr (order == BitOrder::kMsb) {
        cache_ |= __builtin_bswap64(word) >> bits_;
      } else {
        cache_ |= word << bits_;
      }
      next_ += (63 - bits_) >> 3;
      bits_ |= 56;
      return;
    }
    for (; bits_ <= 56 && next_ < end_; bits_ += 8) {
      const int32_t shift = order == BitOrder::kMsb ? 56 - bits_ : bits_;
      cache_ |= uint64_t{*next_++} << shift;
    }
  }

  uint64_t cache_ = 0;
  int32_t bits_ = 0;
  const uint8_t *next_, *end_;
};

// The same, compiled in a unit of its own as a library's call is.
uint32_t plain_bits_read(PlainBits<BitOrder::kMsb> *reader, int32_t n);
uint32_t plain_bits_read(PlainBits<BitOrder::kLsb> *reader, int32_t n);

}  // namespace bench
