// SPDX-License-Identifier: Apache-2.0
//
// This library's tone mapping: every form of its kernels on one thread, which
// does all that a call does, and the call as it is shipped, on four.
#include "bench/hdr_contender.h"
#include "common/isa.h"

namespace bench {

namespace {

class OwnToneMapper : public ToneMapper {
 public:
  OwnToneMapper(const ToneMapping &mapping, Size size)
      : mapping_(mapping), size_(size) {}

  // Of the destinations that have peers.
  Channels channels(const uint8_t *dst) const override {
    const int32_t w = size_.width, h = size_.height;
    if (mapping_.dst_format == VEXO_FMT_RGBA8888) {
      const ptrdiff_t stride = ptrdiff_t{4} * w;
      return {{{dst, w, h, stride, 4},
               {dst + 1, w, h, stride, 4},
               {dst + 2, w, h, stride, 4}}};
    }
    const uint8_t *pairs = dst + ptrdiff_t{w} * h;
    return {{{dst, w, h, w, 1},
             {pairs, w / 2, h / 2, w, 2},
             {pairs + 1, w / 2, h / 2, w, 2}}};
  }

 protected:
  vexo_img describe_output(uint8_t *dst) const {
    return describe(mapping_.dst_format, size_, dst);
  }

  ToneMapping mapping_;
  Size size_;
};

class OnOneThread final : public OwnToneMapper {
 public:
  using OwnToneMapper::OwnToneMapper;

  bool run(const vexo_img &src, uint8_t *dst) override {
    const vexo_img to = describe_output(dst);
    build_context(mapping_, src, to, &context_);
    map_bands(context_);
    return true;
  }

 private:
  vexo_hdr_context context_;
};

class AsShipped final : public OwnToneMapper {
 public:
  using OwnToneMapper::OwnToneMapper;

  bool run(const vexo_img &src, uint8_t *dst) override {
    vexo_img from = src;
    from.source_nit = 1000;
    const vexo_img to = describe_output(dst);
    return vexo_hdr_to_sdr(&from, &to, mapping_.kind) == VEXO_OK;
  }
};

}  // namespace

void add_own_tone_mapping(const ToneMapping &mapping, Size size,
                          HdrContenders *out) {
  const int best = lox::isa_best();
  for (int level = best; level >= 0; --level) {
    out->push_back({std::string("orumlox ") + lox::isa_name(level), true,
                    mapping.src_format, false, level, [=] {
                      return std::make_unique<OnOneThread>(mapping, size);
                    }});
  }
  out->push_back({"orumlox as shipped", true, mapping.src_format, true, best,
                  [=] { return std::make_unique<AsShipped>(mapping, size); }});
}

}  // namespace bench
