// SPDX-License-Identifier: Apache-2.0
// What exported functions do, sample by sample and written for plainness. A
// rule takes the function that it stands for and then the same arguments.
#pragma once

#include <orumlox/img.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "cases/cases.h"

namespace lox_test {

struct Rule {
  AnyFunction function, rule;
};
template <class Result, class... Arguments>
Rule rule_for(Result (*function)(Arguments...),
              Result (*rule)(const Function &, Arguments...)) {
  return {reinterpret_cast<AnyFunction>(function),
          reinterpret_cast<AnyFunction>(rule)};
}

// Of functions and their rules in turn.
inline std::vector<Rule> rules_for() { return {}; }
template <class F, class R, class... More>
std::vector<Rule> rules_for(F *function, R *rule, More *...more) {
  std::vector<Rule> rules = rules_for(more...);
  rules.push_back(rule_for(function, rule));
  return rules;
}

// Of a function of rows the rule is that of whole pictures.
template <class... Arguments, class... WithRows>
Rule rule_for_rows(int32_t (*function)(WithRows...),
                   int32_t (*rule)(const Function &, Arguments...)) {
  return {reinterpret_cast<AnyFunction>(function),
          reinterpret_cast<AnyFunction>(rule)};
}

std::vector<Rule> csc_rules();
std::vector<Rule> layout_rules();
std::vector<Rule> rot_rules();
std::vector<Rule> rsz_rules();
std::vector<Rule> blocks_rules();
std::vector<Rule> vqe_rules();
std::vector<Rule> hdr_rules();
std::vector<Rule> dct_rules();
std::vector<Rule> media_rules();
std::vector<Rule> picture_rules();
std::vector<Rule> deep_rules();

int32_t turn_picture(const Function &, const vexo_img *src, uint32_t rotation,
                     const vexo_img *dst);

// Scales a plane of one or two words a sample.
void scale_words(int unit, const uint8_t *src, Size from, Size to, uint8_t *dst,
                 int32_t src_stride, int32_t dst_stride, int32_t mode);

// The picture in RGBA8888 by the default standard; rows are `stride` apart.
void picture_to_rgba(const vexo_img *src, uint8_t *dst, int32_t stride);

// Sets the samples of a pixel of a YUV layout without tiles.
void set_yuv(int32_t format, uint8_t *const *planes, const int32_t *strides,
             int32_t x, int32_t y, const uint8_t (&yuv)[3]);

// The function with its rule in its place, or without one.
inline Function by_rule(const Function &function) {
  static const std::vector<Rule> all = [] {
    std::vector<Rule> rules;
    for (const auto &some :
         {csc_rules(), layout_rules(), rot_rules(), rsz_rules(), blocks_rules(),
          vqe_rules(), hdr_rules(), dct_rules(), media_rules(), picture_rules(),
          deep_rules()}) {
      rules.insert(rules.end(), some.begin(), some.end());
    }
    return rules;
  }();
  Function result = function;
  for (const Rule &r : all) {
    if (r.function == function.address) result.rule = r.rule;
  }
  return result;
}

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

inline void move_rows(const uint8_t *src, int64_t src_stride, int64_t bytes,
                      int64_t rows, int64_t dst_stride, uint8_t *dst) {
  for (int64_t y = 0; y < rows && bytes > 0; ++y) {
    for (int64_t i = 0; i < bytes; ++i) {
      dst[y * dst_stride + i] = src[y * src_stride + i];
    }
  }
}

// Where pixel (x, y) of a picture of that size goes by a rotation code.
struct Point {
  int32_t x, y;
};
inline Point rotated(uint32_t code, Size s, int32_t x, int32_t y) {
  const int32_t left = s.width - 1 - x;
  const int32_t up = s.height - 1 - y;
  const Point to[6] = {{x, y},     {y, left}, {up, x},
                       {left, up}, {left, y}, {x, up}};
  return to[code];
}
constexpr bool is_quarter(uint32_t code) { return code == 1 || code == 2; }

}  // namespace lox_test
