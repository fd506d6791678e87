// SPDX-License-Identifier: Apache-2.0
// Readers and the writer against strings of single bits, the readers' caches
// included; what callers' own refills may do; logarithms.
#include <orumlox/bitstream.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "support/guarded_buffer.h"
#include "support/random.h"

namespace lox_test {
namespace {

using Bytes = std::vector<uint8_t>;

// A reader by the header's words: its cache has the bits pos..end of a string.
struct ReaderModel {
  bool little = false;
  int64_t most = 4;   // bytes that its refill has at most
  int32_t code = -1;  // that refill's for none
  Bytes bytes{};
  int64_t pos = 0, end = 0;

  int32_t held() const { return static_cast<int32_t>(end - pos); }
  // The n bits from `first` on; zeros after the last byte.
  uint32_t value(int64_t first, int32_t n) const {
    uint32_t word = 0;
    for (int32_t i = 0; i < n; ++i) {
      const auto at = static_cast<size_t>(first + i);
      if (at / 8 >= bytes.size()) continue;
      const size_t place = little ? at % 8 : 7 - at % 8;
      word |= (bytes[at / 8] >> place & 1u) << (little ? i : n - 1 - i);
    }
    return word;
  }
  bool load(int64_t asked, int64_t at_most) {
    const int64_t left = static_cast<int64_t>(bytes.size()) - end / 8;
    const int64_t count = std::min({asked, at_most, left});
    end += 8 * std::max<int64_t>(count, 0);
    return count > 0;
  }
  // Whether there are n bits; consumes them or all.
  bool take(int32_t n) {
    for (; n > 0; --n, ++pos) {
      if (pos == end && !load(4, most)) return false;
    }
    return true;
  }
  uint32_t read(int32_t n) {
    const int32_t last = std::min(n, 32);
    return take(n) ? value(pos - last, last) : MLOX_BSR_END;
  }
  uint32_t skip_peek(int32_t n, int32_t m) {
    if (!take(n)) return 0;
    while (held() < m && load((32 - held()) / 8, most)) {
    }
    return value(pos, m);
  }
};

// A caller's refill: one byte; at the end no bits and a code of its own, which
// may be 0.
int32_t own_code;
template <bool kLittle>
int32_t refill_byte(mlox_bsr *reader, int32_t) {
  reader->cache = 0;
  reader->bits = 0;
  if (reader->next > reader->last) return own_code;
  reader->cache = kLittle ? *reader->next : uint32_t{*reader->next} << 24;
  reader->bits = 8;
  ++reader->next;
  return 0;
}

class Bitstream : public SeededTest {
 protected:
  // A reader of `bytes` at an inaccessible page.
  void begin(const Bytes &bytes, bool little, bool slow = false) {
    own_code = random.between(-1, 1) * 7;
    model_ = {little, slow ? 1 : 4, slow && own_code != 0 ? own_code : -1,
              bytes};
    buffer_.reset(bytes.size());
    std::copy(bytes.begin(), bytes.end(), buffer_.data());
    refill_ = slow     ? (little ? refill_byte<true> : refill_byte<false>)
              : little ? mlox_bsr_le_flush
                       : mlox_bsr_flush;
    reader_ = {1, 2, nullptr, nullptr, nullptr, 3, nullptr};
    mlox_bsr_init(&reader_, buffer_.data(), static_cast<int32_t>(bytes.size()),
                  slow || little ? refill_ : nullptr);
  }

  // The record holds what the model does.
  void check() {
    const uint32_t bits = model_.value(model_.pos, model_.held());
    const int32_t free = 32 - model_.held();
    EXPECT_EQ(reader_.cache, model_.little || free == 32 ? bits : bits << free);
    EXPECT_EQ(reader_.bits, model_.held());
    EXPECT_EQ(reader_.next - buffer_.data(), model_.end / 8);
    EXPECT_EQ(reader_.last, buffer_.data() + buffer_.size() - 1);
    EXPECT_EQ(reader_.start, buffer_.data());
    EXPECT_EQ(reader_.size, static_cast<int32_t>(buffer_.size()));
    ASSERT_EQ(reader_.refill, refill_);
  }

