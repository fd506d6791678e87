// SPDX-License-Identifier: Apache-2.0
//
// A family's table of row kernels: one for each instruction set, and the one
// that runs.
#pragma once

#include "common/isa.h"

// In namespace lox: declares the constant `name` of every set's namespace, the
// list name_sets of their addresses by level, and name(), that of the level
// that runs.
#define LOX_ROW_TABLE(type, name)                      \
  LOX_FOR_EACH_SET(LOX_ROW_TABLE_OF, type, name)       \
  inline constexpr const type *name##_sets[] = {       \
      LOX_FOR_EACH_SET(LOX_ROW_TABLE_AT, type, name)}; \
  inline const type &name() { return *name##_sets[isa_level()]; }

// The same for a family with a form for VNNI.
#define LOX_ROW_TABLE_WITH_DOT(type, name)                \
  LOX_FOR_EACH_SET(LOX_ROW_TABLE_OF, type, name)          \
  LOX_FOR_DOT_SET(LOX_ROW_TABLE_OF, type, name)           \
  inline constexpr const type *name##_sets[] = {          \
      LOX_FOR_EACH_SET(LOX_ROW_TABLE_AT, type, name)      \
          LOX_FOR_DOT_SET(LOX_ROW_TABLE_AT, type, name)}; \
  inline const type &name() { return *name##_sets[isa_dot_level()]; }

#define LOX_ROW_TABLE_OF(set, type, name) \
  namespace set {                         \
  extern const type name;                 \
  }
#define LOX_ROW_TABLE_AT(set, type, name) &set::name,
