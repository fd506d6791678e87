// SPDX-License-Identifier: Apache-2.0
//
// JPEG by libjpeg-turbo. Its errors come back by longjmp, so what sets the jump
// keeps only plain values.
#include <algorithm>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <vector>

// Needs what precedes it.
#include <jpeglib.h>

#include "error.h"
#include "io.h"

namespace vexo {
namespace {

constexpr int kUsualQuality = 90;

struct JpegError {
  jpeg_error_mgr manager;
  std::jmp_buf jump;
  char message[JMSG_LENGTH_MAX];
};

void on_error(j_common_ptr context) {
  JpegError *const error = reinterpret_cast<JpegError *>(context->err);
  context->err->format_message(context, error->message);
  std::longjmp(error->jump, 1);
}

void on_message(j_common_ptr) {}

struct Coded {
  unsigned char *bytes = nullptr;
  unsigned long size = 0;
};

// Rows of grey or RGB.
bool write_rows(jpeg_compress_struct *jpeg, JpegError *error, Coded *coded,
                const Frame &frame, int quality) {
  if (setjmp(error->jump)) return false;
  jpeg_create_compress(jpeg);
  jpeg_mem_dest(jpeg, &coded->bytes, &coded->size);
  jpeg->image_width = static_cast<JDIMENSION>(frame.width());
  jpeg->image_height = static_cast<JDIMENSION>(frame.height());
  const bool grey = frame.layout().code == VEXO_FMT_YUV400;
  const bool alpha = frame.layout().code == VEXO_FMT_RGBA8888;
  jpeg->input_components = grey ? 1 : alpha ? 4 : 3;
  jpeg->in_color_space = grey ? JCS_GRAYSCALE : alpha ? JCS_EXT_RGBX : JCS_RGB;
  jpeg_set_defaults(jpeg);
  jpeg_set_quality(jpeg, quality, TRUE);
  jpeg_start_compress(jpeg, TRUE);
  for (int y = 0; y < frame.height(); ++y) {
    JSAMPROW row = frame.row(0, y);
    jpeg_write_scanlines(jpeg, &row, 1);
  }
  jpeg_finish_compress(jpeg);
  return true;
}

// Planes of YCbCr as a JPEG means them, a row of blocks at a time. What lies
// beyond the picture repeats its edge.
bool write_planes_of(jpeg_compress_struct *jpeg, JpegError *error, Coded *coded,
                     const Frame &frame, int quality, uint8_t *band,
                     size_t row_bytes) {
  if (setjmp(error->jump)) return false;
  jpeg_create_compress(jpeg);
  jpeg_mem_dest(jpeg, &coded->bytes, &coded->size);
  jpeg->image_width = static_cast<JDIMENSION>(frame.width());
  jpeg->image_height = static_cast<JDIMENSION>(frame.height());
  jpeg->input_components = 3;
  jpeg->in_color_space = JCS_YCbCr;
  jpeg_set_defaults(jpeg);
  jpeg_set_quality(jpeg, quality, TRUE);
  jpeg->raw_data_in = TRUE;
  const int32_t code = frame.layout().code;
  const int high = code == VEXO_FMT_YUV420 ? 2 : 1;
  jpeg->comp_info[0].h_samp_factor = code == VEXO_FMT_YUV444 ? 1 : 2;
  jpeg->comp_info[0].v_samp_factor = high;
  jpeg_start_compress(jpeg, TRUE);
  JSAMPROW rows[3][16];
  JSAMPARRAY planes[3] = {rows[0], rows[1], rows[2]};
  const int lines = 8 * high;
  for (int top = 0; top < frame.height(); top += lines) {
    uint8_t *space = band;
    for (int p = 0; p < 3; ++p) {
      const int count = p == 0 ? lines : 8;
      const int first = p == 0 ? top : top / high;
      const size_t width = static_cast<size_t>(frame.row_bytes(p));
      for (int i = 0; i < count; ++i, space += row_bytes) {
        const uint8_t *const from =
            frame.row(p, std::min(first + i, frame.rows(p) - 1));
        std::copy_n(from, width, space);
        std::fill(space + width, space + row_bytes, from[width - 1]);
        rows[p][i] = space;
      }
    }
    jpeg_write_raw_data(jpeg, planes, static_cast<JDIMENSION>(lines));
  }
  jpeg_finish_compress(jpeg);
  return true;
}

}  // namespace

void encode_jpeg(const Frame &frame, const EncodeOptions &options,
                 std::string *bytes) {
  const int quality = options.quality < 0 ? kUsualQuality : options.quality;
  jpeg_compress_struct jpeg = {};
  JpegError error = {};
  jpeg.err = jpeg_std_error(&error.manager);
  error.manager.error_exit = on_error;
  error.manager.output_message = on_message;
  Coded coded;
  bool written = false;
  if (frame.layout().planes == 3) {
    // Whole pairs of blocks.
    const size_t row_bytes = static_cast<size_t>(frame.width() + 31) / 16 * 16;
    std::vector<uint8_t> band(row_bytes * 32);
    written = write_planes_of(&jpeg, &error, &coded, frame, quality,
                              band.data(), row_bytes);
  } else {
    written = write_rows(&jpeg, &error, &coded, frame, quality);
  }
  jpeg_destroy_compress(&jpeg);
  if (written) {
    bytes->append(reinterpret_cast<const char *>(coded.bytes), coded.size);
  }
  std::free(coded.bytes);
  if (!written) throw Error(std::string("no JPEG: ") + error.message);
}

}  // namespace vexo
