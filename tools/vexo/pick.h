// SPDX-License-Identifier: Apache-2.0
//
// The frame of a video that stands for all of it.
#pragma once

#include "video.h"

namespace vexo {

// The first key frame after a tenth of the length that is neither near black
// nor flat; if there is none among those looked at, the liveliest. False when
// there is no frame.
bool pick_frame(VideoReader &video, Frame *frame);

}  // namespace vexo
