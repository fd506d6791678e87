// SPDX-License-Identifier: Apache-2.0
//
// Headerless frames: the planes of one frame after the other, without gaps.
#include "io.h"

namespace vexo {
namespace {

class RawReader : public FrameReader {
 public:
  RawReader(std::unique_ptr<ByteSource> source, const StreamInfo &info)
      : source_(std::move(source)), info_(info) {}

  const StreamInfo &info() const override { return info_; }

  bool read(Frame &frame) override {
    if (source_->at_end()) return false;
    read_planes(*source_, frame);
    return true;
  }

 private:
  std::unique_ptr<ByteSource> source_;
  StreamInfo info_;
};

class RawWriter : public FrameWriter {
 public:
  explicit RawWriter(const std::string &path) : path_(path) {}
  void write(const Frame &frame, const std::string &,
             const Showing &) override {
    if (!sink_) sink_.emplace(path_);
    write_planes(*sink_, frame);
  }
  void finish() override { sink_->commit(); }

 private:
  std::string path_;
  std::optional<ByteSink> sink_;
};

}  // namespace

std::unique_ptr<FrameReader> read_raw(std::unique_ptr<ByteSource> source,
                                      const StreamInfo &info) {
  return std::make_unique<RawReader>(std::move(source), info);
}

std::unique_ptr<FrameWriter> write_raw(const std::string &path) {
  return std::make_unique<RawWriter>(path);
}

}  // namespace vexo
