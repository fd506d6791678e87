// SPDX-License-Identifier: Apache-2.0
// What the headers say about the least planes and about strides, by every
// conversion: planes of exactly those bytes are enough, the last of them are
// needed, and rows may lie upwards.
#include "support/exact_sizes.h"

#include <orumlox/orumlox.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "support/guarded_buffer.h"
#include "support/kernels.h"
#include "support/random.h"

namespace lox_test {
namespace {

// Rows one after the other, without what lies between them.
using Rows = std::vector<uint8_t>;

// A picture whose planes are exactly as large as they must be.
struct ExactPicture {
  // Strides of `pad` bytes more than the row, negative ones if upwards.
  void lay_out(const ExactImage &image, int32_t pad, bool upwards) {
    planes = image;
    for (int p = 0; p < 4; ++p) {
      img.width[p] = image[p].width;
      img.height[p] = img.buf_height[p] = image[p].height;
      const auto step = static_cast<int32_t>(image[p].row_bytes) + pad;
      img.stride[p] = upwards ? -step : step;
    }
  }
  void give(int p, int64_t bytes, Edge edge) {
    buffer[p].reset(static_cast<size_t>(bytes), edge);
    img.plane[p] = buffer[p].data() + first(p);
  }
  int64_t first(int p) const {
    return planes[p].whole > 0 ? 0 : planes[p].first(img.stride[p]);
  }
  void fill(Random &random) {
    for (int p = 0; p < 4; ++p) {
      random.fill(buffer[p].data(), buffer[p].size());
      // The same rows whichever way they lie.
      const bool has_rows = planes[p].whole == 0 && planes[p].row_bytes > 0;
      for (int32_t y = 0; y < planes[p].height && has_rows; ++y) {
        random.fill(img.plane[p] + int64_t{y} * img.stride[p],
                    static_cast<size_t>(planes[p].row_bytes));
      }
    }
  }
  Rows rows() const {
    Rows all;
    for (int p = 0; p < 4; ++p) {
      const ExactPlane &plane = planes[p];
      if (plane.whole > 0) {
        const auto bytes = buffer[p].copy();
        all.insert(all.end(), bytes.begin(), bytes.end());
        continue;
      }
      for (int32_t y = 0; y < plane.height; ++y) {
        const uint8_t *row = img.plane[p] + int64_t{y} * img.stride[p];
        all.insert(all.end(), row, row + plane.row_bytes);
      }
    }
    return all;
  }
  bool margins_intact() const {
    return std::all_of(buffer.begin(), buffer.end(),
                       [](const auto &b) { return b.margin_intact(); });
  }

  vexo_img img = {};
  ExactImage planes;
  std::array<GuardedBuffer, 4> buffer;
};

// The pairs of formats that have no kernel of their own go through vexo_csc.
std::vector<Conversion> conversions() {
  std::vector<Conversion> all = all_conversions();
  all.push_back({VEXO_FMT_NV12, VEXO_FMT_NV21, "nv12_to_nv21", nullptr});
  all.push_back({VEXO_FMT_YUV420, VEXO_FMT_YV12, "yuv420_to_yv12", nullptr});
  return all;
}
bool exchanges_pairs(const Conversion &c) {
  return (c.src == VEXO_FMT_NV12 && c.dst == VEXO_FMT_NV21) ||
         (c.src == VEXO_FMT_NV21 && c.dst == VEXO_FMT_NV12);
}

class ExactSizes : public SeededTest {
 protected:
  // Whether the conversion takes the size.
  static bool takes(const Conversion &c, int32_t width, int32_t height) {
    return c.kernel != nullptr || (width >= 8 && height >= 8);
  }

  void prepare(const Conversion &c, int32_t width, int32_t height, int32_t pad,
               bool upwards, Edge edge) {
    const ExactCall call = exact_csc(c.src, c.dst, c.standard, width, height);
    src_.lay_out(call.src, pad, upwards);
    dst_.lay_out(call.dst, pad, upwards);
    // Each is the other's.
    if (c.src == VEXO_FMT_YUV420 && c.dst == VEXO_FMT_YV12 && pad == 0) {
      src_.img.stride[2] += 5;
    }
    src_.img.format = c.src;
    dst_.img.format = c.dst;
    for (int p = 0; p < 4; ++p) {
      src_.give(p, csc_source_bytes(call, c.src, c.dst, p, src_.img.stride),
                edge);
      dst_.give(p,
                csc_destination_bytes(call, c.src, c.dst, p, dst_.img.stride),
                edge);
    }
  }

  Rows convert(const Conversion &c) {
    if (c.kernel == nullptr) {
      // Sizes of the destination are looked at by vexo_csc alone.
      dst_.img.width[0] = src_.img.width[0];
      dst_.img.height[0] = src_.img.height[0];
      EXPECT_EQ(vexo_csc(&src_.img, &dst_.img), VEXO_OK);
    } else {
      c.kernel(src_.img.plane, src_.img.width, src_.img.height, src_.img.stride,
               dst_.img.stride, dst_.img.plane);
    }
    EXPECT_TRUE(dst_.margins_intact());
    return dst_.rows();
  }

