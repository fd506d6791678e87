/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Reading bit fields from a buffer in either bit order, writing them, and
 * base-2 logarithms:
 *     mlox_bsr reader;
 *     mlox_bsr_init(&reader, bytes, size, mlox_bsr_flush);
 *     uint32_t field = mlox_bsr_read(&reader, 5);
 *
 * All state is in records that the caller owns; nothing is allocated. Calls are
 * re-entrant; one record is used by one thread at a time. Buffers stay the
 * caller's and must outlive their records' use. Null pointers are not detected.
 */
#pragma once

#include "base.h"

VEXO_BEGIN_DECLS

typedef struct mlox_bsr mlox_bsr;
typedef struct mlox_bsw mlox_bsw;

/*
 * Replaces the reader's cache by the next bytes of its source: as many as asked
 * for, 1 to 4, or fewer, and sets `bits` to what it holds. Returns 0; any other
 * code says that nothing more is to be had. Readers call it through the record
 * and rely on what it leaves there, nothing else; a refill that answers 0 and
 * leaves no bits is taken for the end.
 */
typedef int32_t mlox_bsr_refill(mlox_bsr *reader, int32_t bytes);

/* A bit reader. Its layout is part of the interface: seven 32-bit words on
 * 32-bit targets; with wider pointers the same order and natural alignment. */
struct mlox_bsr {
  /* Bits not consumed yet: the next one is bit 31, or bit 0 of a little-endian
   * reader. The others are 0. */
  uint32_t cache;
  /* How many of them, 0 to 32. */
  int32_t bits;
  /* The next byte to load, and the buffer's last one. */
  const uint8_t *next;
  const uint8_t *last;
  const uint8_t *start; /* the buffer */
  /* Size of the buffer in bytes. */
  int32_t size;
  mlox_bsr_refill *refill; /* called when there are too few bits */
};

/* A bit writer, most significant bit first. Six 32-bit words on 32-bit
 * targets. */
struct mlox_bsw {
  /* The byte that is being filled. */
  uint8_t *current;
  /* Bits still free in it, 8 when nothing has been written to it. */
  int32_t free;
  /* The buffer's last byte. */
  uint8_t *last;
  uint8_t *start; /* the buffer */
  /* Size of the buffer in bytes. */
  int32_t size;
  /* Null, or called with the writer each time a byte is complete, before
   * `current` moves on to the next; it may set `current` itself. */
  void (*on_byte)(mlox_bsw *writer);
};

/* What the readers answer when there are not as many bits as asked for. A read
 * of 32 bits may yield the same value: mlox_bsr_read1_value and mlox_bsr_skip
 * tell the end apart. */
#define MLOX_BSR_END 0xFFFFFFFFu

/*
 * Reading. n is meant to be 1 to 32; below 1 nothing is consumed and 0 read,
 * above 32 n bits are consumed and the last 32 of them are the value.
 *
 * A reader that has too few bits asks its refill for 4 bytes, and again until
 * there are enough. When that fails, cache and count are what the refill left:
 * nothing, if it is the library's own. No call ever yields bits that the refill
 * did not load, except mlox_bsr_skip_peek's zeros after the end.
 */

/* Begins with the first bit of `size` bytes at `buffer`. A null refill stands
 * for mlox_bsr_flush. Nothing is loaded yet. */
VEXO_API void mlox_bsr_init(mlox_bsr *reader, const uint8_t *buffer,
                            int32_t size, mlox_bsr_refill *refill);

/* The refill of readers most significant bit first: loads up to `bytes` bytes
 * (at most 4), the first into bits 31..24. Returns 0; -1, with an empty cache,
 * when no byte is left or `bytes` is below 1. */
VEXO_API mlox_bsr_refill mlox_bsr_flush;

/* The next n bits, the first one the most significant; MLOX_BSR_END when there
 * are not so many. */
VEXO_API uint32_t mlox_bsr_read(mlox_bsr *reader, int32_t n);

