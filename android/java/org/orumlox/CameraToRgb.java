// SPDX-License-Identifier: Apache-2.0
package org.orumlox;

import android.graphics.Bitmap;
import android.graphics.Rect;
import android.media.Image;
import java.nio.ByteBuffer;

/**
 * A camera's YUV_420_888 frame to RGB, cropped, upright and mirrored in one pass.
 *
 * <pre>
 * CameraToRgb convert = new CameraToRgb().rotation(90).mirror(true);
 * try (Image image = reader.acquireLatestImage()) {
 *   convert.toBitmap(image, bitmap);
 * }
 * </pre>
 *
 * What cannot be done is refused with nothing written: by an IllegalArgumentException for
 * sizes, strides, crops and buffers that do not fit together, by an
 * UnsupportedOperationException for a format or a color standard that is not served. An object
 * may be used by several threads once it is set up.
 */
public final class CameraToRgb {
  /** BT.601, luma 16 to 235. */
  public static final int BT601 = 0;

  /** BT.601 of full range, as JPEG has it. Cameras give it unless they say otherwise. */
  public static final int BT601_FULL = 1;

  /** BT.709, luma 16 to 235. */
  public static final int BT709 = 10;

  /** BT.709 of full range. */
  public static final int BT709_FULL = 11;

  /** Words of 5, 6 and 5 bits, as Bitmap.Config.RGB_565. */
  public static final int RGB_565 = 200;

  /** Bytes R, G, B and A, as Bitmap.Config.ARGB_8888. */
  public static final int RGBA_8888 = 500;

  private static final int YUV_420_888 = 35; // of ImageFormat

  static {
    System.loadLibrary("orumlox_jni");
  }

  private int rotation;
  private boolean mirror;
  private int colorStandard = BT601_FULL;
  private int cropX, cropY, cropWidth, cropHeight;
  private boolean crops;

  /** Turns by 0, 90, 180 or 270 degrees clockwise. */
  public CameraToRgb rotation(int degrees) {
    rotation = degrees;
    return this;
  }

  /** Exchanges left and right after the rotation, as a mirror does. */
  public CameraToRgb mirror(boolean mirrored) {
    mirror = mirrored;
    return this;
  }

  /** BT601_FULL if it is not set. */
  public CameraToRgb colorStandard(int standard) {
    colorStandard = standard;
    return this;
  }

  /**
   * The part of the frame that is wanted, before the rotation. Without it an image's own crop
   * counts, and the whole of a frame in buffers.
   */
  public CameraToRgb crop(int x, int y, int width, int height) {
    if (width < 1 || height < 1) throw new IllegalArgumentException("an empty crop");
    cropX = x;
    cropY = y;
    cropWidth = width;
    cropHeight = height;
    crops = true;
    return this;
  }

  /**
   * Converts to a bitmap of ARGB_8888 or RGB_565 that has the crop's size after the rotation. It
   * is mutable and not in the graphics processor's memory (Config.HARDWARE).
   */
  public void toBitmap(Image image, Bitmap bitmap) {
    if (image.getFormat() != YUV_420_888) {
      throw new UnsupportedOperationException("an image that is not YUV_420_888");
    }
    if (!bitmap.isMutable()) throw new IllegalArgumentException("a bitmap that is not mutable");
    Image.Plane[] planes = image.getPlanes();
    ByteBuffer[] buffers = new ByteBuffer[3];
    int[] rowStrides = new int[3];
    int[] pixelStrides = new int[3];
    for (int p = 0; p < 3; ++p) {
      buffers[p] = planes[p].getBuffer();
      rowStrides[p] = planes[p].getRowStride();
      pixelStrides[p] = planes[p].getPixelStride();
    }
    int[] numbers =
        numbers(
            buffers, rowStrides, pixelStrides, image.getWidth(), image.getHeight(),
            image.getCropRect());
    toBitmap(buffers[0], buffers[1], buffers[2], numbers, bitmap);
  }

  /**
   * Converts planes of Y, U and V in direct buffers, each from its position on, to pixels in a
   * direct buffer, from its position on. Positions and limits stay as they are.
   *
   * @param rowStrides bytes from a row to the next, of each plane
   * @param pixelStrides bytes from a sample to the next, 1 or 2, of each plane
   * @param width of Y; U and V have half of it, rounded up
   * @param height of Y, likewise
   * @param pixelsWidth the crop's width after the rotation
   * @param pixelsHeight the crop's height after the rotation
   * @param pixelsStride bytes from a row of pixels to the next
   * @param format RGB_565 or RGBA_8888
   */
  public void toBuffer(
      ByteBuffer[] planes,
      int[] rowStrides,
      int[] pixelStrides,
      int width,
      int height,
      ByteBuffer pixels,
      int pixelsWidth,
      int pixelsHeight,
      int pixelsStride,
      int format) {
    if (planes.length != 3 || rowStrides.length != 3 || pixelStrides.length != 3) {
      throw new IllegalArgumentException("not three planes");
    }
    if (!pixels.isDirect() || pixels.isReadOnly()) {
      throw new IllegalArgumentException("a destination that is not direct or is read-only");
    }
    int[] numbers = numbers(planes, rowStrides, pixelStrides, width, height, null);
    int[] to = {
      pixels.position(), pixels.remaining(), pixelsWidth, pixelsHeight, pixelsStride, format
    };
    toBuffer(planes[0], planes[1], planes[2], numbers, pixels, to);
  }

  // What the native side reads as one array.
  private int[] numbers(
      ByteBuffer[] planes, int[] rowStrides, int[] pixelStrides, int width, int height, Rect own) {
    int[] n = new int[21];
    for (int p = 0; p < 3; ++p) {
      if (!planes[p].isDirect()) throw new IllegalArgumentException("a plane that is not direct");
      n[4 * p] = planes[p].position();
      n[4 * p + 1] = planes[p].remaining();
      n[4 * p + 2] = rowStrides[p];
      n[4 * p + 3] = pixelStrides[p];
    }
    n[12] = width;
    n[13] = height;
    n[14] = colorStandard;
    if (crops) {
      n[15] = cropX;
      n[16] = cropY;
      n[17] = cropWidth;
      n[18] = cropHeight;
    } else if (own != null) {
      n[15] = own.left;
      n[16] = own.top;
      n[17] = own.right - own.left;
      n[18] = own.bottom - own.top;
    }
    n[19] = rotation;
    n[20] = mirror ? 1 : 0;
    return n;
  }

  private static native void toBitmap(
      ByteBuffer y, ByteBuffer u, ByteBuffer v, int[] numbers, Bitmap bitmap);

  private static native void toBuffer(
      ByteBuffer y, ByteBuffer u, ByteBuffer v, int[] numbers, ByteBuffer pixels, int[] to);
}
