/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Every record that the public headers define lies in memory as records.inc
 * says. The compiler checks it, for every target.
 */
#define ORUMLOX_UNPREFIXED
#include <orumlox/orumlox.h>

#if defined(__i386__)
#define DOUBLES(bytes) (bytes)
#else
#define DOUBLES(bytes) 0
#endif
#if UINTPTR_MAX == 0xFFFFFFFFu
#define OF_TARGET(bits32, bits64) (bits32)
#else
#define OF_TARGET(bits32, bits64) (bits64)
#endif

/* Listed records have a type besides, which those of the headers must have. */
#define RECORD(type, ...)     \
  typedef char type##_listed; \
  _Static_assert(sizeof(struct type) == OF_TARGET(__VA_ARGS__), #type);
#define FIELD(type, field, ...)                                          \
  _Static_assert(offsetof(struct type, field) == OF_TARGET(__VA_ARGS__), \
                 #type "." #field);
#include "records.inc"

#define HEADER_RECORD(type) extern type##_listed type##_is_listed;
#include "header_records.inc"
