/* SPDX-License-Identifier: Apache-2.0 */
/* The native methods of org.orumlox.CameraToRgb. Java's side has made sure that
 * buffers are direct and that positions and sizes are theirs. */
#include <android/bitmap.h>
#include <jni.h>
#include <stdbool.h>
#include <stdint.h>

#include "orumlox/camera.h"

static void throw_by_name(JNIEnv *env, const char *name, const char *text) {
  jclass type = (*env)->FindClass(env, name);
  if (type != NULL) (*env)->ThrowNew(env, type, text);
}
static void throw_argument(JNIEnv *env, const char *text) {
  throw_by_name(env, "java/lang/IllegalArgumentException", text);
}
static void throw_unsupported(JNIEnv *env, const char *text) {
  throw_by_name(env, "java/lang/UnsupportedOperationException", text);
}

/* The memory of a direct buffer from its position on. */
static uint8_t *memory_of(JNIEnv *env, jobject buffer, jint position) {
  uint8_t *bytes = (*env)->GetDirectBufferAddress(env, buffer);
  return bytes == NULL ? NULL : bytes + position;
}

/* `numbers` as the class lays them out: of each plane its position, size and
 * strides; then the frame and the options. */
static int32_t convert(JNIEnv *env, jobject y, jobject u, jobject v,
                       jintArray numbers, const vexo_img *dst) {
  jint n[21];
  (*env)->GetIntArrayRegion(env, numbers, 0, 21, n);
  const jobject planes[3] = {y, u, v};
  vexo_camera_frame frame = {{NULL}, {0}, {0}, {0}, n[12], n[13], n[14], {0}};
  for (int p = 0; p < 3; ++p) {
    frame.plane[p] = memory_of(env, planes[p], n[4 * p]);
    frame.bytes[p] = (size_t)n[4 * p + 1];
    frame.row_stride[p] = n[4 * p + 2];
    frame.pixel_stride[p] = n[4 * p + 3];
  }
  const vexo_camera_options options = {n[15], n[16], n[17], n[18],
                                       n[19], n[20], {0}};
  return vexo_camera_to_rgb(&frame, &options, dst);
}

static void throw_status(JNIEnv *env, int32_t status) {
  if (status == VEXO_ERR_UNSUPPORTED) {
    throw_unsupported(env, "a format or color standard that is not served");
  } else if (status != VEXO_OK) {
    throw_argument(env,
                   "sizes, strides, crop, rotation and buffers do not fit");
  }
}

JNIEXPORT void JNICALL Java_org_orumlox_CameraToRgb_toBuffer(
    JNIEnv *env, jclass type, jobject y, jobject u, jobject v,
    jintArray numbers, jobject pixels, jintArray to) {
  (void)type;
  jint n[6];
  (*env)->GetIntArrayRegion(env, to, 0, 6, n);
  const int64_t row = (int64_t)n[2] * (n[5] == VEXO_FMT_RGB565 ? 2 : 4);
  if (n[2] < 1 || n[3] < 1 || n[4] < row ||
      (int64_t)n[4] * (n[3] - 1) + row > n[1]) {
    throw_argument(env, "pixels that do not fit their buffer");
    return;
  }
  const vexo_img dst = {.width = {n[2]},
                        .height = {n[3]},
                        .stride = {n[4]},
                        .plane = {memory_of(env, pixels, n[0])},
                        .format = n[5]};
  throw_status(env, convert(env, y, u, v, numbers, &dst));
}

JNIEXPORT void JNICALL Java_org_orumlox_CameraToRgb_toBitmap(
    JNIEnv *env, jclass type, jobject y, jobject u, jobject v,
    jintArray numbers, jobject bitmap) {
  (void)type;
  AndroidBitmapInfo info;
  if (AndroidBitmap_getInfo(env, bitmap, &info) !=
      ANDROID_BITMAP_RESULT_SUCCESS) {
    throw_argument(env, "not a bitmap");
    return;
  }
  if (info.format != ANDROID_BITMAP_FORMAT_RGBA_8888 &&
      info.format != ANDROID_BITMAP_FORMAT_RGB_565) {
    throw_unsupported(env, "a bitmap of another format");
    return;
  }
  void *pixels = NULL;
  if (AndroidBitmap_lockPixels(env, bitmap, &pixels) !=
      ANDROID_BITMAP_RESULT_SUCCESS) {
    throw_by_name(env, "java/lang/IllegalStateException",
                  "the bitmap's pixels cannot be locked");
    return;
  }
  const bool words = info.format == ANDROID_BITMAP_FORMAT_RGB_565;
  const vexo_img dst = {.width = {(int32_t)info.width},
                        .height = {(int32_t)info.height},
                        .stride = {(int32_t)info.stride},
                        .plane = {pixels},
                        .format = words ? VEXO_FMT_RGB565 : VEXO_FMT_RGBA8888};
  const int32_t status = convert(env, y, u, v, numbers, &dst);
  AndroidBitmap_unlockPixels(env, bitmap);
  throw_status(env, status);
}
