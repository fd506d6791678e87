// SPDX-License-Identifier: Apache-2.0
//
// Container identifiers to media type codes.
#include "orumlox/media_type.h"

#include <cstdint>

namespace {

// The characters of a FourCC, the first one in the lowest byte.
consteval uint32_t tag(const char (&text)[5]) {
  uint32_t value = 0;
  for (int i = 0; i < 4; ++i) {
    value |= uint32_t{static_cast<uint8_t>(text[i])} << (8 * i);
  }
  return value;
}

}  // namespace

extern "C" {

int32_t mlox_fcc2mt_vid(int32_t fourcc) {
  switch (static_cast<uint32_t>(fourcc)) {
    case tag("M4S2"):
    case tag("m4s2"):
    case tag("DX50"):
    case tag("dx50"):
    case tag("FMP4"):
    case tag("DIV4"):
    case tag("div4"):
    case tag("XVID"):
    case tag("xvid"):
    case tag("DIVX"):
    case tag("divx"):
    case tag("MP4V"):
    case tag("mp4v"):
      return MLOX_MT_VIDEO_MPEG4;
    case tag("H263"):
    case tag("d263"):
    case tag("h263"):
    case tag("s263"):
      return MLOX_MT_VIDEO_H263;
    case tag("avc1"):
    case tag("AVC1"):
    case tag("avcC"):
    case tag("H264"):
    case tag("h264"):
    case tag("X264"):
    case tag("x264"):
      return MLOX_MT_VIDEO_H264;
    case tag("WMV1"):
    case tag("wmv1"):
      return MLOX_MT_VIDEO_WMV7;
    case tag("WMV2"):
    case tag("wmv2"):
      return MLOX_MT_VIDEO_WMV8;
    case tag("WMV3"):
    case tag("wmv3"):
      return MLOX_MT_VIDEO_WMV9;
    case tag("DIV3"):
    case tag("div3"):
      return MLOX_MT_VIDEO_MSMPEG4V3;
    case tag("FLV1"):
      return MLOX_MT_VIDEO_SORENSON_H263;
    case tag("RV10"):
      return MLOX_MT_VIDEO_RV10;
    case tag("RV20"):
      return MLOX_MT_VIDEO_RV20;
    case tag("RV30"):
      return MLOX_MT_VIDEO_RV30;
    case tag("RV40"):
      return MLOX_MT_VIDEO_RV40;
    case tag("MP43"):
    case tag("mp43"):
      return MLOX_MT_VIDEO_MP43;
    case tag("WVC1"):
    case tag("wvc1"):
    case tag("vc-1"):
      return MLOX_MT_VIDEO_VC1;
    case tag("VP80"):
      return MLOX_MT_VIDEO_VP8;
    case tag("hvc1"):
    case tag("hev1"):
    case tag("hvcC"):
    case tag("smhC"):  // Quirk: no box of HEVC's, but taken for one
      return MLOX_MT_VIDEO_HEVC;
    case tag("VP90"):
      return MLOX_MT_VIDEO_VP9;
    case tag("av01"):
    case tag("av1C"):
      return MLOX_MT_VIDEO_AV1;
    default:
      return MLOX_MT_VIDEO_UNKNOWN;
  }
}

int32_t mlox_fcc2mt_aud(int32_t fourcc_or_tag) {
  // The numbers are WAVE format tags.
  switch (static_cast<uint32_t>(fourcc_or_tag)) {
    case 1:
      return MLOX_MT_AUDIO_PCM;
    case 2:
      return MLOX_MT_AUDIO_ADPCM;
    case 6:
      return MLOX_MT_AUDIO_ALAW;
    case 7:
      return MLOX_MT_AUDIO_MULAW;
    case 17:
      return MLOX_MT_AUDIO_IMA_ADPCM;
    case 80:
      return MLOX_MT_AUDIO_MPEG;
    case 85:
      return MLOX_MT_AUDIO_MP3;
    case 255:
    case tag("aac "):
    case tag("mp4a"):
      return MLOX_MT_AUDIO_AAC;
    case 352:
    case 353:
      return MLOX_MT_AUDIO_WMA;
    case 354:
      return MLOX_MT_AUDIO_WMA_PRO;
    case 355:
      return MLOX_MT_AUDIO_WMA_LOSSLESS;
    case 8192:
    case tag("ac-3"):
      return MLOX_MT_AUDIO_AC3;
    case 8193:
      return MLOX_MT_AUDIO_DTS;
    case 61868:
    case tag("fLaC"):
      return MLOX_MT_AUDIO_FLAC;
    case 157519:
      return MLOX_MT_AUDIO_VORBIS;
    case tag("samr"):
      return MLOX_MT_AUDIO_AMR_NB;
    case tag("sawb"):
      return MLOX_MT_AUDIO_AMR_WB;
    case tag("sqcp"):
    case tag("dqcp"):
      return MLOX_MT_AUDIO_QCELP;
    case tag("evrc"):
      return MLOX_MT_AUDIO_EVRC;
    case tag("sipr"):
      return MLOX_MT_AUDIO_SIPR;
    case tag("cook"):
      return MLOX_MT_AUDIO_COOK;
    case tag("Opus"):
      return MLOX_MT_AUDIO_OPUS;
    case tag("DSD "):
      return MLOX_MT_AUDIO_DSD;
    case tag("ec-3"):
      return MLOX_MT_AUDIO_EAC3;
    case tag("ac-4"):
      return MLOX_MT_AUDIO_AC4;
    default:
      return MLOX_MT_AUDIO_UNKNOWN;
  }
}

int32_t mlox_fcc2mt_drm(uint32_t fourcc) {
  switch (fourcc) {
    case tag("DIVX"):
    case tag("divx"):
      return MLOX_MT_DRM_DIVX;
    default:
      return MLOX_MT_DRM_UNKNOWN;
  }
}

int32_t mlox_fcc2mt_sub(int32_t fourcc) {
  switch (static_cast<uint32_t>(fourcc)) {
    case tag("SSRT"):
      return MLOX_MT_SUBTITLE_SRT;
    case tag("TX3G"):
    case tag("tx3g"):
    case tag("SBTL"):
    case tag("sbtl"):
      return MLOX_MT_SUBTITLE_TIMED_TEXT;
    case tag("SASS"):
      return MLOX_MT_SUBTITLE_ASS;
    case tag("SSSA"):
      return MLOX_MT_SUBTITLE_SSA;
    default:
      return MLOX_MT_SUBTITLE_UNKNOWN;
  }
}

int32_t mlox_fcc2mt(int32_t fourcc_or_tag) {
  const int32_t audio = mlox_fcc2mt_aud(fourcc_or_tag);
  if (audio != MLOX_MT_AUDIO_UNKNOWN) return audio;
  const int32_t video = mlox_fcc2mt_vid(fourcc_or_tag);
  if (video != MLOX_MT_VIDEO_UNKNOWN) return video;
  // Quirk: DRM types are never returned, because all of their FourCCs are those
  // of video, too, which goes first.
  return mlox_fcc2mt_sub(fourcc_or_tag);
}

}  // extern "C"
