// SPDX-License-Identifier: Apache-2.0
//
// Bit readers of both orders, the writer, and logarithms. Shifts here are by 0
// to 32 bits; 32 leave nothing, which C++ does not define.
#include "orumlox/bitstream.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace {

constexpr int32_t kWordBits = 32;
constexpr int32_t kWordBytes = 4;
constexpr int32_t kEnd = -1;

uint32_t shift_left(uint32_t v, int32_t by) {
  return static_cast<uint32_t>(by) < kWordBits ? v << by : 0;
}
uint32_t shift_right(uint32_t v, int32_t by) {
  return static_cast<uint32_t>(by) < kWordBits ? v >> by : 0;
}

// A field and the cache without it.
struct Taken {
  uint32_t value, cache;
};
constexpr bool kWideRegisters = sizeof(size_t) > sizeof(uint32_t);

// From a byte to the buffer's last one. Addresses are numbers here because an
// empty buffer's last byte lies before its first.
ptrdiff_t bytes_between(const uint8_t *next, const uint8_t *last) {
  return static_cast<ptrdiff_t>(reinterpret_cast<uintptr_t>(last) -
                                reinterpret_cast<uintptr_t>(next));
}
template <class T>
T *last_byte(T *buffer, int32_t size) {
  return reinterpret_cast<T *>(reinterpret_cast<uintptr_t>(buffer) +
                               static_cast<uintptr_t>(size > 0 ? size : 0) - 1);
}

// The two bit orders: FromTop begins with the most significant bit, FromBottom
// with the least significant one.
struct FromTop {
  static constexpr mlox_bsr_refill *kRefill = mlox_bsr_flush;

  static uint32_t word(const uint8_t *p) {
    uint32_t v;
    std::memcpy(&v, p, sizeof v);
    return std::endian::native == std::endian::little ? __builtin_bswap32(v)
                                                      : v;
  }
  // Byte i of a refill.
  static uint32_t byte(uint8_t v, int32_t i) {
    return uint32_t{v} << (24 - 8 * i);
  }
  // `cache` without its first n bits.
  static uint32_t drop(uint32_t cache, int32_t n) {
    return shift_left(cache, n);
  }
  // The last bits of a field so far, and behind them the first n of `cache`.
  static uint32_t append(uint32_t field, uint32_t cache, int32_t n) {
    return shift_left(field, n) | shift_right(cache, kWordBits - n);
  }
  // As a value, when the field has n bits.
  static uint32_t value(uint32_t field, int32_t) { return field; }

  // The same without branches: n bits, 1 to 32, of `cache` and then of `fresh`,
  // which `left` bits are left of (0 to 31), or which is 0 if the cache has
  // enough. Where registers are wider, both results come out of one shift.
  static Taken join(uint32_t cache, uint32_t fresh, int32_t n, int32_t left) {
    if constexpr (kWideRegisters) {
      const uint64_t both =
          uint64_t{cache} << n | (uint64_t{fresh} << kWordBits) >> left;
      return {static_cast<uint32_t>(both >> kWordBits),
              static_cast<uint32_t>(both)};
    } else {
      return {cache >> (kWordBits - n) | fresh >> left,
              cache << (n - 1) << 1 | fresh << (kWordBits - 1 - left) << 1};
    }
  }
};

struct FromBottom {
  static constexpr mlox_bsr_refill *kRefill = mlox_bsr_le_flush;

  static uint32_t word(const uint8_t *p) {
    uint32_t v;
    std::memcpy(&v, p, sizeof v);
    return std::endian::native == std::endian::little ? v
                                                      : __builtin_bswap32(v);
  }
  static uint32_t byte(uint8_t v, int32_t i) { return uint32_t{v} << (8 * i); }
  static uint32_t drop(uint32_t cache, int32_t n) {
    return shift_right(cache, n);
  }
  // A field is put together at the top of a word, where its last bit is.
  static uint32_t append(uint32_t field, uint32_t cache, int32_t n) {
    return shift_right(field, n) | shift_left(cache, kWordBits - n);
  }
  static uint32_t value(uint32_t field, int32_t n) {
    return n < kWordBits ? shift_right(field, kWordBits - n) : field;
  }

  static Taken join(uint32_t cache, uint32_t fresh, int32_t n, int32_t left) {
    if constexpr (kWideRegisters) {
      const uint64_t both =
          (uint64_t{cache} << kWordBits) >> n | uint64_t{fresh} << left;
      return {static_cast<uint32_t>(both) >> (kWordBits - n),
              static_cast<uint32_t>(both >> kWordBits)};
    } else {
      return {(cache << (kWordBits - n) | fresh << left) >> (kWordBits - n),
              cache >> (n - 1) >> 1 | fresh >> (kWordBits - 1 - left) >> 1};
    }
  }
};

