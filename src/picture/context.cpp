// SPDX-License-Identifier: Apache-2.0
//
// The context of the picture calls.
#include "picture/context.h"

#include <cstdlib>
#include <cstring>
#include <new>
#include <type_traits>

#include "common/memory.h"
#include "orumlox/common.h"
#include "orumlox/picture.h"

namespace lox {

bool Scratch::reserve(size_t bytes) {
  if (bytes <= size_) return true;
  release();
  if (bytes > UINT32_MAX) return false;
  data_ = allocate<uint8_t>(static_cast<int64_t>(bytes));
  if (data_ == nullptr) return false;
  size_ = bytes;
  memset(data_, 0, bytes);
  return true;
}

void Scratch::release() {
  mlox_mfree_align32(data_);
  data_ = nullptr;
  size_ = 0;
}

const Plan *RecentPlans::find(const Question &question) const {
  static_assert(std::has_unique_object_representations_v<Question>);
  for (uint32_t i = 0; i < count_; ++i) {
    if (memcmp(&question_[i], &question, sizeof question) == 0) {
      return &plan_[i];
    }
  }
  return nullptr;
}

const Plan *RecentPlans::keep(const Question &question, const Plan &plan) {
  const uint32_t place = next_;
  next_ = (next_ + 1) % kMost;
  if (count_ < kMost) ++count_;
  question_[place] = question;
  plan_[place] = plan;
  return &plan_[place];
}

}  // namespace lox

extern "C" {

int32_t vexo_picture_context_new(vexo_picture_context **context) {
  if (context == nullptr) return VEXO_ERR_ARG;
  void *const memory = malloc(sizeof(vexo_picture_context));
  // Not operator new, which is the C++ library's.
  *context = memory == nullptr ? nullptr : new (memory) vexo_picture_context();
  return memory == nullptr ? VEXO_ERR_MEMORY : VEXO_OK;
}

void vexo_picture_context_free(vexo_picture_context *context) {
  if (context == nullptr) return;
  for (lox::Scratch &scratch : context->scratch) scratch.release();
  context->thumbnail.release();
  free(context);
}

}  // extern "C"
