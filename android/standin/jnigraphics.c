/* SPDX-License-Identifier: Apache-2.0 */
/* A stand-in for libjnigraphics.so over the stand-in for Bitmap: what tests run
 * with, and what is linked against where an NDK lacks the library. */
#include <android/bitmap.h>
#include <stddef.h>

static jint number_of(JNIEnv *env, jobject bitmap, const char *name) {
  jclass type = (*env)->GetObjectClass(env, bitmap);
  return (*env)->GetIntField(env, bitmap,
                             (*env)->GetFieldID(env, type, name, "I"));
}
static void add_lock(JNIEnv *env, jobject bitmap, jint more) {
  jclass type = (*env)->GetObjectClass(env, bitmap);
  jfieldID locks = (*env)->GetFieldID(env, type, "locks", "I");
  (*env)->SetIntField(env, bitmap, locks,
                      (*env)->GetIntField(env, bitmap, locks) + more);
}

int AndroidBitmap_getInfo(JNIEnv *env, jobject bitmap,
                          AndroidBitmapInfo *info) {
  info->width = (uint32_t)number_of(env, bitmap, "width");
  info->height = (uint32_t)number_of(env, bitmap, "height");
  info->stride = (uint32_t)number_of(env, bitmap, "stride");
  info->format = number_of(env, bitmap, "format");
  info->flags = 0;
  return ANDROID_BITMAP_RESULT_SUCCESS;
}

/* A bitmap without pixels cannot be locked. */
int AndroidBitmap_lockPixels(JNIEnv *env, jobject bitmap, void **pixels) {
  jclass type = (*env)->GetObjectClass(env, bitmap);
  jfieldID field =
      (*env)->GetFieldID(env, type, "pixels", "Ljava/nio/ByteBuffer;");
  jobject buffer = (*env)->GetObjectField(env, bitmap, field);
  if (buffer == NULL) return -1;
  *pixels = (*env)->GetDirectBufferAddress(env, buffer);
  add_lock(env, bitmap, 1);
  return ANDROID_BITMAP_RESULT_SUCCESS;
}

int AndroidBitmap_unlockPixels(JNIEnv *env, jobject bitmap) {
  add_lock(env, bitmap, -1);
  return ANDROID_BITMAP_RESULT_SUCCESS;
}
