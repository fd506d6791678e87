// SPDX-License-Identifier: Apache-2.0
//
// Elements in harnesses: frames of noise in, pictures out.
#pragma once

#include <gst/check/gstharness.h>
#include <gst/video/gstvideometa.h>
#include <gst/video/navigation.h>
#include <gst/video/video.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "orumlox/orumlox.h"
#include "support/generator.h"

namespace gst_test {

struct Harness {
  explicit Harness(const std::string &launch)
      : h(gst_harness_new_parse(launch.c_str())) {}
  ~Harness() { gst_harness_teardown(h); }
  Harness(const Harness &) = delete;
  Harness &operator=(const Harness &) = delete;

  // Whether the element takes these caps when these may follow.
  bool negotiate(const std::string &in, const std::string &out) {
    gst_harness_set_sink_caps_str(h, out.c_str());
    GstCaps *caps = caps_of("video/x-raw, framerate=25/1, " + in);
    gst_harness_push_event(h, gst_event_new_caps(caps));
    gst_caps_unref(caps);
    GstSegment segment;
    gst_segment_init(&segment, GST_FORMAT_TIME);
    gst_harness_push_event(h, gst_event_new_segment(&segment));
    GstCaps *got = gst_pad_get_current_caps(h->sinkpad);
    if (got != nullptr) gst_caps_unref(got);
    return got != nullptr;
  }
  static GstCaps *caps_of(const std::string &text) {
    return gst_caps_from_string(text.c_str());
  }
  GstElement *element(const char *name) const {
    GstElement *found = gst_bin_get_by_name(GST_BIN(h->element), name);
    gst_object_unref(found);
    return found;
  }

  GstHarness *h;
};

struct BufferDeleter {
  void operator()(GstBuffer *b) const { gst_buffer_unref(b); }
};
using Buffer = std::unique_ptr<GstBuffer, BufferDeleter>;

inline GstVideoInfo info_of(const std::string &caps) {
  GstVideoInfo info;
  GstCaps *c = Harness::caps_of("video/x-raw, framerate=25/1, " + caps);
  EXPECT_TRUE(gst_video_info_from_caps(&info, c)) << caps;
  gst_caps_unref(c);
  return info;
}

inline Buffer noise(const GstVideoInfo &info, uint64_t seed) {
  Buffer buffer(gst_buffer_new_allocate(nullptr, info.size, nullptr));
  GstMapInfo map;
  gst_buffer_map(buffer.get(), &map, GST_MAP_WRITE);
  lox_test::Random(seed).fill(map.data, map.size);
  gst_buffer_unmap(buffer.get(), &map);
  return buffer;
}

struct Format {
  GstVideoFormat theirs;
  int32_t ours;
};
inline constexpr Format kFormats[] = {
    {GST_VIDEO_FORMAT_GRAY8, VEXO_FMT_YUV400},
    {GST_VIDEO_FORMAT_I420, VEXO_FMT_YUV420},
    {GST_VIDEO_FORMAT_Y42B, VEXO_FMT_YUV422N},
    {GST_VIDEO_FORMAT_Y444, VEXO_FMT_YUV444},
    {GST_VIDEO_FORMAT_YV12, VEXO_FMT_YV12},
    {GST_VIDEO_FORMAT_NV12, VEXO_FMT_NV12},
    {GST_VIDEO_FORMAT_NV21, VEXO_FMT_NV21},
    {GST_VIDEO_FORMAT_UYVY, VEXO_FMT_UYVY},
    {GST_VIDEO_FORMAT_YUY2, VEXO_FMT_YUYV},
    {GST_VIDEO_FORMAT_RGB16, VEXO_FMT_RGB565},
    {GST_VIDEO_FORMAT_BGR16, VEXO_FMT_BGR565},
    {GST_VIDEO_FORMAT_RGB, VEXO_FMT_RGB888},
    {GST_VIDEO_FORMAT_BGR, VEXO_FMT_BGR888},
    {GST_VIDEO_FORMAT_RGBA, VEXO_FMT_RGBA8888},
    {GST_VIDEO_FORMAT_BGRA, VEXO_FMT_BGRA8888},
    {GST_VIDEO_FORMAT_ARGB, VEXO_FMT_ARGB8888},
    {GST_VIDEO_FORMAT_ABGR, VEXO_FMT_ABGR8888},
    {GST_VIDEO_FORMAT_RGBx, VEXO_FMT_RGBA8888},
    {GST_VIDEO_FORMAT_BGRx, VEXO_FMT_BGRA8888},
    {GST_VIDEO_FORMAT_xRGB, VEXO_FMT_ARGB8888},
    {GST_VIDEO_FORMAT_xBGR, VEXO_FMT_ABGR8888},
    {GST_VIDEO_FORMAT_I420_10LE, VEXO_FMT_YUV420PLANAR16},
    {GST_VIDEO_FORMAT_P010_10LE, VEXO_FMT_P010LE},
};
inline int32_t ours(GstVideoFormat format) {
  for (const Format &f : kFormats) {
    if (f.theirs == format) return f.ours;
  }
  return -1;
}

// A mapped buffer, and its planes as the library's.
struct Picture {
  Picture(const GstVideoInfo &info, GstBuffer *buffer, int32_t standard) {
    EXPECT_TRUE(gst_video_frame_map(&frame, &info, buffer, GST_MAP_READ));
    uint8_t *planes[4] = {};
    int32_t strides[4] = {};
    for (guint p = 0; p < GST_VIDEO_FRAME_N_PLANES(&frame); ++p) {
      planes[p] = static_cast<uint8_t *>(GST_VIDEO_FRAME_PLANE_DATA(&frame, p));
      strides[p] = GST_VIDEO_FRAME_PLANE_STRIDE(&frame, p);
    }
    EXPECT_EQ(vexo_picture_wrap(&img, ours(GST_VIDEO_INFO_FORMAT(&info)),
                                info.width, info.height, planes, strides),
              VEXO_OK);
    img.color_std = standard;
  }
  ~Picture() { gst_video_frame_unmap(&frame); }
  Picture(const Picture &) = delete;
  Picture &operator=(const Picture &) = delete;

