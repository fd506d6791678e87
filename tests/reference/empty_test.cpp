// SPDX-License-Identifier: Apache-2.0
// Pictures without a pixel end a call at once, whatever their other side
// claims, and want no planes: all are null, so that nothing can be read or
// written. A side of 2^31 rows that is walked takes seconds.
#include <gtest/gtest.h>
#include <orumlox/unprefixed.h>

#include <cstdint>
#include <ctime>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "support/kernels.h"

namespace lox_test {
namespace {

struct Extent {
  int32_t width, height;
};
constexpr Extent kExtents[] = {{0, INT32_MAX},
                               {INT32_MAX, 0},
                               {-1, INT32_MAX},
                               {INT32_MAX, -1},
                               {INT32_MIN, INT32_MAX},
                               {INT32_MAX, INT32_MIN},
                               {0, 0},
                               {-1, -1}};

using Call = std::function<void(Extent, int32_t stride)>;

// A call of each type of kernel: source and destination have the same extent.
Call call_of(vexo_csc_kernel *kernel) {
  return [=](Extent e, int32_t stride) {
    uint8_t *const planes[4] = {};
    const int32_t width[4] = {e.width, e.width, e.width, e.width};
    const int32_t height[4] = {e.height, e.height, e.height, e.height};
    const int32_t strides[4] = {stride, stride, stride, stride};
    kernel(planes, width, height, strides, strides, planes);
  };
}
Call call_of(vexo_rot_kernel *kernel) {
  return [=](Extent e, int32_t stride) {
    kernel(nullptr, e.width, e.height, stride, stride, nullptr);
  };
}
Call call_of(vexo_rsz_kernel *kernel) {
  return [=](Extent e, int32_t stride) {
    kernel(nullptr, e.width, e.height, e.width, e.height, nullptr, stride,
           stride);
  };
}
Call call_of(vexo_rsz_scaler *scaler) {
  return [=](Extent e, int32_t stride) {
    const auto scale = [&](Extent from, Extent to) {
      EXPECT_EQ(scaler(nullptr, from.width, from.height, to.width, to.height,
                       nullptr, nullptr, stride, stride, VEXO_MODE_MOD1),
                VEXO_ERR_ARG);
    };
    scale(e, {4, 4});
    scale({4, 4}, e);
  };
}
Call call_of(vexo_rsz_block_kernel *kernel) {
  return
      [=](Extent e, int32_t) { kernel(nullptr, nullptr, e.width, e.height); };
}
Call call_of(vexo_rsz_columns_kernel *kernel) {
  // Columns from 8 on of every width, or rows `stride` bytes apart.
  return [=](Extent e, int32_t stride) {
    kernel(nullptr, nullptr, e.width, e.height, stride);
  };
}

template <typename Function>
Call of_image(Function function) {
  return [=](Extent e, int32_t stride) {
    for (int32_t format = 0; format <= VEXO_FMT_P010LE; ++format) {
      vexo_img img = {};
      for (int p = 0; p < 4; ++p) {
        img.width[p] = e.width;
        img.height[p] = e.height;
        img.stride[p] = stride;
      }
      img.format = format;
      function(img);
    }
  };
}

#define LOX_PLANE(name)                                            \
  {                                                                \
#name, [](Extent e, int32_t stride) {                            \
      name(nullptr, e.width, e.height, stride, stride, nullptr);     \
    } \
  }
#define LOX_TILES(name)                                                       \
  {                                                                           \
#name,                                                                    \
        [](Extent e,                                                          \
           int32_t                                                            \
               stride) { name(nullptr, e.width, e.height, stride, nullptr); } \
  }
#define LOX_DEBLOCK(name)                                                      \
  {                                                                            \
#name, [](Extent e,                                                        \
              int32_t stride) { name(nullptr, 9, stride, e.width, e.height); } \
  }
