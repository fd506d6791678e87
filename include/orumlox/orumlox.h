/* SPDX-License-Identifier: Apache-2.0 */
/* Every public header of the library. Names without its prefixes are declared
 * when ORUMLOX_UNPREFIXED is defined before. */
#pragma once

#include "apex.h"
#include "base.h"
#include "bitstream.h"
#include "camera.h"
#include "common.h"
#include "csc.h"
#include "csc_new.h"
#include "dct.h"
#include "deep.h"
#include "dither.h"
#include "fused.h"
#include "hdr.h"
#include "img.h"
#include "key_frame.h"
#include "media_type.h"
#include "picture.h"
#include "rot.h"
#include "rsz.h"
#include "rsz_blocks.h"
#include "version.h"
#include "vqe.h"
#if defined(ORUMLOX_UNPREFIXED)
#include "unprefixed.h"
#endif