template <class Order>
int32_t load(mlox_bsr *reader, int32_t bytes) {
  const ptrdiff_t left = bytes_between(reader->next, reader->last) + 1;
  int32_t count = bytes < kWordBytes ? bytes : kWordBytes;
  if (left < count) count = static_cast<int32_t>(left);
  reader->cache = 0;
  reader->bits = 0;
  if (count < 1) return kEnd;
  for (int32_t i = 0; i < count; ++i) {
    reader->cache |= Order::byte(reader->next[i], i);
  }
  reader->bits = 8 * count;
  reader->next += count;
  return 0;
}

// Asks for more bits. A refill that leaves none is at its end, whatever it
// returns.
int32_t refill(mlox_bsr *reader, int32_t bytes) {
  const int32_t code = reader->refill(reader, bytes);
  if (code != 0) return code;
  return reader->bits < 1 ? kEnd : 0;
}

template <class Order>
void consume(mlox_bsr *reader, int32_t n) {
  reader->cache = Order::drop(reader->cache, n);
  reader->bits = static_cast<int32_t>(static_cast<uint32_t>(reader->bits) -
                                      static_cast<uint32_t>(n));
}

// Consumes n bits, however many refills that takes; the last 32 of them are the
// value. Returns 0, or the code of the refill that failed.
template <class Order>
int32_t take_slowly(mlox_bsr *reader, int32_t n, uint32_t *value) {
  uint32_t field = 0;
  int32_t missing = n;
  while (reader->bits < missing) {
    const int32_t had = reader->bits > 0 ? reader->bits : 0;
    field = Order::append(field, reader->cache, had);
    missing -= had;
    const int32_t code = refill(reader, kWordBytes);
    if (code != 0) return code;
  }
  if (missing > 0) {
    field = Order::append(field, reader->cache, missing);
    consume<Order>(reader, missing);
  }
  *value = n > 0 ? Order::value(field, n) : 0;
  return 0;
}

// Whether take_ahead can do this: n is 1 to 32, the cache is not full, the
// refill is this order's own and a whole word is left.
template <class Order>
inline bool is_ahead(const mlox_bsr *reader, int32_t n) {
  const uint32_t lengths =
      (static_cast<uint32_t>(n) - 1) | static_cast<uint32_t>(reader->bits);
  return lengths < kWordBits && reader->refill == Order::kRefill &&
         bytes_between(reader->next, reader->last) >= kWordBytes - 1;
}

// Consumes n bits and returns them. No branch depends on the lengths of fields,
// which a processor cannot predict: the next word is always loaded, and masked
// off where the cache has enough.
template <class Order>
inline uint32_t take_ahead(mlox_bsr *reader, int32_t n) {
  const int32_t had = reader->bits;
  const int32_t left = (had - n) & (kWordBits - 1);
  const int32_t refilled = (had - n) >> 31;
  const uint32_t fresh =
      Order::word(reader->next) & static_cast<uint32_t>(refilled);
  const Taken taken = Order::join(reader->cache, fresh, n, left);
  reader->next += refilled & kWordBytes;
  reader->bits = left;
  reader->cache = taken.cache;
  return taken.value;
}

template <class Order>
[[gnu::noinline]] uint32_t read_slowly(mlox_bsr *reader, int32_t n) {
  uint32_t value;
  return take_slowly<Order>(reader, n, &value) == 0 ? value : MLOX_BSR_END;
}
template <class Order>
inline uint32_t read(mlox_bsr *reader, int32_t n) {
  return is_ahead<Order>(reader, n) ? take_ahead<Order>(reader, n)
                                    : read_slowly<Order>(reader, n);
}

template <class Order>
inline int32_t take(mlox_bsr *reader, int32_t n, uint32_t *value) {
  if (!is_ahead<Order>(reader, n)) {
    return take_slowly<Order>(reader, n, value);
  }
  *value = take_ahead<Order>(reader, n);
  return 0;
}

// The next bit. When the cache is empty is easily predicted.
inline uint32_t read_bit(mlox_bsr *reader) {
  if (reader->bits < 1 && refill(reader, kWordBytes) != 0) return MLOX_BSR_END;
  const uint32_t bit = reader->cache >> (kWordBits - 1);
  consume<FromTop>(reader, 1);
  return bit;
}

void align(mlox_bsr *reader, uint32_t (*drop)(uint32_t, int32_t)) {
  reader->cache = drop(reader->cache, reader->bits & 7);
  reader->bits &= ~7;
}

// A byte is complete. on_byte may move `current` when it drains the byte.
void next_byte(mlox_bsw *writer) {
  if (writer->on_byte != nullptr) writer->on_byte(writer);
  ++writer->current;
  writer->free = 8;
}

bool is_full(const mlox_bsw *writer) {
  return bytes_between(writer->current, writer->last) < 0;
}

}  // namespace

