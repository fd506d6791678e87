// SPDX-License-Identifier: Apache-2.0
// forms FAMILY CASES LARGE [FUNCTION]: random cases of each function, LARGE of
// them beyond the caches. Every instruction set of the machine must write and
// answer what the portable form does, and that what the rule says, where there
// is one.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "cases/cases.h"
#include "common/caches.h"
#include "common/isa.h"
#include "rules/rules.h"

namespace lox_test {
namespace {

uint64_t run(const Function &function, uint64_t seed, bool large) {
  Source source(seed, large);
  Sink sink;
  function.run(function, source, sink);
  return sink.digest();
}

bool agree(const Function &function, const Function &rule, int number,
           bool large) {
  Sink seed;
  seed.add(reinterpret_cast<const uint8_t *>(function.name),
           std::strlen(function.name));
  seed.add(static_cast<uint64_t>(number));
  // Loads of every kind, and writing as every kind of processor gains by, with
  // caches that large pictures leave.
  lox::set_look_ups(static_cast<lox::LookUps>(number % 3));
  lox::set_dot_products(number % 4 < 2);
  lox::set_memory_rule(lox::memory_rule(
      number % 2 == 0 ? lox::Core::kStreams : lox::Core::kFetches,
      {size_t{1} << 18, size_t{1} << 20}, true));
  uint64_t portable = 0;
  for (int level = 0; level <= lox::isa_best(); ++level) {
    lox::isa_limit(level);
    const uint64_t digest = run(function, seed.digest(), large);
    if (level == 0) portable = digest;
    // To the portable form large pictures are little else, and rules are slow.
    const bool ruled = rule.rule != nullptr && level == 0 && !large;
    const uint64_t expected =
        ruled ? run(rule, seed.digest(), large) : portable;
    if (digest == expected) continue;
    std::printf("%s: %s differs from the %s, %scase %d\n", function.name,
                lox::isa_name(level), ruled ? "rule" : "portable form",
                large ? "large " : "", number);
    return false;
  }
  return true;
}

}  // namespace
}  // namespace lox_test

int main(int argc, char **argv) {
  using namespace lox_test;
  if (argc < 4) return 2;
  int failures = 0;
  int functions = 0;
#define LOX_ADDRESS(family) &family##_family,
  for (const Family *family : {LOX_FOR_EACH_FAMILY(LOX_ADDRESS)}) {
    if (std::strcmp(family->name, argv[1]) != 0) continue;
    for (int32_t f = 0; f < family->count; ++f) {
      const Function &function = family->functions[f];
      if (argc > 4 && std::strcmp(function.name, argv[4]) != 0) continue;
      ++functions;
      const Function rule = by_rule(function);
      const int cases[] = {std::atoi(argv[2]), std::atoi(argv[3])};
      for (const bool large : {false, true}) {
        int number = 0;
        while (number < cases[large] && agree(function, rule, number, large)) {
          ++number;
        }
        failures += number < cases[large] ? 1 : 0;
      }
    }
  }
  // A name that nothing has is a failure, too.
  return failures == 0 && functions > 0 ? 0 : 1;
}
