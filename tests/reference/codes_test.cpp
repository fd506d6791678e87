// SPDX-License-Identifier: Apache-2.0
// The answers of the picture calls to every format code, rotation and standard,
// and what they write, against the rules.
#include <gtest/gtest.h>
#include <orumlox/orumlox.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "rules/rules.h"

namespace lox_test {
namespace {

// Planes with room for every format up to 16 by 16.
constexpr int32_t kStride = 72;
struct Pictures {
  Pictures() {
    Random(1).fill(src_bytes[0], sizeof src_bytes);
    src.width[0] = src.height[0] = 16;
    for (int p = 0; p < 4; ++p) {
      src.width[p] = src.height[p] = src.buf_height[p] = p == 0 ? 16 : 8;
      src.stride[p] = kStride;
    }
    dst = src;
    for (int p = 0; p < 4; ++p) {
      src.plane[p] = src_bytes[p];
      dst.plane[p] = dst_bytes[p];
    }
  }
  // Whether the function does and answers what its rule says.
  template <class Call>
  bool agree(const Function &function, Call call) {
    std::memset(dst_bytes, 0x5A, sizeof dst_bytes);
    const int32_t status = call(function);
    std::memcpy(got, dst_bytes, sizeof got);
    std::memset(dst_bytes, 0x5A, sizeof dst_bytes);
    return call(by_rule(function)) == status &&
           std::memcmp(got, dst_bytes, sizeof got) == 0;
  }

  uint8_t src_bytes[4][kStride * 17], dst_bytes[4][kStride * 17];
  uint8_t got[4][kStride * 17];
  vexo_img src = {}, dst = {};
};

std::vector<int32_t> codes() {
  std::vector<int32_t> all = {INT32_MIN, INT32_MAX, 65536, 65537, 0x101F4};
  for (int32_t code = -2; code <= 703; ++code) all.push_back(code);
  return all;
}
constexpr int32_t kKnown[] = {-1,  0,   1,   2,   3,   4,   5,   6,   7,   8,
                              9,   11,  12,  13,  14,  100, 101, 199, 200, 201,
                              400, 401, 500, 501, 502, 503, 600, 601};

using Entry = decltype(vexo_csc);

TEST(Codes, OfConversions) {
  Pictures p;
  const auto check = [&](Entry *entry, const char *name, int32_t a, int32_t b) {
    p.src.format = a;
    p.dst.format = b;
    const Function function = LOX_FUNCTION(nullptr, entry);
    ASSERT_TRUE(p.agree(
        function,
        [&](const Function &f) { return f.as<Entry>()(&p.src, &p.dst); }))
        << name << ", " << a << " to " << b << ", standard " << p.src.color_std;
  };
  for (const int32_t standard : {0, 1, 2, 10, 11}) {
    p.src.color_std = p.dst.color_std = standard;
    for (const int32_t code : codes()) {
      for (const int32_t other : kKnown) {
        for (const bool turned : {false, true}) {
          const int32_t a = turned ? other : code;
          const int32_t b = turned ? code : other;
          ASSERT_NO_FATAL_FAILURE(check(vexo_csc, "any standard", a, b));
          // Which do not look at the standard.
          if (standard != 0) continue;
          ASSERT_NO_FATAL_FAILURE(check(vexo_csc_bt601_fr, "BT.601", a, b));
          ASSERT_NO_FATAL_FAILURE(check(vexo_csc_bt709, "BT.709", a, b));
          ASSERT_NO_FATAL_FAILURE(check(vexo_csc_bt709_fr, "full", a, b));
        }
      }
    }
  }
}

// Sizes that are kept, halved or turned.
TEST(Codes, OfCopiesTurnsAndScaling) {
  Pictures p;
  for (const int32_t width : {16, 8}) {
    p.dst.width[0] = width;
    p.dst.height[0] = p.dst.width[1] = width / 2 + 8;
    for (const int32_t code : codes()) {
      p.src.format = p.dst.format = code;
      const auto check = [&](const Function &function) {
        using Window = decltype(vexo_crop);
        ASSERT_TRUE(p.agree(
            function,
            [&](const Function &f) { return f.as<Window>()(&p.src, &p.dst); }))
            << function.name << ", " << code << ", width " << width;
      };
      check(LOX_FUNCTION(nullptr, vexo_cpy));
      check(LOX_FUNCTION(nullptr, vexo_crop));
      check(LOX_FUNCTION(nullptr, vexo_padding));
      check(LOX_FUNCTION(nullptr, vexo_rsz));
      for (const uint32_t code_of_turn :
           {0U, 1U, 2U, 3U, 4U, 5U, 6U, 0x80000001U, 0xFFFFFFFFU}) {
        for (const Function &function :
             {Function LOX_FUNCTION(nullptr, vexo_rot),
              Function LOX_FUNCTION(nullptr, vexo_rsz_rot)}) {
          ASSERT_TRUE(p.agree(function,
                              [&](const Function &f) {
                                return f.as<decltype(vexo_rot)>()(
                                    &p.src, code_of_turn, &p.dst);
                              }))
              << function.name << ", " << code << ", rotation " << code_of_turn;
        }
      }
      if (HasFatalFailure()) return;
    }
  }
}

}  // namespace
}  // namespace lox_test
