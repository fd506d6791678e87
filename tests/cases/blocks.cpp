// SPDX-License-Identifier: Apache-2.0
// Halving and quartering by blocks.
#include <orumlox/rsz_blocks.h>

#include <algorithm>
#include <string_view>

#include "cases/cases.h"

namespace lox_test {
namespace {

enum class Kind { kDense, kColumns, kStrided };

template <Kind kKind>
void blocks(const Function &function, Source &source, Sink &sink) {
  const bool halves =
      std::string_view(function.name).find("_2x2") != std::string_view::npos;
  const int32_t factor = halves ? 2 : 4;
  const auto [width, height] = source.size();
  // A picture without rows may claim any width.
  const int32_t beyond = kKind == Kind::kStrided ? source.between(0, 40) : 0;
  const int32_t stride = std::min(std::max(width, 0), INT32_MAX - 40) + beyond;
  const bool empty = width < 1 || height < 1;
  const int64_t taken = empty ? 0 : int64_t{factor} * width * factor * height;
  const int64_t made = empty ? 0 : int64_t{stride} * (height - 1) + width;
  // In memory of its own or over the source.
  const bool apart = kKind == Kind::kStrided || !source.one_in(4);
  const int32_t shift =
      apart || empty ? 0
                     : source.between(0, static_cast<int32_t>(taken - made));
  Buffer src(source, static_cast<size_t>(taken));
  Buffer own(source, static_cast<size_t>(apart ? made : 0));
  uint8_t *dst = apart || empty ? own.data() : src.data() + shift;
  if constexpr (kKind == Kind::kDense) {
    function.as<vexo_rsz_block_kernel>()(src.data(), dst, width, height);
  } else {
    // Rows may go upwards.
    const bool up = kKind == Kind::kStrided && height > 0 && source.one_in(4);
    if (up) dst += ptrdiff_t{stride} * (height - 1);
    const int32_t last = kKind != Kind::kStrided ? source.between(-8, 80)
                         : up                    ? -stride
                                                 : stride;
    function.as<vexo_rsz_columns_kernel>()(src.data(), dst, width, height,
                                           last);
  }
  sink.add(src.data(), src.size());
  sink.add(own.data(), own.size());
}

#define KERNEL(name) LOX_FUNCTION(blocks<LOX_KIND>, name),
const Function kFunctions[] = {
#define LOX_KIND Kind::kDense
#include "vexo_rsz_block_kernel.inc"
#undef LOX_KIND
#define LOX_KIND Kind::kColumns
#include "vexo_rsz_columns_kernel.inc"
#undef LOX_KIND
#define LOX_KIND Kind::kStrided
#include "vexo_rsz_strided_block_kernel.inc"
};

}  // namespace

const Family blocks_family = make_family("blocks", 100, kFunctions);

}  // namespace lox_test
