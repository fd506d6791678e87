// SPDX-License-Identifier: Apache-2.0
// The stages of tone mapping, of each set, against the portable ones: sources
// and destinations beside inaccessible memory, tables of any contents.
#include "hdr/hdr_rows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <vector>

#include "support/guarded_buffer.h"
#include "support/random.h"

namespace {

using lox::HdrRows;
using lox::HdrRun;
using lox_test::Edge;
using lox_test::GuardedBuffer;

constexpr int kRun = lox::kHdrRun;

class HdrRowsTest : public lox_test::SeededTest {
 protected:
  void fill(uint16_t *words, size_t count, int32_t most) {
    std::generate_n(words, count, [&] {
      return static_cast<uint16_t>(random.between(0, most));
    });
  }
};

// The two stages before the last leave as many pixels as they are asked for.
template <class T>
bool same(const T *a, const T *b, int n) {
  return std::equal(a, a + n, b);
}

TEST_F(HdrRowsTest, EverySampleBecomesTheSameCodes) {
  GuardedBuffer luma, u, v;
  for (int level = 1; level <= lox::isa_best(); ++level) {
    const HdrRows &set = *lox::hdr_rows_sets[level];
    ASSERT_NE(set.codes_of_p010, lox::hdr_rows_sets[0]->codes_of_p010);
    for (int round = 0; round < 40; ++round) {
      const Edge edge = round % 2 == 0 ? Edge::kEnd : Edge::kStart;
      const bool pairs = round % 4 < 2;
      const int n = round < 8 ? kRun - round / 2 * set.group : kRun;
      luma.reset(2 * n, edge);
      u.reset(pairs ? 2 * n : n, edge);
      v.reset(pairs ? 0 : n, edge);
      random.fill(luma.data(), luma.size());
      random.fill(u.data(), u.size());
      random.fill(v.data(), v.size());
      // The later rounds go through all codes of luma and of one chroma.
      if (round >= 8) {
        for (int x = 0; x < n; ++x) {
          const int code = x + kRun * ((round - 8) / 4 % 4);
          const auto word = static_cast<uint16_t>(pairs ? code << 6 : code);
          std::memcpy(luma.data() + 2 * x, &word, 2);
          uint8_t *const chroma = round < 24 ? u.data()
                                  : pairs    ? u.data() + 2
                                             : v.data();
          const auto other =
              static_cast<uint16_t>(pairs ? (code * 7 & 1023) << 6 : code * 7);
          std::memcpy(chroma + (pairs ? 4 : 2) * (x / 2), &other, 2);
        }
      }
      HdrRun expected, run;
      for (int s = 0; s < 2; ++s) {
        const HdrRows &rows = s == 0 ? *lox::hdr_rows_sets[0] : set;
        (pairs ? rows.codes_of_p010 : rows.codes_of_planar16)(
            s == 0 ? &expected : &run, luma.data(), u.data(), v.data(), n);
      }
      ASSERT_TRUE(same(run.r, expected.r, n) && same(run.g, expected.g, n) &&
                  same(run.b, expected.b, n))
          << lox::isa_name(level) << ", round " << round;
    }
  }
}

TEST_F(HdrRowsTest, TheLargestSampleIsFound) {
  GuardedBuffer luma;
  for (int round = 0; round < 2000; ++round) {
    const int columns = random.between(1, 150);
    const int rows = random.between(1, 12);
    const int step = round % 2 == 0 ? 2 : 4;
    luma.reset(size_t{2} * columns * rows,
               round % 4 < 2 ? Edge::kEnd : Edge::kAligned);
    auto *const words = reinterpret_cast<uint16_t *>(luma.data());
    fill(words, columns * rows, round % 3 == 0 ? 65535 : 1023);
    // Often the largest is one that is not looked at.
    words[random.between(0, columns * rows - 1)] = 65535;
    for (int level = 1; level <= lox::isa_best(); ++level) {
      ASSERT_EQ(
          lox::hdr_rows_sets[level]->largest_sample(words, columns, rows, step),
          lox::hdr_rows_sets[0]->largest_sample(words, columns, rows, step))
          << lox::isa_name(level) << ", " << columns << "x" << rows;
    }
  }
}

TEST_F(HdrRowsTest, AllTablesGiveTheSamePixels) {
  const auto context = std::make_unique<vexo_hdr_context>();
  for (int round = 0; round < 200; ++round) {
    // Of the limits alone, or of everything up to them.
    const bool extreme = round % 5 == 0;
    const auto table = [&](uint16_t *words, size_t count, int32_t most) {
      fill(words, count, extreme ? 1 : most);
      if (extreme) {
        for (size_t i = 0; i < count; ++i)
          words[i] = static_cast<uint16_t>(words[i] * most);
      }
    };
    table(context->pq, 1024, 32767);
    table(context->hlg_linear, 1024, 32767);
    // Gains of a tone curve are low; others must go as well.
    table(context->gain, 257, round % 2 == 0 ? 3000 : 4095);
    // A toe of any length, and light that is or is not within it.
    const int last = round % 3 == 0 ? 0 : random.between(1, 256);
    std::fill_n(context->gain, last > 0 ? last + 1 : 0, context->gain[1]);
    if (last > 0) context->gain[0] = 0;
    const int toe = last * 128;
    if (round % 3 == 1 && !extreme) fill(context->pq, 1024, toe / 2);
    random.fill(context->gamma, sizeof context->gamma);
    HdrRun codes;
    for (uint16_t *plane : {codes.r, codes.g, codes.b}) {
      fill(plane, kRun, 1023);
    }
    for (int kind = 0; kind < 4; ++kind) {
      HdrRun expected = codes;
      lox::hdr_rows_sets[0]->to_sdr[kind / 2][kind % 2](
          &expected, context.get(), toe, kRun);
      for (int level = 1; level <= lox::isa_best(); ++level) {
        const HdrRows &set = *lox::hdr_rows_sets[level];
        ASSERT_NE(set.to_sdr[0][0], lox::hdr_rows_sets[0]->to_sdr[0][0]);
        for (const auto &to_sdr : {set.to_sdr, set.to_sdr_gathering}) {
          HdrRun run = codes;
          const int n = kRun - round % 4 * set.group;
          to_sdr[kind / 2][kind % 2](&run, context.get(), toe, n);
          ASSERT_TRUE(same(run.red, expected.red, n) &&
                      same(run.green, expected.green, n) &&
                      same(run.blue, expected.blue, n))
              << lox::isa_name(level) << ", round " << round << ", kind "
              << kind << (to_sdr == set.to_sdr ? "" : ", gathering");
        }
      }
    }
  }
}

TEST_F(HdrRowsTest, EveryDestinationGetsTheSameBytes) {
  struct Kernel {
    HdrRows::Put *put;
    int bytes_per_pixel;
  };
  const auto kernels = [](const HdrRows &rows) {
    return std::array<Kernel, 9>{{{rows.put_rgb888, 3},
                                  {rows.put_rgba8888, 4},
                                  {rows.put_argb8888, 4},
                                  {rows.put_luma[0], 1},
                                  {rows.put_luma[1], 1},
                                  {rows.put_uv[0], 1},
                                  {rows.put_uv[1], 1},
                                  {rows.put_vu[0], 1},
                                  {rows.put_vu[1], 1}}};
  };
  GuardedBuffer dst, second;
  HdrRun run;
  for (int round = 0; round < 60; ++round) {
    const Edge edge = round % 2 == 0 ? Edge::kEnd : Edge::kStart;
    for (uint8_t *plane : {run.red, run.green, run.blue}) {
      random.fill(plane, kRun, lox_test::kFills[random.between(0, 3)]);
    }
    for (int level = 1; level <= lox::isa_best(); ++level) {
      const HdrRows &set = *lox::hdr_rows_sets[level];
      const int n = kRun - round % 4 * set.group;
      const auto portable = kernels(*lox::hdr_rows_sets[0]);
      const auto forms = kernels(set);
      for (size_t k = 0; k < forms.size(); ++k) {
        std::vector<uint8_t> expected(n * forms[k].bytes_per_pixel);
        portable[k].put(expected.data(), &run, n);
        dst.reset(expected.size(), edge);
        forms[k].put(dst.data(), &run, n);
        ASSERT_TRUE(lox_test::holds(dst, expected))
            << lox::isa_name(level) << ", kernel " << k << ", round " << round;
      }
      for (int variant = 0; variant < 2; ++variant) {
        std::vector<uint8_t> u(n / 2), v(n / 2);
        lox::hdr_rows_sets[0]->put_u_v[variant](u.data(), v.data(), &run, n);
        dst.reset(u.size(), edge);
        second.reset(v.size(), edge);
        set.put_u_v[variant](dst.data(), second.data(), &run, n);
        ASSERT_TRUE(lox_test::holds(dst, u) && lox_test::holds(second, v))
            << lox::isa_name(level) << ", round " << round;
      }
    }
  }
}

}  // namespace
