/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Media type codes, and the container identifiers (FourCCs, WAVE format tags)
 * that stand for them.
 *
 * A FourCC is a 32-bit integer whose lowest byte is the first character.
 * Matching is exact and case-sensitive. All calls are re-entrant and cannot
 * fail.
 */
#pragma once

#include "base.h"

VEXO_BEGIN_DECLS

/* Video. 108, 109 and 112 stand for nothing. */
enum {
  MLOX_MT_VIDEO_FIRST = 102,
  MLOX_MT_VIDEO_MPEG4 = 102,         /* MPEG-4 Part 2 */
  MLOX_MT_VIDEO_H263 = 103,          /* H.263 */
  MLOX_MT_VIDEO_H264 = 104,          /* H.264 */
  MLOX_MT_VIDEO_WMV7 = 105,          /* Windows Media Video 7 */
  MLOX_MT_VIDEO_WMV8 = 106,          /* Windows Media Video 8 */
  MLOX_MT_VIDEO_WMV9 = 107,          /* Windows Media Video 9 */
  MLOX_MT_VIDEO_MSMPEG4V3 = 110,     /* MPEG-4 version 3, Microsoft's variant */
  MLOX_MT_VIDEO_SORENSON_H263 = 111, /* Sorenson H.263 */
  MLOX_MT_VIDEO_RV10 = 113,          /* RealVideo 1.0 */
  MLOX_MT_VIDEO_RV20 = 114,          /* RealVideo 2.0 */
  MLOX_MT_VIDEO_RV30 = 115,          /* RealVideo 3.0 */
  MLOX_MT_VIDEO_RV40 = 116,          /* RealVideo 4.0 */
  MLOX_MT_VIDEO_MP43 = 117,          /* MPEG-4 version 3 */
  MLOX_MT_VIDEO_VC1 = 118,           /* VC-1 */
  MLOX_MT_VIDEO_VP8 = 119,           /* VP8 */
  MLOX_MT_VIDEO_HEVC = 120,          /* HEVC */
  MLOX_MT_VIDEO_VP9 = 121,           /* VP9 */
  MLOX_MT_VIDEO_AV1 = 122,           /* AV1 */
  MLOX_MT_VIDEO_LAST = 122,
  MLOX_MT_VIDEO_UNKNOWN = 299
};

/* Audio. */
enum {
  MLOX_MT_AUDIO_FIRST = 300,
  MLOX_MT_AUDIO_PCM = 300,
  MLOX_MT_AUDIO_ALAW = 301,
  MLOX_MT_AUDIO_MULAW = 302,
  MLOX_MT_AUDIO_MPEG = 304, /* MPEG audio, layers 1 and 2 */
  MLOX_MT_AUDIO_MP3 = 305,
  MLOX_MT_AUDIO_AAC = 306,
  MLOX_MT_AUDIO_AC3 = 307,
  MLOX_MT_AUDIO_DTS = 308,
  MLOX_MT_AUDIO_AMR_NB = 309,
  MLOX_MT_AUDIO_AMR_WB = 310,
  MLOX_MT_AUDIO_QCELP = 311,
  MLOX_MT_AUDIO_WMA = 312,          /* Windows Media Audio 1 and 2 */
  MLOX_MT_AUDIO_WMA_PRO = 313,      /* Windows Media Audio Professional */
  MLOX_MT_AUDIO_WMA_LOSSLESS = 314, /* Windows Media Audio Lossless */
  MLOX_MT_AUDIO_EVRC = 321,
  MLOX_MT_AUDIO_FLAC = 322,
  MLOX_MT_AUDIO_VORBIS = 323,
  MLOX_MT_AUDIO_IMA_ADPCM = 329,
  MLOX_MT_AUDIO_ADPCM = 330,
  MLOX_MT_AUDIO_SIPR = 331,
  MLOX_MT_AUDIO_COOK = 332,
  MLOX_MT_AUDIO_OPUS = 334,
  MLOX_MT_AUDIO_DSD = 335,
  MLOX_MT_AUDIO_EAC3 = 337,
  MLOX_MT_AUDIO_AC4 = 338,
  MLOX_MT_AUDIO_LAST = 338,
  MLOX_MT_AUDIO_UNKNOWN = 499
};

