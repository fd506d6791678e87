// SPDX-License-Identifier: Apache-2.0
//
// What the elements negotiate, say and refuse; thumbnails and tone mapping.
#include "gst_test.h"

namespace gst_test {
namespace {

// What is chosen where the other side leaves something open, or null where the
// elements say that they do not do it.
struct Case {
  const char *launch, *in, *out, *chosen;
};
constexpr Case kCases[] = {
    // Proportions are kept, by size if it is free, else by the shape of pixels.
    {"vexoconvert", "format=NV12, width=1920, height=1080", "width=1280",
     "format=NV12, width=1280, height=720, pixel-aspect-ratio=1/1, "
     "colorimetry=bt709"},
    {"vexoconvert",
     "format=I420, width=720, height=576, pixel-aspect-ratio=16/15",
     "pixel-aspect-ratio=1/1", "width=768, height=576, colorimetry=bt601"},
    {"vexoconvert video-direction=90r", "format=RGB, width=640, height=360",
     "height=[1, 320]", "format=RGB, width=180, height=320"},
    {"vexoconvert", "format=RGB, width=640, height=360",
     "width=320, height=320", "pixel-aspect-ratio=16/9"},
    {"vexoconvert", "format=RGB, width=640, height=360",
     "width=[16, 64], height=[16, 99]", "width=64, height=36"},
    // The format that loses least.
    {"vexoconvert", "format=NV12, width=64, height=48",
     "format={RGB16, Y42B, RGBA, YV12}", "format=YV12"},
    {"vexoconvert", "format=RGBA, width=64, height=48",
     "format={I420, RGB16, BGRx, ABGR}", "format=ABGR"},
    {"vexoconvert",
     "format=P010_10LE, width=64, height=48, colorimetry=bt2100-pq",
     "format={RGBA, NV12, I420}", "format=NV12, colorimetry=bt2100-pq"},
    // Colours: as they were named, or as pictures of this height usually are.
    {"vexoconvert", "format=NV12, width=720, height=576, colorimetry=bt709",
     "format=I420, width=64, height=48", "colorimetry=bt709"},
    {"vexoconvert", "format=NV12, width=1920, height=1080, colorimetry=bt709",
     "format=RGBA", "colorimetry=1:1:5:1"},
    {"vexoconvert", "format=RGBA, width=1280, height=720, colorimetry=sRGB",
     "format=I420", "colorimetry=2:4:7:1"},
    {"vexoconvert", "format=RGBA, width=1280, height=720", "format=I420",
     "colorimetry=bt601"},
    {"vexoconvert", "format=I420, width=3840, height=2160", "format=RGBA",
     "format=RGBA"},
    {"vexoconvert", "format=NV12, width=64, height=48, colorimetry=bt709",
     "format=RGBA, colorimetry=sRGB", "colorimetry=sRGB"},
    {"vexoconvert", "format=NV12, width=64, height=48, colorimetry=bt709",
     "format=NV12, colorimetry={bt2020, bt601}", "colorimetry=bt601"},
    {"vexoconvert video-direction=horiz",
     "format=NV12, width=64, height=48, colorimetry=bt2020", "format=I420",
     "format=I420, colorimetry=bt2020"},
    // The matrix is undone, primaries stay, and are called otherwise only where
    // that is asked for.
    {"vexoconvert", "format=NV12, width=64, height=48, colorimetry=bt2020",
     "format=RGBA", "format=RGBA, colorimetry=1:1:11:7"},
    {"vexoconvert", "format=NV12, width=64, height=48, colorimetry=bt2020",
     "format=RGBA, colorimetry=sRGB", "colorimetry=sRGB"},
    {"vexoconvert", "format=NV12, width=64, height=48, colorimetry=1:6:11:7",
     "format=Y42B, colorimetry=bt709", "format=Y42B, colorimetry=bt709"},
    {"vexoconvert", "format=P010_10LE, width=64, height=48, colorimetry=bt2020",
     "format=I420, width=32, colorimetry={bt709, (string)2:3:11:7}",
     "format=I420, width=32, height=24, colorimetry=(string)2:3:11:7"},
    {"vexoconvert", "format=NV12, width=64, height=48, colorimetry=bt709",
     "format=NV12, colorimetry=bt2020", "format=NV12, colorimetry=bt2020"},
    {"vexoconvert", "format=RGB, width=64, height=48",
     "format=YUY2, colorimetry=(string)1:3:5:1",
     "format=YUY2, colorimetry=(string)1:3:5:1"},
    // Ten bits stay ten.
    {"vexoconvert", "format=P010_10LE, width=64, height=48, colorimetry=bt2020",
     "format=I420_10LE, colorimetry=bt601",
     "format=I420_10LE, colorimetry=bt601"},
    {"vexoconvert", "format=P010_10LE, width=64, height=48", "width=96",
     "format=P010_10LE, width=96, height=72"},
    {"vexoconvert video-direction=90l method=lanczos",
     "format=P010_10LE, width=64, height=48", "format=I420_10LE, height=32",
     "format=I420_10LE, width=24, height=32"},
    // What there is no arithmetic for.
    {"vexoconvert",
     "format=P010_10LE, width=64, height=48, colorimetry=bt2100-pq",
     "format=NV12, colorimetry=bt709", nullptr},
    {"vexoconvert", "format=NV12, width=64, height=48", "format=P010_10LE",
     nullptr},
    {"vexoconvert", "format=NV12, width=64, height=48, colorimetry=bt709",
     "format=NV12, colorimetry=bt2100-hlg", nullptr},
    {"vexoconvert", "format=RGBA, width=64, height=48",
     "format=I420, colorimetry=1:3:5:1", "format=I420, colorimetry=1:3:5:1"},
    {"vexoconvert", "format=RGBA, width=64, height=48, colorimetry=2:1:7:1",
     "format=I420", nullptr},
    {"vexoconvert", "format=RGBA, width=64, height=48", "format=GRAY8",
     nullptr},
    {"vexoconvert", "format=RGBA, width=64, height=48", "framerate=50/1",
     nullptr},
    // What is unknown passes, and is not turned.
    {"vexoconvert", "format=Y444_10LE, width=64, height=48", "width=64",
     "format=Y444_10LE"},
    {"vexoconvert", "format=Y444_10LE, width=64, height=48", "width=32",
     nullptr},
    {"vexoconvert video-direction=vert",
     "format=Y444_10LE, width=64, height=48", "width=64", nullptr},
    // Thumbnails are smaller.
    {"vexothumbnail", "format=NV12, width=640, height=480", "width=[1, 160]",
     "width=160, height=120"},
    {"vexothumbnail", "format=NV12, width=640, height=480", "width=[1, 999]",
     "width=640, height=480"},
    {"vexothumbnail", "format=NV12, width=640, height=480",
     "width=1280, height=720", nullptr},
    // Tone mapping names what it makes; all else passes.
    {"vexotonemap",
     "format=P010_10LE, width=64, height=48, colorimetry=bt2100-pq, "
     "content-light-level=(string)\"1000:400\"",
     "format={RGBA, BGRx}", "format=RGBA, colorimetry=sRGB"},
    {"vexotonemap",
     "format=I420_10LE, width=64, height=48, colorimetry=bt2100-hlg",
     "format=NV12", "colorimetry=bt709"},
    {"vexotonemap",
     "format=I420_10LE, width=64, height=48, colorimetry=bt2100-hlg",
     "format=I420_10LE", nullptr},
    {"vexotonemap", "format=NV12, width=64, height=48, colorimetry=bt709",
     "width=64", "format=NV12, colorimetry=bt709"},
};

TEST(Caps, AreChosenOrRefused) {
  for (const Case &c : kCases) {
    SCOPED_TRACE(std::string(c.launch) + ": " + c.in + " to " + c.out);
    Harness harness(c.launch);
    ASSERT_EQ(harness.negotiate(c.in, std::string("video/x-raw, ") + c.out),
              c.chosen != nullptr);
    if (c.chosen == nullptr) continue;
    GstCaps *got = gst_pad_get_current_caps(harness.h->sinkpad);
    GstCaps *chosen = Harness::caps_of(std::string("video/x-raw, ") + c.chosen);
    gchar *text = gst_caps_to_string(got);
    EXPECT_TRUE(gst_caps_is_subset(got, chosen)) << text;
    EXPECT_EQ(strstr(text, "content-light-level"), nullptr);
    g_free(text);
    gst_caps_unref(got);
    gst_caps_unref(chosen);
  }
}

// Caps say where chroma lies if that is known, and is not what everybody takes
// it for; what is asked for is refused where chroma would have to move.
TEST(Caps, SayWhereChromaLies) {
  static const char *const kNone = "";
  struct {
    const char *launch, *in, *out, *site;
  } const cases[] = {
      // Kept with all its samples.
      {"", "NV12, chroma-site=dv", "I420", "dv"},
      {"", "P010_10LE, chroma-site=cosited", "NV12", "cosited"},
      {"", "NV12", "I420", kNone},
      {"", "NV12, chroma-site=mpeg2", "I420, chroma-site=jpeg", nullptr},
      {"", "NV12, chroma-site=mpeg2", "I420, chroma-site=mpeg2", "mpeg2"},
      // Turned with the picture; on the right and below there is no word for
      // it.
      {"90r", "NV12, chroma-site=mpeg2", "NV12", "v-cosited"},
      {"90r", "NV12, chroma-site=mpeg2", "I420, chroma-site=mpeg2", nullptr},
      {"90l", "NV12, chroma-site=v-cosited", "NV12", "mpeg2"},
      {"ul-lr", "NV12, chroma-site=mpeg2", "NV12", "v-cosited"},
      {"ul-lr", "NV12, chroma-site=cosited", "NV12", "cosited"},
      {"vert", "NV12, chroma-site=mpeg2", "NV12", "mpeg2"},
      {"180", "NV12, chroma-site=jpeg", "NV12", "jpeg"},
      {"90l", "NV12, chroma-site=mpeg2", "NV12", kNone},
      {"horiz", "NV12, chroma-site=mpeg2", "NV12", kNone},
      {"ur-ll", "NV12, chroma-site=v-cosited", "NV12", kNone},
      {"90r", "Y42B, chroma-site=mpeg2", "Y42B", kNone},
      // Of denser chroma the left and upper sample, or the mean of two rows.
      {"", "RGBA", "NV12", "cosited"},
      {"", "RGBA", "YUY2", "mpeg2"},
      {"", "Y444", "I420", "cosited"},
      {"", "Y42B, chroma-site=jpeg", "I420", "v-cosited"},
      {"", "Y42B, chroma-site=mpeg2", "YV12", "cosited"},
      {"", "YUY2, chroma-site=mpeg2", "I420", "mpeg2"},
      {"180", "RGBA", "NV12", kNone},
      // Of thinner chroma its own, repeated.
      {"", "NV12, chroma-site=cosited", "UYVY", "mpeg2"},
      {"", "NV12, chroma-site=jpeg", "Y42B", "jpeg"},
      {"", "NV12, chroma-site=mpeg2", "Y444", kNone},
      {"", "GRAY8", "NV12", kNone},
      // By way of RGB, in which each pixel may have a chroma of its own.
      {"", "NV12, chroma-site=jpeg, colorimetry=bt709",
       "NV12, colorimetry=bt601", "jpeg"},
      {"linear", "NV12, chroma-site=jpeg, colorimetry=bt709",
       "NV12, colorimetry=bt601", "cosited"},
      {"linear", "NV12, chroma-site=jpeg, colorimetry=bt709",
       "NV12, colorimetry=bt2020", "jpeg"},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(std::string(c.launch) + " " + c.in + " to " + c.out);
    const bool linear = strcmp(c.launch, "linear") == 0;
    Harness harness(std::string("vexoconvert ") +
                    (linear ? "chroma-resampler=linear"
                     : c.launch[0] != 0
                         ? std::string("video-direction=") + c.launch
                         : ""));
    ASSERT_EQ(
        harness.negotiate(std::string("width=64, height=64, format=") + c.in,
                          std::string("video/x-raw, format=") + c.out),
        c.site != nullptr);
    if (c.site == nullptr) continue;
    GstCaps *got = gst_pad_get_current_caps(harness.h->sinkpad);
    const char *site =
        gst_structure_get_string(gst_caps_get_structure(got, 0), "chroma-site");
    EXPECT_STREQ(site == nullptr ? kNone : site, c.site);
    gst_caps_unref(got);
  }
  // Tone mapped chroma is that of one pixel of four.
  Harness harness("vexotonemap");
  ASSERT_TRUE(harness.negotiate(
      "format=P010_10LE, colorimetry=bt2100-pq, chroma-site=mpeg2" +
          size_of(64, 64),
      "video/x-raw, format=NV12"));
  GstCaps *got = gst_pad_get_current_caps(harness.h->sinkpad);
  EXPECT_STREQ(
      gst_structure_get_string(gst_caps_get_structure(got, 0), "chroma-site"),
      "cosited");
  gst_caps_unref(got);
}

// Upstream is told of pools, strides and crops; what says where something is in
// the picture is scaled with it, and dropped where that is not known.
TEST(Convert, MetadataAndPools) {
  for (const bool turned : {false, true}) {
    Harness harness(turned ? "vexoconvert video-direction=180" : "vexoconvert");
    const std::string in = "format=NV12" + size_of(64, 48);
    ASSERT_TRUE(harness.negotiate(in, "video/x-raw, width=32, height=24"));
    GstCaps *caps = gst_pad_get_current_caps(harness.h->srcpad);
    GstQuery *query = gst_query_new_allocation(caps, TRUE);
    ASSERT_TRUE(gst_pad_peer_query(harness.h->srcpad, query));
    EXPECT_EQ(gst_query_get_n_allocation_pools(query), 1U);
    EXPECT_TRUE(gst_query_find_allocation_meta(query, GST_VIDEO_META_API_TYPE,
                                               nullptr));
    EXPECT_TRUE(gst_query_find_allocation_meta(
        query, GST_VIDEO_CROP_META_API_TYPE, nullptr));
    gst_query_unref(query);
    gst_caps_unref(caps);
    Buffer buffer = noise(info_of(in), 1);
    gst_buffer_add_video_region_of_interest_meta(buffer.get(), "face", 8, 16,
                                                 32, 12);
    GST_BUFFER_PTS(buffer.get()) = 40 * GST_MSECOND;
    ASSERT_EQ(gst_harness_push(harness.h, buffer.release()), GST_FLOW_OK);
    const Buffer out(gst_harness_pull(harness.h));
    EXPECT_EQ(GST_BUFFER_PTS(out.get()), 40 * GST_MSECOND);
    const auto *roi =
        reinterpret_cast<GstVideoRegionOfInterestMeta *>(gst_buffer_get_meta(
            out.get(), GST_VIDEO_REGION_OF_INTEREST_META_API_TYPE));
    ASSERT_EQ(roi == nullptr, turned);
    if (turned) continue;
    EXPECT_EQ(roi->x, 4U);
    EXPECT_EQ(roi->y, 8U);
    EXPECT_EQ(roi->w, 16U);
    EXPECT_EQ(roi->h, 6U);
  }
}

// A pointer on the screen is where it is in the picture: 80 x 60 turned to the
// right, doubled, between borders of 20.
TEST(Convert, PointersGoBack) {
  Harness harness("vexoconvert video-direction=90r");
  ASSERT_TRUE(harness.negotiate(
      "format=RGB, pixel-aspect-ratio=1/1" + size_of(80, 60),
      "video/x-raw, pixel-aspect-ratio=1/1" + size_of(160, 160)));
  gst_harness_push_upstream_event(
      harness.h, gst_event_new_navigation(gst_structure_new(
                     "application/x-gst-navigation", "event", G_TYPE_STRING,
                     "mouse-move", "pointer_x", G_TYPE_DOUBLE, 20.0 + 30.0,
                     "pointer_y", G_TYPE_DOUBLE, 40.0, nullptr)));
  GstEvent *event = nullptr;
  double x = -1;
  double y = -1;
  while ((event = gst_harness_try_pull_upstream_event(harness.h)) != nullptr) {
    gst_navigation_event_get_coordinates(event, &x, &y);
    gst_event_unref(event);
  }
  EXPECT_NEAR(x, 20, 1e-9);
  EXPECT_NEAR(y, 60 - 15, 1e-9);
}

// The stream's light chooses the curve: content before display, and what was
// set before both.
TEST(Tonemap, NitsOfTheStream) {
  constexpr const char *kDisplay =
      ", mastering-display-info=(string)\"35400:14600:8500:39850:6550:2300:"
      "15635:16450:40000000:50\"";
  struct {
    const char *launch, *more;
    int32_t nits, kind;
  } const cases[] = {
      {"vexotonemap", "", 1000, VEXO_HDR_HDR10},
      {"vexotonemap", kDisplay, 4000, VEXO_HDR_HDR10},
      {"vexotonemap", ", content-light-level=(string)\"4000:100\"", 4000,
       VEXO_HDR_HDR10},
      {"vexotonemap nits=1000", kDisplay, 1000, VEXO_HDR_HDR10},
      {"vexotonemap mild=true", "", 1000, VEXO_HDR_HDR10_MILD},
      {"vexotonemap", "", 0, VEXO_HDR_HLG},
  };
  for (const auto &c : cases) {
    for (const Format &to : kFormats) {
      if (to.ours == VEXO_FMT_YUV400 || to.ours >= 600) continue;
      const bool rgb = to.ours >= 200;
      const bool hlg = c.kind == VEXO_HDR_HLG;
      const std::string in =
          std::string("format=P010_10LE, colorimetry=bt2100-") +
          (hlg ? "hlg" : "pq") + size_of(30, 22) + c.more;
      const std::string out = std::string("format=") +
                              gst_video_format_to_string(to.theirs) +
                              size_of(30, 22);
      SCOPED_TRACE(std::string(c.launch) + ": " + in + " to " + out);
      const Buffer buffer = noise(info_of(in), 5);
      const Picture src(info_of(in), buffer.get(), 0);
      const Own expected(to.ours, 30, 22, 0);
      vexo_picture_options options = {};
      options.hdr_kind = c.kind;
      options.source_nit = c.nits;
      options.full_range = rgb ? 1 : 0;
      ASSERT_EQ(vexo_picture_tonemap(nullptr, &src.img, &expected, &options),
                VEXO_OK);
      Harness harness(c.launch);
      ASSERT_TRUE(harness.negotiate(in, "video/x-raw, " + out));
      ASSERT_EQ(gst_harness_push(harness.h, gst_buffer_ref(buffer.get())),
                GST_FLOW_OK);
      const Buffer result(gst_harness_pull(harness.h));
      const Picture got(info_of(out), result.get(), 0);
      EXPECT_TRUE(bytes_of(got.img) == bytes_of(expected));
    }
  }
}

class Gst : public testing::Environment {
  void SetUp() override {
    gst_init(nullptr, nullptr);
    GError *error = nullptr;
    GstPlugin *plugin = gst_plugin_load_file(PLUGIN, &error);
    ASSERT_NE(plugin, nullptr) << error->message;
    gst_object_unref(plugin);
  }
  // Leaks are traced until here.
  void TearDown() override { gst_deinit(); }
};
const auto *const environment =
    testing::AddGlobalTestEnvironment(new Gst);  // GoogleTest frees it

}  // namespace
}  // namespace gst_test
