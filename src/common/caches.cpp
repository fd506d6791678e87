// SPDX-License-Identifier: Apache-2.0
#include "common/caches.h"

namespace lox {

namespace detail {
constinit bool streaming_now = false;
}

void set_streaming(bool on) { detail::streaming_now = on; }

#if defined(__x86_64__) || defined(__i386__)
namespace {

[[gnu::constructor]] void choose_streaming() {
  __builtin_cpu_init();
  set_streaming(__builtin_cpu_is("amd"));
}

}  // namespace
#endif

}  // namespace lox
