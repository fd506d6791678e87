// SPDX-License-Identifier: Apache-2.0
//
// The row kernels of scaling, of each set, against the portable ones: ratios
// that reach every form, strips that begin anywhere, beside inaccessible
// memory.
#include "rsz/scale_rows.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "support/guarded_buffer.h"
#include "support/random.h"

namespace {

using lox::Axis;
using lox::Scaling;
using lox_test::Edge;
using lox_test::GuardedBuffer;

struct Type {
  int32_t unit;
  const lox::ScaleRows lox::ScaleTables::*rows;
};
constexpr Type kTypes[] = {{1, &lox::ScaleTables::bytes},
                           {2, &lox::ScaleTables::bytes},
                           {3, &lox::ScaleTables::bytes},
                           {4, &lox::ScaleTables::bytes},
                           {2, &lox::ScaleTables::rgb565}};

class ScaleRowsTest : public lox_test::SeededTest {
 protected:
  // A whole row, in the strips that the set asks for.
  void scale(const lox::ScaleRows &rows, const Type &type, Axis axis,
             const uint8_t *below, uint8_t *dst) {
    lox::Columns columns;
    columns.axis = axis;
    columns.unit = type.unit;
    for (columns.first = 0; columns.first < axis.dst;
         columns.first += columns.count) {
      columns.count = axis.dst - columns.first;
      rows.prepare(&columns);
      ASSERT_GT(columns.count, 0);
      ASSERT_LE(columns.count, axis.dst - columns.first);
      uint8_t *const to = dst + ptrdiff_t{columns.first} * type.unit;
      if (below != nullptr) {
        rows.box(row_.data(), below, to, &columns);
      } else {
        rows.columns(row_.data(), to, &columns);
      }
    }
  }
  void check(Axis axis, Edge edge) {
    for (const Type &type : kTypes) {
      const size_t src = size_t(axis.src) * size_t(type.unit);
      const size_t dst = size_t(axis.dst) * size_t(type.unit);
      const bool reduces = axis.scaling <= Scaling::kReduceWhole;
      row_.reset(src, edge);
      below_.reset(src, edge);
      random.fill(row_.data(), src, lox_test::kFills[axis.src % 4]);
      random.fill(below_.data(), src, lox_test::kFills[axis.dst % 4]);
      for (const uint8_t *below : {static_cast<uint8_t *>(nullptr),
                                   reduces ? below_.data() : nullptr}) {
        expected_.reset(dst, edge);
        scale(lox::scale_rows_sets[0]->*type.rows, type, axis, below,
              expected_.data());
        for (int level = 1; level <= lox::isa_best(); ++level) {
          got_.reset(dst, edge);
          scale(lox::scale_rows_sets[level]->*type.rows, type, axis, below,
                got_.data());
          ASSERT_TRUE(lox_test::holds(got_, expected_.copy()))
              << lox::isa_name(level) << ", unit " << type.unit << ", "
              << axis.src << " to " << axis.dst << ", scaling "
              << static_cast<int>(axis.scaling)
              << (below != nullptr ? ", two rows" : "");
        }
      }
    }
  }

  GuardedBuffer row_, below_, expected_, got_;
};

TEST_F(ScaleRowsTest, ColumnsAreThoseOfThePortableSet) {
  std::vector<std::array<int32_t, 2>> sizes = {
      {1920, 1280}, {1280, 720},  {1280, 1920}, {640, 1920},  {4099, 4097},
      {4097, 2731}, {1366, 1920}, {7001, 1000}, {3000, 6001}, {170, 5000}};
  for (int i = 0; i < 250; ++i) {
    const int32_t src = random.between(1, i % 4 == 0 ? 900 : 130);
    const int32_t other = random.between(1, 200);
    const int32_t ratio = random.between(1, 20);
    sizes.push_back({src, other});
    sizes.push_back({src, src * ratio});
    sizes.push_back({src * ratio, src});
    sizes.push_back({3 * src, 2 * src});
  }
  for (const auto &[src, dst] : sizes) {
    const Edge edge = (src + dst) % 2 == 0 ? Edge::kEnd : Edge::kStart;
    if (dst < src) {
      check({src, dst, Scaling::kReduce}, edge);
      if (src % dst == 0) check({src, dst, Scaling::kReduceWhole}, edge);
    } else {
      check({src, dst, Scaling::kEnlarge}, edge);
      check({src, dst, Scaling::kEnlargeMod1}, edge);
    }
    if (HasFatalFailure()) return;
  }
}

TEST_F(ScaleRowsTest, BlendsAreThoseOfThePortableSet) {
  for (const int32_t length : {2, 3, 4, 7, 15, 16, 17, 33, 64, 65, 66, 300}) {
    for (int32_t part = 1; part < length; part += 1 + length / 9) {
      for (const size_t n : {2, 14, 16, 30, 62, 64, 66, 130, 1918}) {
        for (const bool mod1 : {false, true}) {
          for (const auto rows :
               {&lox::ScaleTables::bytes, &lox::ScaleTables::rgb565}) {
            const auto run = [&](int level, GuardedBuffer &to) {
              to.reset(n, Edge::kEnd);
              (lox::scale_rows_sets[level]->*rows)
                  .lerp(row_.data(), below_.data(), to.data(),
                        static_cast<ptrdiff_t>(n), {0, part, length}, mod1);
            };
            row_.reset(n, Edge::kEnd);
            below_.reset(n, Edge::kStart);
            random.fill(row_.data(), n, lox_test::kFills[n / 2 % 4]);
            random.fill(below_.data(), n, lox_test::kFills[part % 4]);
            run(0, expected_);
            for (int level = 1; level <= lox::isa_best(); ++level) {
              run(level, got_);
              ASSERT_TRUE(lox_test::holds(got_, expected_.copy()))
                  << lox::isa_name(level) << ", " << n << " bytes, " << part
                  << " of " << length << (mod1 ? ", 64ths" : "");
            }
          }
        }
      }
    }
  }
}

TEST_F(ScaleRowsTest, WordsAreThoseOfThePortableSet) {
  for (const int32_t unit : {2, 4}) {
    for (const int32_t factor : {2, 3}) {
      for (size_t count = 1; count < 140; ++count) {
        const size_t bytes = count * static_cast<size_t>(unit);
        const auto run = [&](int level, GuardedBuffer &to) {
          to.reset(bytes, Edge::kEnd);
          lox::scale_rows_sets[level]->box16(row_.data(), below_.data(),
                                             to.data(), unit, factor,
                                             static_cast<ptrdiff_t>(count));
        };
        for (GuardedBuffer *row : {&row_, &below_}) {
          row->reset(bytes * static_cast<size_t>(factor), Edge::kEnd);
          random.fill(row->data(), row->size(), lox_test::kFills[count % 4]);
        }
        run(0, expected_);
        for (int level = 1; level <= lox::isa_best(); ++level) {
          run(level, got_);
          ASSERT_TRUE(lox_test::holds(got_, expected_.copy()))
              << lox::isa_name(level) << ", unit " << unit << ", factor "
              << factor << ", " << count << " outputs";
        }
      }
    }
  }
}

}  // namespace
