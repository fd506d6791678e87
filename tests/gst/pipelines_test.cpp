// SPDX-License-Identifier: Apache-2.0
//
// Whole pipelines by gst-launch-1.0, of clips made here, beside the tool.
#include "tool/tool_runner.h"

namespace gst_test {
namespace {

class Pipelines : public tool::ToolTest {
 protected:
  // A pipeline's file, which is to have the bytes of the tool's.
  void compare(const std::string &from, const std::string &elements,
               const std::string &to, const std::string &tool) {
    SCOPED_TRACE(elements);
    const tool::Outcome outcome =
        shell("gst-launch-1.0 -q " + from + " ! " + elements +
              " ! video/x-raw," + to + " ! filesink location=got.raw");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out + outcome.err, "");
    vexo_ok(tool + " expected.raw --quiet");
    const std::string got = get("got.raw");
    EXPECT_FALSE(got.empty());
    EXPECT_TRUE(got == get("expected.raw"));
  }

  // Two frames of a test picture of these caps, also as a file of bytes.
  std::string source(const std::string &caps, const std::string &file) {
    const std::string from =
        "videotestsrc num-buffers=2 pattern=smpte100 ! "
        "video/x-raw,width=176,height=144," +
        caps;
    EXPECT_EQ(
        shell("gst-launch-1.0 -q " + from + " ! filesink location=" + file)
            .status,
        0);
    return from;
  }
};

// Decoded files: the tool reads what another program has decoded.
TEST_F(Pipelines, OfFiles) {
  const std::string decode = "filesrc location=clip.mkv ! decodebin";
  ASSERT_EQ(shell("ffmpeg -v error -f lavfi -i testsrc2=s=352x288:r=25 "
                  "-frames:v 5 -pix_fmt yuv420p -c:v mpeg4 -q:v 3 clip.mkv && "
                  "ffmpeg -v error -i clip.mkv -f yuv4mpegpipe clip.y4m")
                .status,
            0);
  compare(decode, "vexoconvert n-threads=2", "format=RGBA",
          "convert --to rgba8888 clip.y4m");
  compare(decode, "vexoconvert n-threads=3", "format=BGRA,width=176,height=144",
          "scale --size 176x144 --to bgra8888 clip.y4m");
  compare(decode, "vexoconvert video-direction=90r",
          "format=NV12,width=144,height=176",
          "scale --rotate right --size 144x176 --to nv12 clip.y4m");
  compare(decode, "vexothumbnail", "format=I420,width=88,height=72",
          "thumbnail --size 88x72 --to yuv420 clip.y4m");
  // In place of three elements, and before an encoder that reads it again.
  compare(decode,
          "vexoconvert video-direction=horiz ! video/x-raw,format=I420 ! "
          "avenc_ffv1 ! matroskamux ! matroskademux ! avdec_ffv1 ! vexoconvert",
          "format=RGB", "rotate --turn mirror --to rgb888 clip.y4m");
}

TEST_F(Pipelines, OfTenBitsAndBt2020) {
  const std::string deep =
      source("format=I420_10LE,colorimetry=bt2020", "deep.raw");
  compare(deep, "vexoconvert n-threads=2 video-direction=180",
          "format=I420_10LE,width=100,height=90",
          "scale --from yuv420Planar16 --from-size 176x144 --size 100x90 "
          "--rotate half deep.raw");
  const std::string wide =
      source("format=I420,colorimetry=bt2020,chroma-site=mpeg2", "wide.raw");
  compare(wide, "vexoconvert n-threads=2 chroma-resampler=linear", "format=RGB",
          "convert --from yuv420 --size 176x144 --standard bt2020 "
          "--chroma smooth --to rgb888 wide.raw");
}

TEST_F(Pipelines, OfHdr) {
  for (const char *kind : {"pq", "hlg"}) {
    const std::string from = source(
        std::string("format=I420_10LE,colorimetry=bt2100-") + kind, "hdr.raw");
    compare(from, "vexotonemap", "format=NV12",
            "tonemap --from yuv420Planar16 --size 176x144 --to nv12 --kind " +
                std::string(kind[0] == 'p' ? "hdr10" : "hlg") + " hdr.raw");
  }
}

}  // namespace
}  // namespace gst_test
