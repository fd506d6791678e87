// SPDX-License-Identifier: Apache-2.0
//
// What colours and chroma sites mean, worked out here or by GStreamer's own
// elements.
#include <algorithm>

#include "gst_test.h"

namespace gst_test {
namespace {

// Red, green and blue of what luma and two differences say, and back, in
// numbers without bounds.
struct Primaries {
  double red, blue;

  explicit Primaries(int32_t standard)
      : red(standard < 10   ? 0.299
            : standard < 20 ? 0.2126
                            : 0.2627),
        blue(standard < 10   ? 0.114
             : standard < 20 ? 0.0722
                             : 0.0593) {}
  double green() const { return 1 - red - blue; }
};
void change_standard(int32_t from, int32_t to, double c[3]) {
  const Primaries a(from);
  const Primaries b(to);
  const double r = c[0] + 2 * (1 - a.red) * c[2];
  const double l = c[0] + 2 * (1 - a.blue) * c[1];
  const double g = (c[0] - a.red * r - a.blue * l) / a.green();
  c[0] = b.red * r + b.green() * g + b.blue * l;
  c[1] = (l - c[0]) / (2 * (1 - b.blue));
  c[2] = (r - c[0]) / (2 * (1 - b.red));
}

}  // namespace

void expect_changed(const vexo_img &img, int32_t from, const Picture &got,
                    int32_t to) {
  const GstVideoFormatInfo *const f = got.frame.info.finfo;
  const int bits = GST_VIDEO_FORMAT_INFO_DEPTH(f, 0);
  const double step = 1 << (bits - 8);
  const double most = (1 << bits) - 1;
  const auto sample = [&](const vexo_img &of, int c, int x, int y) {
    const auto p = GST_VIDEO_FORMAT_INFO_PLANE(f, c);
    const uint8_t *const at =
        of.plane[p] +
        (y >> GST_VIDEO_FORMAT_INFO_H_SUB(f, c)) * ptrdiff_t{of.stride[p]} +
        (bits > 8 && GST_VIDEO_FORMAT_INFO_POFFSET(f, c) > 0
             ? 2  // GStreamer 1.22 says 1
             : GST_VIDEO_FORMAT_INFO_POFFSET(f, c)) +
        (x >> GST_VIDEO_FORMAT_INFO_W_SUB(f, c)) *
            GST_VIDEO_FORMAT_INFO_PSTRIDE(f, c);
    return bits == 8
               ? at[0]
               : (at[0] | at[1] << 8) >> GST_VIDEO_FORMAT_INFO_SHIFT(f, c) &
                     1023;
  };
  const auto zero = [&](int32_t standard, int c) {
    return step * (c > 0 ? 128 : standard % 2 != 0 ? 0 : 16);
  };
  const auto span = [&](int32_t standard, int c) {
    return standard % 2 != 0 ? most : step * (c > 0 ? 224 : 219);
  };
  for (int y = 0; y < img.height[0]; ++y) {
    for (int x = 0; x < img.width[0]; ++x) {
      double colours[3];
      for (int c = 0; c < 3; ++c) {
        colours[c] = (sample(img, c, x, y) - zero(from, c)) / span(from, c);
      }
      change_standard(from, to, colours);
      for (int c = 0; c < 3; ++c) {
        const double exact = colours[c] * span(to, c) + zero(to, c);
        ASSERT_NEAR(sample(got.img, c, x, y), std::clamp(exact, 0.0, most), 0.6)
            << x << " " << y << " " << c;
      }
    }
  }
}

namespace {

// Chroma that grows evenly from pixel to pixel is what each of them gets, if it
// lies where the caps say that it does: half a pixel beside that is three steps
// of red or blue.
TEST(Convert, InterpolatesBySite) {
  constexpr int kSize = 32;
  constexpr int kSlope = 4;
  constexpr double kMiddle = kSize / 2.0;
  for (const Site &site : kSites) {
    const double left = site.chroma == VEXO_CHROMA_LEFT ? 0 : 0.5;
    // There is no interpolation for the upper row: it is half a pixel off.
    const double top = strstr(site.name, "co") != nullptr ? 0 : 0.5;
    for (const char *const format : {"I420", "NV12", "Y42B", "I420_10LE"}) {
      const std::string in =
          std::string("format=") + format +
          ", colorimetry=(string)1:4:16:4, chroma-site=" + site.name +
          size_of(kSize, kSize);
      const GstVideoInfo info = info_of(in);
      const Buffer buffer = noise(info, 0);
      GstVideoFrame frame;
      ASSERT_TRUE(
          gst_video_frame_map(&frame, &info, buffer.get(), GST_MAP_WRITE));
      const int scale = GST_VIDEO_FRAME_COMP_DEPTH(&frame, 0) == 10 ? 4 : 1;
      const bool rows = GST_VIDEO_FORMAT_INFO_H_SUB(info.finfo, 1) != 0;
      for (int c = 0; c < 3; ++c) {
        for (int y = 0; y < GST_VIDEO_FRAME_COMP_HEIGHT(&frame, c); ++y) {
          for (int x = 0; x < GST_VIDEO_FRAME_COMP_WIDTH(&frame, c); ++x) {
            const double at = c == 1 ? 2 * x + left : rows ? 2 * y + top : y;
            const int value =
                scale *
                (128 +
                 (c == 0 ? 0 : static_cast<int>(kSlope * (at - kMiddle))));
            uint8_t *const sample =
                static_cast<uint8_t *>(GST_VIDEO_FRAME_COMP_DATA(&frame, c)) +
                y * GST_VIDEO_FRAME_COMP_STRIDE(&frame, c) +
                x * GST_VIDEO_FRAME_COMP_PSTRIDE(&frame, c);
            sample[0] = static_cast<uint8_t>(value);
            if (scale > 1) sample[1] = static_cast<uint8_t>(value >> 8);
          }
        }
      }
      gst_video_frame_unmap(&frame);
      for (const char *const launch :
           {"n-threads=1", "n-threads=3", "video-direction=180"}) {
        SCOPED_TRACE(in + " " + launch);
        Harness harness(std::string("vexoconvert chroma-resampler=linear ") +
                        launch);
        const std::string out = "format=RGBA" + size_of(kSize, kSize);
        ASSERT_TRUE(harness.negotiate(in, "video/x-raw, " + out));
        ASSERT_EQ(gst_harness_push(harness.h, gst_buffer_ref(buffer.get())),
                  GST_FLOW_OK);
        const Buffer result(gst_harness_pull(harness.h));
        const Picture got(info_of(out), result.get(), 0);
        // At the edges samples are repeated.
        for (int y = 2; y < kSize - 2; ++y) {
          for (int x = 2; x < kSize - 2; ++x) {
            const bool turned = strstr(launch, "180") != nullptr;
            const uint8_t *const pixel =
                got.img.plane[0] +
                (turned ? kSize - 1 - y : y) * got.img.stride[0] +
                4 * (turned ? kSize - 1 - x : x);
            const double off = rows && top == 0 ? 0.5 : 0;
            ASSERT_NEAR(pixel[0], 128 + 1.402 * kSlope * (y - kMiddle),
                        1.5 + 1.402 * kSlope * off)
                << x << " " << y;
            ASSERT_NEAR(pixel[2], 128 + 1.772 * kSlope * (x - kMiddle), 1.5)
                << x << " " << y;
          }
        }
      }
    }
  }
}

// Layouts and colours mean what they mean elsewhere in GStreamer.
TEST(Convert, AgreesWithVideoconvert) {
  constexpr int kWidth = 64;
  constexpr int kHeight = 48;
  const std::string rgba = "format=RGBA" + size_of(kWidth, kHeight);
  const GstVideoInfo info = info_of(rgba);
  Buffer ramp = noise(info, 0);
  GstMapInfo map;
  gst_buffer_map(ramp.get(), &map, GST_MAP_WRITE);
  for (int i = 0; i < kWidth * kHeight; ++i) {
    const int x = i % kWidth;
    const int y = i / kWidth;
    const int pixel[] = {40 + 2 * x, 30 + 4 * y, 220 - x - 2 * y, 255};
    for (int c = 0; c < 4; ++c)
      map.data[4 * i + c] = static_cast<uint8_t>(pixel[c]);
  }
  gst_buffer_unmap(ramp.get(), &map);
  const auto run = [&](const std::string &launch) {
    Harness harness(launch);
    EXPECT_TRUE(harness.negotiate(rgba, "video/x-raw, " + rgba)) << launch;
    EXPECT_EQ(gst_harness_push(harness.h, gst_buffer_ref(ramp.get())),
              GST_FLOW_OK);
    const Buffer result(gst_harness_pull(harness.h));
    const Picture picture(info, result.get(), 0);
    return bytes_of(picture.img);
  };
  for (const Format &format : kFormats) {
    for (const Colours &colours : kColours) {
      if (!is_yuv(format.theirs) && &colours != kColours) continue;
      const std::string way =
          " ! video/x-raw, " +
          caps_text(format.theirs, kWidth, kHeight, colours) + " ! ";
      const std::string theirs =
          run("videoconvert dither=none" + way + "videoconvert dither=none");
      const auto near = [&](const std::string &launch) {
        const std::string got = run(launch);
        double sum = 0;
        for (size_t i = 0; i < got.size(); ++i) {
          sum += std::abs(static_cast<uint8_t>(got[i]) -
                          static_cast<uint8_t>(theirs[i]));
        }
        EXPECT_LT(sum / static_cast<double>(got.size()), 3) << launch;
      };
      near("videoconvert dither=none" + way + "vexoconvert");
      // Of limited BT.709 luma made of RGB is another's.
      const bool made =
          format.ours != VEXO_FMT_YUV400 && format.ours < 600 &&
          (!is_yuv(format.theirs) || colours.standard != VEXO_STD_BT709);
      if (made) near("vexoconvert" + way + "videoconvert dither=none");
    }
  }
}

}  // namespace
}  // namespace gst_test
