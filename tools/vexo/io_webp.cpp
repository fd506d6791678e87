// SPDX-License-Identifier: Apache-2.0
//
// WebP by libwebp.
#include <webp/encode.h>

#include <algorithm>

#include "error.h"
#include "io.h"

namespace vexo {
namespace {

constexpr int kUsualQuality = 85;

int append(const uint8_t *data, size_t size, const WebPPicture *picture) {
  try {
    static_cast<std::string *>(picture->custom_ptr)
        ->append(reinterpret_cast<const char *>(data), size);
    return 1;
  } catch (const std::exception &) {
    return 0;
  }
}

// The frame as it is: 4:2:0 of BT.601, or RGB that libwebp converts.
bool import(const Frame &frame, WebPPicture *picture) {
  picture->width = frame.width();
  picture->height = frame.height();
  const int32_t code = frame.layout().code;
  if (code == VEXO_FMT_RGB888) {
    return WebPPictureImportRGB(picture, frame.row(0, 0),
                                frame.img().stride[0]) != 0;
  }
  if (code == VEXO_FMT_RGBA8888) {
    return WebPPictureImportRGBA(picture, frame.row(0, 0),
                                 frame.img().stride[0]) != 0;
  }
  picture->use_argb = 0;
  if (WebPPictureAlloc(picture) == 0) return false;
  uint8_t *const planes[] = {picture->y, picture->u, picture->v};
  const int strides[] = {picture->y_stride, picture->uv_stride,
                         picture->uv_stride};
  for (int p = 0; p < 3; ++p) {
    for (int y = 0; y < frame.rows(p); ++y) {
      std::copy_n(frame.row(p, y), frame.row_bytes(p),
                  planes[p] + int64_t{strides[p]} * y);
    }
  }
  return true;
}

}  // namespace

void encode_webp(const Frame &frame, const EncodeOptions &options,
                 std::string *bytes) {
  WebPConfig config;
  WebPPicture picture;
  if (WebPConfigInit(&config) == 0 || WebPPictureInit(&picture) == 0) {
    throw Error("libwebp is of another version");
  }
  if (std::max(frame.width(), frame.height()) > WEBP_MAX_DIMENSION) {
    throw Error("a WebP has sides of up to 16383");
  }
  config.quality =
      static_cast<float>(options.quality < 0 ? kUsualQuality : options.quality);
  picture.writer = append;
  picture.custom_ptr = bytes;
  const bool written =
      import(frame, &picture) && WebPEncode(&config, &picture) != 0;
  WebPPictureFree(&picture);
  if (!written) {
    throw Error("no WebP: error " + std::to_string(picture.error_code));
  }
}

}  // namespace vexo
