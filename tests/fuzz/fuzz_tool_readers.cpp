// SPDX-License-Identifier: Apache-2.0
// The tool's readers of pictures and of compressed streams on files that
// libFuzzer makes up. The first byte chooses the reader, the rest is the file.
// Longer than the test does: fuzz_tool_readers -max_total_time=3600 FOLDER
#include <orumlox/img.h>
#include <orumlox/media_type.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

#include "../../tools/vexo/access_units.h"
#include "../../tools/vexo/error.h"
#include "../../tools/vexo/io.h"
#include "asan_options.h"

static void require(bool condition) {
  if (!condition) std::abort();
}

// Frames of small pictures alone are read: large ones cost time and show no
// more.
static void read_pictures(std::unique_ptr<vexo::FrameReader> reader) {
  const vexo::StreamInfo info = reader->info();
  require(info.layout != nullptr);
  require(std::min(info.width, info.height) >= 1);
  require(std::max(info.width, info.height) <= vexo::kMaxSide);
  if (info.width * info.height > 65536) return;
  vexo::Frame frame(*info.layout, info.width, info.height, VEXO_STD_DEFAULT);
  while (reader->read(frame)) {
    require(reader->info().width == info.width);
    require(reader->info().height == info.height);
  }
}

// Frames lie one after the other, a header of IVF between two, and hold the
// bytes of the file. Those of a raw stream go to its end.
static void read_units(vexo::UnitReader &reader, const uint8_t *file,
                       size_t size, bool ivf) {
  uint64_t end = 0;
  vexo::AccessUnit unit;
  while (reader.next(&unit)) {
    if (ivf) end = end == 0 ? unit.offset : end + 12;
    require(ivf || end == 0 ? unit.offset >= end : unit.offset == end);
    require(unit.offset <= size && unit.bytes.size() <= size - unit.offset);
    require(ivf || !unit.bytes.empty());
    require(
        std::equal(unit.bytes.begin(), unit.bytes.end(), file + unit.offset));
    end = unit.offset + unit.bytes.size();
  }
  require(end == 0 || end == size);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size < 2) return 0;
  const uint8_t *const file = data + 1;
  --size;
  // The file is open for reading alone and is not written.
  std::FILE *const stream = fmemopen(const_cast<uint8_t *>(file), size, "rb");
  require(stream != nullptr);
  auto source = std::make_unique<vexo::ByteSource>(stream, "input");
  try {
    const int choice = data[0] % 16;
    if (choice % 2 != 0) vexo::kind_of_content(*source);
    constexpr int32_t kTypes[] = {MLOX_MT_VIDEO_H264, MLOX_MT_VIDEO_HEVC,
                                  MLOX_MT_VIDEO_MPEG4, MLOX_MT_VIDEO_H263};
    switch (choice / 2) {
      case 0:
        read_pictures(vexo::read_y4m(std::move(source)));
        break;
      case 1:
        read_pictures(vexo::read_pnm(std::move(source)));
        break;
      case 2:
        read_pictures(vexo::read_png(std::move(source)));
        break;
      case 3: {
        int32_t fourcc;
        if (!vexo::is_ivf(*source)) break;
        const auto reader = vexo::read_ivf(*source, &fourcc);
        require(std::memcmp(&fourcc, file + 8, 4) == 0);
        read_units(*reader, file, size, true);
        break;
      }
      default:
        read_units(*vexo::read_stream(*source, kTypes[choice / 2 - 4]), file,
                   size, false);
    }
  } catch (const vexo::Error &error) {
    // A sentence, of which the first word is the file's name.
    require(std::strncmp(error.what(), "input", 5) == 0);
  }
  return 0;
}
