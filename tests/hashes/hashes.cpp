// SPDX-License-Identifier: Apache-2.0
// hashes [--level=N] [TABLE]: a digest of each exported function over fixed
// pictures, one line each, in the order of their names. With a table the lines
// are compared with the table's, and those that differ are printed.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <string_view>

#include "cases/cases.h"
#include "common/isa.h"

namespace lox_test {
namespace {

using Digests = std::map<std::string, uint64_t>;

uint64_t digest_of(const Function &function, int cases) {
  // A function's pictures depend on nothing but its name. One of rows has those
  // of the function of whole pictures, and so its digest.
  std::string_view name = function.name;
  if (name.ends_with("_rows")) name.remove_suffix(5);
  Sink seed;
  seed.add(reinterpret_cast<const uint8_t *>(name.data()), name.size());
  Source source(seed.digest());
  Sink sink;
  for (int i = 0; i < cases; ++i) function.run(function, source, sink);
  return sink.digest();
}

Digests digests() {
  Digests all;
#define LOX_ADD_FAMILY(family)                                       \
  for (int32_t i = 0; i < family##_family.count; ++i) {              \
    const Function &function = family##_family.functions[i];         \
    all[function.name] = digest_of(function, family##_family.cases); \
  }
  LOX_FOR_EACH_FAMILY(LOX_ADD_FAMILY)
#undef LOX_ADD_FAMILY
  return all;
}

void print(const char *mark, const Digests::value_type &line) {
  std::printf("%s%016llx %s\n", mark,
              static_cast<unsigned long long>(line.second), line.first.c_str());
}

// Whether the table has these lines and no others.
bool compare(const Digests &all, const char *table) {
  std::FILE *file = std::fopen(table, "r");
  if (file == nullptr) {
    std::perror(table);
    return false;
  }
  Digests expected;
  unsigned long long digest = 0;
  char name[128];
  while (std::fscanf(file, "%llx %127s", &digest, name) == 2) {
    expected[name] = digest;
  }
  std::fclose(file);
  for (const auto &line : all) {
    const auto found = expected.find(line.first);
    if (found == expected.end() || *found != line) print("+", line);
  }
  for (const auto &line : expected) {
    const auto found = all.find(line.first);
    if (found == all.end() || *found != line) print("-", line);
  }
  return all == expected;
}

}  // namespace
}  // namespace lox_test

int main(int argc, char **argv) {
  constexpr int kSkipped = 77;
  constexpr char kFlag[] = "--level=";
  const char *table = nullptr;
  for (int i = 1; i < argc; ++i) {
    if (std::strncmp(argv[i], kFlag, sizeof(kFlag) - 1) != 0) {
      table = argv[i];
      continue;
    }
    const int level = std::atoi(argv[i] + sizeof(kFlag) - 1);
    lox::isa_limit(level);
    if (lox::isa_level() != level) {
      std::printf("this machine has no level %d\n", level);
      return kSkipped;
    }
  }
  const lox_test::Digests all = lox_test::digests();
  if (table != nullptr) return lox_test::compare(all, table) ? 0 : 1;
  for (const auto &line : all) lox_test::print("", line);
  return 0;
}
