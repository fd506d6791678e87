// SPDX-License-Identifier: Apache-2.0
//
// Bit fields and scans for key frames, by this library and by plain code.

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <map>

#include "orumlox/bitstream.h"
#include "workloads.h"

namespace bench {
namespace {

// A power of two.
constexpr size_t kLengths = 4096;

class Random {
 public:
  uint32_t below(uint32_t limit) {
    state_ ^= state_ << 13;
    state_ ^= state_ >> 17;
    state_ ^= state_ << 5;
    return static_cast<uint32_t>(uint64_t{state_} * limit >> 32);
  }
  uint8_t byte() { return static_cast<uint8_t>(below(256)); }

 private:
  uint32_t state_ = 2463534242u;
};

// From a list, so that the compiler does not know them.
struct Lengths {
  explicit Lengths(int32_t fields) {
    Random random;
    for (uint8_t &length : list) {
      length = static_cast<uint8_t>(fields > 0          ? fields
                                    : fields == kSingle ? 1
                                                        : 1 + random.below(32));
    }
    for (size_t bits = 8 * kMediaBytes; bits >= list[count % kLengths];) {
      bits -= list[count++ % kLengths];
    }
  }
  std::array<uint8_t, kLengths> list;
  size_t count = 0;
};

const Lengths &lengths_of(int32_t fields) {
  static std::map<int32_t, Lengths> lists;
  return lists.try_emplace(fields, fields).first->second;
}

// 64 bits of cache, into which eight bytes are loaded at once while there are
// so many. A little-endian host is taken for granted.
template <bool msb_first>
struct PlainBits {
  // The next n bits, 1 to 32; all ones when there are not so many.
  uint32_t read(int32_t n) {
    if (bits < n) {
      refill();
      if (bits < n) {
        bits = 0;
        return UINT32_MAX;
      }
    }
    bits -= n;
    uint32_t value;
    if constexpr (msb_first) {
      value = static_cast<uint32_t>(cache >> (64 - n));
      cache <<= n;
    } else {
      value = static_cast<uint32_t>(cache & ((uint64_t{1} << n) - 1));
      cache >>= n;
    }
    return value;
  }

  void refill() {
    if (end - next >= 8) {
      // What is beyond whole bytes is loaded again, at the same place.
      uint64_t word;
      std::memcpy(&word, next, 8);
      cache |= msb_first ? __builtin_bswap64(word) >> bits : word << bits;
      next += (63 - bits) >> 3;
      bits |= 56;
      return;
    }
    for (; bits <= 56 && next < end; bits += 8) {
      cache |= uint64_t{*next++} << (msb_first ? 56 - bits : bits);
    }
  }

  uint64_t cache = 0;
  int32_t bits = 0;
  const uint8_t *next, *end;
};

template <bool msb_first>
[[gnu::noinline]] uint32_t call(PlainBits<msb_first> *reader, int32_t n) {
  return reader->read(n);
}

template <typename Read>
uint32_t sum(const Lengths &lengths, const Read &read) {
  uint32_t result = 0;
  for (size_t i = 0; i < lengths.count; ++i) {
    result = std::rotl(result, 1) ^ read(lengths.list[i % kLengths]);
  }
  return result;
}

template <bool msb_first>
uint32_t read_as(int32_t fields, BitReader reader, const uint8_t *data) {
  const Lengths &lengths = lengths_of(fields);
  PlainBits<msb_first> plain = {0, 0, data, data + kMediaBytes};
  mlox_bsr own;
  mlox_bsr_init(&own, data, int32_t{kMediaBytes},
                msb_first ? mlox_bsr_flush : mlox_bsr_le_flush);
  const bool single = fields == kSingle;
  if (reader == BitReader::kCalled) {
    return sum(lengths, [&](int32_t n) { return call(&plain, n); });
  }
  if (reader == BitReader::kInlined) {
    if (single) return sum(lengths, [&](int32_t) { return plain.read(1); });
    return sum(lengths, [&](int32_t n) { return plain.read(n); });
  }
  if (!msb_first) {
    return sum(lengths, [&](int32_t n) { return mlox_bsr_le_read(&own, n); });
  }
  if (single)
    return sum(lengths, [&](int32_t) { return mlox_bsr_read1(&own); });
  return sum(lengths, [&](int32_t n) { return mlox_bsr_read(&own, n); });
}

}  // namespace

size_t count_fields(int32_t fields) { return lengths_of(fields).count; }

uint32_t read_fields(int32_t fields, BitReader reader, const uint8_t *data) {
  return fields == kRandomLsbFirst ? read_as<false>(fields, reader, data)
                                   : read_as<true>(fields, reader, data);
}

int32_t plain_is_key_frame(int32_t type, const uint8_t *data, int32_t length) {
  const int32_t need = type == MLOX_MT_VIDEO_MPEG4  ? 5
                       : type == MLOX_MT_VIDEO_H263 ? 7
                                                    : 4;
  for (int32_t p = 0; length - p >= need; ++p) {
    const uint8_t *b = data + p;
    if (b[0] != 0 || b[1] != 0) continue;
    if (type == MLOX_MT_VIDEO_H264 && b[2] == 1) {
      const int unit = b[3] & 31;
      if (unit == 1 || unit == 5) return unit == 5;
    } else if (type == MLOX_MT_VIDEO_HEVC && b[2] == 1) {
      const int unit = b[3] >> 1 & 63;
      if (unit >= 16 && unit <= 21) return 1;
      if (unit < 10) return 0;
    } else if (type == MLOX_MT_VIDEO_MPEG4 && b[2] == 1 && b[3] == 0xB6) {
      return b[4] < 0x40;
    } else if ((type == MLOX_MT_VIDEO_MPEG4 || type == MLOX_MT_VIDEO_H263) &&
               (b[2] & 0xFC) == 0x80) {
      if ((b[3] & 3) != 2) return 0;
      if ((b[4] & 0x1C) < 0x1C) return (b[4] & 2) == 0;
    }
  }
  return 0;
}

void fill_media(const Workload &workload, uint8_t *bytes, bool with_key) {
  Random random;
  for (size_t i = 0; i < kMediaBytes; ++i) {
    bytes[i] = random.byte();
    // No start code of MPEG's, no picture of H.263's or with such a header.
    if (workload.task == kFindKey && i > 1 &&
        (bytes[i - 2] | bytes[i - 1]) == 0 &&
        (bytes[i] == 1 || bytes[i] >> 3 == 0x10)) {
      bytes[i] = 255;
    }
  }
  if (!with_key) return;
  const std::map<int32_t, std::vector<uint8_t>> keys = {
      {MLOX_MT_VIDEO_H264, {0, 0, 1, 0x65}},
      {MLOX_MT_VIDEO_HEVC, {0, 0, 1, 0x26}},
      {MLOX_MT_VIDEO_MPEG4, {0, 0, 1, 0xB6, 0}},
      {MLOX_MT_VIDEO_H263, {0, 0, 0x80, 2, 0, 0, 0}}};
  const std::vector<uint8_t> &key = keys.at(workload.option);
  std::copy_backward(key.begin(), key.end(), bytes + kMediaBytes);
}

}  // namespace bench
