// SPDX-License-Identifier: Apache-2.0
// For one file of each fuzz target.
#pragma once

// Buffers come and go all the time: what helps to name their origin would take
// most of it.
extern "C" const char *__asan_default_options() {
  return "malloc_context_size=0:quarantine_size_mb=1";
}