// What has no type of its own. vexo_csc_swap_8byte8 is missing: it exchanges a
// pair even of nothing.
const std::vector<std::pair<std::string, Call>> kOthers = {
    LOX_PLANE(vexo_cpy_8b),
    LOX_PLANE(vexo_cpy_16b),
    LOX_PLANE(vexo_cpy_24b),
    LOX_PLANE(vexo_cpy_32b),
    LOX_PLANE(vexo_csc_2x2_to_1x1),
    LOX_PLANE(vexo_csc_1x2_to_1x1),
    LOX_PLANE(vexo_csc_1x1_to_1x2),
    LOX_TILES(vexo_csc_copy_16x16tiles_to_linear),
    LOX_TILES(vexo_csc_copy_16x8tiles_to_linear),
    LOX_TILES(vexo_csc_copy_8x8tiles_to_linear),
    LOX_TILES(vexo_csc_copy_8x4tiles_to_linear),
    LOX_DEBLOCK(vexo_dbf8x8),
    LOX_DEBLOCK(vexo_dbf8x8_h263_hor),
    LOX_DEBLOCK(vexo_dbf8x8_h263_ver),
    {"mlox_blk_mcpy",
     [](Extent e, int32_t stride) {
       mlox_blk_mcpy(nullptr, nullptr, stride, stride, e.width, e.height);
     }},
    {"vexo_csc_8b8b_unpck",
     [](Extent e, int32_t stride) {
       vexo_csc_8b8b_unpck(nullptr, e.width, e.height, stride, stride, stride,
                           nullptr, nullptr);
     }},
    {"vexo_csc_8b8b_pck",
     [](Extent e, int32_t stride) {
       vexo_csc_8b8b_pck(nullptr, nullptr, e.width, e.height, stride, stride,
                         stride, nullptr);
     }},
    {"vexo_csc_8b8b8b8b_unpack",
     [](Extent e, int32_t s) {
       vexo_csc_8b8b8b8b_unpack(nullptr, e.width, e.height, s, s, s, s, s,
                                nullptr, nullptr, nullptr, nullptr);
     }},
    {"vexo_csc_8b8b8b8b_pack",
     [](Extent e, int32_t s) {
       vexo_csc_8b8b8b8b_pack(nullptr, e.width, e.height, s, s, s, s, s,
                              nullptr, nullptr, nullptr, nullptr);
     }},
    {"vexo_csc_unpack_16x8tiles_to_linear",
     [](Extent e, int32_t stride) {
       vexo_csc_unpack_16x8tiles_to_linear(nullptr, e.width, e.height, stride,
                                           nullptr, stride, nullptr);
     }},
    {"vexo_rsz_8b_org",
     [](Extent e, int32_t stride) {
       vexo_rsz_8b_org(nullptr, stride, e.width, e.height, stride, nullptr,
                       3 << 20, 3 << 20);
     }},
    {"vexo_fpa_frm_pack",
     [](Extent e, int32_t stride) {
       vexo_fpa_frm_pack(nullptr, nullptr, nullptr, e.height, e.width, stride,
                         stride);
     }},
    {"detail_enh",
     [](Extent e, int32_t) {
       detail_enh(nullptr, e.width, e.height, nullptr, 4);
     }},
    {"Analyze_SrcLuma",
     [](Extent e, int32_t) { Analyze_SrcLuma(e.width, e.height, nullptr); }},
    {"images", of_image([](vexo_img &img) {
       vexo_cpy(&img, &img);
       vexo_crop(&img, &img);
       vexo_rsz(&img, &img);
       for (uint32_t r = 0; r < 6; ++r) {
         vexo_rot(&img, r, &img);
         vexo_rsz_rot(&img, r, &img);
       }
       vexo_vqe_cs(&img, &img);
       vexo_vqe_de(&img, &img, 1);
       vexo_dbf8x8_yuv(&img, 9);
     })},
    {"padding", of_image([](vexo_img &img) {
       const vexo_img buffer = {};
       vexo_padding(&img, &buffer);
     })},
    {"anaglyphs", of_image([](vexo_img &img) {
       vexo_img half = img;
       half.width[0] = img.width[0] / 2;
       img.width[0] = 2 * half.width[0];
       img.stride[0] =
           static_cast<int32_t>(3U * static_cast<uint32_t>(img.width[0]));
       half.stride[0] = img.stride[0] / 2;
       vexo_fpa(&img, &half, 1);
       vexo_fpa(&img, &half, 2);
     })},
};

TEST(Empty, EndsAtOnceAndTouchesNothing) {
  std::vector<std::pair<std::string, Call>> calls = kOthers;
  for_each_kernel([&](const char *name, auto *kernel) {
    calls.emplace_back(name, call_of(kernel));
  });
  EXPECT_GT(calls.size(), 300U);
  for (const auto &[name, call] : calls) {
    SCOPED_TRACE(name);
    const std::clock_t start = std::clock();
    for (const Extent &e : kExtents) {
      for (const int32_t stride : {16, -16}) call(e, stride);
    }
    // What the processor did: machines may be busy.
    EXPECT_LT(std::clock() - start, CLOCKS_PER_SEC) << name;
  }
}

// Tone mapping chooses a luminance all the same, and starts no thread.
TEST(Empty, ToneMappingStillChoosesALuminance) {
  for (const Extent &e : kExtents) {
    vexo_img img = {};
    img.format = VEXO_FMT_P010LE;
    img.width[0] = e.width;
    img.height[0] = e.height;
    img.mode = VEXO_HDR_MODE_MEASURE;
    EXPECT_EQ(vexo_hdr10_to_sdr8(&img, &img, 0), VEXO_OK);
    EXPECT_EQ(img.source_nit, 1000);
    EXPECT_EQ(vexo_hlg_to_sdr8(&img, &img), VEXO_OK);
  }
}

// One row over and over, and a destination whose bands all begin at its start.
TEST(Tallest, ToneMappingEndsWithTheLastBand) {
  uint16_t sample[2] = {940, 512};
  uint8_t luma[4] = {};
  vexo_img src = {};
  src.format = VEXO_FMT_YUV420PLANAR16;
  src.width[0] = 1;
  src.height[0] = INT32_MAX;
  src.plane[0] = reinterpret_cast<uint8_t *>(&sample[0]);
  src.plane[1] = src.plane[2] = reinterpret_cast<uint8_t *>(&sample[1]);
  vexo_img dst = {};
  dst.plane[0] = luma;
  EXPECT_EQ(vexo_hdr10_to_sdr8(&src, &dst, 0), VEXO_OK);
  for (const uint8_t y : luma) EXPECT_EQ(y, luma[0]);
  EXPECT_GT(luma[0], 200);
}

}  // namespace
}  // namespace lox_test
