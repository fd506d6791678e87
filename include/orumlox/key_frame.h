/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Which compressed video frames are key frames.
 */
#pragma once

#include "base.h"

VEXO_BEGIN_DECLS

/*
 * Tells whether one access unit of video is a key frame, by a few bits of its
 * headers: mlox_is_vkeyfrm(MLOX_MT_VIDEO_H264, unit, size).
 *
 * `type` is a video media type code (media_type.h); the unit is `length` bytes,
 * b[0], b[1], ... below. Returns 1 for a key frame, else 0: also for other
 * codes than those below, for a length below 1, and where a rule needs a byte
 * at or beyond the length. Re-entrant; reads no byte beyond the length, decodes
 * nothing.
 *
 * Bytes and masks are in hexadecimal, but for 16 to 21, 31, 32, 33 and 63. To
 * scan is to try each position p from 0 on while at least so many bytes remain
 * from p; 0 when the scan runs out.
 *
 * H264: scans, 4 bytes, for 00 00 01; the type of the NAL unit is
 *   b[p+3] & 31: 1 gives 0, 5 gives 1, others continue.
 * HEVC: scans, 4 bytes, for 00 00 01; t = b[p+3] >> 1 & 63: 16 to 21 gives 1,
 *   below 10 gives 0, others continue.
 * MPEG4: scans, 5 bytes, for 00 00; c = b[p+2].
 *   c & FC is 80 (a picture with a short header): 0 unless b[p+3] & 3 is 2;
 *     then, if b[p+4] & 1C is below 1C, whether bit 1 of b[p+4] is clear;
 *     else continues.
 *   c is 01 and b[p+3] is B6 (a VOP): whether b[p+4] < 40.
 * H263, SORENSON_H263: scans, 7 bytes, for 00 00; c = b[p+2].
 *   c >> 2 is 33 (Sorenson's picture): whether x & 60 is 0, where x is b[p+8]
 *     if b[p+3] is not 0 or b[p+4] has its top bit set, else b[p+6].
 *   c >> 2 is 32 (H.263's picture): 0 unless b[p+3] & 3 is 2; then, if
 *     b[p+4] & 1C is below 1C, whether bit 1 of b[p+4] is clear; else (extended
 *     type) whether b[p+5] & 70 is 0, or, if (b[p+4] & 3) << 1 | b[p+5] >> 7
 *     is 1, whether b[p+7] & 1C is 0.
 * WMV7, MSMPEG4V3: whether b[0] < 40.
 * WMV8: whether the top bit of b[0] is clear.
 * VP8: whether b[3], b[4], b[5] are 9D 01 2A.
 * VP9: whether bit 2 of b[0] is clear if its bit 3 is; else whether the top bit
 *   of b[1] is.
 */
VEXO_API int32_t mlox_is_vkeyfrm(uint32_t type, const uint8_t *data,
                                 int32_t length);

VEXO_END_DECLS
