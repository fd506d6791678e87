// SPDX-License-Identifier: Apache-2.0
// One target for each family of cases: every instruction set of the machine
// must write and answer the same, whatever the input says. LOX_FAMILY is the
// family.
#include <cstdio>
#include <cstdlib>

#include "cases/cases.h"
#include "common/isa.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
  const lox_test::Family &family = lox_test::LOX_FAMILY;
  uint64_t expected = 0;
  for (int level = 0; level <= lox::isa_best(); ++level) {
    lox::isa_limit(level);
    lox_test::Source source(bytes, size);
    lox_test::Sink sink;
    const lox_test::Function &function =
        family.functions[source.between(0, family.count - 1)];
    function.run(function, source, sink);
    if (level == 0) expected = sink.digest();
    if (sink.digest() == expected) continue;
    std::fprintf(stderr, "%s: %s differs from the portable form\n",
                 function.name, lox::isa_name(level));
    std::abort();
  }
  return 0;
}

// Buffers come and go all the time: what helps to name their origin would take
// most of it.
extern "C" const char *__asan_default_options() {
  return "malloc_context_size=0:quarantine_size_mb=1";
}
