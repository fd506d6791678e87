// SPDX-License-Identifier: Apache-2.0
//
// What becomes of frames: the bytes that the library's calls give, whatever the
// strides, crops and numbers of threads.
#include <algorithm>

#include "gst_test.h"

namespace gst_test {
namespace {

// A frame of noise; with `padding` between rows, planes and around the picture,
// which crop metadata then cuts out.
Buffer frame(const GstVideoInfo &info, int padding, uint64_t seed) {
  if (padding == 0) return noise(info, seed);
  GstVideoInfo large;
  gst_video_info_set_format(&large, GST_VIDEO_INFO_FORMAT(&info),
                            static_cast<guint>(info.width + 3 * padding),
                            static_cast<guint>(info.height + 3 * padding));
  gsize offsets[4];
  gint strides[4];
  gsize size = 32;
  for (guint p = 0; p < GST_VIDEO_INFO_N_PLANES(&large); ++p) {
    strides[p] = large.stride[p] + 16 * (static_cast<int>(p) + 1);
    offsets[p] = size;
    size +=
        static_cast<gsize>(strides[p]) * static_cast<gsize>(large.height) + 8;
  }
  large.size = size;
  Buffer buffer = noise(large, seed);
  gst_buffer_add_video_meta_full(
      buffer.get(), GST_VIDEO_FRAME_FLAG_NONE, GST_VIDEO_INFO_FORMAT(&large),
      static_cast<guint>(large.width), static_cast<guint>(large.height),
      GST_VIDEO_INFO_N_PLANES(&large), offsets, strides);
  GstVideoCropMeta *crop = gst_buffer_add_video_crop_meta(buffer.get());
  crop->x = crop->y = static_cast<guint>(padding);
  crop->width = static_cast<guint>(info.width);
  crop->height = static_cast<guint>(info.height);
  return buffer;
}

// The same without metadata: what was cut out, in rows of its own.
Buffer cut(const GstVideoInfo &info, GstBuffer *buffer) {
  const GstVideoCropMeta *crop = gst_buffer_get_video_crop_meta(buffer);
  Buffer result(gst_buffer_new_allocate(nullptr, info.size, nullptr));
  GstVideoFrame from;
  GstVideoFrame to;
  gst_video_frame_map(&from, &info, buffer, GST_MAP_READ);
  gst_video_frame_map(&to, &info, result.get(), GST_MAP_WRITE);
  vexo_img dense;
  const int32_t format = ours(GST_VIDEO_INFO_FORMAT(&info));
  vexo_picture_geometry(&dense, format, info.width, info.height, 1);
  for (int32_t p = 0; p < vexo_format_planes(format); ++p) {
    const int x = static_cast<int>(crop->x) >>
                  (p == 0 ? 0 : GST_VIDEO_FORMAT_INFO_W_SUB(info.finfo, 1));
    const int y = static_cast<int>(crop->y) >>
                  (p == 0 ? 0 : GST_VIDEO_FORMAT_INFO_H_SUB(info.finfo, 1));
    for (int32_t row = 0; row < dense.height[p]; ++row) {
      memcpy(static_cast<uint8_t *>(GST_VIDEO_FRAME_PLANE_DATA(&to, p)) +
                 row * GST_VIDEO_FRAME_PLANE_STRIDE(&to, p),
             static_cast<uint8_t *>(GST_VIDEO_FRAME_PLANE_DATA(&from, p)) +
                 (y + row) * GST_VIDEO_FRAME_PLANE_STRIDE(&from, p) +
                 x * vexo_format_sample_bytes(format, p),
             static_cast<size_t>(dense.stride[p]));
    }
  }
  gst_video_frame_unmap(&from);
  gst_video_frame_unmap(&to);
  return result;
}

TEST(Convert, IsWhatTheLibraryMakes) {
  static const char *const directions[] = {"identity", "90l",   "90r",
                                           "180",      "horiz", "vert"};
  static const char *const methods[] = {"bilinear", "bilinear64", "lanczos"};
  lox_test::Random random(1);
  int done = 0;
  int changed = 0;
  for (int i = 0; i < 2500; ++i) {
    const auto pick = [&](const auto &list) {
      return list[random.between(0, static_cast<int>(std::size(list)) - 1)];
    };
    const Format from = pick(kFormats);
    const Format to = pick(kFormats);
    const Colours in_colours = pick(kColours);
    const Colours out_colours =
        random.between(0, 2) ? in_colours : pick(kColours);
    const int rotation = random.between(0, 1) ? random.between(0, 5) : 0;
    const bool quarter = rotation == VEXO_ROT_90L || rotation == VEXO_ROT_90R;
    const int w = random.between(1, 70);
    const int h = random.between(1, 70);
    const bool scales = random.between(0, 1) != 0;
    const int out_w = scales ? random.between(1, 70) : quarter ? h : w;
    const int out_h = scales ? random.between(1, 70) : quarter ? w : h;
    const int padding = 2 * random.between(0, 2);
    const Site site = pick(kSites);
    const bool linear = random.between(0, 1) != 0;
    const bool dithers = random.between(0, 3) == 0;
    const std::string plain_in = caps_text(from.theirs, w, h, in_colours);
    const std::string in =
        plain_in +
        (is_yuv(from.theirs) ? std::string(", chroma-site=") + site.name : "");
    const std::string out = caps_text(to.theirs, out_w, out_h, out_colours);
    const int method = std::max(random.between(-2, 2), 0);
    const std::string launch =
        std::string("vexoconvert add-borders=false method=") + methods[method] +
        (linear ? " chroma-resampler=linear" : "") +
        (dithers ? " dither=bayer" : "") +
        " video-direction=" + directions[rotation] +
        " n-threads=" + std::to_string(random.between(1, 4));
    SCOPED_TRACE(launch + ": " + in + " to " + out);

    const int32_t in_std = is_yuv(from.theirs) ? in_colours.standard : 0;
    const int32_t out_std = is_yuv(to.theirs) ? out_colours.standard : 0;
    const GstVideoInfo in_info = info_of(in);
    const Buffer buffer = frame(in_info, padding, static_cast<uint64_t>(i));
    const Buffer plain = padding == 0 ? Buffer(gst_buffer_ref(buffer.get()))
                                      : cut(in_info, buffer.get());
    const Picture src(in_info, plain.get(), in_std);
    const Own expected(to.ours, out_w, out_h, out_std);
    vexo_picture_options options = {};
    options.rotation = rotation;
    options.mode = method == 1 ? VEXO_MODE_MOD1 : 0;
    options.filter = method == 2 ? VEXO_FILTER_LANCZOS : VEXO_FILTER_PLAIN;
    options.chroma = linear ? site.chroma : VEXO_CHROMA_AS_IT_IS;
    options.dither = dithers ? 1 : 0;
    const auto library = [&](int32_t standard) {
      const Own made(to.ours, out_w, out_h, standard);
      return vexo_picture_scale(nullptr, &src.img, &made, &options) == VEXO_OK;
    };
    // What it does not make is made of what it does.
    const int32_t via = library(out_std)      ? out_std
                        : !is_yuv(to.theirs)  ? -1
                        : is_yuv(from.theirs) ? in_std
                                              : out_std % 2;
    const bool served = via >= 0 && library(via);
    if (served) {
      vexo_img made = expected;
      made.color_std = via;
      ASSERT_EQ(vexo_picture_scale(nullptr, &src.img, &made, &options),
                VEXO_OK);
    }
    if (from.theirs != to.theirs && has_alpha(to.theirs) && from.ours >= 500 &&
        from.ours < 600 && !has_alpha(from.theirs)) {
      const int alpha = to.ours < VEXO_FMT_ARGB8888 ? 3 : 0;
      for (int y = 0; y < out_h; ++y) {
        for (int x = 0; x < out_w; ++x) {
          expected.plane[0][y * expected.stride[0] + 4 * x + alpha] = 255;
        }
      }
    }

    Harness harness(launch);
    ASSERT_EQ(harness.negotiate(in, "video/x-raw, " + out), served);
    if (!served) continue;
    ++done;
    ASSERT_EQ(gst_harness_push(harness.h, gst_buffer_ref(buffer.get())),
              GST_FLOW_OK);
    const Buffer result(gst_harness_pull(harness.h));
    if (plain_in == out && rotation == 0) {  // passed on, crop and all
      ASSERT_EQ(result.get(), buffer.get());
      continue;
    }
    ASSERT_EQ(gst_buffer_get_video_crop_meta(result.get()), nullptr);
    const Picture got(info_of(out), result.get(), 0);
    if (via != out_std) {
      ++changed;
      expect_changed(expected, via, got, out_std);
      if (HasFatalFailure()) return;
      continue;
    }
    ASSERT_TRUE(bytes_of(got.img) == bytes_of(expected));
  }
  EXPECT_GT(done, 1300);
  EXPECT_GT(changed, 100);
}

// Where pixel (x, y) of W by H goes, as GStreamer names directions.
struct Place {
  int x, y;
};
Place place_of(const std::string &direction, int x, int y, int w, int h) {
  if (direction == "90r") return {h - 1 - y, x};
  if (direction == "90l") return {y, w - 1 - x};
  if (direction == "180") return {w - 1 - x, h - 1 - y};
  if (direction == "horiz") return {w - 1 - x, y};
  if (direction == "vert") return {x, h - 1 - y};
  if (direction == "ul-lr") return {y, x};
  if (direction == "ur-ll") return {h - 1 - y, w - 1 - x};
  return {x, y};
}

void expect_turned(const Harness &harness, GstBuffer *in, int w, int h,
                   const std::string &direction) {
  const Place last = place_of(direction, w - 1, h - 1, w, h);
  const Place first = place_of(direction, 0, 0, w, h);
  const int out_w = std::max(last.x, first.x) + 1;
  const int out_h = std::max(last.y, first.y) + 1;
  ASSERT_EQ(gst_harness_push(harness.h, gst_buffer_ref(in)), GST_FLOW_OK);
  const Buffer out(gst_harness_pull(harness.h));
  const Picture from(info_of("format=RGBA" + size_of(w, h)), in, 0);
  const Picture to(info_of("format=RGBA" + size_of(out_w, out_h)), out.get(),
                   0);
  for (int y = 0; y < h; ++y) {
    for (int x = 0; x < w; ++x) {
      const Place at = place_of(direction, x, y, w, h);
      ASSERT_EQ(memcmp(from.img.plane[0] + y * from.img.stride[0] + 4 * x,
                       to.img.plane[0] + at.y * to.img.stride[0] + 4 * at.x, 4),
                0)
          << direction << " " << x << " " << y;
    }
  }
}

// The same harness goes through all directions, by property and by tag, with a
// new size and a flush between: what is negotiated in mid-stream.
TEST(Convert, TurnsByPropertyAndTag) {
  static const char *const tags[][2] = {
      {"rotate-0", "identity"},    {"rotate-90", "90r"},
      {"rotate-180", "180"},       {"rotate-270", "90l"},
      {"flip-rotate-0", "horiz"},  {"flip-rotate-90", "ur-ll"},
      {"flip-rotate-180", "vert"}, {"flip-rotate-270", "ul-lr"}};
  Harness harness("vexoconvert name=c");
  GstElement *const element = harness.element("c");
  for (int i = 0; i < 16; ++i) {
    const char *const *tag = tags[i % 8];
    // Of a square nothing is negotiated anew.
    const int w = i % 8 < 4 ? 5 : 7;
    const int h = i % 8 < 4 ? 12 : 7;
    const std::string caps = "format=RGBA" + size_of(w, h);
    if (i == 12) {
      gst_harness_push_event(harness.h, gst_event_new_flush_start());
      gst_harness_push_event(harness.h, gst_event_new_flush_stop(TRUE));
    }
    if (i % 4 == 0) {
      ASSERT_TRUE(harness.negotiate(caps, "video/x-raw"));
    }
    if (i <= 8) {
      gst_util_set_object_arg(G_OBJECT(element), "video-direction",
                              i < 8 ? tag[1] : "auto");
    }
    if (i >= 8) {
      gst_harness_push_event(harness.h,
                             gst_event_new_tag(gst_tag_list_new(
                                 GST_TAG_IMAGE_ORIENTATION, tag[0], nullptr)));
    }
    const Buffer in = noise(info_of(caps), static_cast<uint64_t>(i));
    expect_turned(harness, in.get(), w, h, tag[1]);
    if (i < 8) continue;
    // What comes behind is told that the picture is upright.
    GstEvent *event = nullptr;
    gchar *left = nullptr;
    while ((event = gst_harness_try_pull_event(harness.h)) != nullptr) {
      GstTagList *list = nullptr;
      if (GST_EVENT_TYPE(event) == GST_EVENT_TAG) {
        gst_event_parse_tag(event, &list);
        g_free(left);
        left = nullptr;
        gst_tag_list_get_string(list, GST_TAG_IMAGE_ORIENTATION, &left);
      }
      gst_event_unref(event);
    }
    EXPECT_STREQ(left, "rotate-0");
    g_free(left);
  }
}

// Fields are pictures of their own, and what is not picture is black.
TEST(Convert, FieldsAndBorders) {
  const std::string in = "format=NV12, colorimetry=bt601" + size_of(32, 16);
  const GstVideoInfo info = info_of(in);
  const Buffer buffer = noise(info, 9);
  const Picture src(info, buffer.get(), 0);
  const auto run = [&](const std::string &from, const std::string &to) {
    Harness harness("vexoconvert n-threads=2");
    EXPECT_TRUE(harness.negotiate(from, "video/x-raw, " + to)) << to;
    EXPECT_EQ(gst_harness_push(harness.h, gst_buffer_ref(buffer.get())),
              GST_FLOW_OK);
    return Buffer(gst_harness_pull(harness.h));
  };
  const Buffer fields =
      run(in + ", interlace-mode=interleaved", "format=BGRA" + size_of(32, 8));
  const Picture woven(info_of("format=BGRA" + size_of(32, 8)), fields.get(), 0);
  for (int f = 0; f < 2; ++f) {
    vexo_img half = {};
    uint8_t *const planes[] = {src.img.plane[0] + f * src.img.stride[0],
                               src.img.plane[1] + f * src.img.stride[1]};
    const int32_t strides[] = {2 * src.img.stride[0], 2 * src.img.stride[1]};
    vexo_picture_wrap(&half, VEXO_FMT_NV12, 32, 8, planes, strides);
    const Own expected(VEXO_FMT_BGRA8888, 32, 4, 0);
    ASSERT_EQ(vexo_picture_scale(nullptr, &half, &expected, nullptr), VEXO_OK);
    for (int y = 0; y < 4; ++y) {
      EXPECT_EQ(memcmp(woven.img.plane[0] + (2 * y + f) * woven.img.stride[0],
                       expected.plane[0] + y * expected.stride[0], 128),
                0);
    }
  }
  // 2:1 in 1:1: a quarter of black above and below. 2:1 in 4:1: at the sides.
  for (const bool sides : {false, true}) {
    const int w = sides ? 128 : 32;
    for (const Format &to : kFormats) {
      if (to.ours >= 600 || to.ours == VEXO_FMT_YUV400) continue;
      const std::string out = caps_text(to.theirs, w, 32, kColours[0]);
      const Buffer result = run(in + ", pixel-aspect-ratio=1/1", out);
      const Picture got(info_of(out), result.get(), 0);
      // Black again as RGB, where it lies.
      const Own rgb(VEXO_FMT_RGB888, w, 32, 0);
      ASSERT_EQ(vexo_picture_convert(nullptr, &got.img, &rgb, nullptr),
                VEXO_OK);
      const Own inner(to.ours, sides ? 64 : 32, sides ? 32 : 16, 0);
      ASSERT_EQ(vexo_picture_scale(nullptr, &src.img, &inner, nullptr),
                VEXO_OK);
      const Own inner_rgb(VEXO_FMT_RGB888, inner.width[0], inner.height[0], 0);
      ASSERT_EQ(vexo_picture_convert(nullptr, &inner, &inner_rgb, nullptr),
                VEXO_OK);
      for (int y = 0; y < 32; ++y) {
        for (int x = 0; x < w; ++x) {
          const int ix = sides ? x - 32 : x;
          const int iy = sides ? y : y - 8;
          const uint8_t black[3] = {};
          const bool inside =
              ix >= 0 && iy >= 0 && ix < inner.width[0] && iy < inner.height[0];
          const uint8_t *const pixel = rgb.plane[0] + y * rgb.stride[0] + 3 * x;
          ASSERT_EQ(memcmp(pixel,
                           inside ? inner_rgb.plane[0] +
                                        iy * inner_rgb.stride[0] + 3 * ix
                                  : black,
                           3),
                    0)
              << out << " " << x << " " << y;
        }
      }
    }
  }
}

}  // namespace
}  // namespace gst_test
