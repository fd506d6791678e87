// SPDX-License-Identifier: Apache-2.0
//
// PNG through libpng. Its errors come back by longjmp, so each function that
// sets the jump keeps only plain values, and no exception passes through
// libpng's frames.
#include <png.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <vector>

#include "error.h"
#include "io.h"
#include "pixels.h"

namespace vexo {
namespace {

constexpr int kUsualLevel = 2;

// Where the callbacks read, write and leave their sentence.
struct PngContext {
  ByteSource *source = nullptr;
  std::string *written = nullptr;
  char message[256] = {};

  void say(const char *text) {
    const size_t length = std::min(std::strlen(text), sizeof message - 1);
    std::memcpy(message, text, length);
    message[length] = '\0';
  }
};

void on_error(png_structp png, png_const_charp text) {
  PngContext *const context = static_cast<PngContext *>(png_get_error_ptr(png));
  if (context->message[0] == '\0') context->say(text);
  png_longjmp(png, 1);
}

void on_warning(png_structp, png_const_charp) {}

void on_read(png_structp png, png_bytep bytes, size_t count) {
  PngContext *const context = static_cast<PngContext *>(png_get_io_ptr(png));
  bool failed = true;
  try {
    failed = context->source->read(bytes, count) != count;
    if (failed) context->say("truncated");
  } catch (const Error &error) {
    context->say(error.what());
  }
  if (failed) png_error(png, "read failed");
}

void on_write(png_structp png, png_bytep bytes, size_t count) {
  PngContext *const context = static_cast<PngContext *>(png_get_io_ptr(png));
  bool failed = false;
  try {
    context->written->append(reinterpret_cast<const char *>(bytes), count);
  } catch (const std::exception &) {
    context->say("out of memory");
    failed = true;
  }
  if (failed) png_error(png, "write failed");
}

void on_flush(png_structp) {}

struct PngHeader {
  png_uint_32 width;
  png_uint_32 height;
  int color_type;
};

// Reads up to the pixels and has libpng deliver 8-bit grey, RGB or RGBA.
bool read_header(png_structp png, png_infop info, PngHeader *header) {
  if (setjmp(png_jmpbuf(png))) return false;
  png_set_user_limits(png, kMaxSide, kMaxSide);
  // Texts are not kept: a small file can hold gigabytes of them.
  png_set_chunk_cache_max(png, 1);
  png_read_info(png, info);
  const int depth = png_get_bit_depth(png, info);
  const int type = png_get_color_type(png, info);
  if (type == PNG_COLOR_TYPE_PALETTE) png_set_palette_to_rgb(png);
  if (type == PNG_COLOR_TYPE_GRAY && depth < 8) {
    png_set_expand_gray_1_2_4_to_8(png);
  }
  const bool transparent = png_get_valid(png, info, PNG_INFO_tRNS) != 0;
  if (transparent) png_set_tRNS_to_alpha(png);
  if (depth == 16) png_set_scale_16(png);
  if (type == PNG_COLOR_TYPE_GRAY_ALPHA ||
      (type == PNG_COLOR_TYPE_GRAY && transparent)) {
    png_set_gray_to_rgb(png);
  }
  png_set_interlace_handling(png);
  png_read_update_info(png, info);
  header->width = png_get_image_width(png, info);
  header->height = png_get_image_height(png, info);
  header->color_type = png_get_color_type(png, info);
  return true;
}

bool read_pixels(png_structp png, png_bytepp rows) {
  if (setjmp(png_jmpbuf(png))) return false;
  png_read_image(png, rows);
  png_read_end(png, nullptr);
  return true;
}

class PngReader : public FrameReader {
 public:
  explicit PngReader(std::unique_ptr<ByteSource> source)
      : source_(std::move(source)) {
    context_.source = source_.get();
    png_ = png_create_read_struct(PNG_LIBPNG_VER_STRING, &context_, on_error,
                                  on_warning);
    if (png_ == nullptr) throw std::bad_alloc();
    png_info_ = png_create_info_struct(png_);
    PngHeader header = {};
    if (png_info_ != nullptr) {
      png_set_read_fn(png_, &context_, on_read);
      if (read_header(png_, png_info_, &header)) {
        info_.width = static_cast<int>(header.width);
        info_.height = static_cast<int>(header.height);
        info_.layout = layout_of_type(header.color_type);
      }
    }
    if (info_.layout == nullptr) {
      png_destroy_read_struct(&png_, &png_info_, nullptr);
      fail();
    }
  }