/* Digital rights management. */
enum { MLOX_MT_DRM_DIVX = 1100, MLOX_MT_DRM_UNKNOWN = 1299 };

/* Subtitles. */
enum {
  MLOX_MT_SUBTITLE_FIRST = 3000,
  MLOX_MT_SUBTITLE_SRT = 3000,
  MLOX_MT_SUBTITLE_TIMED_TEXT = 3006,
  MLOX_MT_SUBTITLE_ASS = 3007,
  MLOX_MT_SUBTITLE_SSA = 3008,
  MLOX_MT_SUBTITLE_LAST = 3008,
  MLOX_MT_SUBTITLE_UNKNOWN = 3199
};

/*
 * The video type of a FourCC, MLOX_MT_VIDEO_UNKNOWN for everything else:
 *
 *   MPEG4          M4S2 m4s2 DX50 dx50 FMP4 DIV4 div4 XVID xvid DIVX divx
 *                  MP4V mp4v
 *   H263           H263 d263 h263 s263
 *   H264           avc1 AVC1 avcC H264 h264 X264 x264
 *   WMV7, 8, 9     WMV1 wmv1; WMV2 wmv2; WMV3 wmv3
 *   MSMPEG4V3      DIV3 div3
 *   SORENSON_H263  FLV1
 *   RV10 to RV40   RV10; RV20; RV30; RV40
 *   MP43           MP43 mp43
 *   VC1            WVC1 wvc1 vc-1
 *   VP8, VP9       VP80; VP90
 *   HEVC           hvc1 hev1 hvcC smhC
 *   AV1            av01 av1C
 *
 * Quirk: smhC is HEVC, because callers rely on it.
 */
VEXO_API int32_t mlox_fcc2mt_vid(int32_t fourcc);

/*
 * The audio type of a WAVE format tag or FourCC, MLOX_MT_AUDIO_UNKNOWN for
 * everything else:
 *
 *   PCM 1           MPEG 80            AAC 255, "aac ", mp4a     EVRC evrc
 *   ADPCM 2         MP3 85             AC3 8192, ac-3            SIPR sipr
 *   ALAW 6          WMA 352, 353       DTS 8193                  COOK cook
 *   MULAW 7         WMA_PRO 354        FLAC 61868, fLaC          OPUS Opus
 *   IMA_ADPCM 17    WMA_LOSSLESS 355   VORBIS 157519             DSD "DSD "
 *   AMR_NB samr     AMR_WB sawb        QCELP sqcp, dqcp          EAC3 ec-3
 *                                                                AC4 ac-4
 */
VEXO_API int32_t mlox_fcc2mt_aud(int32_t fourcc_or_tag);

/* The DRM type: MLOX_MT_DRM_DIVX for DIVX and divx, MLOX_MT_DRM_UNKNOWN for
 * everything else. */
VEXO_API int32_t mlox_fcc2mt_drm(uint32_t fourcc);

/* The subtitle type: SRT for SSRT, TIMED_TEXT for TX3G, tx3g, SBTL and sbtl,
 * ASS for SASS, SSA for SSSA, MLOX_MT_SUBTITLE_UNKNOWN for everything else. */
VEXO_API int32_t mlox_fcc2mt_sub(int32_t fourcc);

/* The first of audio, video, subtitles and DRM that knows the identifier, else
 * MLOX_MT_SUBTITLE_UNKNOWN. Quirk: MLOX_MT_DRM_DIVX is never returned, because
 * DIVX and divx are video first. */
VEXO_API int32_t mlox_fcc2mt(int32_t fourcc_or_tag);

VEXO_END_DECLS