/* The next bit; MLOX_BSR_END when there is none. */
VEXO_API uint32_t mlox_bsr_read1(mlox_bsr *reader);

/* Stores the next bit, 0 or 1, and returns 0; -1, storing nothing, when there
 * is none. */
VEXO_API int32_t mlox_bsr_read1_value(mlox_bsr *reader, uint8_t *bit);

/* Skips n bits. Returns how many the cache still has; when there are not so
 * many the refill's code (-1 from the library's own, and for a refill that
 * leaves no bits). */
VEXO_API int32_t mlox_bsr_skip(mlox_bsr *reader, int32_t n);

/*
 * Skips n bits and returns the m that follow (1 to 32) without consuming them;
 * after the buffer's end zeros. 0 when there are not n bits. Looking ahead asks
 * the refill for as many bytes as the cache has room for, ((32 - bits) / 8),
 * and takes what is missing then, up to 8 bits, from the byte at `next`. A
 * refill must not load more than it is asked for.
 */
VEXO_API uint32_t mlox_bsr_skip_peek(mlox_bsr *reader, int32_t n, int32_t m);

/* Drops the bits up to the next byte boundary: bits & 7 of them, as refills
 * load whole bytes. */
VEXO_API void mlox_bsr_skip_to_align8(mlox_bsr *reader);

/*
 * The same for streams whose first bit is the least significant one of the
 * first byte. Readers are initialised with mlox_bsr_le_flush as their refill.
 */

/* Loads up to `bytes` bytes, the first into bits 7..0; else as mlox_bsr_flush.
 */
VEXO_API mlox_bsr_refill mlox_bsr_le_flush;

/* The next n bits, the first one the least significant. */
VEXO_API uint32_t mlox_bsr_le_read(mlox_bsr *reader, int32_t n);

/* Drops n bits of the cache, which the caller knows to be there. 32 clears
 * cache and count. Returns how many bits are left. Quirk: never refills,
 * because callers skip bits that they have looked at. */
VEXO_API int32_t mlox_bsr_le_skip(mlox_bsr *reader, int32_t n);

/* As mlox_bsr_skip_to_align8. */
VEXO_API void mlox_bsr_le_skip_to_align8(mlox_bsr *reader);

/* Writing. Begins at the first byte of `size` bytes at `buffer`, which need not
 * be cleared: 8 writes replace all of a byte, and until then its low bits are
 * what has been written, its high ones what it held. on_byte may be null.
 * Returns the address of the writer's field `start`. */
VEXO_API uint8_t **mlox_bsw_init(mlox_bsw *writer, uint8_t *buffer,
                                 int32_t size,
                                 void (*on_byte)(mlox_bsw *writer));

/* Writes the lowest bit of `bit`. Returns 0; -1, writing nothing, when
 * `current` is beyond the last byte. */
VEXO_API int32_t mlox_bsw_write1(mlox_bsw *writer, uint32_t bit);

/*
 * Writes the low n bits of a value, at most 32 (more count as 32), the most
 * significant first; nothing for n below 1. Returns 0; -1, writing nothing,
 * when `current` is beyond the last byte.
 *
 * Quirk: the end is tested once, because a value that starts in the last byte
 * is written whole. So buffers need 4 bytes more than their size, or an on_byte
 * that moves `current`.
 */
VEXO_API int32_t mlox_bsw_write(mlox_bsw *writer, uint32_t value, int32_t n);

/* The smallest k with 2^k >= x (ceil), and the largest with 2^k <= x (floor);
 * 0xFFFFFFFF for 0. */
VEXO_API uint32_t mlox_ceil_log2(uint32_t x);
VEXO_API uint32_t mlox_floor_log2(uint32_t x);

/* How many zeros stand before the highest bit that is set; 32 for 0. */
VEXO_API uint32_t mlox_bsr_clz_in_code(uint32_t x);

VEXO_END_DECLS
