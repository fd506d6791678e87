// SPDX-License-Identifier: Apache-2.0
#include "bench/media_work.h"

#include <bit>

#include "orumlox/bitstream.h"

namespace bench {

namespace {

constexpr size_t kFieldBytes = size_t{1} << 20;
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

}  // namespace

BitFields::BitFields(const FieldKind &kind)
    : single_(kind.single), data_(kFieldBytes), lengths_(kLengths) {
  Random random;
  for (uint8_t &byte : data_) byte = random.byte();
  for (uint8_t &length : lengths_) {
    length = static_cast<uint8_t>(kind.length > 0 ? kind.length
                                                  : 1 + random.below(32));
  }
  for (size_t bits = 8 * kFieldBytes; bits >= lengths_[count_ % kLengths];) {
    bits -= lengths_[count_++ % kLengths];
  }
}

template <typename Reader>
uint32_t BitFields::read_all(Reader reader) const {
  uint32_t sum = 0;
  for (size_t i = 0; i < count_; ++i) {
    sum = std::rotl(sum, 1) ^ reader(lengths_[i % kLengths]);
  }
  return sum;
}

template <BitOrder order>
uint32_t BitFields::read_as(BitReader reader) const {
  constexpr bool kMsb = order == BitOrder::kMsb;
  PlainBits<order> plain(data_.data(), data_.size());
  mlox_bsr own;
  mlox_bsr_init(&own, data_.data(), static_cast<int32_t>(data_.size()),
                kMsb ? mlox_bsr_flush : mlox_bsr_le_flush);
  switch (reader) {
    case BitReader::kInlined:
      if (single_) return read_all([&](int32_t) { return plain.read(1); });
      return read_all([&](int32_t n) { return plain.read(n); });
    case BitReader::kCalled:
      return read_all([&](int32_t n) { return plain_bits_read(&plain, n); });
    default:
      if (!kMsb) {
        return read_all([&](int32_t n) { return mlox_bsr_le_read(&own, n); });
      }
      if (single_)
        return read_all([&](int32_t) { return mlox_bsr_read1(&own); });
      return read_all([&](int32_t n) { return mlox_bsr_read(&own, n); });
  }
}

uint32_t BitFields::read(BitReader reader, BitOrder order) const {
  return order == BitOrder::kMsb ? read_as<BitOrder::kMsb>(reader)
                                 : read_as<BitOrder::kLsb>(reader);
}

void fill_scanned(uint8_t *bytes, size_t size, bool pairs) {
  Random random;
  for (size_t i = 0; i < size; ++i) {
    bytes[i] = random.byte();
    if (!pairs && i > 0 && (bytes[i - 1] | bytes[i]) == 0) bytes[i] = 255;
    // No start code of MPEG's, no picture of H.263's or with such a header.
    if (i > 1 && (bytes[i - 2] | bytes[i - 1]) == 0 &&
        (bytes[i] == 1 || bytes[i] >> 3 == 0x10)) {
      bytes[i] = 255;
    }
  }
}

int32_t plain_is_key_frame(uint32_t type, const uint8_t *data, int32_t length) {
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

}  // namespace bench
