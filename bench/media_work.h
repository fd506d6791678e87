// SPDX-License-Identifier: Apache-2.0
//
// What is measured of media streams, on the host and in the ARM guest alike:
// fields read from 1 MiB of bits, and frames that are scanned for key frames to
// their ends, without finding anything.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "bench/plain_bits.h"
#include "orumlox/media_type.h"

namespace bench {

// --- bit fields ------------------------------------------------------------

// Of a fixed length, or of random ones from 1 to 32.
struct FieldKind {
  const char *id;
  // 0 for random ones.
  int32_t length;
  // By the call for a single bit, which the one order has.
  bool single = false;
};

inline constexpr FieldKind kFieldKinds[] = {
    {"random", 0}, {"1", 1},   {"8", 8},
    {"13", 13},    {"32", 32}, {"read1", 1, true},
};

// The library, or the plain reader inlined into the loop or called.
enum class BitReader { kLibrary, kInlined, kCalled };

class BitFields {
 public:
  explicit BitFields(const FieldKind &kind);

  // As many as the data has.
  size_t count() const { return count_; }

  // Reads all of them; the result depends on every value and on their order.
  uint32_t read(BitReader reader, BitOrder order) const;

 private:
  template <typename Reader>
  uint32_t read_all(Reader reader) const;
  template <BitOrder order>
  uint32_t read_as(BitReader reader) const;

  bool single_;
  std::vector<uint8_t> data_;
  std::vector<uint8_t> lengths_;
  size_t count_ = 0;
};

// --- key frames --------------------------------------------------------------

struct Codec {
  const char *id;
  uint32_t type;
  // A key frame's first bytes, after which a scan ends.
  uint8_t key[7];
  size_t key_size;
};

inline constexpr Codec kCodecs[] = {
    {"h264", MLOX_MT_VIDEO_H264, {0, 0, 1, 0x65}, 4},
    {"hevc", MLOX_MT_VIDEO_HEVC, {0, 0, 1, 0x26}, 4},
    {"mpeg4", MLOX_MT_VIDEO_MPEG4, {0, 0, 1, 0xB6, 0}, 5},
    {"h263", MLOX_MT_VIDEO_H263, {0, 0, 0x80, 2, 0, 0, 0}, 7},
};

constexpr size_t kScannedBytes = size_t{1} << 20;

// Random bytes without anything at which a scan ends; without two zeros in a
// row either unless `pairs`.
void fill_scanned(uint8_t *bytes, size_t size, bool pairs);

// The rule of the library's call, byte by byte, of these codecs but for
// extended headers.
int32_t plain_is_key_frame(uint32_t type, const uint8_t *data, int32_t length);

}  // namespace bench