  static std::vector<uint8_t> bytes(const ExactPicture &picture) {
    std::vector<uint8_t> all;
    for (const GuardedBuffer &b : picture.buffer) {
      const auto one = b.copy();
      all.insert(all.end(), one.begin(), one.end());
    }
    return all;
  }

  ExactPicture src_, dst_;
};

constexpr int32_t kWidths[] = {1,  2,  3,  4,  5,  7,   8,
                               16, 17, 34, 63, 65, 129, 259};
constexpr int32_t kHeights[] = {1, 2, 3, 4, 5, 8, 9, 33, 65};

TEST_F(ExactSizes, AreEnoughAndRowsMayLieUpwards) {
  for (const Conversion &c : conversions()) {
    ASSERT_TRUE(c.src >= 0 && c.dst >= 0) << c.name;
    for (const int32_t width : kWidths) {
      for (const int32_t height : kHeights) {
        if (!takes(c, width, height)) continue;
        SCOPED_TRACE(std::string(c.name) + " " + std::to_string(width) + "x" +
                     std::to_string(height));
        const uint64_t contents = random.next();
        const auto run = [&](int32_t pad, bool upwards, Edge edge) {
          prepare(c, width, height, pad, upwards, edge);
          Random same(contents);
          if (pad > 0) src_.fill(same);
          return convert(c);
        };
        run(0, false, Edge::kStart);
        // Of rows one pixel is written beyond an odd width, 4 bytes at most.
        const Rows down = run(4, false, Edge::kEnd);
        if (exchanges_pairs(c)) continue;
        ASSERT_EQ(run(4, true, Edge::kEnd), down);
        if (HasFailure()) return;
      }
    }
  }
}

// The last bytes of every plane have an effect, or receive one.
TEST_F(ExactSizes, AreTheLeast) {
  for (const Conversion &c : conversions()) {
    for (const int32_t width : kWidths) {
      for (const int32_t height : kHeights) {
        if (!takes(c, width, height) || width > 40) continue;
        SCOPED_TRACE(std::string(c.name) + " " + std::to_string(width) + "x" +
                     std::to_string(height));
        prepare(c, width, height, 0, false, Edge::kEnd);
        for (GuardedBuffer &b : src_.buffer) {
          std::fill_n(b.data(), b.size(), uint8_t{128});
        }
        for (const uint8_t canary : {uint8_t{0x5A}, uint8_t{0xA5}}) {
          for (GuardedBuffer &b : dst_.buffer) {
            std::fill_n(b.data(), b.size(), canary);
          }
          convert(c);
          for (int p = 0; p < 4; ++p) {
            const GuardedBuffer &b = dst_.buffer[p];
            if (dst_.planes[p].whole > 0 || b.size() == 0) continue;
            // Padding that is exchanged with itself.
            if (exchanges_pairs(c) && p == 1) continue;
            ASSERT_NE(b.data()[b.size() - 1], canary) << "plane " << p;
          }
        }
        const auto before = bytes(dst_);
        // Every second row is dropped, or every second column too.
        const bool thinned = c.src == VEXO_FMT_YUV422N ||
                             c.src == VEXO_FMT_YV16 || c.src == VEXO_FMT_YUV444;
        for (int p = 0; p < 4; ++p) {
          GuardedBuffer &b = src_.buffer[p];
          if (src_.planes[p].whole > 0 || b.size() == 0) continue;
          if (thinned && p > 0 && !is_rgb_code(c.dst)) continue;
          // Alpha has no effect.
          const size_t unit = is_rgb_code(c.src) ? b.size() : 1;
          std::fill_n(b.data() + b.size() - unit, unit, uint8_t{193});
          convert(c);
          ASSERT_NE(bytes(dst_), before) << "plane " << p;
          std::fill_n(b.data() + b.size() - unit, unit, uint8_t{128});
        }
      }
    }
  }
}

// Calls with strides, on planes of kRows rows of which they use some.
constexpr int32_t kRow = 512;
constexpr int32_t kRows = 96;
using PlaneCall =
    std::function<void(const uint8_t *src, uint8_t *dst, int32_t stride)>;

PlaneCall call_of(const std::string &, vexo_rot_kernel *kernel) {
  return [=](const uint8_t *src, uint8_t *dst, int32_t stride) {
    kernel(src, 37, 29, stride, stride, dst);
  };
}
PlaneCall call_of(const std::string &name, vexo_rsz_kernel *kernel) {
  const int32_t side = name.find("_up") != std::string::npos ? 80 : 12;
  return [=](const uint8_t *src, uint8_t *dst, int32_t stride) {
    kernel(src, 36, 36, side, side, dst, stride, stride);
  };
}
PlaneCall call_of(const std::string &, vexo_rsz_scaler *scaler) {
  return [=](const uint8_t *src, uint8_t *dst, int32_t stride) {
    std::vector<uint8_t> scratch(size_t{2} * 4 * 36);
    for (const int32_t width : {12, 25, 36}) {
      scaler(src, 36, 36, width, 12, dst, scratch.data(), stride, stride, 0);
    }
  };
}
// That of the kernels which take columns has the same arguments, no strides.
PlaneCall call_of(const std::string &name,
                  vexo_rsz_strided_block_kernel *kernel) {
  if (name.find("_non_dct") == std::string::npos) return nullptr;
  return [=](const uint8_t *, uint8_t *dst, int32_t stride) {
    // The source has no strides.
    std::vector<uint8_t> src(size_t{16} * 30 * 10);
    for (size_t i = 0; i < src.size(); ++i) src[i] = static_cast<uint8_t>(i);
    kernel(src.data(), dst, 30, 10, stride);
  };
}
template <typename Other>
PlaneCall call_of(const std::string &, Other *) {
  return nullptr;
}

const std::vector<std::pair<std::string, PlaneCall>> kPlaneCalls = {
    {"8b", call_of("", vexo_cpy_8b)},
    {"16b", call_of("", vexo_cpy_16b)},
    {"24b", call_of("", vexo_cpy_24b)},
    {"32b", call_of("", vexo_cpy_32b)},
    {"mlox_blk_mcpy",
     [](const uint8_t *src, uint8_t *dst, int32_t stride) {
       mlox_blk_mcpy(dst, src, stride, stride, 37, 29);
     }},
    {"8b8b8b8b",
     [](const uint8_t *src, uint8_t *dst, int32_t stride) {
       vexo_csc_8b8b8b8b_unpack(src, 37, 29, stride, stride, stride, stride,
                                stride, dst, dst + 40, nullptr, dst + 80);
       vexo_csc_8b8b8b8b_pack(dst + 120, 37, 29, stride, stride, stride, stride,
                              stride, src, src + 1, nullptr, src + 3);
     }},
    {"vexo_rsz_8b_org",
     [](const uint8_t *src, uint8_t *dst, int32_t stride) {
       vexo_rsz_8b_org(src, stride, 37, 29, stride, dst, 3 << 20, 5 << 19);
     }},
    {"vexo_fpa_frm_pack",
     [](const uint8_t *src, uint8_t *dst, int32_t stride) {
       vexo_fpa_frm_pack(src, src + 120, dst, 29, 111, stride, stride);
     }},
    {"deblocking",
     [](const uint8_t *src, uint8_t *dst, int32_t stride) {
       mlox_blk_mcpy(dst, src, stride, stride, 80, 45);
       vexo_dbf8x8(dst, 9, stride, 80, 45);
     }},
};

TEST_F(ExactSizes, RowsOfPlanesMayLieUpwards) {
  auto calls = kPlaneCalls;
  for_each_kernel([&](const char *name, auto *kernel) {
    const PlaneCall call = call_of(name, kernel);
    if (call != nullptr) calls.emplace_back(name, call);
  });
  EXPECT_GT(calls.size(), 130U);
  // Smooth in parts, for deblocking.
  std::vector<uint8_t> rows(size_t{kRow} * kRows);
  for (size_t i = 0; i < rows.size(); ++i) {
    rows[i] = static_cast<uint8_t>(i % kRow / 8 * 5 + i / kRow / 8 * 7 +
                                   random.next() % 4);
  }
  GuardedBuffer src;
  GuardedBuffer dst;
  for (const auto &[name, call] : calls) {
    std::vector<uint8_t> results[2];
    for (const bool up : {false, true}) {
      const Edge edge = up ? Edge::kStart : Edge::kEnd;
      const auto row = [&](const GuardedBuffer &b, int32_t y) {
        return b.data() + ptrdiff_t{kRow} * (up ? kRows - 1 - y : y);
      };
      src.reset(rows.size(), edge);
      dst.reset(rows.size(), edge);
      std::fill_n(dst.data(), dst.size(), uint8_t{0});
      for (int32_t y = 0; y < kRows; ++y) {
        std::copy_n(&rows[size_t{kRow} * y], kRow, row(src, y));
      }
      call(row(src, 0), row(dst, 0), up ? -kRow : kRow);
      for (int32_t y = 0; y < kRows; ++y) {
        results[up].insert(results[up].end(), row(dst, y), row(dst, y) + kRow);
      }
      ASSERT_TRUE(dst.margin_intact()) << name;
    }
    ASSERT_EQ(results[1], results[0]) << name;
    ASSERT_NE(results[0], std::vector<uint8_t>(rows.size())) << name;
  }
}

}  // namespace
}  // namespace lox_test
