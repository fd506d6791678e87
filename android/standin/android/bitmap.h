/* SPDX-License-Identifier: Apache-2.0 */
/* A stand-in for the NDK's header, where there is no NDK. */
#pragma once

#include <jni.h>
#include <stdint.h>

#define ANDROID_BITMAP_RESULT_SUCCESS 0
enum { ANDROID_BITMAP_FORMAT_RGBA_8888 = 1, ANDROID_BITMAP_FORMAT_RGB_565 = 4 };

typedef struct {
  uint32_t width;
  uint32_t height;
  uint32_t stride;
  int32_t format;
  uint32_t flags;
} AndroidBitmapInfo;

int AndroidBitmap_getInfo(JNIEnv *env, jobject bitmap, AndroidBitmapInfo *info);
int AndroidBitmap_lockPixels(JNIEnv *env, jobject bitmap, void **pixels);
int AndroidBitmap_unlockPixels(JNIEnv *env, jobject bitmap);