  // One call of each kind that the reader's bit order has, and its answer.
  void step() {
    static constexpr int32_t kOdd[] = {0, -1, INT32_MIN, 5, 33, 40, 64, 1000};
    const int32_t n = random.next() % 4 != 0 ? random.between(1, 32)
                                             : kOdd[random.next() % 8];
    const int32_t m = random.between(1, 32);
    const bool le = model_.little;
    const int32_t held = model_.held();
    const int32_t skipped = le ? std::clamp(n, 0, held) : n;
    mlox_bsr *const r = &reader_;
    uint8_t bit = 0xEE;
    const int32_t call = random.between(0, le ? 3 : 6);
    if (call == 0) {
      EXPECT_EQ((le ? mlox_bsr_le_read : mlox_bsr_read)(r, n), model_.read(n));
    } else if (call == 1) {
      (le ? mlox_bsr_le_skip_to_align8 : mlox_bsr_skip_to_align8)(r);
      model_.take(held % 8);
    } else if (call == 2) {
      const int32_t status = (le ? mlox_bsr_le_flush : mlox_bsr_flush)(r, n);
      model_.pos = model_.end;
      EXPECT_EQ(status, model_.load(n, 4) ? 0 : -1);
    } else if (call == 3) {
      EXPECT_EQ((le ? mlox_bsr_le_skip : mlox_bsr_skip)(r, skipped),
                model_.take(skipped) ? model_.held() : model_.code);
    } else if (call == 4) {
      EXPECT_EQ(mlox_bsr_read1(r), model_.read(1));
    } else if (call == 5) {
      const int32_t status = mlox_bsr_read1_value(r, &bit);
      EXPECT_EQ(status, model_.take(1) ? 0 : -1);
      EXPECT_EQ(bit, status ? 0xEE : model_.value(model_.pos - 1, 1));
    } else {
      EXPECT_EQ(mlox_bsr_skip_peek(r, n, m), model_.skip_peek(n, m));
    }
    check();
  }

