// SPDX-License-Identifier: Apache-2.0
// The cases of a family with models in the place of the library's functions.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

#include "cases/cases.h"

namespace lox_test {

// A function's name and a model of its type.
struct Model {
  const char *name;
  AnyFunction address;
};
#define LOX_MODEL(function, model) \
  { #function, lox_test::AnyFunction(static_cast <decltype(&function)>(model)) }

inline const Function &find(const Family &family, const char *name) {
  int32_t i = 0;
  while (std::strcmp(family.functions[i].name, name) != 0) ++i;
  return family.functions[i];
}

inline uint64_t digest_of_case(const Function &function, uint64_t seed) {
  Source source(seed);
  Sink sink;
  function.run(function, source, sink);
  return sink.digest();
}

// Every case answers and writes the same with the model as with the function.
template <size_t kCount>
void expect_models(const Family &family, const Model (&models)[kCount],
                   uint64_t cases) {
  for (const Model &model : models) {
    const Function &function = find(family, model.name);
    const Function stand_in = {model.name, function.run, model.address};
    for (uint64_t seed = 0; seed < cases; ++seed) {
      ASSERT_EQ(digest_of_case(function, seed), digest_of_case(stand_in, seed))
          << model.name << ", case " << seed;
    }
  }
}

// The cases of a function through one that looks at what it does itself.
template <class Type>
void expect_checked(const Family &family, const char *name, Type *checked,
                    uint64_t cases) {
  Function function = find(family, name);
  function.address = AnyFunction(checked);
  for (uint64_t seed = 0; seed < cases; ++seed) {
    digest_of_case(function, seed);
    ASSERT_FALSE(testing::Test::HasFailure()) << name << ", case " << seed;
  }
}

}  // namespace lox_test