  GstVideoFrame frame;
  vexo_img img;
};

struct Own : vexo_img {
  Own(int32_t format_code, int32_t w, int32_t h, int32_t standard)
      : vexo_img() {
    EXPECT_EQ(vexo_picture_alloc(this, format_code, w, h), VEXO_OK);
    color_std = standard;
  }
  ~Own() { vexo_picture_free(this); }
  Own(const Own &) = delete;
  Own &operator=(const Own &) = delete;
};

// The bytes of a picture's rows, without what lies between them.
inline std::string bytes_of(const vexo_img &img) {
  vexo_img dense;
  vexo_picture_geometry(&dense, img.format, img.width[0], img.height[0], 1);
  std::string bytes;
  for (int32_t p = 0; p < vexo_format_planes(img.format); ++p) {
    for (int32_t y = 0; y < dense.height[p]; ++y) {
      bytes.append(reinterpret_cast<const char *>(img.plane[p]) +
                       ptrdiff_t{y} * img.stride[p],
                   static_cast<size_t>(dense.stride[p]));
    }
  }
  return bytes;
}

inline std::string size_of(int width, int height) {
  return ", width=" + std::to_string(width) +
         ", height=" + std::to_string(height);
}

struct Colours {
  const char *name;
  int32_t standard;
};
inline constexpr Colours kColours[] = {
    {"bt601", VEXO_STD_DEFAULT}, {"1:4:16:4", VEXO_STD_BT601_FULL},
    {"bt709", VEXO_STD_BT709},   {"1:3:5:1", VEXO_STD_BT709_FULL},
    {"bt2020", VEXO_STD_BT2020}, {"1:6:11:7", VEXO_STD_BT2020_FULL}};
struct Site {
  const char *name;
  int32_t chroma;  // of vexo_picture_options, if it is interpolated
};
inline constexpr Site kSites[] = {{"mpeg2", VEXO_CHROMA_LEFT},
                                  {"cosited", VEXO_CHROMA_LEFT},
                                  {"jpeg", VEXO_CHROMA_CENTRE},
                                  {"v-cosited", VEXO_CHROMA_CENTRE}};

inline bool is_yuv(GstVideoFormat f) {
  return GST_VIDEO_FORMAT_INFO_IS_YUV(gst_video_format_get_info(f));
}
inline bool has_alpha(GstVideoFormat f) {
  return GST_VIDEO_FORMAT_INFO_HAS_ALPHA(gst_video_format_get_info(f));
}
inline std::string caps_text(GstVideoFormat f, int w, int h,
                             const Colours &colours) {
  std::string text = std::string("format=") + gst_video_format_to_string(f) +
                     size_of(w, h) + ", pixel-aspect-ratio=1/1";
  if (is_yuv(f)) text += std::string(", colorimetry=") + colours.name;
  return text;
}

// A picture that the element changed from another standard: sample by sample
// what that one's says, to the last bit.
void expect_changed(const vexo_img &img, int32_t from, const Picture &got,
                    int32_t to);

}  // namespace gst_test
