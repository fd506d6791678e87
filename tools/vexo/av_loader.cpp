// SPDX-License-Identifier: Apache-2.0
//
// The calls of the module, which is loaded by the first of them and stays.
#include <dlfcn.h>

#include <utility>

#include "av_module.h"
#include "error.h"

namespace vexo {
namespace {

const AvModule &av_module() {
  // Beside the tool, or where it is installed to: the tool's own search path.
  static void *const handle = dlopen(kAvModuleFile, RTLD_LAZY | RTLD_LOCAL);
  void *const symbol =
      handle == nullptr ? nullptr : dlsym(handle, kAvModuleSymbol);
  if (symbol == nullptr) {
    throw Error(std::string("what reads and writes videos is not there: ") +
                dlerror());
  }
  return *reinterpret_cast<GetAvModule *>(symbol)();
}

}  // namespace

std::unique_ptr<VideoReader> read_video(std::unique_ptr<ByteSource> source,
                                        const VideoWish &wish) {
  return av_module().read(std::move(source), wish);
}

FileFacts video_facts(std::unique_ptr<ByteSource> source) {
  return av_module().facts(std::move(source));
}

std::unique_ptr<FrameWriter> write_video(const std::string &path,
                                         const StreamInfo &info,
                                         const EncodeOptions &options) {
  return av_module().write(path, info, options);
}

bool reads_videos() { return true; }

}  // namespace vexo
