// SPDX-License-Identifier: Apache-2.0
//
// vexo fourcc: container identifiers as the library's media types, with the
// names that these have in C.
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <optional>

#include "commands.h"
#include "error.h"
#include "io.h"
#include "orumlox/media_type.h"

namespace vexo {
namespace {

constexpr const char *kFourccHelp =
    R"(Prints the media types of a FourCC or a WAVE format tag.

CODE is a number, decimal or with 0x, or else one to four characters, filled up
with spaces: aac is "aac ". 8192 is a number; --text makes characters of it.
One line a class: its name, the code of the type and the code's name; then the
same of all classes combined.

  vexo fourcc avc1
  vexo fourcc 0x2000)";

struct FourccOptions {
  std::string code;
  bool text = false;
};

struct Name {
  int32_t code;
  const char *name;
};

#define NAMED(code) \
  { code, #code }
constexpr Name kNames[] = {
    NAMED(MLOX_MT_VIDEO_MPEG4),         NAMED(MLOX_MT_VIDEO_H263),
    NAMED(MLOX_MT_VIDEO_H264),          NAMED(MLOX_MT_VIDEO_WMV7),
    NAMED(MLOX_MT_VIDEO_WMV8),          NAMED(MLOX_MT_VIDEO_WMV9),
    NAMED(MLOX_MT_VIDEO_MSMPEG4V3),     NAMED(MLOX_MT_VIDEO_SORENSON_H263),
    NAMED(MLOX_MT_VIDEO_RV10),          NAMED(MLOX_MT_VIDEO_RV20),
    NAMED(MLOX_MT_VIDEO_RV30),          NAMED(MLOX_MT_VIDEO_RV40),
    NAMED(MLOX_MT_VIDEO_MP43),          NAMED(MLOX_MT_VIDEO_VC1),
    NAMED(MLOX_MT_VIDEO_VP8),           NAMED(MLOX_MT_VIDEO_HEVC),
    NAMED(MLOX_MT_VIDEO_VP9),           NAMED(MLOX_MT_VIDEO_AV1),
    NAMED(MLOX_MT_VIDEO_UNKNOWN),       NAMED(MLOX_MT_AUDIO_PCM),
    NAMED(MLOX_MT_AUDIO_ALAW),          NAMED(MLOX_MT_AUDIO_MULAW),
    NAMED(MLOX_MT_AUDIO_MPEG),          NAMED(MLOX_MT_AUDIO_MP3),
    NAMED(MLOX_MT_AUDIO_AAC),           NAMED(MLOX_MT_AUDIO_AC3),
    NAMED(MLOX_MT_AUDIO_DTS),           NAMED(MLOX_MT_AUDIO_AMR_NB),
    NAMED(MLOX_MT_AUDIO_AMR_WB),        NAMED(MLOX_MT_AUDIO_QCELP),
    NAMED(MLOX_MT_AUDIO_WMA),           NAMED(MLOX_MT_AUDIO_WMA_PRO),
    NAMED(MLOX_MT_AUDIO_WMA_LOSSLESS),  NAMED(MLOX_MT_AUDIO_EVRC),
    NAMED(MLOX_MT_AUDIO_FLAC),          NAMED(MLOX_MT_AUDIO_VORBIS),
    NAMED(MLOX_MT_AUDIO_IMA_ADPCM),     NAMED(MLOX_MT_AUDIO_ADPCM),
    NAMED(MLOX_MT_AUDIO_SIPR),          NAMED(MLOX_MT_AUDIO_COOK),
    NAMED(MLOX_MT_AUDIO_OPUS),          NAMED(MLOX_MT_AUDIO_DSD),
    NAMED(MLOX_MT_AUDIO_EAC3),          NAMED(MLOX_MT_AUDIO_AC4),
    NAMED(MLOX_MT_AUDIO_UNKNOWN),       NAMED(MLOX_MT_DRM_DIVX),
    NAMED(MLOX_MT_DRM_UNKNOWN),         NAMED(MLOX_MT_SUBTITLE_SRT),
    NAMED(MLOX_MT_SUBTITLE_TIMED_TEXT), NAMED(MLOX_MT_SUBTITLE_ASS),
    NAMED(MLOX_MT_SUBTITLE_SSA),        NAMED(MLOX_MT_SUBTITLE_UNKNOWN),
};
#undef NAMED

void print_type(const char *kind, int32_t code) {
  const char *name = "";
  for (const Name &entry : kNames) {
    if (entry.code == code) name = entry.name;
  }
  std::fprintf(standard_output(), "%-8s %4d %s\n", kind, static_cast<int>(code),
               name);
}

// Nothing when the text is no number, decimal or with 0x.
std::optional<uint32_t> number_of(const std::string &text) {
  const bool hex = text.starts_with("0x") || text.starts_with("0X");
  const char *const end = text.data() + text.size();
  uint32_t value = 0;
  const auto result =
      std::from_chars(text.data() + (hex ? 2 : 0), end, value, hex ? 16 : 10);
  if (result.ptr != end || result.ec == std::errc::invalid_argument) {
    return std::nullopt;
  }
  if (result.ec == std::errc()) return value;
  throw Error("'" + text + "' does not fit 32 bits");
}

uint32_t fourcc_of(const std::string &text) {
  if (text.empty() || text.size() > 4) {
    throw Error("'" + text +
                "' is neither one to four characters nor a number");
  }
  uint32_t value = 0;
  for (size_t i = 0; i < 4; ++i) {
    const char c = i < text.size() ? text[i] : ' ';
    value |= uint32_t{static_cast<uint8_t>(c)} << (8 * i);
  }
  return value;
}

void print_media_types(const FourccOptions &options) {
  const std::optional<uint32_t> number =
      options.text ? std::nullopt : number_of(options.code);
  const uint32_t value = number ? *number : fourcc_of(options.code);
  const int32_t signed_value = static_cast<int32_t>(value);
  print_type("video", mlox_fcc2mt_vid(signed_value));
  print_type("audio", mlox_fcc2mt_aud(signed_value));
  print_type("drm", mlox_fcc2mt_drm(value));
  print_type("subtitle", mlox_fcc2mt_sub(signed_value));
  print_type("combined", mlox_fcc2mt(signed_value));
}

}  // namespace

void add_fourcc(CLI::App &app) {
  const auto options = std::make_shared<FourccOptions>();
  CLI::App *const command = app.add_subcommand("fourcc", kFourccHelp);
  command->add_option("CODE", options->code, "FourCC or number")->required();
  command->add_flag("--text", options->text,
                    "CODE is characters, whatever it looks like");
  command->callback([options] { print_media_types(*options); });
}

}  // namespace vexo
