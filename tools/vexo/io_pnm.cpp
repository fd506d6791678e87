// SPDX-License-Identifier: Apache-2.0
//
// Binary PGM (P5) and PPM (P6) with 8-bit samples. A stream may hold several
// pictures of one size, one after the other.
#include "error.h"
#include "io.h"
#include "pixels.h"

namespace vexo {
namespace {

constexpr int kMaxHeader = 65536;

class PnmReader : public FrameReader {
 public:
  explicit PnmReader(std::unique_ptr<ByteSource> source)
      : source_(std::move(source)) {
    read_header(&info_);
  }

  const StreamInfo &info() const override { return info_; }

  bool read(Frame &frame) override {
    if (!first_) {
      if (source_->at_end()) return false;
      StreamInfo next;
      read_header(&next);
      if (next.layout != info_.layout || next.width != info_.width ||
          next.height != info_.height) {
        throw Error(source_->name() + ": pictures of different sizes or kinds");
      }
    }
    first_ = false;
    read_planes(*source_, frame);
    return true;
  }

 private:
  static bool is_space(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

  // The next character of a header, whose comments may not go on for ever.
  char next() {
    if (++header_size_ > kMaxHeader) bad();
    char c;
    source_->read_exactly(&c, 1);
    return c;
  }

  // A decimal number and the one character after it; white space and comments
  // may precede it.
  int number() {
    char c = next();
    while (is_space(c) || c == '#') {
      if (c == '#') {
        while (c != '\n') c = next();
      }
      c = next();
    }
    int value = 0;
    int digits = 0;
    for (; c >= '0' && c <= '9'; c = next()) {
      if (++digits > 6) bad();
      value = 10 * value + (c - '0');
    }
    if (digits == 0 || !is_space(c)) bad();
    return value;
  }

  void read_header(StreamInfo *info) {
    header_size_ = 0;
    if (next() != 'P') bad();
    const char type = next();
    if (type != '5' && type != '6') bad();
    info->layout = &layout_of(type == '5' ? VEXO_FMT_YUV400 : VEXO_FMT_RGB888);
    info->width = number();
    info->height = number();
    check_size(info->width, info->height, source_->name());
    if (number() != 255) {
      throw Error(source_->name() +
                  ": only PGM and PPM of 255 levels are read");
    }
  }

  [[noreturn]] void bad() const {
    throw Error(source_->name() + " is not a sound PGM (P5) or PPM (P6)");
  }

  std::unique_ptr<ByteSource> source_;
  StreamInfo info_;
  int header_size_ = 0;
  bool first_ = true;
};

}  // namespace

std::unique_ptr<FrameReader> read_pnm(std::unique_ptr<ByteSource> source) {
  return std::make_unique<PnmReader>(std::move(source));
}

void encode_pnm(const Frame &frame, const EncodeOptions &, std::string *bytes) {
  const bool grey = frame.layout().code == VEXO_FMT_YUV400;
  *bytes += std::string(grey ? "P5\n" : "P6\n") +
            std::to_string(frame.width()) + " " +
            std::to_string(frame.height()) + "\n255\n";
  std::optional<PixelUnpacker> unpacker;
  if (!grey) unpacker.emplace(frame.layout());
  const size_t row_bytes = (grey ? 1 : 3) * static_cast<size_t>(frame.width());
  for (int y = 0; y < frame.height(); ++y) {
    const uint8_t *const row = grey ? frame.row(0, y) : unpacker->row(frame, y);
    bytes->append(reinterpret_cast<const char *>(row), row_bytes);
  }
}

}  // namespace vexo