extern "C" {

void mlox_bsr_init(mlox_bsr *reader, const uint8_t *buffer, int32_t size,
                   mlox_bsr_refill *refill) {
  reader->cache = 0;
  reader->bits = 0;
  reader->next = buffer;
  reader->last = last_byte(buffer, size);
  reader->start = buffer;
  reader->size = size;
  reader->refill = refill != nullptr ? refill : mlox_bsr_flush;
}

int32_t mlox_bsr_flush(mlox_bsr *reader, int32_t bytes) {
  return load<FromTop>(reader, bytes);
}

uint32_t mlox_bsr_read(mlox_bsr *reader, int32_t n) {
  return read<FromTop>(reader, n);
}

uint32_t mlox_bsr_read1(mlox_bsr *reader) { return read_bit(reader); }

int32_t mlox_bsr_read1_value(mlox_bsr *reader, uint8_t *bit) {
  const uint32_t value = read_bit(reader);
  if (value == MLOX_BSR_END) return kEnd;
  *bit = static_cast<uint8_t>(value);
  return 0;
}

int32_t mlox_bsr_skip(mlox_bsr *reader, int32_t n) {
  uint32_t value;
  const int32_t code = take<FromTop>(reader, n, &value);
  return code != 0 ? code : reader->bits;
}

uint32_t mlox_bsr_skip_peek(mlox_bsr *reader, int32_t n, int32_t m) {
  uint32_t value;
  if (take<FromTop>(reader, n, &value) != 0 || m < 1) return 0;
  m = m < kWordBits ? m : kWordBits;
  while (reader->bits < m) {
    const uint32_t cache = reader->cache;
    const int32_t had = reader->bits > 0 ? reader->bits : 0;
    const int32_t room = (kWordBits - had) / 8;
    if (room == 0) break;
    if (refill(reader, room) != 0) {
      reader->cache = cache;
      reader->bits = had;
      break;
    }
    // More than it was asked for would not fit.
    const int32_t got =
        reader->bits < kWordBits - had ? reader->bits : kWordBits - had;
    reader->cache = cache | shift_right(reader->cache, had);
    reader->bits = had + got;
  }
  value = reader->cache >> (kWordBits - m);
  // The cache has no room for another byte, but the answer needs some of it.
  const int32_t missing = m - reader->bits;
  if (missing > 0 && missing <= 8 &&
      bytes_between(reader->next, reader->last) >= 0) {
    value |= uint32_t{*reader->next} >> (8 - missing);
  }
  return value;
}

void mlox_bsr_skip_to_align8(mlox_bsr *reader) { align(reader, FromTop::drop); }

int32_t mlox_bsr_le_flush(mlox_bsr *reader, int32_t bytes) {
  return load<FromBottom>(reader, bytes);
}

uint32_t mlox_bsr_le_read(mlox_bsr *reader, int32_t n) {
  return read<FromBottom>(reader, n);
}

int32_t mlox_bsr_le_skip(mlox_bsr *reader, int32_t n) {
  // Quirk: never refills, because callers skip bits that they have looked at.
  if (n == kWordBits) {
    reader->cache = 0;
    reader->bits = 0;
  } else if (n > 0) {
    consume<FromBottom>(reader, n);
  }
  return reader->bits;
}

void mlox_bsr_le_skip_to_align8(mlox_bsr *reader) {
  align(reader, FromBottom::drop);
}

uint8_t **mlox_bsw_init(mlox_bsw *writer, uint8_t *buffer, int32_t size,
                        void (*on_byte)(mlox_bsw *writer)) {
  writer->current = buffer;
  writer->free = 8;
  writer->last = last_byte(buffer, size);
  writer->start = buffer;
  writer->size = size;
  writer->on_byte = on_byte;
  return &writer->start;
}

int32_t mlox_bsw_write1(mlox_bsw *writer, uint32_t bit) {
  return mlox_bsw_write(writer, bit, 1);
}

int32_t mlox_bsw_write(mlox_bsw *writer, uint32_t value, int32_t n) {
  if (is_full(writer)) return kEnd;
  // Quirk: the end is tested once, because a value that starts in the last byte
  // is written whole.
  int32_t left = n < kWordBits ? n : kWordBits;
  while (left > 0) {
    const int32_t count = left < writer->free ? left : writer->free;
    left -= count;
    const uint32_t bits = value >> left & ((1U << count) - 1);
    *writer->current =
        static_cast<uint8_t>(uint32_t{*writer->current} << count | bits);
    writer->free -= count;
    if (writer->free == 0) next_byte(writer);
  }
  return 0;
}

uint32_t mlox_bsr_clz_in_code(uint32_t x) {
  return static_cast<uint32_t>(std::countl_zero(x));
}

uint32_t mlox_floor_log2(uint32_t x) { return 31 - mlox_bsr_clz_in_code(x); }

uint32_t mlox_ceil_log2(uint32_t x) {
  if (x == 0) return mlox_floor_log2(x);
  return mlox_floor_log2(x) + (std::has_single_bit(x) ? 0 : 1);
}

}  // extern "C"