  ~PngReader() override { png_destroy_read_struct(&png_, &png_info_, nullptr); }

  const StreamInfo &info() const override { return info_; }

  bool read(Frame &frame) override {
    if (done_) return false;
    done_ = true;
    std::vector<png_bytep> rows(static_cast<size_t>(frame.height()));
    for (int y = 0; y < frame.height(); ++y) {
      rows[static_cast<size_t>(y)] = frame.row(0, y);
    }
    if (!read_pixels(png_, rows.data())) fail();
    return true;
  }

 private:
  static const Layout *layout_of_type(int color_type) {
    switch (color_type) {
      case PNG_COLOR_TYPE_GRAY:
        return &layout_of(VEXO_FMT_YUV400);
      case PNG_COLOR_TYPE_RGB:
        return &layout_of(VEXO_FMT_RGB888);
      default:
        return &layout_of(VEXO_FMT_RGBA8888);
    }
  }

  [[noreturn]] void fail() const {
    throw Error(source_->name() + " is not a sound PNG: " + context_.message);
  }

  std::unique_ptr<ByteSource> source_;
  PngContext context_;
  png_structp png_ = nullptr;
  png_infop png_info_ = nullptr;
  StreamInfo info_;
  bool done_ = false;
};

bool write_header(png_structp png, png_infop info, int width, int height,
                  int color_type, int level) {
  if (setjmp(png_jmpbuf(png))) return false;
  png_set_compression_level(png, level < 0 ? kUsualLevel : level);
  // With little effort the filters that cost most are not worth their time.
  if (level > 0 ? level <= kUsualLevel : level < 0) {
    png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FAST_FILTERS);
  }
  png_set_IHDR(png, info, static_cast<png_uint_32>(width),
               static_cast<png_uint_32>(height), 8, color_type,
               PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
               PNG_FILTER_TYPE_DEFAULT);
  png_write_info(png, info);
  return true;
}

bool write_row(png_structp png, const uint8_t *row) {
  if (setjmp(png_jmpbuf(png))) return false;
  png_write_row(png, row);
  return true;
}

bool write_end(png_structp png) {
  if (setjmp(png_jmpbuf(png))) return false;
  png_write_end(png, nullptr);
  return true;
}

bool write_picture(png_structp png, png_infop info, const Frame &frame,
                   int level) {
  const bool grey = frame.layout().code == VEXO_FMT_YUV400;
  std::optional<PixelUnpacker> unpacker;
  if (!grey) unpacker.emplace(frame.layout());
  const int type = grey                ? PNG_COLOR_TYPE_GRAY
                   : unpacker->alpha() ? PNG_COLOR_TYPE_RGB_ALPHA
                                       : PNG_COLOR_TYPE_RGB;
  if (!write_header(png, info, frame.width(), frame.height(), type, level)) {
    return false;
  }
  for (int y = 0; y < frame.height(); ++y) {
    const uint8_t *const row = grey ? frame.row(0, y) : unpacker->row(frame, y);
    if (!write_row(png, row)) return false;
  }
  return write_end(png);
}

}  // namespace

std::unique_ptr<FrameReader> read_png(std::unique_ptr<ByteSource> source) {
  return std::make_unique<PngReader>(std::move(source));
}

void encode_png(const Frame &frame, const EncodeOptions &options,
                std::string *bytes) {
  PngContext context;
  context.written = bytes;
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &context,
                                            on_error, on_warning);
  if (png == nullptr) throw std::bad_alloc();
  png_infop info = png_create_info_struct(png);
  bool written = false;
  if (info != nullptr) {
    png_set_write_fn(png, &context, on_write, on_flush);
    written = write_picture(png, info, frame, options.png_level);
  }
  png_destroy_write_struct(&png, &info);
  if (!written) throw Error(context.message);
}

}  // namespace vexo
