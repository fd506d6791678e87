// SPDX-License-Identifier: Apache-2.0
// A plan of the DCT scaler, whoever makes it, and what of it is compared.
#pragma once

#include <orumlox/dct.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "cases/cases.h"

namespace lox_test {

template <class Type>
void add(const Type *items, int32_t count, Sink &sink) {
  sink.add(reinterpret_cast<const uint8_t *>(items),
           static_cast<size_t>(count) * sizeof(Type));
}
inline void add_set(vexo_shift_set set, int32_t count, int32_t n, Sink &sink) {
  for (int32_t i = 0; set != nullptr && i < count; ++i) {
    add(set[i][0], 16 * n, sink);
  }
}

inline void require(bool condition) {
  if (!condition) std::abort();
}

// Planned of garbage, and released at last.
struct CasePlan {
  CasePlan() = default;
  CasePlan(const CasePlan &) = delete;
  CasePlan &operator=(const CasePlan &) = delete;
  ~CasePlan() { vexo_rsz_new_deinit(nullptr, &context, a, b); }

  // Before and behind a call that plans: one that cannot leaves nothing.
  void begin() {
    std::memset(static_cast<void *>(&context), 0xA5, sizeof context);
    a = b = &not_null;
  }
  void end() const {
    const vexo_rsz_new_context clear = {};
    const bool none = std::memcmp(&context, &clear, sizeof clear) == 0;
    require((status != VEXO_OK) == none);
    require(!none || (a == nullptr && b == nullptr));
  }
  bool has_blocks() const { return context.block_types != nullptr; }
  int32_t entries() const { return context.types[0] + context.types[1]; }
  int32_t rows_of_a() const {
    return std::max(context.vertical_span[0], context.vertical_span[1]);
  }
  int32_t rows_of_b() const {
    return std::max(context.horizontal_span[0], context.horizontal_span[1]);
  }
  int32_t blocks() const {
    const vexo_rsz_new_context &c = context;
    int32_t count = 0;
    for (int p = 0; p < 2 && has_blocks(); ++p) {
      count += (c.short_rows[p] + c.tall_rows[p]) *
               (c.narrow_columns[p] + c.wide_columns[p]);
    }
    return count;
  }

  void add_numbers(Sink &sink) const {
    sink.add(static_cast<uint32_t>(status));
    sink.add(reinterpret_cast<const uint8_t *>(&context),
             offsetof(vexo_rsz_new_context, chroma));
    add(&context.prescale, 5, sink);
  }
  // All that a caller may read of it.
  void add_to(Sink &sink) const {
    const vexo_rsz_new_context &c = context;
    add_numbers(sink);
    add(c.block_types, blocks(), sink);
    add(c.block_columns, blocks(), sink);
    add(c.block_rows, blocks(), sink);
    add_set(a, entries(), rows_of_a(), sink);
    add_set(b, entries(), rows_of_b(), sink);
  }

  int16_t **not_null = nullptr;
  vexo_rsz_new_context context = {};
  vexo_shift_set a = nullptr;
  vexo_shift_set b = nullptr;
  int32_t status = 0;
};

}  // namespace lox_test