  GuardedBuffer buffer_;
  mlox_bsr reader_;
  mlox_bsr_refill *refill_ = nullptr;
  ReaderModel model_;
};

TEST_F(Bitstream, ReadersYieldTheBitsInOrder) {
  for (int round = 0; round < 16000; ++round) {
    Bytes bytes(static_cast<size_t>(random.between(0, round % 3 ? 9 : 40)));
    random.fill(bytes.data(), bytes.size());
    begin(bytes, round % 2 != 0, round % 4 >= 2);
    check();
    if (round % 2 == 0) {
      // Looking ahead as far as can be, from every place of a word.
      const int32_t place = round / 4 % 32;
      EXPECT_EQ(mlox_bsr_skip_peek(&reader_, place, 32),
                model_.skip_peek(place, 32));
    }
    for (int call = 0; call < 50; ++call) step();
    ASSERT_FALSE(HasFailure()) << "round " << round;
  }
}

// A source in two pieces.
constexpr uint8_t kPieces[2][3] = {{0xF0, 0x81, 0x34}, {0xA5, 0x3C, 0x0F}};
int32_t refill_pieces(mlox_bsr *reader, int32_t bytes) {
  if (reader->next > reader->last) {
    if (reader->last == kPieces[0] + 2) return -9;
    reader->next = kPieces[0];
    reader->last = kPieces[0] + 2;
  }
  return mlox_bsr_flush(reader, bytes);
}

TEST_F(Bitstream, KnownBytesAreRead) {
  mlox_bsr_init(&reader_, kPieces[1], 3, refill_pieces);
  EXPECT_EQ(mlox_bsr_read(&reader_, 4), 0xAu);
  EXPECT_EQ(mlox_bsr_read(&reader_, 32), 0x53C0FF08u);
  EXPECT_EQ(mlox_bsr_skip_peek(&reader_, 1, 5), 4u);
  EXPECT_EQ(mlox_bsr_skip(&reader_, 8), 3);
  // What this refill leaves when it fails is still there.
  EXPECT_EQ(mlox_bsr_skip(&reader_, 4), -9);
  EXPECT_EQ(mlox_bsr_read(&reader_, 3), 4u);
  mlox_bsr_init(&reader_, kPieces[1], 3, mlox_bsr_le_flush);
  EXPECT_EQ(mlox_bsr_le_read(&reader_, 4), 5u);
  EXPECT_EQ(mlox_bsr_le_read(&reader_, 20), 0x0F3CAu);
  mlox_bsr_init(&reader_, kPieces[1], 3, nullptr);
  EXPECT_EQ(mlox_bsr_read(&reader_, 32), MLOX_BSR_END);
  EXPECT_EQ(reader_.cache, 0u);
  EXPECT_EQ(reader_.bits, 0);
}

TEST_F(Bitstream, EmptyBuffersHaveNoBits) {
  const uint8_t byte = 0xFF;
  for (const int32_t size : {0, -1, -40, INT32_MIN}) {
    SCOPED_TRACE(size);
    mlox_bsr_init(&reader_, &byte, size, nullptr);
    EXPECT_EQ(mlox_bsr_read(&reader_, 1), MLOX_BSR_END);
    EXPECT_EQ(mlox_bsr_read1(&reader_), MLOX_BSR_END);
    EXPECT_EQ(mlox_bsr_skip(&reader_, 1), -1);
    EXPECT_EQ(mlox_bsr_skip_peek(&reader_, 0, 32), 0u);
    EXPECT_EQ(mlox_bsr_flush(&reader_, 4), -1);
    EXPECT_EQ(mlox_bsr_le_flush(&reader_, 4), -1);
    EXPECT_EQ(reader_.next, &byte);
    EXPECT_EQ(reader_.bits, 0);
  }
}

TEST_F(Bitstream, TheWriterPutsBitsInOrder) {
  for (int round = 0; round < 4000; ++round) {
    // Four bytes more than the size, which the last value may reach.
    const int32_t size = random.between(0, 12);
    buffer_.reset(static_cast<size_t>(size) + 4);
    Bytes expected = buffer_.copy();
    mlox_bsw w;
    ASSERT_EQ(mlox_bsw_init(&w, buffer_.data(), size, nullptr), &w.start);
    size_t end = 0;  // in bits
    for (int call = 0; call < 30; ++call) {
      const int32_t n = call % 3 == 0 ? 1 : random.between(-1, 34);
      const auto value = static_cast<uint32_t>(random.next());
      const bool open = end / 8 + 4 < expected.size();
      ASSERT_EQ(call % 3 == 0 ? mlox_bsw_write1(&w, value)
                              : mlox_bsw_write(&w, value, n),
                open ? 0 : -1);
      for (int32_t i = std::min(n, 32); open && i-- > 0; ++end) {
        const int place = 7 - static_cast<int>(end % 8);
        int byte = expected[end / 8] & ~(1 << place);
        byte |= static_cast<int>(value >> i & 1) << place;
        expected[end / 8] = static_cast<uint8_t>(byte);
      }
      ASSERT_EQ(w.current, buffer_.data() + end / 8);
      ASSERT_EQ(w.last + 1, buffer_.data() + size);
      ASSERT_EQ(w.free, 8 - static_cast<int32_t>(end % 8));
      // What has been written of the last byte is at its bottom.
      Bytes now = expected;
      if (end % 8 != 0) {
        now[end / 8] = *w.current;
        ASSERT_EQ(*w.current & 0xFF >> w.free, expected[end / 8] >> w.free);
      }
      ASSERT_TRUE(holds(buffer_, now)) << "round " << round;
    }
  }
}

// For a buffer of one byte: empties it each time it is complete.
Bytes completed;
void drain(mlox_bsw *writer) {
  completed.push_back(*writer->current);
  writer->current = writer->start - 1;
}

TEST_F(Bitstream, WhatIsWrittenIsReadBack) {
  uint8_t ring[2] = {};
  mlox_bsw w;
  mlox_bsw_init(&w, ring + 1, 1, drain);
  completed.clear();
  Random same = random;
  for (int32_t n = 3200; n-- > 0;) {
    const auto value = static_cast<uint32_t>(random.next());
    ASSERT_EQ(mlox_bsw_write(&w, value, n % 32 + 1), 0);
    ASSERT_EQ(w.current, ring + 1);
  }
  begin(completed, false);
  for (int32_t n = 3200; n-- > 0;) {
    const uint32_t mask = UINT32_MAX >> (31 - n % 32);
    ASSERT_EQ(mlox_bsr_read(&reader_, n % 32 + 1), same.next() & mask);
  }
  EXPECT_EQ(mlox_bsr_skip(&reader_, 1), -1);
}

TEST_F(Bitstream, Logarithms) {
  for (int i = 0; i < 20000; ++i) {
    // Around every power of 2, and any.
    const auto x = i < 96 ? (1u << i / 3) - 1 + static_cast<uint32_t>(i % 3)
                          : static_cast<uint32_t>(random.next()) >> i % 32;
    uint32_t bits = 0;
    while (uint64_t{x} >> bits != 0) ++bits;
    const uint32_t power = x != 0 && (x & (x - 1)) == 0 ? 1 : 0;
    ASSERT_EQ(mlox_floor_log2(x), bits - 1) << x;
    ASSERT_EQ(mlox_ceil_log2(x), x != 0 ? bits - power : UINT32_MAX) << x;
    ASSERT_EQ(mlox_bsr_clz_in_code(x), 32 - bits) << x;
  }
}

}  // namespace
}  // namespace lox_test
